// A matrix behind a handle, from its begin to its release.
#pragma once

#include "compat/include/blas_sparse.h"
#include "compat/sparse/array.h"
#include "frame/types.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <orv/sparse.h>

namespace orv::sparseblas {

constexpr int done = 0, refused = -1;

struct Matrix {
    char type; // s d c z
    int rows, cols;
    int base;                     // of indices that come in
    int state = blas_new_handle;  // open with the first entry, valid at the end
    int structure = blas_general; // or a triangle
    int diagonal = blas_non_unit_diag;
    int order, optimisation = blas_irregular; // kept for who asks
    std::size_t count = 0;                    // entries
    Array<int> first_row, first_col;          // of blocks, and behind the last; without blocks empty
    int block_rows = 0, block_cols = 0;
    Array<int> row, col; // from 0; at the end row goes, and columns ascend
    Array<char> values;
    Array<int> start;          // of rows, at the end
    bool has_diagonal = false; // in each row: then solves need not look for it

    template <class T> T* value() const { return reinterpret_cast<T*>(values.data()); }

    char kind() const // letters of orv_sparse
    {
        switch (structure) {
        case blas_lower_triangular:
        case blas_upper_triangular:
            return 'T';
        case blas_lower_symmetric:
        case blas_upper_symmetric:
            return 'S';
        case blas_lower_hermitian:
        case blas_upper_hermitian:
            return 'H';
        default:
            return 'G';
        }
    }
    bool lower() const
    {
        return structure == blas_lower_triangular || structure == blas_lower_symmetric ||
               structure == blas_lower_hermitian;
    }
    bool takes(i64 i, i64 j) const // an entry, counted from 0
    {
        if (i < 0 || i >= rows || j < 0 || j >= cols) return false;
        if (i == j) return diagonal == blas_non_unit_diag;
        return kind() == 'G' || lower() == (i > j);
    }
    orv_sparse record() const // of a finished one
    {
        orv_sparse r{};
        r.format = ORV_SPARSE_CSR, r.type = type, r.bits = 32;
        r.kind = kind(), r.uplo = lower() ? 'L' : 'U';
        r.rows = rows, r.cols = cols, r.has_diagonal = has_diagonal;
        r.values = values.data(), r.begin = start.data(), r.col = col.data();
        return r;
    }
};

// Handles. A number that was released is not given out again before 2,047 others have stood in its place.
int publish(Matrix* matrix);   // the handle of a new matrix, or refused: there is no room for one
Matrix* matrix_of(int handle); // null if the handle is not valid
Matrix* withdraw(int handle);  // the same, and it is not valid any more

void destroy(Matrix* matrix);

template <class T> inline constexpr char letter = '?';
template <> inline constexpr char letter<float> = 's';
template <> inline constexpr char letter<double> = 'd';
template <> inline constexpr char letter<cpx<float>> = 'c';
template <> inline constexpr char letter<cpx<double>> = 'z';

// The matrix of a handle if it is of the type T, else null.
template <class T> Matrix* matrix_of_type(int handle)
{
    Matrix* matrix = matrix_of(handle);
    return matrix != nullptr && matrix->type == letter<T> ? matrix : nullptr;
}

// How the C interface passes numbers: complex ones by address.
template <class T> struct passed {
    using scalar = T;
    using in = const T*;
    using out = T*;
    static T value(T number) { return number; }
};
template <class R> struct passed<cpx<R>> {
    using scalar = const void*;
    using in = const void*;
    using out = void*;
    static cpx<R> value(const void* number) { return *static_cast<const cpx<R>*>(number); }
};
template <class T> using Scalar = typename passed<T>::scalar;
template <class T> using In = typename passed<T>::in;
template <class T> using Out = typename passed<T>::out;
template <class T> T number(Scalar<T> passed_number) { return passed<T>::value(passed_number); }
template <class T> const T* array(In<T> a) { return static_cast<const T*>(a); }

} // namespace orv::sparseblas
