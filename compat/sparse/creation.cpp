// Building a matrix: begin, and entries in any order. They are kept as they come; all of a call or none.
#include "compat/sparse/matrix.h"

#include <climits>
#include <new>

namespace orv::sparseblas {
namespace {

// A new matrix, or null. base: of the interface that it comes from.
template <class T> Matrix* create(i64 rows, i64 cols, int base)
{
    if (rows < 1 || cols < 1 || rows > INT_MAX || cols > INT_MAX) return nullptr;
    void* memory = std::malloc(sizeof(Matrix));
    if (memory == nullptr) return nullptr;
    Matrix* a = new (memory) Matrix;
    a->type = letter<T>, a->base = base, a->order = base == 0 ? blas_rowmajor : blas_colmajor;
    a->rows = static_cast<int>(rows), a->cols = static_cast<int>(cols);
    return a;
}
int published(Matrix* a)
{
    if (a == nullptr) return refused;
    const int handle = publish(a);
    if (handle == refused) destroy(a);
    return handle;
}

template <class T> int begin(int m, int n, int base) { return published(create<T>(m, n, base)); }

// The first rows, or columns, of n blocks with these lengths; their sum, or refused.
template <class Length> i64 lay_out(int n, const Length& length, Array<int>& first)
{
    if (n < 1 || !first.reserve(static_cast<std::size_t>(n) + 1)) return refused;
    i64 sum = 0;
    for (int i = 0; i <= n; ++i) {
        first[static_cast<std::size_t>(i)] = static_cast<int>(sum);
        if (i == n) break;
        if (length(i) < 1 || (sum += length(i)) > INT_MAX) return refused;
    }
    return sum;
}

template <class T, class Rows, class Cols> int begin_blocks(int mb, int nb, const Rows& k, const Cols& l, int base)
{
    Array<int> rows, cols;
    Matrix* a = create<T>(lay_out(mb, k, rows), lay_out(nb, l, cols), base);
    if (a != nullptr) {
        a->first_row.take(rows), a->first_col.take(cols);
        a->block_rows = mb, a->block_cols = nb, a->optimisation = blas_block;
    }
    return published(a);
}
template <class T> int begin_equal_blocks(int mb, int nb, int k, int l, int base)
{
    return begin_blocks<T>(
        mb, nb, [=](int) { return k; }, [=](int) { return l; }, base);
}
template <class T> int begin_variable_blocks(int mb, int nb, const int* k, const int* l, int base)
{
    return begin_blocks<T>(
        mb, nb, [=](int i) { return k[i]; }, [=](int j) { return l[j]; }, base);
}

template <class T> struct Entry {
    T value;
    i64 i, j; // from 0
};

// A matrix that still takes entries of the type.
template <class T> Matrix* growing(int handle)
{
    Matrix* a = matrix_of_type<T>(handle);
    return a != nullptr && a->state != blas_valid_handle ? a : nullptr;
}

// entry(k) for k below n
template <class T, class Make> int insert(Matrix* a, i64 n, const Make& entry)
{
    if (a == nullptr || n < 0) return refused;
    for (i64 k = 0; k < n; ++k)
        if (const Entry<T> e = entry(k); !a->takes(e.i, e.j)) return refused;
    const std::size_t count = a->count + static_cast<std::size_t>(n);
    if (count > INT_MAX || !a->row.reserve(count) || !a->col.reserve(count) || !a->values.reserve(count * sizeof(T)))
        return refused;
    for (i64 k = 0; k < n; ++k) {
        const Entry<T> e = entry(k);
        a->row[a->count] = static_cast<int>(e.i), a->col[a->count] = static_cast<int>(e.j);
        a->template value<T>()[a->count++] = e.value;
    }
    if (n > 0) a->state = blas_open_handle;
    return done;
}

template <class T> int insert_entries(int handle, int n, const T* val, const int* i, const int* j)
{
    Matrix* a = growing<T>(handle);
    return insert<T>(a, n, [=](i64 k) { return Entry<T>{val[k], i64{i[k]} - a->base, i64{j[k]} - a->base}; });
}
template <class T> int insert_entry(int handle, T val, int i, int j) { return insert_entries(handle, 1, &val, &i, &j); }
template <class T> int insert_row(int handle, int i, int n, const T* val, const int* j)
{
    Matrix* a = growing<T>(handle);
    return insert<T>(a, n, [=](i64 k) { return Entry<T>{val[k], i64{i} - a->base, i64{j[k]} - a->base}; });
}
template <class T> int insert_col(int handle, int j, int n, const T* val, const int* i)
{
    Matrix* a = growing<T>(handle);
    return insert<T>(a, n, [=](i64 k) { return Entry<T>{val[k], i64{i[k]} - a->base, i64{j} - a->base}; });
}

// Value (i, j) of k by l at i*row_stride + j*col_stride, for row(i) and col(j).
template <class T, class Row, class Col>
int insert_array(Matrix* a, i64 k, i64 l, const T* val, i64 row_stride, i64 col_stride, const Row& row, const Col& col)
{
    if (k < 0 || l < 0) return refused;
    return insert<T>(a, k * l, [=](i64 e) {
        const i64 i = e / l, j = e % l;
        return Entry<T>{val[i * row_stride + j * col_stride], row(i), col(j)};
    });
}
template <class T>
int insert_clique(int handle, int k, int l, const T* val, int row_stride, int col_stride, const int* i, const int* j)
{
    Matrix* a = growing<T>(handle);
    return insert_array(
        a, k, l, val, row_stride, col_stride, [=](i64 r) { return i64{i[r]} - a->base; },
        [=](i64 c) { return i64{j[c]} - a->base; });
}
template <class T> int insert_block(int handle, const T* val, int row_stride, int col_stride, int i, int j)
{
    Matrix* a = growing<T>(handle);
    if (a == nullptr) return refused;
    const i64 bi = i64{i} - a->base, bj = i64{j} - a->base;
    if (bi < 0 || bi >= a->block_rows || bj < 0 || bj >= a->block_cols) return refused;
    const int *rows = a->first_row.data() + bi, *cols = a->first_col.data() + bj;
    return insert_array(
        a, rows[1] - rows[0], cols[1] - cols[0], val, row_stride, col_stride, [=](i64 r) { return rows[0] + r; },
        [=](i64 c) { return cols[0] + c; });
}

} // namespace
} // namespace orv::sparseblas

