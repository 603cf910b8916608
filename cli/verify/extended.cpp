// Extended and mixed precision: all members of each family, from the lists of <orv/xblas.h>.
#include "cli/verify/plans.h"

#include <cstring>
#include <memory>

namespace orv::verify {
namespace {

Plan in_precision(Setting& s, std::vector<Equation> equations)
{
    Plan p{std::move(equations)};
    p.work = s.work();
    return p;
}

// Where alpha is 0, what these leave is one product, beta*y, in the arithmetic of y: nothing is summed that the extra
// precision could serve.
template <Plan (&plan)(Setting&)> Plan plain_without_alpha(Setting& s)
{
    Plan p = plan(s);
    if (s.scalar("alpha") == Number{0, 0}) p.work = 0;
    return p;
}

// A band without neighbours is a division, which is made in double in place of extra precision.
Plan tbsv(Setting& s)
{
    Plan p = trsv(s);
    if (p.work == 'x' && s.size("k") == 0) p.work = 'd';
    return p;
}

Plan dot(Setting& s)
{
    const i64 n = s.size("n");
    const View x = s.vector("x", n, "incx"), y = s.vector("y", n, "incy"), r = s.element("r");
    const Operand left = op(x, s.letter("conj") == 'c' ? 'c' : 't');
    return in_precision(
        s, {{after(r), {{s.scalar("alpha"), left, op(y)}, {s.scalar("beta"), op(r)}}, roundings_of_sum(n)}});
}
Plan sum(Setting& s)
{
    const View x = s.vector("x", s.size("n"), "incx");
    Plan p = in_precision(s, {{after(s.element("r")), {{{1, 0}, ones(1, x.rows), op(x)}}, roundings_of_sum(x.rows)}});
    if (p.work == 0) p.work = 'd';
    return p;
}
Plan axpby(Setting& s)
{
    const i64 n = s.size("n");
    const Number alpha = s.scalar("alpha"), beta = s.scalar("beta");
    const View x = s.vector("x", n, "incx"), y = s.vector("y", n, "incy");
    const View out = s.has("w") ? s.vector("w", n, "incw") : y;
    return in_precision(s, {{after(out), {{alpha, op(x)}, {beta, op(y)}}, roundings_of_sum(1)}});
}
Plan ge_sum_mv(Setting& s)
{
    const i64 m = s.size("m"), n = s.size("n");
    const Number alpha = s.scalar("alpha"), beta = s.scalar("beta");
    const View a = s.matrix("a", "lda", m, n), b = s.matrix("b", "ldb", m, n), x = s.vector("x", n, "incx");
    return in_precision(
        s, {{after(s.vector("y", m, "incy")), {{alpha, op(a), op(x)}, {beta, op(b), op(x)}}, roundings_of_sum(2 * n)}});
}

// "z_d_z_x" of "zgemv_d_z_x": what is left of a member's name without the operation.
const char* type_of(const char* member, const char* operation)
{
    static std::vector<std::unique_ptr<std::string>> names; // they live as long as the tables
    return names
        .emplace_back(std::make_unique<std::string>(member[0] + std::string(member + 1 + std::strlen(operation))))
        ->c_str();
}

#define MEMBER(op, t, ab, a, b, x, more) routine<orv_xblas_##t##op##ab##x>(type_of(#t #op #ab #x, operation)),
#define MEMBERS(op)                                                                                                    \
    [](const char* operation) -> std::vector<Routine> { return {ORV_XBLAS_MEMBERS_##op(MEMBER, op, )}; }(#op)

} // namespace

Group extended()
{
    const std::vector<const char*> vectors{"n=0|1|2|3|4|5|9|33 prec=all", "n=7 incx=-1 incy=2"};
    const std::vector<const char*> general{"m=1|5|8 n=1|4|9 prec=all", "m=31 n=17 incx=-1 incy=2"};
    const std::vector<const char*> bands{"n=1|2 k=0 prec=all", "n=5|9 k=0|1|3 prec=all",
                                         "n=33 k=5 lda=7 incx=-1 incy=2"};
    const std::vector<const char*> general_bands{"m=1|5|8 n=1|4|9 kl=0 ku=0 prec=all",
                                                 "m=5|8 n=4|9 kl=1|3 ku=2 prec=all",
                                                 "m=31 n=17 kl=4 ku=7 lda=13 incx=-1 incy=2"};
    const std::vector<const char*> halves{"n=1|2|3|5|9 prec=all", "n=33 incx=-1 incy=2"};
    const std::vector<const char*> triangles{"n=1|2|3|5|9 prec=all", "n=33 incx=-1"};
    const std::vector<const char*> band_triangles{"n=1|2 k=0 prec=all", "n=5|9 k=0|1|3 prec=all",
                                                  "n=33 k=5 lda=7 incx=-1"};
    const std::vector<const char*> sides{"m=1|3|5 n=1|4 prec=all"};
    const std::vector<const char*> products{"m=1|3|5 n=1|4 k=1|2|9 prec=all"};
    const char *full = "order uplo n alpha a lda x incx beta y incy",
               *full2 = "order uplo n alpha a lda x tail incx beta y incy",
               *band = "order uplo n k alpha a lda x incx beta y incy",
               *packed = "order uplo n alpha a x incx beta y incy",
               *sided = "order side uplo m n alpha a lda b ldb beta c ldc",
               *triangle = "order uplo trans diag n alpha a lda x incx";
    return {
        "xblas",
        "extended and mixed precision",
        {{"xblas_dot", "conj n alpha x incx beta y incy r", dot, vectors, MEMBERS(dot)},
         {"xblas_sum", "n x incx r", sum, {"n=0|1|2|3|4|5|9|33 prec=all", "n=7 incx=-1"}, MEMBERS(sum)},
         {"xblas_axpby", "n alpha x incx beta y incy", axpby, vectors, MEMBERS(axpby)},
         {"xblas_waxpby", "n alpha x incx beta y incy w incw", axpby, vectors, MEMBERS(waxpby)},
         {"xblas_gemv", "order trans m n alpha a lda x incx beta y incy", plain_without_alpha<gemv>, general,
          MEMBERS(gemv)},
         {"xblas_gemv2", "order trans m n alpha a lda x tail incx beta y incy", plain_without_alpha<gemv>, general,
          MEMBERS(gemv2)},
         {"xblas_gbmv", "order trans m n kl ku alpha a lda x incx beta y incy", gbmv, general_bands, MEMBERS(gbmv)},
         {"xblas_gbmv2", "order trans m n kl ku alpha a lda x tail incx beta y incy", gbmv, general_bands,
          MEMBERS(gbmv2)},
         {"xblas_symv", full, plain_without_alpha<symv>, halves, MEMBERS(symv)},
         {"xblas_hemv", full, hemv, halves, MEMBERS(hemv)},
         {"xblas_symv2", full2, plain_without_alpha<symv>, halves, MEMBERS(symv2)},
         {"xblas_hemv2", full2, hemv, halves, MEMBERS(hemv2)},
         {"xblas_sbmv", band, plain_without_alpha<symv>, bands, MEMBERS(sbmv)},
         {"xblas_hbmv", band, plain_without_alpha<hemv>, bands, MEMBERS(hbmv)},
         {"xblas_spmv", packed, plain_without_alpha<symv>, halves, MEMBERS(spmv)},
         {"xblas_hpmv", packed, plain_without_alpha<hemv>, halves, MEMBERS(hpmv)},
         {"xblas_ge_sum_mv", "order m n alpha a lda x incx beta b ldb y incy", ge_sum_mv, general, MEMBERS(ge_sum_mv)},
         {"xblas_trmv", triangle, trmv, triangles, MEMBERS(trmv)},
         {"xblas_tpmv", "order uplo trans diag n alpha a x incx", trmv, triangles, MEMBERS(tpmv)},
         {"xblas_trsv", triangle, trsv, triangles, MEMBERS(trsv)},
         {"xblas_tbsv", "order uplo trans diag n k alpha a lda x incx", tbsv, band_triangles, MEMBERS(tbsv)},
         {"xblas_gemm", "order transa transb m n k alpha a lda b ldb beta c ldc", plain_without_alpha<gemm>, products,
          MEMBERS(gemm)},
         {"xblas_symm", sided, plain_without_alpha<symm>, sides, MEMBERS(symm)},
         {"xblas_hemm", sided, plain_without_alpha<hemm>, sides, MEMBERS(hemm)}}};
}

} // namespace orv::verify
