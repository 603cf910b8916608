// The grid of sparse kernels: their letters, their arguments, and which of them there are.
//
//   <t><format><base><op><shape><layout>__<form>out_<run>       dcsr0nslnc__mvout_par
//
//   t       s d c z
//   format  csr compressed rows, coo coordinates, dia diagonals, bsr rows of blocks
//   base    what the indices in the matrix count from, with the layout of dense operands: 0 c by rows, 1 f by columns
//   op      n A, t its transpose, c the conjugate of that, s the conjugate of A
//   shape   three letters: the kind (g general, s symmetric, h Hermitian, a anti-symmetric, t triangular, d diagonal),
//           the triangle that is stored (l, u, _ none), the diagonal (n as stored, u ones, _ none)
//   form    mv product with a vector, gemv the same, mm with a dense matrix, sv solve, sm for a dense matrix
//   run     par a part of the work, seq all of it
//
// ORV_SPBLAS_<family>(M) calls M(family, t, format, base, op, shape, layout, form, run) for each member of a family, and
// ORV_SPBLAS_PARAMETERS_<family>(T, Int) are the parameters that its members share.
#pragma once

#define ORV_SPBLAS_NAME(t, format, base, op, shape, layout, form, run)                                                 \
    t##format##base##op##shape##layout##__##form##out_##run

// clang-format off

// ---- Which members a line means: types, operation, kind.
#define ORV_SPBLAS_LINE(M, family, format, form, run, types, op, kind)                                                 \
    ORV_SPBLAS_KIND_##kind(ORV_SPBLAS_TYPES_##types, M, family, format, form, run, op)

#define ORV_SPBLAS_KIND_g(N, ...) N(g__, __VA_ARGS__)
#define ORV_SPBLAS_KIND_s(N, ...) N(sln, __VA_ARGS__) N(slu, __VA_ARGS__) N(sun, __VA_ARGS__) N(suu, __VA_ARGS__)
#define ORV_SPBLAS_KIND_h(N, ...) N(hln, __VA_ARGS__) N(hlu, __VA_ARGS__) N(hun, __VA_ARGS__) N(huu, __VA_ARGS__)
#define ORV_SPBLAS_KIND_t(N, ...) N(tln, __VA_ARGS__) N(tlu, __VA_ARGS__) N(tun, __VA_ARGS__) N(tuu, __VA_ARGS__)
#define ORV_SPBLAS_KIND_a(N, ...) N(al_, __VA_ARGS__) N(au_, __VA_ARGS__)
#define ORV_SPBLAS_KIND_dn(N, ...) N(d_n, __VA_ARGS__)
#define ORV_SPBLAS_KIND_du(N, ...) N(d_u, __VA_ARGS__)
#define ORV_SPBLAS_KIND_sn(N, ...) N(sln, __VA_ARGS__) N(sun, __VA_ARGS__)
#define ORV_SPBLAS_KIND_hln(N, ...) N(hln, __VA_ARGS__)

#define ORV_SPBLAS_TYPES_sdcz(...)                                                                                     \
    ORV_SPBLAS_OF_TYPE(s, __VA_ARGS__) ORV_SPBLAS_OF_TYPE(d, __VA_ARGS__) ORV_SPBLAS_TYPES_cz(__VA_ARGS__)
#define ORV_SPBLAS_TYPES_cz(...) ORV_SPBLAS_OF_TYPE(c, __VA_ARGS__) ORV_SPBLAS_OF_TYPE(z, __VA_ARGS__)
#define ORV_SPBLAS_TYPES_d(...) ORV_SPBLAS_OF_TYPE(d, __VA_ARGS__)
#define ORV_SPBLAS_OF_TYPE(t, shape, M, family, format, form, run, op)                                                 \
    ORV_SPBLAS_BASES_##format(M, family, t, op, shape, form, run)

#define ORV_SPBLAS_BASES_csr(M, family, t, op, shape, form, run)                                                       \
    M(family, t, csr, 0, op, shape, c, form, run) M(family, t, csr, 1, op, shape, f, form, run)
#define ORV_SPBLAS_BASES_coo(M, family, t, op, shape, form, run)                                                       \
    M(family, t, coo, 0, op, shape, c, form, run) M(family, t, coo, 1, op, shape, f, form, run)
