// B := alpha*op(A)*B (side L) or alpha*B*op(A) (side R), B m by n.
//
//   uplo    U: the upper triangle of A is read, else the lower one
//   transa  N: op(A) = A; C: the conjugate transpose of complex matrices; anything else: the transpose
//   diag    U: ones on the diagonal, which is not read
//
// An alpha of 0 clears B and reads nothing. Without work memory B stays as it came, and the result is 1,
// else 0.
#include "blas/level3/trmm.h"

namespace orv::level3 {
namespace {

constexpr Cut left_cuts[] = {{0x100, 1000}, {0x80, 1000}, {0x40, 1000}};
constexpr Cut right_cuts[] = {{0x100, 1000}, {0x40, 1000}, {0x10, 1000}};

// So small that packing would cost more than it saves.
constexpr i64 small_order = 8;

// On the left in registers, by way of the stack; on the right column by column.
template <class T> void multiply_small(const Triangular<T>& x, T alpha)
{
    scale(x, alpha);
    if (x.right || x.order > small_order) return plain<Task::multiply>(x);
    alignas(vector_bytes) T triangle[packed_elements<T>(small_order)], strip[strip_elements<T>(small_order)];
    last_level<Task::multiply>(x, triangle, strip);
}

// False, and nothing done, if there is no memory.
template <class T> bool multiply_triangle(const Triangular<T>& x, T alpha)
{
    if (!x.right && x.order <= small_order) return multiply_small(x, alpha), true;
    return with_work_block<Task::multiply, T>([&](const auto& work) {
        if (x.order <= small_order) return multiply_small(x, alpha);
        scale(x, alpha);
        const auto& cuts = x.right ? right_cuts : left_cuts;
        // An order of just the last block of side L is for the last level, too.
        const i64 order = !x.right && x.order == left_cuts[2].block ? x.order + 1 : x.order;
        walk<Task::multiply>(x, cuts, first_level(cuts, [=](i64 block) { return block < order; }), work);
    });
}

template <class T> Done multiply(const Triangular<T>& x, T alpha)
{
    if (x.order <= 0 || x.others <= 0) return Done::yes;
    if (alpha == zero<T>) return scale(x, alpha), Done::yes;
    return multiply_triangle(x, alpha) ? Done::yes : Done::no_memory;
}

} // namespace

template <class T> void triangular_product(const Triangular<T>& x)
{
    if (!multiply_triangle(x, one<T>)) plain<Task::multiply>(x);
}
template void triangular_product(const Triangular<float>&);
template void triangular_product(const Triangular<double>&);

#define TRMM(t, T)                                                                                                     \
    ORV_EXPORT Done BLAS(x##t##trmm)(TRIANGULAR_ARGUMENTS(T))                                                          \
    {                                                                                                                  \
        return multiply(                                                                                               \
            Triangular<T>::of(is_right(*side), blas::form_of<T>(*uplo, *transa, *diag), *m, *n, a, *lda, b, *ldb),     \
            *alpha);                                                                                                   \
    }                                                                                                                  \
    /* Side L with m up to 8; other problems too, but slower than by x?trmm. */                                        \
    ORV_EXPORT void BLAS(t##trmm_sm_01_08)(TRIANGULAR_ARGUMENTS(T))                                                    \
    {                                                                                                                  \
        multiply_small(                                                                                                \
            Triangular<T>::of(is_right(*side), blas::form_of<T>(*uplo, *transa, *diag), *m, *n, a, *lda, b, *ldb),     \
            *alpha);                                                                                                   \
    }                                                                                                                  \
    TRIANGULAR_LEVEL(t##trmm, T, multiply, left, false)                                                                \
    TRIANGULAR_LEVEL(t##trmm, T, multiply, right, true)

TRMM(s, float)
TRMM(d, double)
TRMM(c, cpx<float>)
TRMM(z, cpx<double>)

} // namespace orv::level3
