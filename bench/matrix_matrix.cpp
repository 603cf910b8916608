// Products of matrices, all but the general one: a table of routines, their arguments, their letters.
#include "bench/case.h"

#include <sstream>

namespace orv::bench {
namespace {

// Words: letters (side uplo trans diag), dimensions, alpha and beta (real: of a Hermitian update; one: 1 in the type of
// the matrices, real_one: a real 1), matrices of order n (A: general, T: triangular, R: real), C* the result. work:
// operations are that many times n^3, four times as many for complex numbers.
struct Routine {
    std::array<const char*, 4> names;
    const char* arguments;
    std::vector<const char*> letters;
    double work;
};
const Routine routines[] = {
    {{"ssymm", "dsymm", "csymm", "zsymm"}, "l l n n alpha A A one C*", {"LU", "LL", "RU", "RL"}, 2},
    {{nullptr, nullptr, "chemm", "zhemm"}, "l l n n alpha A A one C*", {"LU", "RL"}, 2},
    {{"ssyrk", "dsyrk", "csyrk", "zsyrk"}, "l l n n alpha A one C*", {"UN", "LN", "UT", "LT"}, 1},
    {{nullptr, nullptr, "cherk", "zherk"}, "l l n n real A real_one C*", {"UN", "LC"}, 1},
    {{"ssyr2k", "dsyr2k", "csyr2k", "zsyr2k"}, "l l n n alpha A A one C*", {"UN", "LT"}, 2},
    {{nullptr, nullptr, "cher2k", "zher2k"}, "l l n n alpha A A real_one C*", {"UN", "LC"}, 2},
    {{"strmm", "dtrmm", "ctrmm", "ztrmm"}, "l l l l n n one T C*", {"LLNN", "LUTN", "RLTN", "RUNN"}, 1},
    {{"strsm", "dtrsm", "ctrsm", "ztrsm"}, "l l l l n n one T C*", {"LLNN", "LUTN", "RLTN", "RUNN"}, 1},
    {{nullptr, nullptr, "cgemm3m", "zgemm3m"}, "l l n n n alpha A A one C*", {"NN", "TC"}, 2}, // as if by four
    {{nullptr, nullptr, "scgemm", "dzgemm"}, "l l n n n alpha R A one C*", {"NN", "TC"}, 1},
};
constexpr i64 sizes[] = {4, 8, 16, 32, 64, 100, 500, 2000};

// The last operand, of order n: ones on the diagonal, and so little beside it that solves and products neither grow nor
// fade.
void make_triangular(Operand& matrix, i64 n)
{
    matrix.scale = 0.25 / static_cast<double>(n);
    for (i64 j = 0; j < n; ++j) matrix.ones.push_back(j * (n + 1));
}

Case make(const Routine& r, int type, i64 n, const char* letters)
{
    Case c{r.names[type], letters, n, "sdcz"[type]};
    c.quick = n == 100;
    std::istringstream words(r.arguments);
    for (std::string word; words >> word;) {
        if (word == "l") c.letter(*letters++);
        else if (word == "n") c.integer(n);
        else if (word == "alpha") c.scalar(0.001, 0.002);
        else if (word == "one") c.scalar(1, 0);
        else if (word == "real") c.numbers({0.001});
        else if (word == "real_one") c.numbers({1});
        else if (word == "R") c.operand((n * n + 1) / 2, Use::read).integer(n);
        else {
            c.matrix(n, n, word.back() == '*' ? Use::updated : Use::read);
            if (word == "T") make_triangular(c.operands.back(), n);
        }
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
            if (r.names[type] != nullptr) {
                for (const char* letters : r.letters)
                    for (const i64 n : sizes) cases.push_back(make(r, type, n, letters));
                cases.push_back(make(r, type, 2000, r.letters.back()));
                cases.back().variant += " threads", cases.back().threads = 2;
            }
    return cases;
}

} // namespace orv::bench