#define ORV_SPBLAS_BASES_bsr(M, family, t, op, shape, form, run)                                                       \
    M(family, t, bsr, 0, op, shape, c, form, run) M(family, t, bsr, 1, op, shape, f, form, run)
#define ORV_SPBLAS_BASES_dia(M, family, t, op, shape, form, run) M(family, t, dia, 1, op, shape, f, form, run)

// ---- Compressed rows.
// What conjugates a structured matrix has two letters in use, c and s; both are there, for they are found by name.
#define ORV_SPBLAS_CSR_PRODUCTS(L, ...)                                                                                \
    L(__VA_ARGS__, sdcz, n, g) L(__VA_ARGS__, sdcz, t, g) L(__VA_ARGS__, cz, c, g) L(__VA_ARGS__, cz, s, g)            \
    L(__VA_ARGS__, sdcz, n, s) L(__VA_ARGS__, cz, c, s) L(__VA_ARGS__, cz, s, s)                                       \
    L(__VA_ARGS__, cz, n, h) L(__VA_ARGS__, cz, t, h) L(__VA_ARGS__, cz, s, h) L(__VA_ARGS__, d, n, hln)               \
    L(__VA_ARGS__, sdcz, n, a) L(__VA_ARGS__, cz, c, a) L(__VA_ARGS__, cz, s, a)                                       \
    L(__VA_ARGS__, sdcz, n, t) L(__VA_ARGS__, cz, s, t)
#define ORV_SPBLAS_CSR_DIAGONAL(L, ...)                                                                                \
    L(__VA_ARGS__, sdcz, n, dn) L(__VA_ARGS__, cz, c, dn) L(__VA_ARGS__, cz, s, dn)
#define ORV_SPBLAS_TRANSPOSED(L, ...) L(__VA_ARGS__, sdcz, t, t) L(__VA_ARGS__, cz, c, t)

#define ORV_SPBLAS_csr_mv_par(M) ORV_SPBLAS_CSR_PRODUCTS(ORV_SPBLAS_LINE, M, csr_mv_par, csr, mv, par)
#define ORV_SPBLAS_csr_mm_par(M)                                                                                       \
    ORV_SPBLAS_CSR_PRODUCTS(ORV_SPBLAS_LINE, M, csr_mm_par, csr, mm, par)                                              \
    ORV_SPBLAS_TRANSPOSED(ORV_SPBLAS_LINE, M, csr_mm_par, csr, mm, par)
#define ORV_SPBLAS_csr_mv_seq(M)                                                                                       \
    ORV_SPBLAS_TRANSPOSED(ORV_SPBLAS_LINE, M, csr_mv_seq, csr, mv, seq)                                                \
    ORV_SPBLAS_CSR_DIAGONAL(ORV_SPBLAS_LINE, M, csr_mv_seq, csr, mv, seq)                                              \
    ORV_SPBLAS_LINE(M, csr_mv_seq, csr, mv, seq, sdcz, n, du)
#define ORV_SPBLAS_csr_mm_seq(M)                                                                                       \
    ORV_SPBLAS_CSR_DIAGONAL(ORV_SPBLAS_LINE, M, csr_mm_seq, csr, mm, seq)                                              \
    ORV_SPBLAS_LINE(M, csr_mm_seq, csr, mm, seq, sdcz, n, du)
#define ORV_SPBLAS_CSR_SOLVES(L, ...)                                                                                  \
    L(__VA_ARGS__, sdcz, n, t) L(__VA_ARGS__, cz, s, t) ORV_SPBLAS_TRANSPOSED(L, __VA_ARGS__)                          \
    ORV_SPBLAS_CSR_DIAGONAL(L, __VA_ARGS__)
#define ORV_SPBLAS_csr_sv_seq(M) ORV_SPBLAS_CSR_SOLVES(ORV_SPBLAS_LINE, M, csr_sv_seq, csr, sv, seq)
#define ORV_SPBLAS_csr_sm_par(M) ORV_SPBLAS_CSR_SOLVES(ORV_SPBLAS_LINE, M, csr_sm_par, csr, sm, par)
#define ORV_SPBLAS_csr_gemv_par(M) M(csr_gemv_par, d, csr, 0, n, g__, c, gemv, par)

