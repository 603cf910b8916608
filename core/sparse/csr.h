// Matrices in compressed rows, and in compressed columns as their transposes. (The interface: formats.h)
#pragma once

#include "core/sparse/share.h"
#include "core/sparse/vectors.h"

namespace orv::core::sparse {

template <class T, class Int> class Csr {
public:
    explicit Csr(const Matrix<T, Int>& a) : a_(a) {}

    bool find(Form form)
    {
        Letters& l = a_.letters;
        const bool diagonal = l.kind == 'd', turned_triangle = l.kind == 't' && (l.op == 't' || l.op == 'c');
        l.form = form;
        l.seq =
            form == Form::sv || (form == Form::mv && (diagonal || turned_triangle)) || (form == Form::mm && diagonal);
        remember(l);
        return (kernel_ = grid_kernel(l)) != nullptr;
    }

    bool by_rows() const { return a_.base == 0; }
    bool adds_ones() const { return true; }
    bool writes_own_rows() const
    {
        const char op = a_.letters.op;
        return (op == 'n' || op == 's') && (a_.kind() == 'g' || a_.kind() == 't');
    }
    bool divides() const { return !a_.letters.seq; }
    i64 work() const { return work_of(a_.begin, a_.end, a_.m); }

    // y := beta*y + alpha*op(A)*x, the rows of part `index` of `count`.
    void multiply_rows(int index, int count, T alpha, const T* x, T beta, T* y) const
    {
        const Int first = 1 + edge(index, count), last = edge(index + 1, count);
        if (first <= last) mv(first, last, alpha, x, y, beta);
    }
    void multiply_rows(int index, int count, T alpha, const Dense<const T>& x, T beta, const Dense<T>& y) const
    {
        const Int first = 1 + edge(index, count), last = edge(index + 1, count);
        if (first <= last) mm(first, last, alpha, x, y, beta);
    }
    // y := beta*y + alpha*op(A)*x with those entries; of no rows, too.
    void scale_and_add(int index, int count, T alpha, const T* x, T beta, T* y) const
    {
        if (!a_.letters.seq) return mv(1 + edge(index, count), edge(index + 1, count), alpha, x, y, beta);
        call<kernels::sparse::csr_mv_seq<T, Int>>(&a_.m, &a_.k, &alpha, a_.val, a_.col, a_.begin, a_.end, x, y, &beta);
    }
    void add(T alpha, const Dense<const T>& x, const Dense<T>& y) const
    {
        const T once = one<T>;
        if (!a_.letters.seq) return mm(1, a_.m, alpha, x, y, once);
        const Int nd = static_cast<Int>(y.columns()), ldx = static_cast<Int>(x.ld), ldy = static_cast<Int>(y.ld);
        call<kernels::sparse::csr_mm_seq<T, Int>>(&a_.m, &nd, &alpha, a_.val, a_.col, a_.begin, a_.end, x.at, &ldx,
                                                  y.at, &ldy, &once);
    }

    orv_status prepare_solve() { return ORV_OK; }
    // The first row, from 0, without an entry on the diagonal; -1 if all have one. A row of a triangle alone has it at
    // its end; where the search of a kernel stops there is it or one that is not smaller, so it does not leave the row.
    bool applies_alpha() const { return a_.kind() == 'd'; }
    i64 row_without_diagonal() const
    {
        const Int *col = a_.col - a_.begin[0], last = a_.lower() || a_.kind() == 'd' ? 1 : 0;
        for (Int i = 0; i < a_.m; ++i) {
            Int from = a_.begin[i], to = a_.end[i];
            if (from < to && col[last != 0 ? to - 1 : from] == i + a_.base) continue;
            while (from < to) {
                const Int middle = from + (to - from) / 2;
                if (col[middle] < i + a_.base) from = middle + 1;
                else to = middle;
            }
            if (from == a_.end[i] || col[from] != i + a_.base) return i;
        }
        return -1;
    }
    void solve(T alpha, T* y) const
    {
        call<kernels::sparse::csr_sv_seq<T, Int>>(&a_.m, &alpha, a_.val, a_.col, a_.begin, a_.end, y);
    }
    void solve(T alpha, const Dense<T>& y) const
    {
        const Int first = 1, nd = static_cast<Int>(y.columns()), ldy = static_cast<Int>(y.ld);
        call<kernels::sparse::csr_sm_par<T, Int>>(&first, &nd, &a_.m, &nd, &alpha, a_.val, a_.col, a_.begin, a_.end,
                                                  y.at, &ldy);
    }

private:
    Int edge(int index, int count) const { return share_of_rows(a_.begin, a_.m, work(), index, count); }
    template <class Signature, class... Arguments> void call(Arguments... arguments) const
    {
        reinterpret_cast<Signature*>(kernel_)(arguments...);
    }
    void mv(Int first, Int last, T alpha, const T* x, T* y, T beta) const
    {
        call<kernels::sparse::csr_mv_par<T, Int>>(&first, &last, &a_.m, &a_.k, &alpha, a_.val, a_.col, a_.begin, a_.end,
                                                  x, y, &beta);
    }
    void mm(Int first, Int last, T alpha, const Dense<const T>& x, const Dense<T>& y, T beta) const
    {
        const Int nd = static_cast<Int>(y.columns()), ldx = static_cast<Int>(x.ld), ldy = static_cast<Int>(y.ld);
        call<kernels::sparse::csr_mm_par<T, Int>>(&first, &last, &a_.m, &nd, &alpha, a_.val, a_.col, a_.begin, a_.end,
                                                  x.at, &ldx, y.at, &ldy, &beta);
    }

    Matrix<T, Int> a_;
    void* kernel_ = nullptr;
};

} // namespace orv::core::sparse
