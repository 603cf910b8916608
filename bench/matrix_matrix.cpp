// Products with symmetric matrices and updates of such: a table of routines, their arguments, their letters.
#include "bench/case.h"

#include <sstream>

namespace orv::bench {
namespace {

// Words: letters (side uplo trans), dimensions, alpha and beta (real: of a Hermitian update), matrices of order n, C*
// the result. work: operations are that many times n^3, four times as many for complex numbers.
struct Routine {
    std::array<const char*, 4> names;
    const char* arguments;
    std::vector<const char*> letters;
    double work;
};
const Routine routines[] = {
    {{"ssymm", "dsymm", "csymm", "zsymm"}, "l l n n alpha A A beta C*", {"LU", "LL", "RU", "RL"}, 2},
    {{nullptr, nullptr, "chemm", "zhemm"}, "l l n n alpha A A beta C*", {"LU", "RL"}, 2},
    {{"ssyrk", "dsyrk", "csyrk", "zsyrk"}, "l l n n alpha A beta C*", {"UN", "LN", "UT", "LT"}, 1},
    {{nullptr, nullptr, "cherk", "zherk"}, "l l n n real A one C*", {"UN", "LC"}, 1},
    {{"ssyr2k", "dsyr2k", "csyr2k", "zsyr2k"}, "l l n n alpha A A beta C*", {"UN", "LT"}, 2},
    {{nullptr, nullptr, "cher2k", "zher2k"}, "l l n n alpha A A one C*", {"UN", "LC"}, 2},
};
constexpr i64 sizes[] = {4, 8, 16, 32, 64, 100, 500, 2000};

Case make(const Routine& r, int type, i64 n, const char* letters)
{
    Case c{r.names[type], letters, n, "sdcz"[type]};
    c.quick = n == 100;
    std::istringstream words(r.arguments);
    for (std::string word; words >> word;) {
        if (word == "l") c.letter(*letters++);
        else if (word == "n") c.integer(n);
        else if (word == "alpha") c.scalar(0.001, 0.002);
        else if (word == "beta") c.scalar(1, 0);
        else if (word == "real") c.numbers({0.001});
        else if (word == "one") c.numbers({1});
        else c.matrix(n, n, word.back() == '*' ? Use::updated : Use::read);
    }
    c.work = r.work * c.reals() * c.reals() * static_cast<double>(n) * static_cast<double>(n) * static_cast<double>(n);
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = c.magnitude = static_cast<double>(4 * n + 8);
    return c;
}

} // namespace

std::vector<Case> matrix_matrix_cases()
{
    std::vector<Case> cases;
    for (const Routine& r : routines)
        for (int type = 0; type < 4; ++type)
            for (const char* letters : r.letters)
                for (const i64 n : sizes)
                    if (r.names[type] != nullptr) cases.push_back(make(r, type, n, letters));
    return cases;
}

} // namespace orv::bench