// ---- Coordinates.
#define ORV_SPBLAS_COO_PRODUCTS(L, ...)                                                                                \
    L(__VA_ARGS__, sdcz, n, g) L(__VA_ARGS__, cz, s, g) L(__VA_ARGS__, sdcz, n, s) L(__VA_ARGS__, cz, s, s)            \
    L(__VA_ARGS__, cz, n, h)                                                                                           \
    L(__VA_ARGS__, sdcz, n, a) L(__VA_ARGS__, cz, s, a) L(__VA_ARGS__, sdcz, n, t) L(__VA_ARGS__, cz, s, t)
#define ORV_SPBLAS_COO_DIAGONAL(L, ...) L(__VA_ARGS__, sdcz, n, dn) L(__VA_ARGS__, cz, s, dn)
#define ORV_SPBLAS_coo_mv_par(M) ORV_SPBLAS_COO_PRODUCTS(ORV_SPBLAS_LINE, M, coo_mv_par, coo, mv, par)
#define ORV_SPBLAS_coo_mm_par(M)                                                                                       \
    ORV_SPBLAS_COO_PRODUCTS(ORV_SPBLAS_LINE, M, coo_mm_par, coo, mm, par)                                              \
    ORV_SPBLAS_COO_DIAGONAL(ORV_SPBLAS_LINE, M, coo_mm_par, coo, mm, par)                                              \
    ORV_SPBLAS_LINE(M, coo_mm_par, coo, mm, par, sdcz, n, du)                                                          \
    M(coo_mm_par, s, coo, 1, n, g__, c, mm, par) M(coo_mm_par, d, coo, 1, n, g__, c, mm, par)                          \
    M(coo_mm_par, c, coo, 1, n, g__, c, mm, par) M(coo_mm_par, z, coo, 1, n, g__, c, mm, par)
#define ORV_SPBLAS_coo_mv_seq(M)                                                                                       \
    ORV_SPBLAS_COO_DIAGONAL(ORV_SPBLAS_LINE, M, coo_mv_seq, coo, mv, seq)                                              \
    ORV_SPBLAS_LINE(M, coo_mv_seq, coo, mv, seq, sdcz, n, du)
#define ORV_SPBLAS_coo_sv_seq(M)                                                                                       \
    ORV_SPBLAS_LINE(M, coo_sv_seq, coo, sv, seq, sdcz, n, t) ORV_SPBLAS_LINE(M, coo_sv_seq, coo, sv, seq, cz, s, t)    \
    ORV_SPBLAS_COO_DIAGONAL(ORV_SPBLAS_LINE, M, coo_sv_seq, coo, sv, seq)
#define ORV_SPBLAS_coo_sm_par(M)                                                                                       \
    ORV_SPBLAS_LINE(M, coo_sm_par, coo, sm, par, sdcz, n, t) ORV_SPBLAS_LINE(M, coo_sm_par, coo, sm, par, sdcz, s, t)  \
    ORV_SPBLAS_COO_DIAGONAL(ORV_SPBLAS_LINE, M, coo_sm_par, coo, sm, par)

// ---- Diagonals. A diagonal matrix is solved without a search: svd.
#define ORV_SPBLAS_DIA_PRODUCTS(L, ...)                                                                                \
    L(__VA_ARGS__, sdcz, n, g) L(__VA_ARGS__, sdcz, t, g) L(__VA_ARGS__, cz, c, g)                                     \
    L(__VA_ARGS__, sdcz, n, s) L(__VA_ARGS__, cz, c, s) L(__VA_ARGS__, cz, n, h) L(__VA_ARGS__, cz, t, h)              \
    L(__VA_ARGS__, sdcz, n, a) L(__VA_ARGS__, sdcz, t, a) L(__VA_ARGS__, cz, c, a)                                     \
    L(__VA_ARGS__, sdcz, n, t) ORV_SPBLAS_TRANSPOSED(L, __VA_ARGS__)                                                   \
    L(__VA_ARGS__, sdcz, n, dn) L(__VA_ARGS__, cz, c, dn)
