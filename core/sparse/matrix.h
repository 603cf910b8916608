// A matrix as its kernels take it: the record of orv/sparse.h with op worked in.
#pragma once

#include "core/sparse/kernels.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/sparse.h"

namespace orv::core::sparse {

// The letters of the record, folded, with what 0 stands for in their place.
inline char kind_of(const orv_sparse& a) { return a.kind == 0 ? 'G' : fold(a.kind); }
// Of general and anti-symmetric matrices diag says nothing.
inline bool has_stated_diagonal(const orv_sparse& a) { return kind_of(a) != 'G' && kind_of(a) != 'A'; }
inline bool is_unit(const orv_sparse& a) { return has_stated_diagonal(a) && fold(a.diag) == 'U'; }

template <class T, class Int> struct Matrix {
    i64 rows, cols; // of op(A)
    Int m, k;       // of what is stored, compressed columns as rows; of blocks in blocks
    Letters letters;
    bool negative = false; // it is -A that kernels compute with
    Int base;
    i64 count, block, ld;
    const T* val;
    const Int *begin, *end, *row, *col;

    bool unit() const { return letters.diagonal == 'u'; }
    char kind() const { return letters.kind; }
    bool lower() const { return letters.triangle == 'l'; }
};

// How many rows there are in the record's compressed lines: columns for CSC.
inline i64 lines_of(const orv_sparse& a)
{
    const i64 n = a.format == ORV_SPARSE_CSC ? a.cols : a.rows;
    return a.format == ORV_SPARSE_BSR ? n / a.block : n;
}

// The letters that compressed rows have names for. A letter too many would cost nothing, but these are those of all
// kinds: a symmetric matrix is its transpose, and so on.
inline char csr_op(char kind, char op, bool* negative)
{
    switch (kind) {
    case 's':
    case 'd':
        return op == 'c' || op == 's' ? 's' : 'n';
    case 'h':
        return op == 't' || op == 's' ? 's' : 'n';
    case 'a':
        *negative = op == 't' || op == 'c';
        return op == 'c' || op == 's' ? 's' : 'n';
    default:
        return op;
    }
}
inline char dia_op(char kind, char op)
{
    switch (kind) {
    case 's':
    case 'd':
        return op == 'c' ? 'c' : 'n';
    case 'h':
        return op == 't' ? 't' : 'n';
    default:
        return op;
    }
}

// trans: N, T, C.
template <class T, class Int> Matrix<T, Int> matrix_of(const orv_sparse& a, char trans)
{
    const auto integers = [](const void* p) { return static_cast<const Int*>(p); };
    const bool transposes = fold(trans) != 'N', blocks = a.format == ORV_SPARSE_BSR,
               columns = a.format == ORV_SPARSE_CSC;
    Matrix<T, Int> r{};
    r.rows = transposes ? a.cols : a.rows, r.cols = transposes ? a.rows : a.cols;
    r.m = static_cast<Int>(lines_of(a)), r.k = static_cast<Int>(columns ? a.rows : blocks ? a.cols / a.block : a.cols);
    r.base = a.base, r.count = a.count, r.block = a.block, r.ld = a.ld;
    r.val = static_cast<const T*>(a.values);
    r.begin = integers(a.begin), r.end = integers(a.end), r.row = integers(a.row), r.col = integers(a.col);
    if (r.end == nullptr && r.begin != nullptr) r.end = r.begin + 1;
    if (columns) r.col = r.row;

    Letters& l = r.letters;
    l.narrow = sizeof(Int) == 4;
    l.type = type_letter<T>;
    l.kind = static_cast<char>(kind_of(a) | 0x20);
    if (l.kind == 'h' && !is_complex<T>) l.kind = 's';
    l.base = static_cast<char>(a.base);
    const bool triangular = l.kind != 'g' && l.kind != 'd';
    bool lower = fold(a.uplo) == 'L';
    l.diagonal = !has_stated_diagonal(a) ? '_' : is_unit(a) ? 'u' : 'n';
    char op = static_cast<char>(fold(trans) | 0x20);
    const auto real = [](char of_complex) -> char {
        return is_complex<T> ? of_complex : of_complex == 'c' ? 't' : of_complex == 's' ? 'n' : of_complex;
    };
    switch (a.format) {
    case ORV_SPARSE_CSC: // rows of the transpose
        lower = !lower;
        op = op == 'n' ? 't' : op == 't' ? 'n' : 's';
        [[fallthrough]];
    case ORV_SPARSE_CSR:
        l.storage = Storage::csr, op = csr_op(l.kind, real(op), &r.negative);
        break;
    case ORV_SPARSE_COO:
        // A transpose has rows for columns; a Hermitian matrix is its own conjugate transpose.
        l.storage = Storage::coo;
        if (op == 't' || (op == 'c' && l.kind != 'h')) {
            lower = !lower;
            const Int* const kept = r.row;
            r.row = r.col, r.col = kept;
            r.m = static_cast<Int>(a.cols), r.k = static_cast<Int>(a.rows);
        }
        op = op == 'c' && l.kind != 'h' ? real('s') : 'n';
        break;
    case ORV_SPARSE_DIA:
        l.storage = Storage::dia, l.base = 1, op = dia_op(l.kind, real(op));
        break;
    default: // blocks and skylines have their options as arguments, but for mv
        l.storage = Storage::bsr, op = real(op);
        if (l.kind == 's' && op == 't') op = 'n';
    }
    l.op = l.kind == 'd' && l.diagonal == 'u' ? 'n' : op;
    l.triangle = !triangular ? '_' : lower ? 'l' : 'u';
    return r;
}

} // namespace orv::core::sparse
