// Matrices by diagonals. (The interface: formats.h)
#pragma once

#include "core/sparse/vectors.h"

namespace orv::core::sparse {

template <class T, class Int> class Dia {
public:
    explicit Dia(const Matrix<T, Int>& a) : a_(a), ld_(static_cast<Int>(a.ld)), n_(static_cast<Int>(a.count)) {}

    bool find(Form form)
    {
        Letters& l = a_.letters;
        if (l.kind == 'd' && l.diagonal == 'u') return true; // no kernel is needed
        l.form = form;
        l.seq = form == Form::sv || (form == Form::sm && l.kind == 'd');
        remember(l);
        return (kernel_ = grid_kernel(l)) != nullptr;
    }

    bool by_rows() const { return false; }
    bool adds_ones() const { return false; }
    // A part of the rows is a matrix whose distances all differ by the rows before it, which no other kind bears.
    bool writes_own_rows() const { return a_.kind() == 'g' && a_.letters.op == 'n'; }
    bool divides() const { return n_ > 1; }
    i64 work() const { return i64{n_} * a_.m; }

    void multiply_rows(int index, int count, T alpha, const T* x, T beta, T* y) const
    {
        const Int from = edge(a_.m, index, count), m = edge(a_.m, index + 1, count) - from;
        scale(Dense<T>{y + from, 1, m, m, false}, beta);
        // Some diagonals at a time. A row meets them in the order of its columns, so tiles make no difference.
        constexpr Int some = 64;
        Int moved[some];
        for (Int d = 0; d < n_; d += some) {
            const Int n = static_cast<Int>(min(some, n_ - d));
            for (Int i = 0; i < n; ++i) moved[i] = a_.col[d + i] + from;
            mv(m, alpha, a_.val + from + i64{ld_} * d, moved, n, x, y + from);
        }
    }
    void add(int index, int count, T alpha, const T* x, T* y) const
    {
        const Int from = edge(n_, index, count), to = edge(n_, index + 1, count);
        if (kernel_ != nullptr) mv(a_.m, alpha, a_.val + i64{ld_} * from, a_.col + from, to - from, x, y);
    }
    void add(T alpha, const Dense<const T>& x, const Dense<T>& y) const
    {
        if (kernel_ == nullptr) return;
        const Int first = 1, nd = static_cast<Int>(y.columns()), ldx = static_cast<Int>(x.ld),
                  ldy = static_cast<Int>(y.ld);
        call<kernels::sparse::dia_mm_par<T, Int>>(&first, &nd, &a_.m, &nd, &a_.k, &alpha, a_.val, &ld_, a_.col, &n_,
                                                  x.at, &ldx, y.at, &ldy);
    }

    // Looks for the main diagonal and for those beside it.
    orv_status prepare_solve()
    {
        using K = Kernels<T, Int>;
        Int d0, d1, flag = 0;
        orv_status status = ORV_OK;
        const auto find = [&](auto& kernel) { status = kernel.run(a_.col, &n_, &d0, &beside_, &d1, &main_, &flag); };
        if (a_.kind() == 'd') {
            main_ = 0;
            while (main_ < n_ && a_.col[main_] != 0) ++main_;
            flag = main_ < n_ ? 0 : -1;
        } else if (a_.lower()) a_.unit() ? find(K::find_lower_unit) : find(K::find_lower);
        else a_.unit() ? find(K::find_upper_unit) : find(K::find_upper);
        missing_ = flag != 0;
        return status;
    }
    bool applies_alpha() const { return a_.kind() == 'd'; }
    i64 row_without_diagonal() const { return missing_ ? 0 : -1; }
    void solve(T alpha, T* y) const
    {
        if (a_.kind() == 'd') call<kernels::sparse::dia_svd_seq<T, Int>>(&a_.m, &alpha, a_.val, &ld_, a_.col, &n_, y);
        else call<kernels::sparse::dia_sv_seq<T, Int>>(&a_.m, &alpha, a_.val, &ld_, a_.col, &n_, y, &beside_, &main_);
    }
    void solve(T alpha, const Dense<T>& y) const
    {
        const Int first = 1, nd = static_cast<Int>(y.columns()), ldy = static_cast<Int>(y.ld);
        if (a_.kind() == 'd')
            call<kernels::sparse::dia_sm_seq<T, Int>>(&a_.m, &nd, &alpha, a_.val, &ld_, a_.col, &n_, y.at, &ldy,
                                                      &beside_, &main_);
        else
            call<kernels::sparse::dia_sm_par<T, Int>>(&first, &nd, &a_.m, &nd, &alpha, a_.val, &ld_, a_.col, &n_, y.at,
                                                      &ldy, &beside_, &main_);
    }

private:
    static Int edge(Int n, int index, int count) { return static_cast<Int>(i64{n} * index / count); }
    template <class Signature, class... Arguments> void call(Arguments... arguments) const
    {
        reinterpret_cast<Signature*>(kernel_)(arguments...);
    }
    void mv(Int m, T alpha, const T* val, const Int* distances, Int n, const T* x, T* y) const
    {
        const Int first = 1;
        call<kernels::sparse::dia_mv_par<T, Int>>(&first, &m, &m, &a_.k, &alpha, val, &ld_, distances, &n, x, y);
    }

    Matrix<T, Int> a_;
    Int ld_, n_, beside_ = 0, main_ = 0;
    bool missing_ = false;
    void* kernel_ = nullptr;
};

} // namespace orv::core::sparse
