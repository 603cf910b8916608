// Skylines. (The interface: formats.h)
#pragma once

#include "core/sparse/vectors.h"

namespace orv::core::sparse {

template <class T, class Int> class Sky {
public:
    explicit Sky(const Matrix<T, Int>& a) : a_(a) {}

    bool find(Form form)
    {
        const auto found = [](auto& kernel) { return remember(kernel.name()), kernel.get() != nullptr; };
        using K = Kernels<T, Int>;
        if (form == Form::sv || form == Form::sm) return found(K::skysvk);
        return a_.kind() == 't' ? found(K::skymmgk) : a_.kind() == 's' ? found(K::skymmsk) : found(K::skymmkk);
    }

    bool by_rows() const { return false; }
    bool adds_ones() const { return true; }
    bool divides() const { return false; }
    i64 work() const { return a_.m == 0 ? 0 : i64{a_.begin[a_.m]} - a_.begin[0]; }

    void add(int, int, T alpha, const T* x, T* y) const
    {
        add(alpha, Dense<const T>{x, 1, a_.rows, a_.rows, false}, Dense<T>{y, 1, a_.rows, a_.rows, false});
    }
    void add(T alpha, const Dense<const T>& x, const Dense<T>& y) const
    {
        using K = Kernels<T, Int>;
        const Int first = 1, nd = static_cast<Int>(y.columns()), ldx = static_cast<Int>(x.ld),
                  ldy = static_cast<Int>(y.ld);
        const auto run = [&](auto& kernel, auto... op) {
            kernel.run(op..., &first, &nd, &a_.m, &nd, &uplo_, &nonunit_, &alpha, a_.val, a_.begin, x.at, &ldx, y.at,
                       &ldy);
        };
        if (a_.kind() == 't') run(K::skymmgk, &op_);
        else if (a_.kind() == 's') run(K::skymmsk);
        else run(K::skymmkk, &op_);
    }

    orv_status prepare_solve() { return ORV_OK; }
    bool applies_alpha() const { return false; }
    i64 row_without_diagonal() const
    {
        for (Int i = 0; i < a_.m; ++i)
            if (a_.begin[i + 1] <= a_.begin[i]) return i;
        return -1;
    }
    void solve(T, T* y) const { Kernels<T, Int>::skysvk.run(&op_, &uplo_, &nonunit_, &a_.m, a_.val, a_.begin, y); }
    void solve(T alpha, const Dense<T>& y) const
    {
        for (i64 j = 0; j < y.lines; ++j) solve(alpha, y.line(j));
    }

private:
    Matrix<T, Int> a_;
    Int op_ = a_.letters.op == 'n' ? 1 : 2, uplo_ = a_.lower() ? 1 : 2, nonunit_ = a_.unit() ? 0 : 1;
};

} // namespace orv::core::sparse
