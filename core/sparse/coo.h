// Matrices in coordinates. Transposes are the same entries with rows for columns. (The interface: formats.h)
#pragma once

#include "core/sparse/vectors.h"

namespace orv::core::sparse {

template <class T, class Int> class Coo {
public:
    explicit Coo(const Matrix<T, Int>& a) : a_(a), nnz_(static_cast<Int>(a.count)) {}

    bool find(Form form)
    {
        Letters& l = a_.letters;
        l.form = form;
        l.seq = form == Form::sv || (form == Form::mv && l.kind == 'd');
        remember(l);
        return (kernel_ = grid_kernel(l)) != nullptr;
    }

    bool by_rows() const { return a_.base == 0; }
    bool adds_ones() const { return a_.kind() == 'd'; }
    bool divides() const { return !a_.letters.seq; }
    i64 work() const { return nnz_; }

    void add(int index, int count, T alpha, const T* x, T* y) const
    {
        const Int from = edge(index, count), to = edge(index + 1, count);
        if (a_.letters.seq) {
            call<kernels::sparse::coo_mv_seq<T, Int>>(&a_.m, &a_.k, &alpha, a_.val, a_.row, a_.col, &nnz_, x, y);
        } else if (from < to) { // a general kernel goes by the arrays that it is given
            const Int first = 1, part = to - from;
            call<kernels::sparse::coo_mv_par<T, Int>>(&first, &part, &a_.m, &a_.k, &alpha, a_.val + from, a_.row + from,
                                                      a_.col + from, &part, x, y);
        }
    }
    void add(T alpha, const Dense<const T>& x, const Dense<T>& y) const
    {
        const bool ones = a_.kind() == 'd' && a_.unit(); // of which a part is rows
        const Int first = 1, nd = static_cast<Int>(y.columns()), ldx = static_cast<Int>(x.ld),
                  ldy = static_cast<Int>(y.ld);
        call<kernels::sparse::coo_mm_par<T, Int>>(&first, ones ? &a_.m : &nnz_, &a_.m, &nd, &alpha, a_.val, a_.row,
                                                  a_.col, &nnz_, x.at, &ldx, y.at, &ldy);
    }

    orv_status prepare_solve() { return ORV_OK; }
    // As many rows are looked for at a time as there is memory for: without any, a number that the stack has.
    bool applies_alpha() const { return a_.kind() == 'd'; }
    i64 row_without_diagonal() const
    {
        constexpr i64 few = 8192;
        bool on_stack[few];
        const Block<bool> block(a_.m);
        bool* const has = block.get() != nullptr ? block.get() : on_stack;
        const i64 window = block.get() != nullptr ? a_.m : few;
        for (i64 from = 0; from < a_.m; from += window) {
            const i64 rows = min(window, a_.m - from);
            for (i64 i = 0; i < rows; ++i) has[i] = false;
            for (Int e = 0; e < nnz_; ++e) {
                const i64 i = i64{a_.row[e]} - a_.base - from;
                if (a_.row[e] == a_.col[e] && i >= 0 && i < rows) has[i] = true;
            }
            for (i64 i = 0; i < rows; ++i)
                if (!has[i]) return from + i;
        }
        return -1;
    }
    void solve(T alpha, T* y) const
    {
        call<kernels::sparse::coo_sv_seq<T, Int>>(&a_.m, &alpha, a_.val, a_.row, a_.col, &nnz_, y);
    }
    void solve(T alpha, const Dense<T>& y) const
    {
        const Int first = 1, nd = static_cast<Int>(y.columns()), ldy = static_cast<Int>(y.ld);
        call<kernels::sparse::coo_sm_par<T, Int>>(&first, &nd, &a_.m, &nd, &alpha, a_.val, a_.row, a_.col, &nnz_, y.at,
                                                  &ldy);
    }

private:
    Int edge(int index, int count) const { return static_cast<Int>(i64{nnz_} * index / count); }
    template <class Signature, class... Arguments> void call(Arguments... arguments) const
    {
        reinterpret_cast<Signature*>(kernel_)(arguments...);
    }

    Matrix<T, Int> a_;
    Int nnz_;
    void* kernel_ = nullptr;
};

} // namespace orv::core::sparse
