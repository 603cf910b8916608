// Copies and transpositions of matrices, out of place and in place: the bytes that are read and written, beside a plain
// copy of as many.
#include "bench/case.h"

namespace orv::bench {
namespace {

struct Shape {
    i64 rows, cols;
    const char* name; // of what is no square
    bool quick;
};
constexpr Shape shapes[] = {
    {8, 8, "", true},       {32, 32, "", true},      {100, 100, "", true},          {1000, 1000, "", true},
    {1024, 1024, "", true}, {4096, 4096, "", false}, {1000, 3000, " m=1000", true}, {4000, 64, " m=4000", true}};

std::string text(double alpha) { return alpha == 1 ? "1" : alpha == -1 ? "-1" : "0.5"; }

Case start(char type, const char* routine, char trans, double alpha, const Shape& s)
{
    Case c{std::string(1, type) + routine, trans + (" alpha=" + text(alpha)) + s.name, s.cols, type};
    c.letter('C').letter(trans).integer(s.rows).integer(s.cols).scalar(alpha, 0);
    c.work = 2.0 * static_cast<double>(s.rows * s.cols) * c.reals() * (c.single() ? 4 : 8);
    c.unit = "GB/s";
    c.limit = Limit::movement;
    c.quick = s.quick && (type == 'd' || s.rows == 1000);
    return c;
}

// B := alpha*op(A), A of rows by cols.
Case omatcopy(char type, char trans, double alpha, const Shape& s)
{
    Case c = start(type, "omatcopy", trans, alpha, s);
    c.matrix(s.rows, s.cols, Use::read);
    if (trans == 'N') c.matrix(s.rows, s.cols, Use::written);
    else c.matrix(s.cols, s.rows, Use::written);
    return c;
}

// The same in place. A factor of -1 is multiplied by, and repeated calls don't change the size of numbers.
Case imatcopy(char type, double alpha, const Shape& s)
{
    Case c = start(type, "imatcopy", 'T', alpha, s);
    c.matrix(s.rows, s.cols, Use::updated).integer(s.cols);
    return c;
}

} // namespace

std::vector<Case> transpose_cases()
{
    std::vector<Case> cases;
    const auto add = [&](Case c) { cases.push_back(std::move(c)); };
    for (const char type : {'s', 'd', 'c', 'z'}) {
        for (const Shape& s : shapes) {
            for (const char trans : {'T', 'N'})
                for (const double alpha : {1.0, 0.5}) add(omatcopy(type, trans, alpha, s));
            if (s.rows == s.cols)
                for (const double alpha : {1.0, -1.0}) add(imatcopy(type, alpha, s));
        }
        add(imatcopy(type, 1, {1000, 3000, " m=1000", true}));
        for (Case c : {omatcopy(type, 'T', 1, {4096, 4096, " threads", false}),
                       imatcopy(type, 1, {4096, 4096, " threads", false})}) {
            c.threads = 2;
            add(std::move(c));
        }
    }
    return cases;
}

} // namespace orv::bench
