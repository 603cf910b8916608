// Poisson problems on a rectangle and in a box with u = 0 on all sides, solved again and again on one grid. What is
// solved is a fresh copy each time, which counts for all. Work is counted as five passes over the points.
#include "bench/case.h"

namespace orv::bench {

// The routine is that of bench/poisson_orv.cpp and bench/poisson_fftw.cpp: cells along each axis, 0 for a rectangle's
// third one, and f, which becomes u.
std::vector<Case> poisson_cases()
{
    struct Grid {
        const char* name;
        i64 n[3];
        bool quick;
    };
    std::vector<Case> cases;
    for (const char type : {'d', 's'})
        for (const int threads : {1, 2})
            for (const Grid& grid : {Grid{"rectangle", {128, 128, 0}, false}, Grid{"rectangle", {250, 250, 0}, true},
                                     Grid{"rectangle", {500, 500, 0}, false}, Grid{"rectangle", {1000, 1000, 0}, false},
                                     Grid{"rectangle", {2048, 2048, 0}, false}, Grid{"box", {32, 32, 32}, false},
                                     Grid{"box", {64, 64, 64}, false}, Grid{"box", {128, 128, 128}, false}}) {
                Case c{std::string(1, type) + "poisson", grid.name, grid.n[0], type};
                if (threads == 2) c.variant += " threads";
                c.threads = threads;
                c.quick = grid.quick && threads == 1;
                i64 points = 1;
                for (const i64 n : grid.n) c.integer(n), points *= n + 1;
                c.renewed(points, Use::updated, 1, {});
                c.work = 5 * static_cast<double>(points);
                c.unit = "Gelements/s";
                c.roundings = 100; // the condition of what is left of the smallest waves
                cases.push_back(c);
            }
    return cases;
}

} // namespace orv::bench