using namespace orv;
using namespace orv::sparseblas;

#define CREATION(t, T)                                                                                                 \
    int BLAS_##t##uscr_begin(int m, int n) { return begin<T>(m, n, 0); }                                               \
    int BLAS_##t##uscr_block_begin(int Mb, int Nb, int k, int l) { return begin_equal_blocks<T>(Mb, Nb, k, l, 0); }    \
    int BLAS_##t##uscr_variable_block_begin(int Mb, int Nb, const int* K, const int* L)                                \
    {                                                                                                                  \
        return begin_variable_blocks<T>(Mb, Nb, K, L, 0);                                                              \
    }                                                                                                                  \
    int BLAS_##t##uscr_insert_entry(int A, Scalar<T> val, int i, int j)                                                \
    {                                                                                                                  \
        return insert_entry<T>(A, number<T>(val), i, j);                                                               \
    }                                                                                                                  \
    int BLAS_##t##uscr_insert_entries(int A, int nz, In<T> val, const int* indx, const int* jndx)                      \
    {                                                                                                                  \
        return insert_entries(A, nz, array<T>(val), indx, jndx);                                                       \
    }                                                                                                                  \
    int BLAS_##t##uscr_insert_col(int A, int j, int nz, In<T> val, const int* indx)                                    \
    {                                                                                                                  \
        return insert_col(A, j, nz, array<T>(val), indx);                                                              \
    }                                                                                                                  \
    int BLAS_##t##uscr_insert_row(int A, int i, int nz, In<T> val, const int* jndx)                                    \
    {                                                                                                                  \
        return insert_row(A, i, nz, array<T>(val), jndx);                                                              \
    }                                                                                                                  \
    int BLAS_##t##uscr_insert_clique(int A, int k, int l, In<T> val, int row_stride, int col_stride, const int* indx,  \
                                     const int* jndx)                                                                  \
    {                                                                                                                  \
        return insert_clique(A, k, l, array<T>(val), row_stride, col_stride, indx, jndx);                              \
    }                                                                                                                  \
    int BLAS_##t##uscr_insert_block(int A, In<T> val, int row_stride, int col_stride, int i, int j)                    \
    {                                                                                                                  \
        return insert_block(A, array<T>(val), row_stride, col_stride, i, j);                                           \
    }                                                                                                                  \
    void blas_##t##uscr_begin_(const int* m, const int* n, int* a, int* istat)                                         \
    {                                                                                                                  \
        *istat = (*a = begin<T>(*m, *n, 1)) == refused ? refused : done;                                               \
    }                                                                                                                  \
    void blas_##t##uscr_block_begin_(const int* mb, const int* nb, const int* k, const int* l, int* a, int* istat)     \
    {                                                                                                                  \
        *istat = (*a = begin_equal_blocks<T>(*mb, *nb, *k, *l, 1)) == refused ? refused : done;                        \
    }                                                                                                                  \
    void blas_##t##uscr_variable_block_begin_(const int* mb, const int* nb, const int* k, const int* l, int* a,        \
                                              int* istat)                                                              \
    {                                                                                                                  \
        *istat = (*a = begin_variable_blocks<T>(*mb, *nb, k, l, 1)) == refused ? refused : done;                       \
    }                                                                                                                  \
    void blas_##t##uscr_insert_entry_(const int* a, const T* val, const int* i, const int* j, int* istat)              \
    {                                                                                                                  \
        *istat = insert_entry(*a, *val, *i, *j);                                                                       \
    }                                                                                                                  \
    void blas_##t##uscr_insert_entries_(const int* a, const int* nz, const T* val, const int* i, const int* j,         \
                                        int* istat)                                                                    \
    {                                                                                                                  \
        *istat = insert_entries(*a, *nz, val, i, j);                                                                   \
    }                                                                                                                  \
    void blas_##t##uscr_insert_col_(const int* a, const int* j, const int* nz, const T* val, const int* i, int* istat) \
    {                                                                                                                  \
        *istat = insert_col(*a, *j, *nz, val, i);                                                                      \
    }                                                                                                                  \
    void blas_##t##uscr_insert_row_(const int* a, const int* i, const int* nz, const T* val, const int* j, int* istat) \
    {                                                                                                                  \
        *istat = insert_row(*a, *i, *nz, val, j);                                                                      \
    }                                                                                                                  \
    void blas_##t##uscr_insert_clique_(const int* a, const int* k, const int* l, const T* val, const int* row_stride,  \
                                       const int* col_stride, const int* i, const int* j, int* istat)                  \
    {                                                                                                                  \
        *istat = insert_clique(*a, *k, *l, val, *row_stride, *col_stride, i, j);                                       \
    }                                                                                                                  \
    void blas_##t##uscr_insert_block_(const int* a, const T* val, const int* row_stride, const int* col_stride,        \
                                      const int* i, const int* j, int* istat)                                          \
    {                                                                                                                  \
        *istat = insert_block(*a, val, *row_stride, *col_stride, *i, *j);                                              \
    }

extern "C" {
CREATION(s, float)
CREATION(d, double)
CREATION(c, cpx<float>)
CREATION(z, cpx<double>)
}
