// B := alpha*op(A)*B (side L) or alpha*B*op(A) (side R), B m by n, A triangular, its stored columns one after another
// without gaps. Letters as of trmm.
//
// A piece of A is copied to a square of full columns: a block of the diagonal for a product with a triangle, what is
// beside it for general products. Blocks and products come in the order of trmm, so that nothing is read after it was
// overwritten. Without memory for the square the plain path takes a small one of its own.
#include "blas/level3/trmm.h"
#include "blas/storage.h"
#include "frame/serv.h"

namespace orv::level3 {
namespace {

constexpr i64 block = 256; // of the diagonal; the squares beside it as deep as a product's panels
constexpr char routine[] = "xtrmm";

// Column j of A begins, in its full form, at column(half, n, a, j).
template <class T> const T* column(Half half, i64 n, const T* a, i64 j)
{
    return blas::packed_triangle(half, a, n).column(j);
}

// A(i:i+rows, j:j+columns), all of it stored.
template <class T> void copy_rectangle(Half half, i64 n, i64 i, i64 j, i64 rows, i64 columns, const T* a, T* to)
{
    for (i64 c = 0; c < columns; ++c) {
        const T* const from = column(half, n, a, j + c) + i;
        for (i64 r = 0; r < rows; ++r) to[r + c * rows] = from[r];
    }
}
template <class T> void copy_triangle(Half half, i64 n, i64 i, i64 size, const T* a, T* to)
{
    for (i64 c = 0; c < size; ++c) {
        const T* const from = column(half, n, a, i + c) + i;
        for (i64 r = half == Half::upper ? 0 : c; r < (half == Half::upper ? c + 1 : size); ++r)
            to[r + c * size] = from[r];
    }
}

// x.a is packed. Each block of rows of X is multiplied by its triangle and then takes from those that are still as they
// came; `triangle` is the product with a triangle in full columns.
template <class T, class Product> void by_squares(const Triangular<T>& x, i64 size, T* square, const Product& triangle)
{
    const bool lower = x.lower();
    const i64 pieces = (x.order + size - 1) / size;
    for (i64 s = pieces - 1; s >= 0; --s) {
        const Piece p = piece_of(lower, x.order, s * size, size);
        Triangular<T> y = x;
        y.a = square, y.lda = p.size, y.order = p.size, y.b += p.from * x.row_step();
        copy_triangle(x.form.half, x.order, p.from, p.size, x.a, square);
        triangle(y);
        for (i64 i = p.done_from; i < p.done_from + p.done; i += size) {
            const i64 depth = min(p.done_from + p.done - i, size);
            // Rows p and columns i of T are so of A, or the other way round.
            const i64 row = x.turned() ? i : p.from, rows = x.turned() ? depth : p.size;
            const i64 first = x.turned() ? p.from : i, columns = x.turned() ? p.size : depth;
            copy_rectangle(x.form.half, x.order, row, first, rows, columns, x.a, square);
            Triangular<T> z = x;
            z.a = square, z.lda = rows;
            multiply(z.product(square, p.from, p.size, i, depth, one<T>));
        }
    }
}

constexpr i64 local = 16;
template <class T> [[gnu::noinline]] void without_memory(const Triangular<T>& x)
{
    T square[local * local];
    by_squares(x, local, square, plain<Task::multiply, T>);
}

template <class T> void plain_packed(const Triangular<T>& x, T alpha)
{
    if (x.order <= 0 || x.others <= 0) return;
    scale(x, alpha);
    if (alpha != zero<T>) without_memory(x);
}

template <class T> void multiply_packed(const Triangular<T>& x, T alpha)
{
    if (x.order <= 0 || x.others <= 0) return;
    scale(x, alpha);
    if (alpha == zero<T>) return;
    gemm::best_kernel<T>(); // asks for the processor, before memory is asked for: a caller sees the order of trmm
    void* const square = orv_serv_allocate(block * block * i64(sizeof(T)), 128);
    if (orv_serv_check_ptr(square, routine, sizeof routine - 1) != 0) return without_memory(x);
    by_squares(x, block, static_cast<T*>(square), triangular_product<T>);
    orv_serv_deallocate(square);
}

template <class T>
Triangular<T> packed_operands(const char* side, const char* uplo, const char* transa, const char* diag, i64 m, i64 n,
                              const T* a, T* b, i64 ldb)
{
    return Triangular<T>::of(is_right(*side), blas::form_of<T>(*uplo, *transa, *diag), m, n, a, 0, b, ldb);
}

} // namespace

#define ARGUMENTS(T)                                                                                                   \
    const char *side, const char *uplo, const char *transa, const char *diag, const i64 *m, const i64 *n,              \
        const T *alpha, const T *a, T *b, const i64 *ldb
#define PTRMM(t, T)                                                                                                    \
    ORV_EXPORT void BLAS(x##t##ptrmm)(ARGUMENTS(T))                                                                    \
    {                                                                                                                  \
        multiply_packed(packed_operands(side, uplo, transa, diag, *m, *n, a, b, *ldb), *alpha);                        \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(t##ptrmm_pst)(ARGUMENTS(T))                                                                   \
    {                                                                                                                  \
        plain_packed(packed_operands(side, uplo, transa, diag, *m, *n, a, b, *ldb), *alpha);                           \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(t##ptrmm_copya)(const char* uplo, const i64* order, const i64* i, const i64* j,               \
                                         const i64* rows, const i64* columns, const T* a, T* to)                       \
    {                                                                                                                  \
        copy_rectangle(blas::half_of(*uplo), *order, *i, *j, *rows, *columns, a, to);                                  \
    }

PTRMM(s, float)
PTRMM(d, double)

} // namespace orv::level3
