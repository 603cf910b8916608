// Copies, transpositions and sums of matrices.
#include "cli/verify/setting.h"

namespace orv::verify {
namespace {

// op turns rows by columns into this shape.
struct Shape {
    i64 rows, columns;
    Shape(char op, i64 rows, i64 columns) : rows(rows), columns(columns)
    {
        if (op == 't' || op == 'c') std::swap(this->rows, this->columns);
    }
};
// A product with alpha, at most; a move is exact.
double roundings(Number alpha) { return alpha == Number{1, 0} ? 0 : 4; }

Plan omatcopy(Setting& s)
{
    const char trans = s.letter("trans");
    const i64 rows = s.size("rows"), cols = s.size("cols");
    const Shape shape(trans, rows, cols);
    const bool gaps = s.has("stridea");
    const Number alpha = s.scalar("alpha");
    const i64 gap_a = gaps ? s.extra("stridea", 1, 1, 1000) : 1, gap_b = gaps ? s.extra("strideb", 1, 1, 1000) : 1;
    const View a = s.matrix("a", "lda", rows, cols, gap_a);
    const View b = s.matrix("b", "ldb", shape.rows, shape.columns, gap_b);
    return {{{after(b), {{alpha, op(a, trans)}}, roundings(alpha)}}};
}
Plan imatcopy(Setting& s)
{
    const char trans = s.letter("trans");
    const i64 rows = s.size("rows"), cols = s.size("cols");
    const Shape shape(trans, rows, cols);
    const Number alpha = s.scalar("alpha");
    const View before = s.matrix("ab", "lda", rows, cols), now = s.matrix("ab", "ldb", shape.rows, shape.columns);
    return {{{after(now), {{alpha, op(before, trans)}}, roundings(alpha)}}};
}
Plan omatadd(Setting& s)
{
    const char ta = s.letter("transa"), tb = s.letter("transb");
    const i64 rows = s.size("rows"), cols = s.size("cols");
    const Number alpha = s.scalar("alpha"), beta = s.scalar("beta");
    const View a = s.matrix_for(ta, "a", "lda", rows, cols), b = s.matrix_for(tb, "b", "ldb", rows, cols);
    return {{{after(s.matrix("c", "ldc", rows, cols)), {{alpha, op(a, ta)}, {beta, op(b, tb)}}, 8}}};
}

const std::vector<const char*> moves{"rows=1|2|3|4|5|8|9|16|17|33 cols=1|2|4|5|7|9|17|64",
                                     "rows=70 cols=31 lda=75 ldb=76", "rows=9|64 cols=9|64|100 alpha=1"};

std::vector<const char*> and_also(std::vector<const char*> sweeps, std::initializer_list<const char*> more)
{
    sweeps.insert(sweeps.end(), more);
    return sweeps;
}

} // namespace

#define ALL(name)                                                                                                      \
    routine<orv_s##name>("s"), routine<orv_d##name>("d"), routine<orv_c##name>("c"), routine<orv_z##name>("z")

Group transpositions()
{
    const char* const drawn = "times=12 rows=17..300 cols=17..300 alpha=1|0.5 threads=2..8 eager=100000";
    return {"trans",
            "copies and transpositions",
            {{"omatcopy",
              "ordering trans:ntrc rows cols alpha a lda b ldb",
              omatcopy,
              and_also(moves, {"s ct rows=740 cols=730 threads=1|all", "d rt rows=530 cols=520 threads=1|all",
                               "c cc rows=530 cols=520 threads=1|all", "z rn rows=370 cols=380 threads=1|all", drawn}),
              {ALL(omatcopy)}},
             {"omatcopy2",
              "ordering trans:ntrc rows cols alpha a lda stridea b ldb strideb",
              omatcopy,
              {"rows=1|4|5|17|33 cols=1|3|4|9|64 stridea=1|2 strideb=1|3", drawn},
              {ALL(omatcopy2)}},
             {"omatadd",
              "ordering transa:ntrc transb:ntrc rows cols alpha a lda beta b ldb c ldc",
              omatadd,
              {"rows=1|4|9|33 cols=1|5|8|31", "rows=70 cols=31 lda=75 ldb=76 ldc=77 alpha=1 beta=1"},
              {ALL(omatadd)}},
             {"imatcopy",
              "ordering trans:ntrc rows cols alpha ab lda ldb",
              imatcopy,
              and_also(moves, {"s ct rows=740 cols=740|730 threads=1|all", "d rt rows=530 cols=530|520 threads=1|all",
                               "c cc rows=530 cols=530|520 threads=1|all", "z rt rows=380 cols=370|380 threads=1|all",
                               drawn, "times=12 rows=80|129|257 cols=80|129|257 threads=3..8 eager=100000"}),
              {ALL(imatcopy)}}}};
}

} // namespace orv::verify
