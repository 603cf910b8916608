// Matrices and vectors.
#include "cli/verify/plans.h"

namespace orv::verify {
namespace {

Plan product(Setting& s, const View& a, char trans)
{
    const bool turned = trans == 't' || trans == 'c';
    const i64 length = turned ? a.rows : a.columns;
    const Number alpha = s.scalar("alpha");
    const View x = s.vector("x", length, "incx"), y = s.vector("y", turned ? a.columns : a.rows, "incy");
    Equation e{after(y), {{alpha, op(a, trans), op(x)}}, roundings_of_sum(s.has("tail") ? 2 * length : length)};
    if (length == 0 || y.rows == 0) return {{{after(y), {{{1, 0}, op(y)}}}}}; // nothing is done, not even to y
    if (s.has("tail")) e.terms.push_back({alpha, op(a, trans), op(s.vector("tail", length, "incx"))});
    add_scaled(s, e.terms, y);
    Plan p{{e}};
    p.work = s.work();
    return p;
}

// A := A + alpha*x*y' as a matrix or a triangle of one.
Plan ger(Setting& s, char turn)
{
    const View x = s.vector("x", s.size("m"), "incx"), y = s.vector("y", s.size("n"), "incy");
    const View a = s.matrix("a", "lda", x.rows, y.rows);
    return {{{after(a), {{s.scalar("alpha"), op(x), op(y, turn)}, {{1, 0}, op(a)}}, roundings_of_sum(1)}}};
}
Plan geru(Setting& s) { return ger(s, 't'); }
Plan gerc(Setting& s) { return ger(s, 'c'); }

// alpha*x*x', and with a y alpha*x*y' + alpha'*y*x'.
Plan update(Setting& s, View::Rest rest)
{
    const char turn = rest == View::Rest::hermitian ? 'c' : 't';
    const i64 n = s.size("n");
    const Number alpha = s.scalar("alpha");
    const View x = s.vector("x", n, "incx"), a = s.triangle("a", n, rest);
    Equation e{after(a), {{{1, 0}, op(a)}}, roundings_of_sum(2)};
    if (s.has("y")) {
        const View y = s.vector("y", n, "incy");
        e.terms.push_back({alpha, op(x), op(y, turn)});
        e.terms.push_back({turn == 'c' ? conj(alpha) : alpha, op(y), op(x, turn)});
    } else e.terms.push_back({alpha, op(x), op(x, turn)});
    return {{e}};
}
Plan syr(Setting& s) { return update(s, View::Rest::symmetric); }
Plan her(Setting& s) { return update(s, View::Rest::hermitian); }

const std::vector<const char*> general{"m=0|1|3|4|5|8|9|17|33 n=1|2|4|5|7|8|9|16|31",
                                       "m=7|300 n=5|70 lda=301 incx=-1 incy=2",
                                       "m=7|64 n=130 alpha=1 beta=0|1",
                                       "s n m=1460 n=1450 threads=1|all",
                                       "d t m=1040 n=1030 threads=1|all",
                                       "c c m=1040 n=1030 threads=1|all",
                                       "z n m=740 n=730 threads=1|all",
                                       "times=6 m=65..330 n=65..330 incx=1|-2 incy=1|-1 threads=2..8 eager=100000"};
const std::vector<const char*> general_updates{
    "m=0|1|3|4|5|8|9|17|33 n=1|2|4|5|7|8|9|16|31",
    "m=7|300 n=5|70 lda=301 incx=-1 incy=2",
    "s m=1460 n=1450 threads=1|all",
    "d m=1040 n=1030 threads=1|all",
    "c m=1040 n=1030 threads=1|all",
    "z m=740 n=730 threads=1|all",
    "times=6 m=65..330 n=65..330 incx=1|-2 incy=1|-1 threads=2..8 eager=100000"};
const std::vector<const char*> banded{"m=1|5|9|33 n=1|4|9|32 kl=0|1|3 ku=0|2",
                                      "m=70 n=65 kl=40 ku=7 lda=50 incx=-1 incy=2 beta=0|1"};
const std::vector<const char*> halves{"n=0|1|2|3|4|5|7|8|9|15|16|17|31|32|33|63|64|65|100",
                                      "n=9|130 incx=-1 incy=2 alpha=1 beta=0|1"};
const std::vector<const char*> updates{"n=0|1|2|3|4|5|7|8|9|15|16|17|31|32|33|63|64|65|100", "n=9|130 incx=-1 alpha=1"};
const std::vector<const char*> bands{"n=0|1|2|3|4|5|9|17|33|65 k=0|1|2|7", "n=130 k=40 lda=50 incx=-1"};
const std::vector<const char*> triangles{"n=0|1|2|3|4|5|7|8|9|15|16|17|31|32|33|63|64|65|100|129", "n=9|130 incx=-2"};

// A real matrix, and all else complex.
template <class R, class T = std::complex<R>>
using MixedGemv = void(const char*, const i64*, const i64*, const T*, const R*, const i64*, const T*, const i64*,
                       const T*, T*, const i64*);

std::vector<const char*> and_also(std::vector<const char*> sweeps, std::initializer_list<const char*> more)
{
    sweeps.insert(sweeps.end(), more);
    return sweeps;
}

} // namespace

Plan gemv(Setting& s)
{
    const char trans = s.letter("trans");
    const i64 m = s.size("m"), n = s.size("n");
    if (s.has("tail")) s.leading("lda", std::max<i64>({m, n, 1})); // it asks for this in either order
    return product(s, s.matrix("a", "lda", m, n), trans);
}
Plan gbmv(Setting& s)
{
    const char trans = s.letter("trans");
    const i64 m = s.size("m"), n = s.size("n"),
              below = s.extra("kl", std::min<i64>(1, s.diagonals(m)), 0, s.diagonals(m)),
              above = s.extra("ku", std::min<i64>(2, s.diagonals(n)), 0, s.diagonals(n));
    return product(s, s.band("a", m, n, below, above), trans);
}
Plan symv(Setting& s) { return product(s, s.triangle("a", s.size("n"), View::Rest::symmetric), 'n'); }
Plan hemv(Setting& s) { return product(s, s.triangle("a", s.size("n"), View::Rest::hermitian), 'n'); }

Plan trmv(Setting& s)
{
    const i64 n = s.size("n");
    const Number alpha = s.scalar("alpha");
    const View a = s.triangular("a", n), x = s.vector("x", n, "incx");
    Plan p{{{after(x), {{alpha, op(a, s.letter("trans")), op(x)}}, roundings_of_sum(n)}}};
    p.work = s.work();
    return p;
}
Plan trsv(Setting& s)
{
    const i64 n = s.size("n");
    const Number alpha = s.scalar("alpha");
    const View a = s.triangular("a", n), x = s.vector("x", n, "incx");
    Plan p{{{{}, {{{1, 0}, op(a, s.letter("trans")), after(x)}, {-alpha, op(x)}}, roundings_of_sum(n)}}};
    p.work = s.work();
    return p;
}

#define REAL(name) routine<orv_s##name>("s"), routine<orv_d##name>("d")
#define COMPLEX(name) routine<orv_c##name>("c"), routine<orv_z##name>("z")
#define ALL(name) REAL(name), COMPLEX(name)

Group matrix_vectors()
{
    const char* const drawn = "times=8 n=65..330 incx=1|-2 threads=2..8 eager=100000";
    const auto shared = and_also(halves, {"s n=2060 threads=1|all", "d n=1460 threads=1|all", "c n=1460 threads=1|all",
                                          "z n=1030 threads=1|all", drawn});
    return {"level2",
            "matrices and vectors",
            {{"gemv",
              "trans m n alpha a lda x incx beta y incy",
              gemv,
              general,
              {ALL(gemv), kernel<MixedGemv<float>>("sc", "blas", "scgemv"),
               kernel<MixedGemv<double>>("dz", "blas", "dzgemv")}},
             {"gbmv", "trans m n kl ku alpha a lda x incx beta y incy", gbmv, banded, {ALL(gbmv)}},
             {"ger", "m n alpha x incx y incy a lda", geru, general_updates, {REAL(ger)}},
             {"geru", "m n alpha x incx y incy a lda", geru, general_updates, {COMPLEX(geru)}},
             {"gerc", "m n alpha x incx y incy a lda", gerc, general_updates, {COMPLEX(gerc)}},
             {"symv", "uplo n alpha a lda x incx beta y incy", symv, shared, {REAL(symv)}},
             {"hemv", "uplo n alpha a lda x incx beta y incy", hemv, shared, {COMPLEX(hemv)}},
             {"sbmv", "uplo n k alpha a lda x incx beta y incy", symv, bands, {REAL(sbmv)}},
             {"hbmv", "uplo n k alpha a lda x incx beta y incy", hemv, bands, {COMPLEX(hbmv)}},
             {"spmv", "uplo n alpha a x incx beta y incy", symv, halves, {REAL(spmv)}},
             {"hpmv", "uplo n alpha a x incx beta y incy", hemv, halves, {COMPLEX(hpmv)}},
             {"syr",
              "uplo n alpha x incx a lda",
              syr,
              and_also(updates, {"s n=2060 threads=1|all", "d n=1460 threads=1|all", drawn}),
              {REAL(syr)}},
             {"her", "uplo n alpha x incx a lda", her, updates, {COMPLEX(her)}},
             {"spr", "uplo n alpha x incx a", syr, updates, {REAL(spr)}},
             {"hpr", "uplo n alpha x incx a", her, updates, {COMPLEX(hpr)}},
             {"syr2", "uplo n alpha x incx y incy a lda", syr, and_also(updates, {drawn}), {REAL(syr2)}},
             {"her2", "uplo n alpha x incx y incy a lda", her, updates, {COMPLEX(her2)}},
             {"spr2", "uplo n alpha x incx y incy a", syr, updates, {REAL(spr2)}},
             {"hpr2", "uplo n alpha x incx y incy a", her, updates, {COMPLEX(hpr2)}},
             {"trmv", "uplo trans diag n a lda x incx", trmv, triangles, {ALL(trmv)}},
             {"trsv", "uplo trans diag n a lda x incx", trsv, triangles, {ALL(trsv)}},
             {"tbmv", "uplo trans diag n k a lda x incx", trmv, bands, {ALL(tbmv)}},
             {"tbsv", "uplo trans diag n k a lda x incx", trsv, bands, {ALL(tbsv)}},
             {"tpmv", "uplo trans diag n a x incx", trmv, triangles, {ALL(tpmv)}},
             {"tpsv", "uplo trans diag n a x incx", trsv, triangles, {ALL(tpsv)}}}};
}

} // namespace orv::verify
