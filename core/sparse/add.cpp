// Sums. Rows are counted first, so that every thread knows where its rows go.
#include "core/sparse/pairs.h"

#include <span>

namespace orv::core::sparse {
namespace {

// The columns of a sorted row.
template <class Int> using Line = std::span<const Int>;

// Columns that two rows have together. Entries of one column pair off, as they do in the kernel.
template <class Int> Int count_union(Line<Int> a, Line<Int> b)
{
    Int n = 0;
    std::size_t p = 0, q = 0;
    for (; p < a.size() && q < b.size(); ++n) {
        const Int i = a[p], j = b[q];
        p += i <= j, q += j <= i;
    }
    return n + static_cast<Int>((a.size() - p) + (b.size() - q));
}

// The same without comparing entries of unlike rows, of which none foresees the next. met: room for each column, with
// no row from this one on.
template <class Int> Int count_union(Line<Int> a, Line<Int> b, Int row, Int* met)
{
    if (std::ranges::equal(a, b)) return static_cast<Int>(a.size());
    Int both = 0;
    bool repeats = false;
    for (const Int j : a) repeats |= met[j] == row, met[j] = row;
    for (const Int j : b) both += met[j] == row, repeats |= met[j] == -row, met[j] = -row;
    return repeats ? count_union(a, b) : static_cast<Int>(a.size() + b.size()) - both;
}

// C := A + factor*B
template <class T, class Int> struct Sum {
    const Rows<T, Int>&a, &b;
    T factor;

    // Entries of the rows up to row i.
    i64 before(i64 i) const { return (i64{a.begin[i]} - a.begin[0]) + (b.begin[i] - b.begin[0]) + 2 * row_cost * i; }
    i64 work() const { return before(a.m); }

    // met: room for each column, or null.
    void count(i64 first, i64 last, Int* starts, Int* met) const
    {
        if (met != nullptr) std::fill_n(met, a.n, Int{0});
        for (i64 i = first; i <= last; ++i)
            starts[i] = met == nullptr ? count_union(line(a, i), line(b, i))
                                       : count_union(line(a, i), line(b, i), static_cast<Int>(i), met - a.base);
    }
    // scratch: pointers that the kernel makes for these rows, from 1 on.
    void run(kernels::sparse::CsrAdd<T, Int>* kernel, i64 from, i64 to, const Int* starts, Int* scratch,
             const OwnArrays<T, Int>& c) const
    {
        const Int first = static_cast<Int>(from), last = static_cast<Int>(to), sort = 0, m = static_cast<Int>(a.m),
                  n = static_cast<Int>(a.n), place = starts[from - 1] - 1, room = starts[to] - 1 - place;
        Int info = 0;
        kernel(&first, &last, &sort, &m, &n, const_cast<T*>(a.values()), const_cast<Int*>(a.columns()), a.pointers(),
               &factor, const_cast<T*>(b.values()), const_cast<Int*>(b.columns()), b.pointers(), c.val + place,
               c.col + place, scratch, &room, &info);
    }

private:
    static Line<Int> line(const Rows<T, Int>& rows, i64 i) // from 1
    {
        const Int first = rows.begin[0];
        return {rows.col + (rows.begin[i - 1] - first), rows.col + (rows.begin[i] - first)};
    }
};

// C := factor*op(A) + B, the summands of the kernel the other way round.
template <class T, class Int>
orv_status add(const Wish& wish, Op op, T factor, const orv_sparse& a, const orv_sparse& b, const orv_sparse& form)
{
    using K = Kernels<T, Int>;
    Rows<T, Int> first, second;
    first.for_work = second.for_work = true;
    orv_status status = rows_of(b, Op{}, as_rows(form), Order::sorted, false, first);
    if (status == ORV_OK) status = rows_of(a, op, as_rows(form), Order::sorted, false, second);
    if (status != ORV_OK) return status;
    auto* const kernel = K::sum.get();
    if (kernel == nullptr) return last_status();

    const Sum<T, Int> sum{first, second, factor};
    const i64 m = form.rows, work = sum.work();
    const auto before = [&](i64 i) { return sum.before(i); };
    // Each thread's rows have one pointer more than rows, so those of the next one begin a place later.
    const Block<Int> pointers(m + 1), scratch(m + 1 + most_threads);
    if (pointers.get() == nullptr || scratch.get() == nullptr) return no_memory_for(m);
    Int* const starts = pointers.get();
    const bool marked = form.cols <= work; // more columns than entries are not worth the room
    const Marks<Int> marks(marked ? form.cols : 0, threads_for_rows<T>(m, work));
    if (!marks.complete()) return no_memory_for(form.cols);
    each_share<T>(m, work, before, [&](i64 from, i64 to, int index) {
        sum.count(from, to, starts, marked ? marks.of(index) : nullptr);
    });
    status = counts_to_starts(m, starts);
    if (status != ORV_OK) return status;
    return make<T>(wish, form, starts, {&a, &b}, [&](const OwnArrays<T, Int>& c) {
        remember(K::sum.name());
        remember_threads(each_share<T>(m, work, before, [&](i64 from, i64 to, int index) {
            sum.run(kernel, from, to, starts, scratch.get() + index, c);
        }));
    });
}

orv_status prepare(const Wish& wish, char trans, const orv_sparse* a, const orv_sparse* b, orv_sparse* form)
{
    const int b_position = wish.position - 1;
    if (const orv_status bad = refuse_operand(wish.name, 1, wish.position - 2, trans, a)) return bad;
    if (const char* fault = fault_of(b)) return bad_argument(wish.name, b_position, "%s", fault);
    const Op op = Op::of(trans);
    if (a->type != b->type) return bad_argument(wish.name, b_position, "its type is not that of A");
    if (op.rows(*a) != b->rows || op.cols(*a) != b->cols)
        return bad_argument(wish.name, b_position, "it has other sizes than op(A), which is %lld by %lld",
                            static_cast<long long>(op.rows(*a)), static_cast<long long>(op.cols(*a)));
    return form_of(wish.name, wish.position, wish.asked, *a, b->rows, b->cols, form);
}

template <class T>
orv_status add_of_type(const Wish& wish, char type, char trans, T alpha, const orv_sparse* a, const orv_sparse* b)
{
    orv_sparse form{};
    if (const orv_status bad = prepare(wish, trans, a, b, &form)) return bad;
    if (a->type != type) return bad_argument(wish.name, 3, "type is not that of the routine");
    const Op op = Op::of(trans);
    return form.bits == 32 ? add<T, i32>(wish, op, alpha, *a, *b, form) : add<T, i64>(wish, op, alpha, *a, *b, form);
}

} // namespace
} // namespace orv::core::sparse

using namespace orv;
using namespace orv::core::sparse;

#define ORV_SPARSE_ADD(t, T)                                                                                           \
    orv_status orv_sparse_##t##add(char trans, T alpha, const orv_sparse* a, const orv_sparse* b, orv_sparse* c)       \
    {                                                                                                                  \
        return add_of_type<T>({"orv_sparse_" #t "add", 5, c}, *#t, trans, alpha, a, b);                                \
    }

ORV_SPARSE_ADD(s, float)
ORV_SPARSE_ADD(d, double)
ORV_SPARSE_ADD(c, cpx<float>)
ORV_SPARSE_ADD(z, cpx<double>)

orv_status orv_sparse_add_sizes(char trans, const orv_sparse* a, const orv_sparse* b, orv_sparse* c)
{
    const Wish wish{"orv_sparse_add_sizes", 4, c, true};
    orv_sparse form{};
    if (const orv_status bad = prepare(wish, trans, a, b, &form)) return bad;
    return with_types(form,
                      [&]<class T, class Int>() { return add<T, Int>(wish, Op::of(trans), one<T>, *a, *b, form); });
}
