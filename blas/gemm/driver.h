// What the files of the matrix product's driver give to each other, and the values that its arguments take.
#pragma once

#include "blas/gemm/gemm.h"
#include "blas/gemm/sizes.h"

namespace orv::gemm {

// Loop orders of the blocked driver.
enum Version : i32 {
    by_kernel = 0,        // whatever get_kernel_version says
    b_blocks = 2,         // n, k, pack B, m, pack A
    b_unpacked = 4,       // the same with B left in place
    a_ready = 8,          // the caller has packed A; pack B
    a_ready_b_place = 16, // the caller has packed A; B stays in place
    b_ready = 32,         // the caller has packed B; pack A
    both_ready = 64,      // the caller has packed both
    a_interleaved = 128,  // m, k, pack B, pack A a panel at a time and use it at once
    b_interleaved = 256,  // the mirror image
};

// Work areas that a caller wants, and what they are sized for.
enum Selector : int {
    a_scratch_b = 0x64,
    a_scratch_b_too = 200,
    only_a = 0x65,
    only_b = 0x66,
    a_and_b = 0x67, // for sizing only
    scratch_b = 0x68,
    a_scratch = 0x69,
    only_scratch = 0x6a,
};
enum Mode : int { actual_operands = 0x6b, full_blocks = 0x6c };

// Operators by letter, in either case: N, C, and everything else, which is T.
inline bool is_plain(char op) { return fold(op) == 'N'; }
inline bool is_conjugated(char op) { return fold(op) == 'C'; }

// Element (i, j) of op(X) for the top left corner (i, j) of a block; conjugation is left to who reads it.
template <class T> constexpr T* corner(T* x, i64 ld, char op, i64 i, i64 j)
{
    return is_plain(op) ? x + i + j * ld : x + j + i * ld;
}

// The arguments of x?gemm, ?gemm_pst and the small products.
using kernels::blas::Gemm;
#define ORV_GEMM_ARGUMENTS(T)                                                                                          \
    const char *transa, const char *transb, const i64 *m, const i64 *n, const i64 *k, const T *alpha, const T *a,      \
        const i64 *lda, const T *b, const i64 *ldb, const T *beta, T *c, const i64 *ldc
#define ORV_GEMM_PASS transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc

// One product, as the paths through the driver hand it on. Letters are upper-case.
template <class T> struct Product {
    char transa, transb;
    i64 m, n, k;
    T alpha;
    const T* a;
    i64 lda;
    const T* b;
    i64 ldb;
    T beta;
    T* c;
    i64 ldc;
};
// The same of arguments as they arrive.
template <class T> Product<T> product_of(ORV_GEMM_ARGUMENTS(T))
{
    return {fold(*transa), fold(*transb), *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc};
}

template <class T> void zero_desc(Desc<T>* desc);
template <class T> int get_kernel(i32 index, Desc<T>* desc);
template <class T> int get_optimal_kernel(Desc<T>* desc);
template <class T> int get_kernel_version(i64 n, i64 k, const Desc<T>* desc);

// The product without work areas, in plain.cpp.
template <class T> void plain(const Product<T>& x);
// C(0:m, 0:n) := beta*C; a beta of 0 stores zeros and reads nothing.
template <class T> void mscale(i64 m, i64 n, T beta, T* c, i64 ldc);

// C := alpha*op(A)*op(B) + beta*C for a beta of 0 or 1 and an alpha that is not 0, in packed blocks (blocked.cpp), or
// with the operands where they stand (in_place.cpp): to the same bits, and whether that is faster.
template <class T> void blocked(const Product<T>& x, i32 kernel);
template <class T> void in_place(const Product<T>& x);
template <class T> bool is_better_in_place(const Product<T>& x);

// The name under which missing memory is reported.
inline constexpr char routine[] = "xgemm";
inline constexpr int routine_length = sizeof routine - 1;

// C := C + alpha*op(A)*op(B) for k = 1: a rank-one update, in driver.cpp.
void rank_one(const Product<double>& x);

} // namespace orv::gemm
