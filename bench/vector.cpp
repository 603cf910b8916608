// Level 1. One line of the table is one routine for all its types; the work is the bytes that it has to move.
#include "bench/case.h"

#include <sstream>

namespace orv::bench {
namespace {

// Words of the argument list: n; alpha, beta a scalar of the type; one, cos, sin a real scalar; csin a sine of the
// type; param the matrix of a modified rotation; x, y a vector and its stride, with * if updated and = if only written.
// Scalars leave the size of the numbers alone however often the call is repeated.
enum class Kind { elementwise, sum, norm, position };
struct Routine {
    const char* names[4]; // s d c z
    const char* arguments;
    Kind kind = Kind::elementwise;
    bool shifted = false; // also with x and y apart by less than a vector register
};
constexpr Routine routines[] = {
    // clang-format off
    {{"saxpy",  "daxpy",  "caxpy",  "zaxpy"},  "n alpha x y*", Kind::elementwise, true},
    {{"saxpby", "daxpby", "caxpby", "zaxpby"}, "n alpha x beta y*"},
    {{"sdot",   "ddot",   "cdotu",  "zdotu"},  "n x y", Kind::sum, true},
    {{nullptr,  nullptr,  "cdotc",  "zdotc"},  "n x y", Kind::sum},
    {{"sdsdot", nullptr,  nullptr,  nullptr},  "n alpha x y", Kind::sum},
    {{"dsdot",  nullptr,  nullptr,  nullptr},  "n x y", Kind::sum},
    {{"sscal",  "dscal",  "cscal",  "zscal"},  "n unit x*"},
    {{nullptr,  nullptr,  "csscal", "zdscal"}, "n one x*"},
    {{"scopy",  "dcopy",  "ccopy",  "zcopy"},  "n x y=", Kind::elementwise, true},
    {{"sswap",  "dswap",  "cswap",  "zswap"},  "n x* y*", Kind::elementwise, true},
    {{"snrm2",  "dnrm2",  "scnrm2", "dznrm2"}, "n x", Kind::norm},
    {{"sasum",  "dasum",  "scasum", "dzasum"}, "n x", Kind::norm},
    {{"isamax", "idamax", "icamax", "izamax"}, "n x", Kind::position},
    {{"isamin", "idamin", "icamin", "izamin"}, "n x", Kind::position},
    {{"srot",   "drot",   "csrot",  "zdrot"},  "n x* y* cos sin", Kind::elementwise, true},
    {{nullptr,  nullptr,  "crot",   "zrot"},   "n x* y* cos csin"},
    {{"srotm",  "drotm",  nullptr,  nullptr},  "n x* y* param"},
    // clang-format on
};

struct Strides {
    i64 x, y;
    const char* name;
};
constexpr Strides unit{1, 1, "unit"}, apart{2, 2, "stride 2"}, mixed{-1, 3, "stride -1 3"};

Result result_of(const Routine& r, char type)
{
    const bool single = type == 's' || type == 'c', complex = type == 'c' || type == 'z';
    if (std::string(r.names[0] ? r.names[0] : "") == "dsdot") return Result::double_real;
    switch (r.kind) {
    case Kind::elementwise:
        return Result::none;
    case Kind::position:
        return Result::index;
    case Kind::sum:
        if (complex) return single ? Result::single_complex : Result::double_complex;
        [[fallthrough]];
    case Kind::norm:
        return single ? Result::single_real : Result::double_real;
    }
    return Result::none;
}

Case make(const Routine& r, int type, i64 n, Strides inc, i64 shift = 0)
{
    Case c{r.names[type], shift ? "shifted" : inc.name, n, "sdcz"[type]};
    double vectors = 0;
    std::istringstream words(r.arguments);
    for (std::string word; words >> word;) {
        if (word == "n") c.integer(n);
        else if (word == "alpha") c.scalar(0.001, 0.002);
        else if (word == "beta") c.scalar(0.75, -0.5);
        else if (word == "unit" && c.reals() == 2) c.scalar(0.6, 0.8);
        else if (word == "unit" || word == "one") c.numbers({1.0000001});
        else if (word == "cos") c.numbers({0.6});
        else if (word == "sin") c.numbers({0.8});
        else if (word == "csin") c.scalar(0.48, 0.64);
        else if (word == "param") c.numbers({-1, 0.6, -0.8, 0.8, 0.6});
        else {
            const Use use = word[1] == '*' ? Use::updated : word[1] == '=' ? Use::written : Use::read;
            vectors += use == Use::updated ? 2 : 1;
            c.vector(n, word[0] == 'x' ? inc.x : inc.y, use);
            if (word[0] == 'x') c.operands.back().offset += shift;
        }
    }
    const bool scaled_norm = c.kernel == "dnrm2" || c.kernel == "dznrm2";
    c.work = vectors * static_cast<double>(n) * c.reals() * (c.single() ? 4 : 8);
    c.unit = "GB/s";
    c.result = result_of(r, c.type);
    if (scaled_norm) c.limit = Limit::ordered_norm;
    else if (c.kernel == "dsdot" || c.kernel == "sdsdot") c.limit = Limit::ordered_dot;
    else if (r.kind == Kind::norm && c.kernel.ends_with("nrm2") && inc.x == 1) c.limit = Limit::widened_norm;
    else if (inc.x == 1 && inc.y == 1) c.limit = Limit::movement;
    if (r.kind == Kind::sum || r.kind == Kind::norm) c.roundings = c.magnitude = static_cast<double>(2 * n);
    return c;
}

bool has_two_vectors(const Routine& r) { return std::string(r.arguments).find(" y") != std::string::npos; }

} // namespace

std::vector<Case> vector_cases()
{
    std::vector<Case> cases;
    const auto add = [&](Case c, bool quick) {
        c.quick = quick;
        cases.push_back(std::move(c));
    };
    for (const Routine& r : routines) {
        for (int type = 0; type < 4; ++type) {
            if (r.names[type] == nullptr) continue;
            Case least = make(r, type, 10, unit);
            least.overhead = true;
            least.variant = "call";
            least.unit = "ns";
            least.limit = Limit::none;
            add(least, true);
            for (const i64 n : {100, 1000, 100'000, 10'000'000}) {
                add(make(r, type, n, unit), n <= 100'000);
                add(make(r, type, n, apart), n == 1000);
                if (has_two_vectors(r) && n <= 1000) add(make(r, type, n, mixed), false);
            }
            if (r.shifted && type != 3) add(make(r, type, 1000, unit, type == 0 ? 4 : 8), false);
        }
    }
    return cases;
}

} // namespace orv::bench
