// Products of two sparse matrices, in compressed rows or dense. Rows are cut among threads by the multiplications that
// they take; every one computes its rows as it would alone.
#include "core/sparse/pairs.h"

namespace orv::core::sparse {
namespace {

constexpr int sizes_alone = 1, values_alone = 2; // what the kernel is asked for

// op(A)*op(B) in compressed rows: A m by k, B k by n. B's columns count from the result's base.
template <class T, class Int> class Product {
public:
    Product(const Rows<T, Int>& a, const Rows<T, Int>& b) : a_(a), b_(b), work_(a.m + 1) {}

    // False without memory.
    bool prepare()
    {
        i64* const work = work_.get();
        if (work == nullptr) return false;
        const Int *col = a_.columns() - 1, *b_begin = b_.begin - a_.base;
        work[0] = 0;
        for (i64 i = 0; i < a_.m; ++i) {
            i64 here = work[i] + row_cost;
            for (Int p = a_.begin[i]; p < a_.begin[i + 1]; ++p) here += 1 + b_begin[col[p] + 1] - b_begin[col[p]];
            work[i + 1] = here;
        }
        return true;
    }

    int threads() const { return threads_for_rows<T>(a_.m, work()); }
    // act(first, last, index) for the rows of each thread, from 1.
    template <class Act> int share(const Act& act) const
    {
        return each_share<T>(
            a_.m, work(), [this](i64 i) { return work_.get()[i]; }, act);
    }
    // The last row up to which rows from `first` on have no more entries than an Int can count.
    i64 countable(i64 first, i64 last) const
    {
        const i64* work = work_.get();
        i64 row = first;
        while (row < last && work[row + 1] - work[first - 1] < std::numeric_limits<Int>::max()) ++row;
        return row;
    }

    // Rows first to last: starts receives where they start, from 1; or columns and values are computed, and it has
    // that.
    void run(kernels::sparse::CsrProduct<T, Int>* kernel, Int request, i64 from, i64 to, Int* marks, Int* starts,
             const OwnArrays<T, Int>& c) const
    {
        const Int first = static_cast<Int>(from), last = static_cast<Int>(to), m = static_cast<Int>(a_.m),
                  n = static_cast<Int>(b_.n), start = 0, room = std::numeric_limits<Int>::max();
        Int info = 0;
        marks[0] = 0; // columns from 0 have their marks one place lower than the kernel clears
        kernel(&first, &last, &m, &n, &request, &start, a_.values(), a_.columns(), a_.pointers(), b_.values(),
               b_.columns(), b_pointers(), c.val, c.col, starts, &room, marks + (1 - b_.base), &info);
    }
    // The same into a dense C; columns of B count from 1.
    void run(kernels::sparse::CsrProductDense<T, Int>* kernel, i64 from, i64 to, T* c, Int ldc) const
    {
        const Int first = static_cast<Int>(from), last = static_cast<Int>(to), n = static_cast<Int>(b_.n), op = 0;
        kernel(&op, &first, &last, &n, a_.values(), a_.columns(), a_.pointers(), b_.values(), b_.columns(),
               b_pointers(), c, &ldc);
    }
    i64 rows() const { return a_.m; }
    i64 columns() const { return b_.n; }

private:
    i64 work() const { return work_.get()[a_.m]; }
    // Moved so that columns of A, counted as they are, find the rows of B.
    const Int* b_pointers() const { return b_.pointers() + (1 - a_.base); }

    const Rows<T, Int>&a_, &b_;
    Block<i64> work_; // in front of each row
};

// Where each row of the result starts, from 1.
template <class T, class Int>
orv_status find_starts(const Product<T, Int>& product, kernels::sparse::CsrProduct<T, Int>* kernel,
                       const Marks<Int>& marks, Int* starts)
{
    const i64 m = product.rows();
    const Block<Int> scratch(m + 1 + most_threads);
    if (scratch.get() == nullptr) return no_memory_for(m);
    product.share([&](i64 first, i64 last, int index) {
        Int* const own = scratch.get() + index; // there is one more than rows, so those of the next begin a place later
        for (i64 to; first <= last; first = to + 1) {
            to = product.countable(first, last);
            product.run(kernel, sizes_alone, first, to, marks.of(index), own, {});
            for (i64 i = first; i <= to; ++i) starts[i] = own[i] - own[i - 1];
        }
    });
    return counts_to_starts(m, starts);
}

enum class Step { all, sizes, values };

// Pointers of the caller, from wherever, and back.
template <class Int> void copy_starts(const void* from, i64 m, Int* starts)
{
    const Int* begin = static_cast<const Int*>(from);
    for (i64 i = 0; i <= m; ++i) starts[i] = begin[i] - begin[0] + 1;
}
template <class Int> void tell_pointers(const Int* starts, i64 m, int base, const void* to)
{
    Int* begin = static_cast<Int*>(const_cast<void*>(to));
    for (i64 i = 0; i <= m; ++i) begin[i] = starts[i] - 1 + static_cast<Int>(base);
}

template <class T, class Int>
orv_status multiply(const Wish& wish, Step step, Op op_a, const orv_sparse& a, Op op_b, const orv_sparse& b,
                    const orv_sparse& form)
{
    using K = Kernels<T, Int>;
    Rows<T, Int> left, right;
    left.for_work = right.for_work = true;
    orv_status status = rows_of(a, op_a, as_rows(form), Order::any, true, left);
    if (status == ORV_OK) status = rows_of(b, op_b, as_rows(form), Order::any, false, right);
    if (status != ORV_OK) return status;
    auto* const kernel = K::product.get();
    if (kernel == nullptr) return last_status();

    Product<T, Int> product(left, right);
    const i64 m = form.rows;
    const Block<Int> pointers(m + 1);
    if (pointers.get() == nullptr || !product.prepare()) return no_memory_for(m);
    const Marks<Int> marks(form.cols, product.threads());
    if (!marks.complete()) return no_memory_for(form.cols);
    Int* const starts = pointers.get();
    if (step == Step::values) copy_starts(wish.asked->begin, m, starts);
    else status = find_starts(product, kernel, marks, starts);
    if (status != ORV_OK) return status;
    if (step == Step::sizes && is_general_csr(form) && wish.asked->begin != nullptr)
        tell_pointers(starts, m, form.base, wish.asked->begin);
    return make<T>(wish, form, starts, {&a, &b}, [&](const OwnArrays<T, Int>& c) {
        remember(K::product.name());
        remember_threads(product.share([&](i64 first, i64 last, int index) {
            product.run(kernel, values_alone, first, last, marks.of(index), starts, c);
        }));
    });
}

// Operands that fit each other; op(A)*op(B) is rows by cols.
struct Factors {
    Op op_a, op_b;
    i64 rows, cols;
};
orv_status refuse_factors(const char* name, int transa_position, char transa, const orv_sparse* a, char transb,
                          const orv_sparse* b, Factors* factors)
{
    const int first = transa_position, b_position = first + 3;
    if (const orv_status bad = refuse_operand(name, first, first + 1, transa, a)) return bad;
    if (const orv_status bad = refuse_operand(name, first + 2, b_position, transb, b)) return bad;
    const Op op_a = Op::of(transa), op_b = Op::of(transb);
    if (a->type != b->type) return bad_argument(name, b_position, "its type is not that of A");
    if (op_a.cols(*a) != op_b.rows(*b))
        return bad_argument(name, b_position, "op(B) has %lld rows, and op(A) %lld columns",
                            static_cast<long long>(op_b.rows(*b)), static_cast<long long>(op_a.cols(*a)));
    *factors = {op_a, op_b, op_a.rows(*a), op_b.cols(*b)};
    return ORV_OK;
}

orv_status multiply_step(const char* name, Step step, char transa, const orv_sparse* a, char transb,
                         const orv_sparse* b, orv_sparse* c)
{
    constexpr int position = 5;
    const Wish wish{name, position, c, step == Step::sizes};
    Factors f{};
    orv_sparse form{};
    if (const orv_status bad = refuse_factors(name, 1, transa, a, transb, b, &f)) return bad;
    if (const orv_status bad = form_of(name, position, c, *a, f.rows, f.cols, &form)) return bad;
    if (step == Step::values && !is_general_csr(form))
        return bad_argument(name, position, "values alone are computed in CSR of kind G");
    if (step == Step::values && c->begin == nullptr)
        return bad_argument(name, position, "begin is a null pointer; orv_sparse_multiply_sizes fills it");
    return with_types(form,
                      [&]<class T, class Int>() { return multiply<T, Int>(wish, step, f.op_a, *a, f.op_b, *b, form); });
}

template <class T, class Int>
orv_status multiply_dense(const Factors& f, const orv_sparse& a, const orv_sparse& b, bool by_rows, T* c, i64 ldc)
{
    using K = Kernels<T, Int>;
    auto& chosen = by_rows ? K::product_by_rows : K::product_by_columns;
    auto* const kernel = chosen.get();
    if (kernel == nullptr) return last_status();
    orv_sparse form{};
    form.format = ORV_SPARSE_CSR, form.base = 1;
    Rows<T, Int> left, right;
    left.for_work = right.for_work = true;
    orv_status status = rows_of(a, f.op_a, form, Order::any, true, left);
    if (status == ORV_OK) status = rows_of(b, f.op_b, form, Order::any, false, right);
    if (status != ORV_OK) return status;
    Product<T, Int> product(left, right);
    if (!product.prepare()) return no_memory_for(f.rows);
    remember(chosen.name());
    remember_threads(
        product.share([&](i64 first, i64 last, int) { product.run(kernel, first, last, c, static_cast<Int>(ldc)); }));
    return ORV_OK;
}

} // namespace
} // namespace orv::core::sparse

