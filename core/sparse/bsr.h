// Matrices in rows of blocks. Of products with a vector only some have a kernel of their own; the others are products
// with a dense matrix of one column. (The interface: formats.h)
#pragma once

#include "core/sparse/share.h"
#include "core/sparse/vectors.h"

#include <algorithm>

namespace orv::core::sparse {

template <class T, class Int> class Bsr {
public:
    explicit Bsr(const Matrix<T, Int>& a) : a_(a), lb_(static_cast<Int>(a.block)) {}

    bool find(Form form)
    {
        Letters& l = a_.letters;
        is_vector_ = form == Form::mv && l.op == 'n' && ((l.kind == 'g') || (l.kind == 's' && l.diagonal == 'n'));
        if (is_vector_) {
            l.form = form, l.seq = false;
            remember(l);
            return (kernel_ = grid_kernel(l)) != nullptr;
        }
        const auto found = [](auto& kernel) { return remember(kernel.name()), kernel.get() != nullptr; };
        return with_layout([&]<class K>(const K*) {
            if (form == Form::sv || form == Form::sm) return found(K::gauss) && K::invdiag.get() != nullptr;
            switch (l.kind) {
            case 'g':
                return found(K::general);
            case 's':
                return found(K::symmetric);
            case 't':
                return found(K::triangular);
            case 'a':
                return found(K::anti_symmetric);
            default:
                return found(K::diagonal);
            }
        });
    }

    bool by_rows() const { return a_.base == 0; }
    bool adds_ones() const { return true; }
    bool writes_own_rows() const { return is_vector_ && a_.kind() == 'g'; }
    bool divides() const { return is_vector_; }
    i64 work() const { return blocks() * lb_ * lb_; }

    void multiply_rows(int index, int count, T alpha, const T* x, T beta, T* y) const
    {
        const Int first = 1 + edge(index, count), last = edge(index + 1, count);
        reinterpret_cast<kernels::sparse::bsr_mv_par<T, Int>*>(kernel_)(&first, &last, &a_.m, &a_.k, &lb_, &alpha,
                                                                        a_.val, a_.col, a_.begin, a_.end, x, y, &beta);
    }
    void add(int index, int count, T alpha, const T* x, T* y) const
    {
        if (is_vector_) return multiply_rows(index, count, alpha, x, one<T>, y);
        add(alpha, column<const T>(x, a_.cols), column<T>(y, a_.rows));
    }
    void add(T alpha, const Dense<const T>& x, const Dense<T>& y) const
    {
        const Int op = option(), uplo = a_.lower() ? 1 : 2, nonunit = a_.unit() ? 0 : 1,
                  nd = static_cast<Int>(y.columns()), ldx = static_cast<Int>(x.ld), ldy = static_cast<Int>(y.ld);
        with_layout([&]<class K>(const K*) {
            const auto run = [&](auto& kernel, auto... options) {
                kernel.run(options..., &a_.m, &nd, &lb_, &alpha, a_.val, a_.col, a_.begin, a_.end, x.at, &ldx, y.at,
                           &ldy);
            };
            switch (a_.kind()) {
            case 'g':
                return run(K::general, &op);
            case 's':
                return run(K::symmetric, &uplo, &nonunit);
            case 't':
                return run(K::triangular, &op, &uplo, &nonunit);
            case 'a':
                return run(K::anti_symmetric, &op, &uplo);
            default:
                return run(K::diagonal, &op, &nonunit);
            }
        });
    }

    bool applies_alpha() const { return false; }
    i64 row_without_diagonal() const
    {
        for (Int i = 0; i < a_.m; ++i) {
            bool has = false;
            for_each_counting(i, [&](Int e) { has = has || a_.col[e] == i + a_.base; });
            if (!has) return i64{i} * lb_;
        }
        return -1;
    }

    // Copies the blocks that count, and inverts those on the diagonal; of ones there are none. Called once all rows are
    // known to be sound.
    orv_status prepare_solve()
    {
        i64 blocks = 0;
        for (Int i = 0; i < a_.m; ++i) for_each_counting(i, [&](Int) { ++blocks; });
        const i64 size = i64{lb_} * lb_;
        copy_.values = allocate<T>(max(1, blocks * size)), copy_.col = allocate<Int>(max(1, blocks)),
        copy_.begin = allocate<Int>(i64{a_.m} + 1);
        if (copy_.values == nullptr || copy_.col == nullptr || copy_.begin == nullptr)
            return fail(ORV_NO_MEMORY, "no memory is left for a copy of %lld blocks", static_cast<long long>(blocks));
        Int at = 0;
        for (Int i = 0; i < a_.m; ++i) {
            copy_.begin[i] = at;
            for_each_counting(i, [&](Int e) {
                copy_.col[at] = a_.col[e];
                std::copy_n(a_.val + e * size, size, copy_.values + at++ * size);
            });
        }
        copy_.begin[a_.m] = at;
        const Int flag = 1;
        return with_layout([&]<class K>(const K*) {
            return K::invdiag.run(&a_.m, &flag, &lb_, copy_.values, copy_.col, copy_.begin, copy_.begin + 1);
        });
    }
    void solve(T alpha, T* y) const { solve(alpha, column<T>(y, a_.rows)); }
    void solve(T, const Dense<T>& y) const
    {
        const Int op = option(), uplo = a_.lower() ? 1 : 2, nd = static_cast<Int>(y.columns()),
                  ldy = static_cast<Int>(y.ld);
        with_layout([&]<class K>(const K*) {
            return K::gauss.run(&op, &uplo, &lb_, &a_.m, &nd, copy_.values, copy_.col, copy_.begin, copy_.begin + 1,
                                y.at, &ldy);
        });
    }

    Bsr(const Bsr&) = delete;
    ~Bsr()
    {
        for (void* block :
             {static_cast<void*>(copy_.values), static_cast<void*>(copy_.col), static_cast<void*>(copy_.begin)})
            if (block != nullptr) orv_serv_deallocate(block);
    }

private:
    template <class E> static E* allocate(i64 count)
    {
        return static_cast<E*>(orv_serv_allocate(count * i64{sizeof(E)}, 128));
    }
    template <class Act> auto with_layout(const Act& act) const
    {
        using K = Kernels<T, Int>;
        return by_rows() ? act(static_cast<const typename K::by_rows*>(nullptr))
                         : act(static_cast<const typename K::by_columns*>(nullptr));
    }
    template <class E> Dense<E> column(E* at, i64 n) const
    {
        return Dense<E>::of(at, n, 1, by_rows() ? 1 : n, by_rows());
    }
    Int option() const { return a_.letters.op == 'n' ? 1 : a_.letters.op == 't' ? 2 : 3; }
    Int edge(int index, int count) const { return share_of_rows(a_.begin, a_.m, blocks(), index, count); }
    i64 blocks() const { return work_of(a_.begin, a_.end, a_.m); }
    // Entries of a row that a solve uses; of ones on the diagonal none is stored.
    template <class Act> void for_each_counting(Int i, const Act& act) const
    {
        for (Int p = a_.begin[i]; p < a_.end[i]; ++p) {
            const Int e = p - a_.begin[0], j = a_.col[e] - a_.base;
            if (i == j ? !a_.unit() : a_.kind() == 't' && a_.lower() == (j < i)) act(e);
        }
    }

    Matrix<T, Int> a_;
    Int lb_;
    struct {
        T* values;
        Int *col, *begin;
    } copy_{};
    bool is_vector_ = false;
    void* kernel_ = nullptr;
};

} // namespace orv::core::sparse
