// The matrix product: squares, small and large, and shapes with one short dimension.
#include "bench/case.h"

namespace orv::bench {
namespace {

constexpr i64 small[] = {2, 3, 4, 5, 6, 8, 10, 11, 12, 16, 20, 24, 32, 40, 50, 64, 80, 100};
constexpr i64 large[] = {500, 1000, 2000};

struct Shape {
    i64 m, n, k;
    const char* name;
};
constexpr Shape skinny[] = {{8, 2000, 2000, "m=8"}, {2000, 8, 2000, "n=8"}, {2000, 2000, 8, "k=8"}};

// C := op(A)*op(B) + beta*C, of 2mnk operations, complex 8mnk.
Case gemm(char type, char transa, char transb, Shape s, double beta, const std::string& variant)
{
    const bool na = transa == 'N', nb = transb == 'N';
    Case c{std::string(1, type) + "gemm", variant, max(s.m, max(s.n, s.k)), type};
    c.letter(transa).letter(transb).integer(s.m).integer(s.n).integer(s.k).scalar(1, 0);
    c.matrix(na ? s.m : s.k, na ? s.k : s.m, Use::read).matrix(nb ? s.k : s.n, nb ? s.n : s.k, Use::read);
    c.scalar(beta, 0).matrix(s.m, s.n, beta == 0 ? Use::written : Use::updated);
    c.work = 2.0 * c.reals() * c.reals() * static_cast<double>(s.m) * s.n * s.k;
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = c.magnitude = static_cast<double>(2 * s.k + 4);
    return c;
}

} // namespace

std::vector<Case> gemm_cases()
{
    std::vector<Case> cases;
    for (const char type : {'s', 'd', 'c', 'z'}) {
        for (const char* trans : {"NN", "TN", "NT", "TT"}) {
            for (const i64 n : large) {
                cases.push_back(gemm(type, trans[0], trans[1], {n, n, n, ""}, 1, trans));
                cases.back().quick = n == 500 && cases.back().variant == "NN";
            }
        }
        for (const Shape& s : skinny) {
            for (const double beta : {0, 1}) {
                const std::string variant = std::string("skinny ") + s.name + (beta == 0 ? " beta=0" : " beta=1");
                cases.push_back(gemm(type, 'N', 'N', s, beta, variant));
                cases.back().quick = beta == 1;
            }
        }
        for (const double beta : {0, 1}) {
            for (const i64 n : small) {
                cases.push_back(gemm(type, 'N', 'N', {n, n, n, ""}, beta, beta == 0 ? "small beta=0" : "small beta=1"));
                cases.back().quick = beta == 1 && (n % 4 == 0 || n == 5);
            }
        }
        cases.push_back(gemm(type, 'N', 'N', {2000, 2000, 2000, ""}, 1, "threads"));
        cases.back().threads = 2;
        cases.back().quick = false;
    }
    return cases;
}

} // namespace orv::bench
