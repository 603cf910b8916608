#include "core/sparse/record.h"

#include "core/sparse/matrix.h"
#include "frame/arguments.h"

namespace orv::core::sparse {
namespace {

constexpr i64 narrow_limit = 0x7fffffff;

i64 number(const orv_sparse& a, const void* array, i64 i)
{
    return a.bits == 32 ? static_cast<const i32*>(array)[i] : static_cast<const i64*>(array)[i];
}

const char* fault_of_options(const orv_sparse& a)
{
    const char kind = kind_of(a);
    if (a.format < ORV_SPARSE_CSR || a.format > ORV_SPARSE_SKY) return "format is none of ORV_SPARSE_CSR to SKY";
    if (a.type != 's' && a.type != 'd' && a.type != 'c' && a.type != 'z') return "type is none of s, d, c, z";
    if (!arguments::one_of(kind, "GSHATD")) return "kind is none of G, S, H, A, T, D";
    if (kind != 'G' && kind != 'D' && !arguments::one_of(a.uplo, "UL"))
        return "uplo is none of U and L, and kinds S, H, A and T need it";
    if (a.diag != 0 && !arguments::one_of(a.diag, "NU")) return "diag is none of N and U";
    if (a.bits != 32 && a.bits != 64) return "bits is none of 32 and 64";
    if (a.base != 0 && a.base != 1) return "base is none of 0 and 1";
    const bool complex = a.type == 'c' || a.type == 'z';
    if (a.format == ORV_SPARSE_BSR && kind == 'H' && complex) return "there are no Hermitian matrices in BSR";
    if (a.format == ORV_SPARSE_SKY && (kind == 'G' || kind == 'D' || (kind == 'H' && complex)))
        return "kinds of matrices in SKY are S, A and T";
    return nullptr;
}

const char* fault_of_sizes(const orv_sparse& a)
{
    const i64 largest = max(a.rows, a.cols);
    if (a.rows < 0 || a.cols < 0) return "rows or cols is negative";
    if (kind_of(a) != 'G' && a.rows != a.cols) return "rows and cols differ, which only kind G may";
    if ((a.format == ORV_SPARSE_COO || a.format == ORV_SPARSE_DIA) && a.count < 0) return "count is negative";
    if (a.format == ORV_SPARSE_DIA && a.ld < max(1, a.rows)) return "ld is smaller than rows";
    if (a.format == ORV_SPARSE_BSR) {
        if (a.block < 1) return "block is smaller than 1";
        if (a.rows % a.block != 0 || a.cols % a.block != 0) return "rows or cols is no multiple of block";
    }
    const i64 more = a.format == ORV_SPARSE_COO ? a.count : a.format == ORV_SPARSE_DIA ? max(a.count, a.ld) : 0;
    if (a.bits == 32 && max(largest, more) >= narrow_limit) return "a size does not fit in 32 bits";
    return nullptr;
}

const char* fault_of_arrays(const orv_sparse& a)
{
    const bool columns = a.format == ORV_SPARSE_CSC;
    if (a.rows == 0 || a.cols == 0) return nullptr; // nothing will be read
    if (a.format == ORV_SPARSE_COO || a.format == ORV_SPARSE_DIA) {
        if (a.count == 0) return nullptr;
        if (a.values == nullptr || a.col == nullptr) return "values or col is a null pointer";
        return a.format == ORV_SPARSE_COO && a.row == nullptr ? "row is a null pointer" : nullptr;
    }
    const i64 lines = lines_of(a);
    if (a.begin == nullptr) return "begin is a null pointer";
    const i64 last =
        a.end != nullptr && a.format != ORV_SPARSE_SKY ? number(a, a.end, lines - 1) : number(a, a.begin, lines);
    if (last <= number(a, a.begin, 0)) return nullptr;
    if (a.values == nullptr) return "values is a null pointer";
    if (a.format == ORV_SPARSE_SKY) return nullptr;
    if ((columns ? a.row : a.col) == nullptr) return columns ? "row is a null pointer" : "col is a null pointer";
    return nullptr;
}

} // namespace

const char* fault_of_form(const orv_sparse& a)
{
    const char* fault = fault_of_options(a);
    return fault != nullptr ? fault : fault_of_sizes(a);
}

const char* fault_of(const orv_sparse* a)
{
    if (a == nullptr) return "the matrix is a null pointer";
    const char* fault = fault_of_form(*a);
    return fault != nullptr ? fault : fault_of_arrays(*a);
}

const char* fault_of(const orv_sparse* a, char type, char trans, bool solves)
{
    if (const char* fault = fault_of(a)) return fault;
    const char kind = kind_of(*a);
    const bool complex = type == 'c' || type == 'z', conjugates = fold(trans) == 'C' && complex;
    if (a->type != type) return "type is not that of the routine";
    if (solves && kind != 'T' && kind != 'D') return "a matrix to solve with is of kind T or D";
    if (conjugates && a->format == ORV_SPARSE_SKY) return "there is no conjugate transpose of a matrix in SKY";
    if (conjugates && a->format == ORV_SPARSE_BSR && kind == 'S')
        return "there is no conjugate transpose of a symmetric matrix in BSR";
    return nullptr;
}

} // namespace orv::core::sparse
