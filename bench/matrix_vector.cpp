// Level 2. One line of the table is one routine for all its types; the work is the bytes of the matrix that it has to
// move, an updated one counting twice.
#include "bench/case.h"

#include <cctype>
#include <sstream>

namespace orv::bench {
namespace {

// Words of the argument list: trans, uplo the next letter of the variant, diag the letter N; n; k, kl, ku the width of
// a band; alpha, beta a scalar of the type, real a real one; A, T, B, G, P a matrix: full, a triangle of a full one, a
// band of a triangle, a general band, packed; x, y vectors with their strides. A * follows what is updated.
struct Routine {
    const char* names[4]; // s d c z
    const char* arguments;
    const char* variants = " "; // words of letters
    double products = 1;        // with each element that is read
};
constexpr Routine routines[] = {
    // clang-format off
    {{"sgemv", "dgemv", "cgemv", "zgemv"}, "trans n n alpha A x beta y*", "N T"},
    {{nullptr, nullptr, "cgemv", "zgemv"}, "trans n n alpha A x beta y*", "C"},
    {{"sgem2vu", "dgem2vu", "cgem2vc", "zgem2vc"}, "n n alpha A x x beta y* y*", " ", 2},
    {{"sger",  "dger",  "cgeru", "zgeru"}, "n n alpha x y A*"},
    {{nullptr, nullptr, "cgerc", "zgerc"}, "n n alpha x y A*"},
    {{"ssymv", "dsymv", "chemv", "zhemv"}, "uplo n alpha T x beta y*", "U L"},
    {{"sspmv", "dspmv", "chpmv", "zhpmv"}, "uplo n alpha P x beta y*", "U L"},
    {{"ssyr",  "dsyr",  "cher",  "zher"},  "uplo n real x T*", "U L"},
    {{"sspr",  "dspr",  "chpr",  "zhpr"},  "uplo n real x P*", "U L"},
    {{"ssyr2", "dsyr2", "cher2", "zher2"}, "uplo n alpha x y T*", "U L"},
    {{"sspr2", "dspr2", "chpr2", "zhpr2"}, "uplo n alpha x y P*", "U L"},
    {{"strmv", "dtrmv", "ctrmv", "ztrmv"}, "uplo trans diag n T x*", "UN UT LN LT"},
    {{"strsv", "dtrsv", "ctrsv", "ztrsv"}, "uplo trans diag n T x*", "UN UT LN LT"},
    {{"stpmv", "dtpmv", "ctpmv", "ztpmv"}, "uplo trans diag n P x*", "UN UT LN LT"},
    {{"stpsv", "dtpsv", "ctpsv", "ztpsv"}, "uplo trans diag n P x*", "UN UT LN LT"},
    {{"sgbmv", "dgbmv", "cgbmv", "zgbmv"}, "trans n n kl ku alpha G x beta y*", "N T"},
    {{"ssbmv", "dsbmv", "chbmv", "zhbmv"}, "uplo n k alpha B x beta y*", "U L"},
    {{"stbmv", "dtbmv", "ctbmv", "ztbmv"}, "uplo trans diag n k B x*", "UN UT LN LT"},
    {{"stbsv", "dtbsv", "ctbsv", "ztbsv"}, "uplo trans diag n k B x*", "UN UT LN LT"},
    // clang-format on
};

struct Strides {
    i64 x, y;
    const char* name;
};
constexpr Strides unit{1, 1, ""}, apart{2, 3, " strided"};

bool is_band(const Routine& r) { return std::string(r.arguments).find(" k") != std::string::npos; }
// Solves and products that overwrite their operand: repeated, they keep numbers in size only if the matrix is nearly 1.
bool is_triangular(const Routine& r) { return std::string(r.arguments).find("diag") != std::string::npos; }

// Puts ones on the diagonal of the case's last matrix, of which column j holds it at element first + step*j, or, if
// packed, behind all columns before, and makes its other elements small.
void nearly_one(Case& c, i64 n, char storage, bool upper, i64 k)
{
    Operand& matrix = c.operands.back();
    matrix.scale = 0.25 / static_cast<double>(n);
    for (i64 j = 0; j < n; ++j) {
        i64 at = j * (n + 1);
        if (storage == 'B') at = j * (k + 1) + (upper ? k : 0);
        if (storage == 'P') at = upper ? j * (j + 3) / 2 : j * (2 * n - j + 1) / 2;
        matrix.ones.push_back(at);
    }
}

// k is the number of diagonals on a side of the main one, of routines on bands.
Case make(const Routine& r, int type, i64 n, i64 k, const std::string& letters, Strides inc)
{
    Case c{r.names[type], letters, n, "sdcz"[type]};
    std::istringstream words(r.arguments);
    auto next_letter = letters.begin();
    double elements = 0, passes = r.products;
    for (std::string word; words >> word;) {
        const Use use = word.back() == '*' ? Use::updated : Use::read;
        if (word == "uplo" || word == "trans") c.letter(*next_letter++);
        else if (word == "diag") c.letter('N');
        else if (word == "n") c.integer(n);
        else if (word[0] == 'k') c.integer(k);
        else if (word == "alpha") c.scalar(0.001, 0.002);
        else if (word == "beta") c.scalar(1, 0);
        else if (word == "real") c.numbers({0.001});
        else if (word[0] == 'x' || word[0] == 'y') c.vector(n, word[0] == 'x' ? inc.x : inc.y, use);
        else {
            switch (word[0]) {
            case 'P':
                c.packed(n, use);
                break;
            case 'B':
                c.matrix(k + 1, n, use);
                break;
            case 'G':
                c.matrix(2 * k + 1, n, use);
                break;
            default:
                c.matrix(n, n, use);
            }
            const double size = static_cast<double>(n), width = static_cast<double>(k);
            elements = word[0] == 'A'   ? size * size
                       : word[0] == 'B' ? size * (width + 1)
                       : word[0] == 'G' ? size * (2 * width + 1)
                                        : size * (size + 1) / 2;
            if (use == Use::updated) passes *= 2;
            if (is_triangular(r)) nearly_one(c, n, word[0], letters[0] == 'U', k);
        }
    }
    if (is_band(r)) c.variant += " k=" + std::to_string(k);
    c.variant += inc.name;
    if (c.variant.empty()) c.variant = "unit";
    c.work = passes * elements * c.reals() * (c.single() ? 4 : 8);
    c.unit = "GB/s";
    c.limit = Limit::matrix;
    c.roundings = c.magnitude = static_cast<double>(2 * (is_band(r) ? min(n, 2 * k + 1) : n) + 8);
    return c;
}

} // namespace

std::vector<Case> matrix_vector_cases()
{
    std::vector<Case> cases;
    const auto add = [&](Case c, bool quick) {
        c.quick = quick;
        cases.push_back(std::move(c));
    };
    for (const Routine& r : routines) {
        std::vector<std::string> variants;
        std::istringstream words(r.variants);
        for (std::string word; words >> word;) variants.push_back(word);
        if (variants.empty()) variants.emplace_back();
        for (int type = 0; type < 4; ++type) {
            if (r.names[type] == nullptr) continue;
            for (const std::string& letters : variants) {
                const bool first = letters == variants.front();
                for (const i64 n : {10, 50, 1000, 4000}) {
                    if (!is_band(r)) {
                        add(make(r, type, n, 0, letters, unit), first && n == 1000);
                        if (n == 1000 && r.products == 1) add(make(r, type, n, 0, letters, apart), false);
                        continue;
                    }
                    for (const i64 k : {5, 50}) {
                        if (k >= n) continue;
                        add(make(r, type, n, k, letters, unit), first && n == 1000);
                        if (n == 1000) add(make(r, type, n, k, letters, apart), false);
                    }
                }
            }
        }
    }
    for (const char type : {1, 3}) {
        for (const char* letters : {"N", "T"}) {
            add(make(routines[0], type, 4000, 0, letters, unit), false);
            cases.back().variant += " threads";
            cases.back().threads = 2;
        }
    }
    return cases;
}

} // namespace orv::bench
