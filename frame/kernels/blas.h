// The dense kernels.
#pragma once

#include "frame/kernels/prototype.h"

#define BLAS(name) ORV_KERNEL(blas, name)

namespace orv::gemm { // records that the parts of the product hand each other
template <class T> struct Desc;
struct Patch;
} // namespace orv::gemm

namespace orv::level3 {
template <class T> struct Level;
}

namespace orv::kernels::blas {

// ---- Vectors

template <class T> using Axpy = void(const i64* n, const T* alpha, const T* x, const i64* incx, T* y, const i64* incy);
template <class T>
using Axpby = void(const i64* n, const T* alpha, const T* x, const i64* incx, const T* beta, T* y, const i64* incy);
template <class T> using Copy = void(const i64* n, const T* x, const i64* incx, T* y, const i64* incy);
template <class T> using Swap = void(const i64* n, T* x, const i64* incx, T* y, const i64* incy);
template <class T> using Scal = void(const i64* n, const T* alpha, T* x, const i64* incx);
template <class T> using RealScal = void(const i64* n, const real_t<T>* alpha, T* x, const i64* incx);
template <class T> using Dot = T(const i64* n, const T* x, const i64* incx, const T* y, const i64* incy);
template <class T>
using ComplexDot = void(T* result, const i64* n, const T* x, const i64* incx, const T* y, const i64* incy);
using Sdsdot = float(const i64* n, const float* sb, const float* x, const i64* incx, const float* y, const i64* incy);
using Dsdot = double(const i64* n, const float* x, const i64* incx, const float* y, const i64* incy);
template <class T> using Norm = real_t<T>(const i64* n, const T* x, const i64* incx);
template <class T> using Abs1 = real_t<T>(const T* x);
template <class T> using Amax = i64(const i64* n, const T* x, const i64* incx);
template <class T>
using Rot = void(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const real_t<T>* c, const T* s);
template <class T>
using RealRot = void(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const real_t<T>* c,
                     const real_t<T>* s);
template <class T> using Rotg = void(T* a, T* b, T* c, T* s);
template <class T> using ComplexRotg = void(T* a, const T* b, real_t<T>* c, T* s);
template <class T> using Rotm = void(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const T* param);
template <class T> using Rotmg = void(T* d1, T* d2, T* x1, const T* y1, T* param);

template <class T> using Axpyi = void(const i64* n, const T* alpha, const T* x, const i64* indx, T* y);
template <class T> using Doti = T(const i64* n, const T* x, const i64* indx, const T* y);
template <class T> using ComplexDoti = void(T* result, const i64* n, const T* x, const i64* indx, const T* y);
template <class T> using Roti = void(const i64* n, T* x, const i64* indx, T* y, const T* c, const T* s);
template <class T> using Gthr = void(const i64* n, const T* y, T* x, const i64* indx);
template <class T> using Gthrz = void(const i64* n, T* y, T* x, const i64* indx);
template <class T> using Sctr = void(const i64* n, const T* x, const i64* indx, T* y);

// ---- The matrix product

template <class T>
using Gemm = void(const char* transa, const char* transb, const i64* m, const i64* n, const i64* k, const T* alpha,
                  const T* a, const i64* lda, const T* b, const i64* ldb, const T* beta, T* c, const i64* ldc);
template <class T>
using GemmPar = int(const char* transa, const char* transb, const i64* m, const i64* n, const i64* k, const T* alpha,
                    const T* a, const i64* lda, const T* b, const i64* ldb, const T* beta, T* c, const i64* ldc,
                    i32 version, gemm::Desc<T>* desc);
template <class T>
using GemmKernel = void(const char* transa, const char* transb, const i64* m, const i64* n, const i64* k,
                        const T* alpha, const T* a, const i64* a_stride, const T* b, const i64* b_stride, const T* beta,
                        T* c, const i64* ldc, T* scratch, i32 b_form);
template <class T>
using CopyA = void(const i64* m, const i64* k, const T* a, const i64* lda, T* buffer, const i64* stride,
                   const T* alpha);
template <class T>
using CopyB = void(const i64* k, const i64* n, const T* b, const i64* ldb, T* buffer, const i64* stride,
                   const T* unused);
template <class T> using Mscale = void(const i64* m, const i64* n, const T* beta, T* c, const i64* ldc);
template <class T> using GetBlksSize = void(const i64* m, const i64* n, const i64* k, gemm::Desc<T>* desc);
template <class T>
using GetBufsSize = int(int selector, int mode, const i64* m, const i64* n, const i64* k, gemm::Desc<T>* desc);
template <class T> using GetBufs = int(int selector, void** handle, gemm::Desc<T>* desc);
template <class T> using GetKernel = int(i32 index, gemm::Desc<T>* desc);
template <class T> using GetKernelVersion = int(const i64* m, const i64* n, const i64* k, const gemm::Desc<T>* desc);
template <class T> using GetOptimalKernel = int(gemm::Desc<T>* desc);
template <class T> using SetBlksSize = void(i64 mb, i64 nb, i64 kb, gemm::Desc<T>* desc);
template <class T> using ZeroDesc = void(gemm::Desc<T>* desc);
template <class T> using NumKernels = void(i32* out);
template <class T> using ApiSupport = int();
template <class T> using FreeBufs = void(void* handle);
template <class T> using Empty = void(); // slots of the dispatcher that need nothing done

// Twelve rows at a time.
using BlkInfo = void(const i64* m, const i64* n, const i64* k, i64* mb, i64* nb, i64* kb, i64 m_unit, i64 n_unit,
                     i64 k_unit);
using GetBufsBdz = void(const i64* mb, const i64* nb, const i64* kb, void** handle, double** a, double** b);
using CopyABdz = void(const i64* m, const i64* k, const double* a, const i64* lda, double* panels, const double* alpha);
using CopyBBdz = void(const i64* k, const i64* n, const double* b, const i64* ldb, double* panels);
using KernelBdz = void(const gemm::Patch* patch, const double* a, const double* b);

// Three real products; R is the type of a part.
template <class T>
using CopyPlanes = void(const i64* rows, const i64* columns, const T* x, const i64* ldx, real_t<T>* planes,
                        const i64* plane);

// A real matrix times a complex one.
template <class T>
using MixedGemm = void(const char* transa, const char* transb, const i64* m, const i64* n, const i64* k, const T* alpha,
                       const real_t<T>* a, const i64* lda, const T* b, const i64* ldb, const T* beta, T* c,
                       const i64* ldc);
template <class T>
using MixedCopyB = void(const char* transb, const i64* k, const i64* n, const T* b, const i64* ldb, real_t<T>* planes,
                        const i64* plane);
template <class T>
using MixedAddC = void(const i64* m, const i64* n, const T* alpha, const real_t<T>* planes, const i64* plane, T* c,
                       const i64* ldc);
template <class T> using MixedGetBufs = int(const i64* mb, const i64* nb, real_t<T>** b, real_t<T>** c);
template <class T> using MixedFreeBufs = void(real_t<T>* b, real_t<T>* c);

// ---- Matrices and vectors

template <class T>
using Gemv = void(const char* trans, const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x,
                  const i64* incx, const T* beta, T* y, const i64* incy);
using GemvOne = void(const char* trans, const i64* m, const i64* n, const float* alpha, const float* a, const i64* lda,
                     const float* x, const i64* incx, const float* beta, float* y, const i64* incy, const i64* one);
template <class T>
using GemvUnit = void(const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x, T* y);
template <class T>
using MixedGemv = void(const char* trans, const i64* m, const i64* n, const T* alpha, const real_t<T>* a,
                       const i64* lda, const T* x, const i64* incx, const T* beta, T* y, const i64* incy);
template <class T> using MixedCopyX = void(const i64* n, const T* alpha, const T* x, const i64* incx, real_t<T>* parts);
template <class T> using MixedCopyY = void(const i64* n, const T* y, const i64* incy, real_t<T>* parts);
template <class T> using MixedCopyYBack = void(const i64* n, const real_t<T>* parts, T* y, const i64* incy);
template <class T>
using Gem2v = void(const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x1,
                   const i64* incx1, const T* x2, const i64* incx2, const T* beta, T* y1, const i64* incy1, T* y2,
                   const i64* incy2);
template <class T>
using Gem2vUnit = void(const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x1, const T* x2,
                       T* y1, T* y2);
template <class T>
using Gbmv = void(const char* trans, const i64* m, const i64* n, const i64* kl, const i64* ku, const T* alpha,
                  const T* a, const i64* lda, const T* x, const i64* incx, const T* beta, T* y, const i64* incy);
template <class T>
using Ger = void(const i64* m, const i64* n, const T* alpha, const T* x, const i64* incx, const T* y, const i64* incy,
                 T* a, const i64* lda);

template <class T>
using Symv = void(const char* uplo, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x,
                  const i64* incx, const T* beta, T* y, const i64* incy);
template <class T>
using Spmv = void(const char* uplo, const i64* n, const T* alpha, const T* a, const T* x, const i64* incx,
                  const T* beta, T* y, const i64* incy);
template <class T>
using Sbmv = void(const char* uplo, const i64* n, const i64* k, const T* alpha, const T* a, const i64* lda, const T* x,
                  const i64* incx, const T* beta, T* y, const i64* incy);
template <class T>
using Syr = void(const char* uplo, const i64* n, const real_t<T>* alpha, const T* x, const i64* incx, T* a,
                 const i64* lda);
template <class T>
using SyrInThread = void(const char* uplo, const i64* n, const T* alpha, const T* x, const i64* incx, T* a,
                         const i64* lda, const i64* first);
template <class T>
using Spr = void(const char* uplo, const i64* n, const real_t<T>* alpha, const T* x, const i64* incx, T* a);
template <class T>
using Syr2 = void(const char* uplo, const i64* n, const T* alpha, const T* x, const i64* incx, const T* y,
                  const i64* incy, T* a, const i64* lda);
template <class T>
using Syr2InThread = void(const char* uplo, const i64* n, const T* alpha, const T* x, const i64* incx, const T* y,
                          const i64* incy, T* a, const i64* lda, const i64* first);
template <class T>
using Spr2 = void(const char* uplo, const i64* n, const T* alpha, const T* x, const i64* incx, const T* y,
                  const i64* incy, T* a);

template <class T>
using Trmv = void(const char* uplo, const char* trans, const char* diag, const i64* n, const T* a, const i64* lda, T* x,
                  const i64* incx);
template <class T>
using TrmvInThread = void(const char* uplo, const char* trans, const char* diag, const i64* n, const T* a,
                          const i64* lda, T* x, const i64* incx, const i64* count, const i64* first_column);
template <class T> using TrsvOfForm = void(const i64* n, const T* a, const i64* lda, T* x, const i64* incx);
template <class T>
using Tpmv = void(const char* uplo, const char* trans, const char* diag, const i64* n, const T* a, T* x,
                  const i64* incx);
template <class T>
using Tbmv = void(const char* uplo, const char* trans, const char* diag, const i64* n, const i64* k, const T* a,
                  const i64* lda, T* x, const i64* incx);

// ---- Symmetric and triangular matrices

template <class T>
using Symm = void(const char* side, const char* uplo, const i64* m, const i64* n, const T* alpha, const T* a,
                  const i64* lda, const T* b, const i64* ldb, const T* beta, T* c, const i64* ldc);
template <class T>
using SymmRecursive = void(const char* side, const char* uplo, const i64* m, const i64* n, const T* alpha, const T* a,
                           const i64* lda, const T* b, const i64* ldb, const T* beta, T* c, const i64* ldc, T* square);
template <class T> using SymmCopyA = void(const i64* size, const T* a, const i64* lda, T* square);
template <class T>
using Syrk = void(const char* uplo, const char* trans, const i64* n, const i64* k, const T* alpha, const T* a,
                  const i64* lda, const T* beta, T* c, const i64* ldc);
template <class T>
using Herk = void(const char* uplo, const char* trans, const i64* n, const i64* k, const real_t<T>* alpha, const T* a,
                  const i64* lda, const real_t<T>* beta, T* c, const i64* ldc);
template <class T>
using Syr2k = void(const char* uplo, const char* trans, const i64* n, const i64* k, const T* alpha, const T* a,
                   const i64* lda, const T* b, const i64* ldb, const T* beta, T* c, const i64* ldc);
template <class T>
using Her2k = void(const char* uplo, const char* trans, const i64* n, const i64* k, const T* alpha, const T* a,
                   const i64* lda, const T* b, const i64* ldb, const real_t<T>* beta, T* c, const i64* ldc);
using SyrkGetBufs = void(void** block);

// Without work memory B is as it came. Who takes these kernels for functions without a result loses nothing.
enum class Done : i32 { yes = 0, no_memory = 1 };
template <class T>
using Trmm = Done(const char* side, const char* uplo, const char* transa, const char* diag, const i64* m, const i64* n,
                  const T* alpha, const T* a, const i64* lda, T* b, const i64* ldb);
template <class T>
using TrmmSmall = void(const char* side, const char* uplo, const char* transa, const char* diag, const i64* m,
                       const i64* n, const T* alpha, const T* a, const i64* lda, T* b, const i64* ldb);
template <class T>
using Ptrmm = void(const char* side, const char* uplo, const char* transa, const char* diag, const i64* m, const i64* n,
                   const T* alpha, const T* a, T* b, const i64* ldb);
template <class T>
using PtrmmCopyA = void(const char* uplo, const i64* order, const i64* i, const i64* j, const i64* rows,
                        const i64* columns, const T* a, T* to);
// The flags that follow a side are whole words: is it an upper triangle, is it as it stands, is it transposed.
template <class T>
using TrmmPlain = void(const char* side, const char* upper, const char* is_n, const char* is_t, const char* diag,
                       const i64* m, const i64* n, const T* a, const i64* lda, T* b, const i64* ldb);
template <class T>
using TrmmLevel = void(const char* upper, const char* is_n, const char* is_t, const char* diag, const i64* m,
                       const i64* n, const T* a, const i64* lda, T* b, const i64* ldb, const level3::Level<T>* levels,
                       const i64* level, const i64* last, gemm::Desc<T>* desc);
template <class T>
using TrmmLastLevel = void(const char* upper, const char* is_n, const char* is_t, const char* diag, const i64* m,
                           const i64* n, const T* a, const i64* lda, T* b, const i64* ldb,
                           const level3::Level<T>* levels, const i64* level);
template <class T>
using TrmmCopyA = void(const char* side, const char* upper, const char* is_n, const char* is_t, const char* diag,
                       const i64* order, const T* a, const i64* lda, T* packed);
template <class T>
using TrmmOfForm = void(const char* diag, const i64* m, const i64* n, const T* a, const i64* lda, T* b, const i64* ldb);
using TrmmPacked = void(const char* diag, const i64* m, const i64* n, const double* packed, double* b, const i64* ldb,
                        double* strip);

#define ORV_NAME(name, ...) ORV_PROTOTYPE(blas, name, name, __VA_ARGS__)
#include "frame/kernels/blas.def"
#undef ORV_NAME

} // namespace orv::kernels::blas