#define ORV_SPBLAS_dia_mv_par(M) ORV_SPBLAS_DIA_PRODUCTS(ORV_SPBLAS_LINE, M, dia_mv_par, dia, mv, par)
#define ORV_SPBLAS_dia_mm_par(M) ORV_SPBLAS_DIA_PRODUCTS(ORV_SPBLAS_LINE, M, dia_mm_par, dia, mm, par)
#define ORV_SPBLAS_dia_sv_seq(M)                                                                                       \
    ORV_SPBLAS_LINE(M, dia_sv_seq, dia, sv, seq, sdcz, n, t)                                                           \
    ORV_SPBLAS_TRANSPOSED(ORV_SPBLAS_LINE, M, dia_sv_seq, dia, sv, seq)
#define ORV_SPBLAS_dia_sm_par(M)                                                                                       \
    ORV_SPBLAS_LINE(M, dia_sm_par, dia, sm, par, sdcz, n, t)                                                           \
    ORV_SPBLAS_TRANSPOSED(ORV_SPBLAS_LINE, M, dia_sm_par, dia, sm, par)
#define ORV_SPBLAS_dia_svd_seq(M)                                                                                      \
    ORV_SPBLAS_LINE(M, dia_svd_seq, dia, sv, seq, sdcz, n, dn) ORV_SPBLAS_LINE(M, dia_svd_seq, dia, sv, seq, cz, c, dn)
#define ORV_SPBLAS_dia_sm_seq(M)                                                                                       \
    ORV_SPBLAS_LINE(M, dia_sm_seq, dia, sm, seq, sdcz, n, dn) ORV_SPBLAS_LINE(M, dia_sm_seq, dia, sm, seq, cz, c, dn)

// ---- Rows of blocks.
#define ORV_SPBLAS_bsr_mv_par(M) ORV_SPBLAS_LINE(M, bsr_mv_par, bsr, mv, par, sdcz, n, sn)
#define ORV_SPBLAS_bsr_gemv_par(M) ORV_SPBLAS_LINE(M, bsr_gemv_par, bsr, gemv, par, sdcz, n, g)

#define ORV_SPBLAS_ALL(M)                                                                                              \
    ORV_SPBLAS_csr_mv_par(M) ORV_SPBLAS_csr_mm_par(M) ORV_SPBLAS_csr_mv_seq(M) ORV_SPBLAS_csr_mm_seq(M)                \
    ORV_SPBLAS_csr_sv_seq(M) ORV_SPBLAS_csr_sm_par(M) ORV_SPBLAS_csr_gemv_par(M)                                       \
    ORV_SPBLAS_coo_mv_par(M) ORV_SPBLAS_coo_mm_par(M) ORV_SPBLAS_coo_mv_seq(M) ORV_SPBLAS_coo_sv_seq(M)                \
    ORV_SPBLAS_coo_sm_par(M)                                                                                           \
    ORV_SPBLAS_dia_mv_par(M) ORV_SPBLAS_dia_mm_par(M) ORV_SPBLAS_dia_sv_seq(M) ORV_SPBLAS_dia_sm_par(M)                \
    ORV_SPBLAS_dia_svd_seq(M) ORV_SPBLAS_dia_sm_seq(M)                                                                 \
    ORV_SPBLAS_bsr_mv_par(M) ORV_SPBLAS_bsr_gemv_par(M)

// ---- Parameters. m, k: rows and columns of A; nd: columns of a dense operand; mb, kb: block rows and columns; lb: order
// of a block; lval: leading dimension of val; dlast: how many diagonals there are on the side of the triangle; d2: the
// position of the main one, from 1.
#define ORV_SPBLAS_CSR(T, Int) const T *val, const Int *col, const Int *pntrb, const Int *pntre
#define ORV_SPBLAS_COO(T, Int) const T *val, const Int *rowind, const Int *colind, const Int *nnz
#define ORV_SPBLAS_DIA(T, Int) const T *val, const Int *lval, const Int *idiag, const Int *ndiag
#define ORV_SPBLAS_SLICE(Int) const Int *first, const Int *last

