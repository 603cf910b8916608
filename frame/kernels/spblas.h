// The sparse kernels, twice: module spblas with integers of 64 bits, spblas_lp64 with 32. Scalars too are passed by
// address. The grid of names is in frame/kernels/spblas_members.h, the routines beside it in frame/kernels/spblas.def.
//
// first, last: the part of the work that a call does, both counted from 1 and both in it. Of compressed rows they are
// rows, of coordinates entries, of diagonals columns of the dense operand; so they are in every solve for many columns.
#pragma once

#include "frame/grid.h"
#include "frame/kernels/prototype.h"
#include "frame/kernels/spblas_members.h"

namespace orv::kernels::sparse {

// The types of the names.
using type_s = float;
using type_d = double;
using type_c = cpx<float>;
using type_z = cpx<double>;

// The families of the grid.
#define ORV_SPBLAS_SIGNATURE(family)                                                                                   \
    template <class T, class Int> using family = void(ORV_SPBLAS_PARAMETERS_##family(T, Int));
ORV_SPBLAS_SIGNATURE(csr_mv_par)
ORV_SPBLAS_SIGNATURE(csr_gemv_par)
ORV_SPBLAS_SIGNATURE(csr_mm_par)
ORV_SPBLAS_SIGNATURE(csr_mv_seq)
ORV_SPBLAS_SIGNATURE(csr_mm_seq)
ORV_SPBLAS_SIGNATURE(csr_sv_seq)
ORV_SPBLAS_SIGNATURE(csr_sm_par)
ORV_SPBLAS_SIGNATURE(coo_mv_par)
ORV_SPBLAS_SIGNATURE(coo_mm_par)
ORV_SPBLAS_SIGNATURE(coo_mv_seq)
ORV_SPBLAS_SIGNATURE(coo_sv_seq)
ORV_SPBLAS_SIGNATURE(coo_sm_par)
ORV_SPBLAS_SIGNATURE(dia_mv_par)
ORV_SPBLAS_SIGNATURE(dia_mm_par)
ORV_SPBLAS_SIGNATURE(dia_sv_seq)
ORV_SPBLAS_SIGNATURE(dia_sm_par)
ORV_SPBLAS_SIGNATURE(dia_svd_seq)
ORV_SPBLAS_SIGNATURE(dia_sm_seq)
ORV_SPBLAS_SIGNATURE(bsr_mv_par)
ORV_SPBLAS_SIGNATURE(bsr_gemv_par)
#undef ORV_SPBLAS_SIGNATURE

// Scalars, vectors, and what is left of a product when its parts are done.
template <class T, class Int> using Zerocheck = void(const T* value, Int* flag);
template <class T, class Int> using Change = void(T* value);
template <class T, class Int> using Zeros = void(T* array, const Int* n);
template <class T, class Int>
using SplitPar = void(const Int* first, const Int* last, const Int* parts, const Int* stride, const T* work, T* y);
template <class T, class Int>
using SplitSym = void(const Int* length, const Int* n, const Int* first, const Int* m, const Int* offsets, T* y);

// Positions in lists of diagonals and of coordinates.
template <class Int>
using FindDiag = void(const Int* array, const Int* n, Int* d0, Int* dlast, Int* d1, Int* d2, Int* flag);
template <class Int>
using FillRows = void(const Int* m, const Int* rowind, const Int* colind, const Int* nnz, Int* diag, Int* count,
                      Int* list, Int* flag);

template <class Int>
using CsrSymmvs = void(const Int* m, const double* val, const Int* col, const Int* ia, const double* x, double* y);

// Rows of blocks.
#define ORV_SPBLAS_BSR_DENSE(T, Int)                                                                                   \
    const Int *mb, const Int *nd, const Int *lb, const T *alpha, ORV_SPBLAS_CSR(T, Int), const T *b, const Int *ldb,   \
        T *c, const Int *ldc
template <class T, class Int> using BsrmmGen = void(const Int* op, ORV_SPBLAS_BSR_DENSE(T, Int));
template <class T, class Int> using BsrmmSym = void(const Int* uplo, const Int* nonunit, ORV_SPBLAS_BSR_DENSE(T, Int));
template <class T, class Int>
using BsrmmTr = void(const Int* op, const Int* uplo, const Int* nonunit, ORV_SPBLAS_BSR_DENSE(T, Int));
template <class T, class Int> using BsrmmSkew = void(const Int* op, const Int* uplo, ORV_SPBLAS_BSR_DENSE(T, Int));
template <class T, class Int> using BsrmmDiag = void(const Int* op, const Int* nonunit, ORV_SPBLAS_BSR_DENSE(T, Int));
#undef ORV_SPBLAS_BSR_DENSE
template <class T, class Int>
using Bsrbv = void(const Int* lb, const Int* frow, const Int* fcol, const T* block, const T* x, T* y);
template <class T, class Int>
using BsrGauss = void(const Int* op, const Int* uplo, const Int* lb, const Int* mb, const Int* nd,
                      ORV_SPBLAS_CSR(T, Int), T* c, const Int* ldc);
template <class T, class Int>
using BsrInvdiag = void(const Int* mb, const Int* flag, const Int* lb, T* val, const Int* col, const Int* pntrb,
                        const Int* pntre);
using Lb2Gemv = bsr_gemv_par<double, i32>;
using Lb2Mm = void(const i32* first, const i32* last, const i32* mb, const i32* nd, const i32* lb, const double* alpha,
                   ORV_SPBLAS_CSR(double, i32), const double* x, const i32* ldx, double* y, const i32* ldy,
                   const double* beta);

// Skylines.
#define ORV_SPBLAS_SKY_DENSE(T, Int)                                                                                   \
    ORV_SPBLAS_SLICE(Int), const Int *m, const Int *nd, const Int *uplo, const Int *nonunit, const T *alpha,           \
        const T *val, const Int *pntr, const T *b, const Int *ldb, T *c, const Int *ldc
template <class T, class Int> using Skymm = void(const Int* op, ORV_SPBLAS_SKY_DENSE(T, Int));
template <class T, class Int> using SkymmSym = void(ORV_SPBLAS_SKY_DENSE(T, Int));
#undef ORV_SPBLAS_SKY_DENSE
template <class T, class Int>
using Skysv = void(const Int* op, const Int* uplo, const Int* nonunit, const Int* n, const T* val, const Int* pntr,
                   T* y);

// Formats into each other, in the direction that job[0] says; info receives 0 or why nothing came of it.
#define ORV_SPBLAS_CONVERSION(T, Int) const Int *job, const Int *m, T *acsr, Int *ja, Int *ia
template <class T, class Int>
using CsrCoo = void(ORV_SPBLAS_CONVERSION(T, Int), Int* nnz, T* acoo, Int* rowind, Int* colind, Int* info);
template <class T, class Int>
using CsrCsc = void(ORV_SPBLAS_CONVERSION(T, Int), T* acsc, Int* ja1, Int* ia1, Int* info);
template <class T, class Int>
using CsrBsr = void(const Int* job, const Int* m, const Int* mblk, const Int* ldabsr, T* acsr, Int* ja, Int* ia,
                    T* absr, Int* jab, Int* iab, Int* info);
template <class T, class Int>
using CsrDia = void(ORV_SPBLAS_CONVERSION(T, Int), T* adia, const Int* ndiag, Int* distance, Int* idiag, T* acsr_rem,
                    Int* ja_rem, Int* ia_rem, Int* info);
template <class T, class Int> using CsrSky = void(ORV_SPBLAS_CONVERSION(T, Int), T* asky, Int* pointers, Int* info);
#undef ORV_SPBLAS_CONVERSION
template <class T, class Int>
using DnsCsr = void(const Int* job, const Int* m, const Int* n, T* adns, const Int* lda, T* acsr, Int* ja, Int* ia,
                    Int* info);
template <class T, class Int> using SortRow = void(ORV_SPBLAS_SLICE(Int), const Int* ia, Int* ja, T* a);

// Sums and products of compressed rows.
template <class T, class Int>
using CsrAdd = void(ORV_SPBLAS_SLICE(Int), const Int* sort, const Int* m, const Int* n, T* a, Int* ja, const Int* ia,
                    const T* beta, T* b, Int* jb, const Int* ib, T* c, Int* jc, Int* ic, const Int* nzmax, Int* info);
template <class, class Int> // of all types
using CsrAddPlaces = void(ORV_SPBLAS_SLICE(Int), const Int* m, const Int* n, const Int* ja, const Int* ia,
                          const Int* jb, const Int* ib, Int* ic);
#define ORV_SPBLAS_FACTORS(T, Int)                                                                                     \
    const T *a, const Int *ja, const Int *ia, const T *b, const Int *jb, const Int *ib, T *c, Int *jc, Int *ic,        \
        const Int *nzmax
template <class T, class Int>
using CsrProduct = void(ORV_SPBLAS_SLICE(Int), const Int* m, const Int* n, const Int* request, const Int* start,
                        ORV_SPBLAS_FACTORS(T, Int), Int* work, Int* info);
template <class, class Int> // of all types
using CsrProductCounts = void(const Int* m, const Int* n, ORV_SPBLAS_SLICE(Int), const Int* ja, const Int* ia,
                              const Int* jb, const Int* ib, Int* ic);
template <class T, class Int>
using CsrProductTransposed = void(const Int* request, const Int* m, const Int* n, const Int* k, const Int* block,
                                  ORV_SPBLAS_FACTORS(T, Int), Int* info);
#undef ORV_SPBLAS_FACTORS
template <class T, class Int>
using CsrProductDense = void(const Int* op, ORV_SPBLAS_SLICE(Int), const Int* n, const T* a, const Int* ja,
                             const Int* ia, const T* b, const Int* jb, const Int* ib, T* c, const Int* ldc);
template <class T, class Int>
using Matcopy = void(const Int* m, const Int* n, const T* a, const Int* lda, T* b, const Int* ldb, const T* alpha);

// Incomplete factors by columns, and the memory of who makes them.
template <class Int>
using FactorSolve = void(const Int* n, const double* a, const Int* ja, const Int* ia, const double* d, double* x);
template <class Int>
using FlaggedFactorSolve = void(const Int* n, const double* a, const Int* ja, const Int* ia, const i32* flags,
                                const double* d, double* y, const Int* request);
using TakeMemory = void*(i64 bytes);
using GiveMemory = void(void* block);

} // namespace orv::kernels::sparse

#define ORV_SPBLAS_SDCZ(before, after, F)                                                                              \
    ORV_NAME(before##s##after, F<type_s, Int>)                                                                         \
    ORV_NAME(before##d##after, F<type_d, Int>)                                                                         \
    ORV_NAME(before##c##after, F<type_c, Int>)                                                                         \
    ORV_NAME(before##z##after, F<type_z, Int>)

#ifdef ORV_SPBLAS // a kernel's file, compiled for one of the modules

#define SPBLAS(name) ORV_KERNEL(ORV_SPBLAS, name)
#define ORV_SPBLAS_INTEGER(module) ORV_JOIN(ORV_SPBLAS_INTEGER_, module)
#define ORV_SPBLAS_INTEGER_spblas i64
#define ORV_SPBLAS_INTEGER_spblas_lp64 i32

// All that is not exported is in a namespace of the module: so the two modules of one library never share a function.
namespace orv::ORV_SPBLAS {
using namespace kernels::sparse;
using Int = ORV_SPBLAS_INTEGER(ORV_SPBLAS);
#define ORV_NAME(name, ...) ORV_PROTOTYPE(ORV_SPBLAS, name, name, __VA_ARGS__)
#include "frame/kernels/spblas.def"
#undef ORV_NAME
} // namespace orv::ORV_SPBLAS

#else

#define ORV_SPBLAS_PROTOTYPE(family, t, ...) ORV_NAME(ORV_SPBLAS_NAME(t, __VA_ARGS__), family<type_##t, Int>)

namespace orv::kernels::spblas {
using namespace sparse;
using Int = i64;
#define ORV_NAME(name, ...) ORV_PROTOTYPE(spblas, name, name, __VA_ARGS__)
#include "frame/kernels/spblas.def"
ORV_SPBLAS_ALL(ORV_SPBLAS_PROTOTYPE)
#undef ORV_NAME
} // namespace orv::kernels::spblas

namespace orv::kernels::spblas_lp64 {
using namespace sparse;
using Int = i32;
#define ORV_NAME(name, ...) ORV_PROTOTYPE(spblas_lp64, name, name, __VA_ARGS__)
#include "frame/kernels/spblas.def"
ORV_SPBLAS_ALL(ORV_SPBLAS_PROTOTYPE)
#undef ORV_NAME
} // namespace orv::kernels::spblas_lp64

#endif
