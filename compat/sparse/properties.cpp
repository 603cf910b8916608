// Properties: what a matrix is told before its first entry, and what it tells.
#include "compat/sparse/matrix.h"

namespace orv::sparseblas {
namespace {

int set(int handle, int property)
{
    Matrix* a = matrix_of(handle);
    if (a == nullptr || a->state != blas_new_handle) return refused;
    switch (property) {
    case blas_lower_triangular:
    case blas_upper_triangular:
    case blas_lower_symmetric:
    case blas_upper_symmetric:
    case blas_lower_hermitian:
    case blas_upper_hermitian:
        if (a->rows != a->cols) return refused;
        [[fallthrough]];
    case blas_general:
        a->structure = property;
        return done;
    case blas_unit_diag:
    case blas_non_unit_diag:
        a->diagonal = property;
        return done;
    case blas_zero_base:
    case blas_one_base:
        a->base = property == blas_one_base;
        return done;
    case blas_rowmajor:
    case blas_colmajor:
        a->order = property;
        return done;
    case blas_regular:
    case blas_irregular:
    case blas_block:
    case blas_unassembled:
        a->optimisation = property;
        return done;
    default:
        return refused;
    }
}

int get(int handle, int property)
{
    const Matrix* a = matrix_of(handle);
    if (property == blas_invalid_handle) return a == nullptr;
    if (a == nullptr) return refused;
    switch (property) {
    case blas_num_rows:
        return a->rows;
    case blas_num_cols:
        return a->cols;
    case blas_num_nonzeros:
        return static_cast<int>(a->count);
    case blas_symmetric:
        return a->kind() == 'S';
    case blas_hermitian:
        return a->kind() == 'H';
    case blas_triangular:
        return a->kind() == 'T';
    case blas_general:
    case blas_lower_triangular:
    case blas_upper_triangular:
    case blas_lower_symmetric:
    case blas_upper_symmetric:
    case blas_lower_hermitian:
    case blas_upper_hermitian:
        return a->structure == property;
    case blas_complex:
        return a->type == 'c' || a->type == 'z';
    case blas_real:
        return a->type == 's' || a->type == 'd';
    case blas_double_precision:
        return a->type == 'd' || a->type == 'z';
    case blas_single_precision:
        return a->type == 's' || a->type == 'c';
    case blas_zero_base:
        return a->base == 0;
    case blas_one_base:
        return a->base == 1;
    case blas_new_handle:
    case blas_open_handle:
    case blas_valid_handle:
        return a->state == property;
    case blas_unit_diag:
    case blas_non_unit_diag:
        return a->diagonal == property;
    case blas_rowmajor:
    case blas_colmajor:
        return a->order == property;
    case blas_regular:
    case blas_irregular:
    case blas_block:
    case blas_unassembled:
        return a->optimisation == property;
    default:
        return refused;
    }
}

int release(int handle)
{
    Matrix* a = withdraw(handle);
    if (a == nullptr) return refused;
    destroy(a);
    return done;
}

} // namespace
} // namespace orv::sparseblas

using namespace orv::sparseblas;

extern "C" {
int BLAS_usgp(blas_sparse_matrix A, int pname) { return get(A, pname); }
int BLAS_ussp(blas_sparse_matrix A, int pname) { return set(A, pname); }
int BLAS_usds(blas_sparse_matrix A) { return release(A); }
void blas_usgp_(const int* a, const int* property, int* value) { *value = get(*a, *property); }
void blas_ussp_(const int* a, const int* property, int* istat) { *istat = set(*a, *property); }
void blas_usds_(const int* a, int* istat) { *istat = release(*a); }
}