#define ORV_SPBLAS_PARAMETERS_csr_mv_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *k, const T *alpha, ORV_SPBLAS_CSR(T, Int), const T *x, T *y,       \
    const T *beta
#define ORV_SPBLAS_PARAMETERS_csr_gemv_par ORV_SPBLAS_PARAMETERS_csr_mv_par
#define ORV_SPBLAS_PARAMETERS_csr_mm_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *nd, const T *alpha, ORV_SPBLAS_CSR(T, Int), const T *x,            \
    const Int *ldx, T *y, const Int *ldy, const T *beta
#define ORV_SPBLAS_PARAMETERS_csr_mv_seq(T, Int)                                                                       \
    const Int *m, const Int *k, const T *alpha, ORV_SPBLAS_CSR(T, Int), const T *x, T *y, const T *beta
#define ORV_SPBLAS_PARAMETERS_csr_mm_seq(T, Int)                                                                       \
    const Int *m, const Int *nd, const T *alpha, ORV_SPBLAS_CSR(T, Int), const T *x, const Int *ldx, T *y,             \
    const Int *ldy, const T *beta
#define ORV_SPBLAS_PARAMETERS_csr_sv_seq(T, Int) const Int *m, const T *alpha, ORV_SPBLAS_CSR(T, Int), T *y
#define ORV_SPBLAS_PARAMETERS_csr_sm_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *nd, const T *alpha, ORV_SPBLAS_CSR(T, Int), T *y, const Int *ldy

#define ORV_SPBLAS_PARAMETERS_coo_mv_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *k, const T *alpha, ORV_SPBLAS_COO(T, Int), const T *x, T *y
#define ORV_SPBLAS_PARAMETERS_coo_mm_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *nd, const T *alpha, ORV_SPBLAS_COO(T, Int), const T *x,            \
    const Int *ldx, T *y, const Int *ldy
#define ORV_SPBLAS_PARAMETERS_coo_mv_seq(T, Int)                                                                       \
    const Int *m, const Int *k, const T *alpha, ORV_SPBLAS_COO(T, Int), const T *x, T *y
#define ORV_SPBLAS_PARAMETERS_coo_sv_seq(T, Int) const Int *m, const T *alpha, ORV_SPBLAS_COO(T, Int), T *y
#define ORV_SPBLAS_PARAMETERS_coo_sm_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *nd, const T *alpha, ORV_SPBLAS_COO(T, Int), T *y, const Int *ldy

#define ORV_SPBLAS_PARAMETERS_dia_mv_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *k, const T *alpha, ORV_SPBLAS_DIA(T, Int), const T *x, T *y
#define ORV_SPBLAS_PARAMETERS_dia_mm_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *nd, const Int *k, const T *alpha, ORV_SPBLAS_DIA(T, Int),          \
    const T *x, const Int *ldx, T *y, const Int *ldy
#define ORV_SPBLAS_PARAMETERS_dia_sv_seq(T, Int)                                                                       \
    const Int *m, const T *alpha, ORV_SPBLAS_DIA(T, Int), T *y, const Int *dlast, const Int *d2
#define ORV_SPBLAS_PARAMETERS_dia_sm_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *nd, const T *alpha, ORV_SPBLAS_DIA(T, Int), T *y, const Int *ldy,  \
    const Int *dlast, const Int *d2
#define ORV_SPBLAS_PARAMETERS_dia_svd_seq(T, Int) const Int *m, const T *alpha, ORV_SPBLAS_DIA(T, Int), T *y
#define ORV_SPBLAS_PARAMETERS_dia_sm_seq(T, Int)                                                                       \
    const Int *m, const Int *nd, const T *alpha, ORV_SPBLAS_DIA(T, Int), T *y, const Int *ldy, const Int *dlast,       \
    const Int *d2

#define ORV_SPBLAS_PARAMETERS_bsr_mv_par(T, Int)                                                                       \
    ORV_SPBLAS_SLICE(Int), const Int *mb, const Int *kb, const Int *lb, const T *alpha, ORV_SPBLAS_CSR(T, Int),        \
    const T *x, T *y, const T *beta
#define ORV_SPBLAS_PARAMETERS_bsr_gemv_par ORV_SPBLAS_PARAMETERS_bsr_mv_par
// clang-format on