using namespace orv;
using namespace orv::core::sparse;

orv_status orv_sparse_multiply(char transa, const orv_sparse* a, char transb, const orv_sparse* b, orv_sparse* c)
{
    return multiply_step("orv_sparse_multiply", Step::all, transa, a, transb, b, c);
}
orv_status orv_sparse_multiply_sizes(char transa, const orv_sparse* a, char transb, const orv_sparse* b, orv_sparse* c)
{
    return multiply_step("orv_sparse_multiply_sizes", Step::sizes, transa, a, transb, b, c);
}
orv_status orv_sparse_multiply_values(char transa, const orv_sparse* a, char transb, const orv_sparse* b, orv_sparse* c)
{
    return multiply_step("orv_sparse_multiply_values", Step::values, transa, a, transb, b, c);
}

orv_status orv_sparse_multiply_dense(char order, char transa, const orv_sparse* a, char transb, const orv_sparse* b,
                                     void* c, int64_t ldc)
{
    const char* const name = "orv_sparse_multiply_dense";
    Factors f{};
    if (!arguments::one_of(order, "RC")) return core::bad_argument(name, 1, "order is none of R and C");
    if (const orv_status bad = refuse_factors(name, 2, transa, a, transb, b, &f)) return bad;
    const bool by_rows = fold(order) == 'R';
    const i64 line = by_rows ? f.cols : f.rows;
    if (ldc < max(1, line))
        return core::bad_argument(name, 7, "it is smaller than a line of %lld", static_cast<long long>(line));
    if (f.rows == 0 || f.cols == 0) return ORV_OK;
    if (c == nullptr) return core::bad_argument(name, 6, "the result is a null pointer");
    orv_sparse widest = *a;
    if (b->bits == 64 || ldc > std::numeric_limits<i32>::max()) widest.bits = 64;
    return with_types(widest, [&]<class T, class Int>() {
        return multiply_dense<T, Int>(f, *a, *b, by_rows, static_cast<T*>(c), ldc);
    });
}
