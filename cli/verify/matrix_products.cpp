// Matrices and matrices.
#include "cli/verify/plans.h"

namespace orv::verify {
namespace {

// Three real products in place of four: each sum is the difference of others as large as it may be.
Plan gemm3m(Setting& s)
{
    Plan p = gemm(s);
    p.equations[0].roundings *= 2;
    return p;
}

Plan symmetric(Setting& s, View::Rest rest)
{
    const bool left = s.letter("side") == 'l';
    const i64 m = s.size("m"), n = s.size("n"), order = left ? m : n;
    const Number alpha = s.scalar("alpha");
    View a = s.matrix("a", "lda", order, order);
    a.keep_triangle(s.letter("uplo") == 'u');
    a.rest = rest;
    const View b = s.matrix("b", "ldb", m, n), c = s.matrix("c", "ldc", m, n);
    Equation e{after(c), {}, roundings_of_sum(order)};
    if (left) e.terms.push_back({alpha, op(a), op(b)});
    else e.terms.push_back({alpha, op(b), op(a)});
    add_scaled(s, e.terms, c);
    Plan p{{e}};
    p.work = s.work();
    return p;
}

// C := alpha*A*A' + beta*C, and with a B alpha*A*B' + alpha'*B*A' + beta*C; A and B as op makes them.
Plan update(Setting& s, View::Rest rest)
{
    const char turn = rest == View::Rest::hermitian ? 'c' : 't', trans = s.letter("trans");
    const char first = trans == 'n' ? 'n' : turn, second = trans == 'n' ? turn : 'n';
    const i64 n = s.size("n"), k = s.size("k");
    const Number alpha = s.scalar("alpha");
    const View a = s.matrix_for(first, "a", "lda", n, k), c = s.triangle("c", n, rest);
    Equation e{after(c), {}, roundings_of_sum(k)};
    if (s.has("b")) {
        const View b = s.matrix_for(first, "b", "ldb", n, k);
        e.terms.push_back({alpha, op(a, first), op(b, second)});
        e.terms.push_back({turn == 'c' ? conj(alpha) : alpha, op(b, first), op(a, second)});
        e.roundings *= 2;
    } else e.terms.push_back({alpha, op(a, first), op(a, second)});
    add_scaled(s, e.terms, c);
    return {{e}};
}
Plan syrk(Setting& s) { return update(s, View::Rest::symmetric); }
Plan herk(Setting& s) { return update(s, View::Rest::hermitian); }

struct Triangle {
    bool left;
    i64 m, n;
    Number alpha;
    Operand a;
    View b;
    explicit Triangle(Setting& s)
        : left(s.letter("side") == 'l'), m(s.size("m")), n(s.size("n")), alpha(s.scalar("alpha")),
          a(op(s.triangular("a", left ? m : n), s.letter("trans"))), b(s.matrix("b", "ldb", m, n))
    {
    }
    Term product(Number factor, const Operand& x) const { return left ? Term{factor, a, x} : Term{factor, x, a}; }
    double roundings() const { return roundings_of_sum(a.view.rows); }
};
Plan trmm(Setting& s)
{
    const Triangle t(s);
    return {{{after(t.b), {t.product(t.alpha, op(t.b))}, t.roundings()}}};
}
Plan trsm(Setting& s)
{
    const Triangle t(s);
    return {{{{}, {t.product({1, 0}, after(t.b)), {-t.alpha, op(t.b)}}, t.roundings()}}};
}

const std::vector<const char*> products{"m=1|3|4|5|9|17 n=1|4|5|9 k=0|1|2|8|33",
                                        "m=17 n=9 k=255|256|257|300 lda=310 ldb=311 ldc=20",
                                        "m=13|70 n=7|65 k=31 alpha=1 beta=0|1",
                                        "m=129 n=33 k=65",
                                        "s nt m=220 n=200 k=210 threads=1|all",
                                        "d tn m=170 n=160 k=180 threads=1|all",
                                        "c nc m=140 n=130 k=135 threads=1|all",
                                        "z cn m=110 n=105 k=115 threads=1|all",
                                        "sc tc m=140 n=150 k=145 threads=1|all",
                                        "dz nn m=120 n=125 k=145 threads=1|all",
                                        "times=6 m=33..260 n=33..260 k=9..40 threads=2..8 eager=100000"};
const std::vector<const char*> by_sides{"m=1|3|4|5|8|9|17|33 n=1|2|4|5|9|17",
                                        "m=70 n=9 lda=80 ldb=75 ldc=71 alpha=1 beta=0|1",
                                        "m=9 n=70",
                                        "m=129 n=130",
                                        "m=260 n=17",
                                        "s lu m=210 n=220 threads=1|all",
                                        "d rl m=190 n=180 threads=1|all",
                                        "c ll m=140 n=150 threads=1|all",
                                        "z ru m=120 n=110 threads=1|all",
                                        "times=5 m=33..130 n=33..130 threads=2..8 eager=100000"};
const std::vector<const char*> updates{"n=1|2|3|4|5|8|9|17|33 k=0|1|2|5|9|17",
                                       "n=70 k=300 lda=301 ldc=75",
                                       "n=55|56|130 k=31 alpha=1 beta=0|1",
                                       "n=257 k=9",
                                       "s un n=260 k=280 threads=1|all",
                                       "d ln n=210 k=220 threads=1|all",
                                       "c un n=180 k=190 threads=1|all",
                                       "z ln n=140 k=150 threads=1|all",
                                       "times=24 n=65..300 k=1..9 threads=2..8 eager=100000"};
const std::vector<const char*> triangles{"m=1|2|3|4|5|8|9|16|17|33 n=1|2|4|5|9|17",
                                         "m=70 n=9 lda=80 ldb=75 alpha=1",
                                         "m=9 n=70",
                                         "m=129 n=31",
                                         "m=257 n=9",
                                         "m=9 n=257",
                                         "s lunn m=260 n=280 threads=1|all",
                                         "d rltn m=230 n=210 threads=1|all",
                                         "c llcu m=180 n=190 threads=1|all",
                                         "z runn m=150 n=140 threads=1|all",
                                         "times=5 m=33..130 n=33..130 threads=2..8 eager=100000"};

} // namespace

Plan gemm(Setting& s)
{
    const char ta = s.letter("transa"), tb = s.letter("transb");
    const i64 m = s.size("m"), n = s.size("n"), k = s.size("k");
    const Number alpha = s.scalar("alpha");
    const View a = s.matrix_for(ta, "a", "lda", m, k), b = s.matrix_for(tb, "b", "ldb", k, n),
               c = s.matrix("c", "ldc", m, n);
    if (s.extended() && k == 0) return {{{after(c), {{{1, 0}, op(c)}}}}}; // nothing is done, not even to C
    Equation e{after(c), {{alpha, op(a, ta), op(b, tb)}}, roundings_of_sum(k)};
    add_scaled(s, e.terms, c);
    Plan p{{e}};
    p.work = s.work();
    return p;
}
Plan symm(Setting& s) { return symmetric(s, View::Rest::symmetric); }
Plan hemm(Setting& s) { return symmetric(s, View::Rest::hermitian); }

#define REAL(name) routine<orv_s##name>("s"), routine<orv_d##name>("d")
#define COMPLEX(name) routine<orv_c##name>("c"), routine<orv_z##name>("z")
#define ALL(name) REAL(name), COMPLEX(name)

Group matrix_products()
{
    const char *general = "transa transb m n k alpha a lda b ldb beta c ldc",
               *one = "uplo trans:nt n k alpha a lda beta c ldc",
               *two = "uplo trans:nt n k alpha a lda b ldb beta c ldc",
               *one_h = "uplo trans:nc n k alpha a lda beta c ldc",
               *two_h = "uplo trans:nc n k alpha a lda b ldb beta c ldc",
               *sided = "side uplo m n alpha a lda b ldb beta c ldc",
               *triangular = "side uplo trans diag m n alpha a lda b ldb";
    return {"level3",
            "matrices and matrices",
            {{"gemm", general, gemm, products, {ALL(gemm), routine<orv_scgemm>("sc"), routine<orv_dzgemm>("dz")}},
             {"gemm3m", general, gemm3m, products, {COMPLEX(gemm3m)}},
             {"symm", sided, symm, by_sides, {ALL(symm)}},
             {"hemm", sided, hemm, by_sides, {COMPLEX(hemm)}},
             {"syrk", one, syrk, updates, {ALL(syrk)}},
             {"herk", one_h, herk, updates, {COMPLEX(herk)}},
             {"syr2k", two, syrk, updates, {ALL(syr2k)}},
             {"her2k", two_h, herk, updates, {COMPLEX(her2k)}},
             {"trmm", triangular, trmm, triangles, {ALL(trmm)}},
             {"trsm", triangular, trsm, triangles, {ALL(trsm)}}}};
}

} // namespace orv::verify
