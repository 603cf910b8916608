// Y := alpha*op(A)*X + beta*Y, A in compressed rows, X and Y dense with nd columns: mm. Dense operands are stored by
// rows with base 0 and by columns with base 1.
//
// General and triangular matrices that are not transposed write the rows from first to last only, and scale only these.
// All others scale m rows and add to any row, so a part needs a Y of its own. Of a transposed matrix only m is known:
// if it has more columns than rows the caller scales the rest, and if it has fewer Y has m rows all the same, or beta
// is 1. beta = 0 does not read Y. Entries that do not count are not read.
//
// Each element of Y is one sum in the order of its row, where rows write their own elements: 24, 16 or 8 columns of
// them are in registers at a time (complex ones half as many), whatever nd is.
#include "spblas/csr_mv.h"

namespace orv::ORV_SPBLAS {
namespace {

// A dense operand, whose rows are numbered as the columns of A are.
template <class T> struct Operand {
    T* at;
    i64 ld;
    bool by_rows;
    ORV_INLINE T* column(i64 j) const { return at + (by_rows ? j : j * ld); }
};

// ---- Sums in registers

template <bool by_rows, class T> ORV_INLINE void store_strided(T* p, i64 inc, vec<T> v)
{
    if constexpr (by_rows) storeu(p, v);
    else if constexpr (sizeof(T) == 4)
        for (int l = 0; l < vec<T>::lanes; ++l) p[l * inc] = v.r[l];
    else scatter(p, inc, v);
}

// Rows i to end - 1 of as many columns as the registers hold; 0 registers: of one column.
template <bool by_rows, int registers, class T>
[[gnu::noinline]] void multiply_columns(const Options& o, Int i, Int end, const Csr<T>& a, const Close<T>& close,
                                        const T* x, i64 ldx, T* y, i64 ldy)
{
    constexpr int lanes = vec<T>::lanes;
    const factor<T> alpha(close.alpha), beta(close.beta);
    const i64 x_step = by_rows ? ldx : 1, y_step = by_rows ? ldy : 1;
    const i64 x_next = by_rows ? 1 : ldx, y_next = by_rows ? 1 : ldy; // from a column to the next
    for (; i < end; ++i) {
        Int from = a.begin[i], to = a.end[i];
        if (o.triangle()) {
            const Cut cut = a.cut(o, i);
            from = cut.from(o), to = cut.to(o);
        }
        std::conditional_t<registers == 0, One<T>, Sum<T>> sum[registers == 0 ? 1 : registers]{};
        const auto add = [&](const T* entry, Int j) ORV_INLINE_LAMBDA {
            const T* element = x + j * x_step;
            if constexpr (registers == 0) {
                sum[0].add(entry, element);
            } else {
                const vec<T> value = load_splat(entry);
                repeat<registers>([&](auto r) ORV_INLINE_LAMBDA {
                    sum[r].add(value, load_strided<by_rows>(element + r * lanes * x_next, ldx));
                });
            }
        };
        for (; from < to; ++from) add(a.val + from, a.col[from]);
        static constexpr T ones = one<T>;
        if (o.unit) add(&ones, i);
        T* result = y + i * y_step;
        if constexpr (registers == 0) {
            close(sum[0].value(o.conjugate_direct), result);
        } else {
            repeat<registers>([&](auto r) ORV_INLINE_LAMBDA {
                T* p = result + r * lanes * y_next;
                vec<T> closed = alpha * sum[r].values(o.conjugate_direct);
                if (close.reads) closed = beta * load_strided<by_rows>(p, ldy) + closed;
                store_strided<by_rows>(p, ldy, closed);
            });
        }
    }
}

// All columns, the widest groups first. Of a matrix by columns each has an address of its own: eight at most.
template <bool by_rows, class T>
[[gnu::noinline]] void multiply_all_columns(const Options& o, Int i, Int end, const Csr<T>& a, const Close<T>& close,
                                            const Operand<const T>& x, const Operand<T>& y, i64 nd)
{
    constexpr int lanes = vec<T>::lanes;
    i64 j = 0;
    const auto go = [&]<int columns> {
        constexpr int registers = columns == 1 ? 0 : columns / lanes;
        for (; j + columns <= nd; j += columns)
            multiply_columns<by_rows, registers>(o, i, end, a, close, x.column(j), x.ld, y.column(j), y.ld);
    };
    if constexpr (by_rows && !is_complex<T>) go.template operator()<24>(), go.template operator()<16>();
    if constexpr (lanes > 1) go.template operator()<8>();
    else go.template operator()<4>();
    if constexpr (lanes > 1) go.template operator()<lanes>();
    go.template operator()<1>();
}

// How many rows of A to apply to all dense columns before the next rows: all of them, unless they and their part of the
// dense operands are too much for the caches.
constexpr double cache_budget = 17000000;
template <class T> Int rows_together(Part rows, Int m, Int nd, const Int* pntre)
{
    const float avg = static_cast<float>(pntre[m - 1] - 1) / static_cast<float>(m);
    const double work = (20.0 * static_cast<double>(avg) + 12.0 * static_cast<double>(nd)) * static_cast<double>(m);
    const float ratio = static_cast<float>(20.0 * static_cast<double>(m) * static_cast<double>(rows.end - rows.i)) /
                        (12.0f * static_cast<float>(m) * avg);
    if (!(work >= cache_budget && ratio >= 0.5f)) return rows.end - rows.i;
    const double together = 0.25 * cache_budget / (12.0 * static_cast<double>(avg) + 20.0 * static_cast<double>(nd));
    const i64 blocks = max(1, static_cast<i64>(static_cast<double>(m) / together));
    return static_cast<Int>(max(1, (rows.end - rows.i) / blocks));
}

template <class T>
void multiply_own_rows(const Options& o, Part rows, Int m, Int nd, const Csr<T>& a, const Int* pntre,
                       const Close<T>& close, const Operand<const T>& x, const Operand<T>& y)
{
    constexpr Int rows_of_registers = 64; // stay in the first-level cache while groups of columns pass
    const Int together = o.by_rows ? rows_of_registers : rows_together<T>(rows, m, nd, pntre);
    for (Int i = rows.i; i < rows.end; i += together) {
        const Int from = i + o.base, to = static_cast<Int>(min(i64{i} + together, rows.end)) + o.base;
        if (o.by_rows) multiply_all_columns<true>(o, from, to, a, close, x, y, nd);
        else multiply_all_columns<false>(o, from, to, a, close, x, y, nd);
    }
}

// ---- Sums in Y

// Dense operands by rows: an entry adds a multiple of a row to another.
template <class T>
[[gnu::noinline]] void add_rows(const Options& o, Int i, Int end, const Csr<T>& a, T alpha, i64 nd, const T* x, i64 ldx,
                                T* y, i64 ldy)
{
    const T direct = negate_if(o.negate_direct, alpha), mirrored = negate_if(o.negate_mirrored, alpha);
    for (; i < end; ++i) {
        Int from = a.begin[i], to = a.end[i];
        const T* x_row = x + i * ldx;
        T* y_row = y + i * ldy;
        if (o.lower != o.upper || o.diagonal_only()) {
            const Cut cut = a.cut(o, i);
            from = cut.beside_from(o), to = o.diagonal_only() ? from : cut.beside_to(o);
            // Of a diagonal matrix the search ends at the first entry that it looks for.
            const i64 behind = o.diagonal_only() ? min(cut.diagonal + 1, cut.behind) : cut.behind;
            if (o.diagonal)
                for (i64 e = cut.diagonal; e < behind; ++e)
                    add_multiple(nd, alpha * conjugate_if(o.conjugate_diagonal(), a.val[e]), x_row, y_row);
            if (o.unit) add_multiple(nd, alpha, x_row, y_row);
        }
        for (Int e = from; e < to; ++e) {
            const Int j = a.col[e];
            if (o.direct) add_multiple(nd, direct * conjugate_if(o.conjugate_direct, a.val[e]), x + j * ldx, y_row);
            if (o.mirrored)
                add_multiple(nd, mirrored * conjugate_if(o.conjugate_mirrored, a.val[e]), x_row, y + j * ldy);
        }
    }
}

template <class T>
[[gnu::noinline]] void run(const Options& o, Part rows, Int m, Int nd, const Close<T>& close, const T* val,
                           const Int* col, const Int* pntrb, const Int* pntre, const T* x, i64 ldx, T* y, i64 ldy)
{
    const Operand<T> to{y - o.base, ldy, o.by_rows};
    const Operand<const T> from{x - o.base, ldx, o.by_rows};
    const bool own = keeps_to_its_rows(o);
    if (!own && (o.by_rows || !acts_twice(o) || rows.i >= rows.end))
        for (Int j = 0, lines = o.by_rows ? m : nd; j < lines; ++j) scale(y + j * ldy, o.by_rows ? nd : m, close.beta);
    if (rows.i >= rows.end || nd < 1) return;
    if (o.diagonal_only() && o.unit) {
        for (Int j = 0, lines = o.by_rows ? m : nd; j < lines; ++j)
            add_multiple(o.by_rows ? nd : m, close.alpha, x + j * ldx, y + j * ldy);
        return;
    }
    const Csr<T> a(o, val, col, pntrb, pntre);
    if (own) multiply_own_rows(o, rows, m, nd, a, pntre, close, from, to);
    else if (o.by_rows) add_rows(o, rows.i, rows.end, a, close.alpha, nd, x, ldx, y, ldy);
    else
        for (Int j = 0; j < nd; ++j)
            multiply(o, rows.i + o.base, rows.end + o.base, a, close, from.column(j), to.column(j), m + o.base);
}

template <class T>
ORV_INLINE void csr_mm_par_body(const Options& o, const Int* first, const Int* last, const Int* m, const Int* nd,
                                const T* alpha, const T* val, const Int* col, const Int* pntrb, const Int* pntre,
                                const T* x, const Int* ldx, T* y, const Int* ldy, const T* beta)
{
    run(o, Part(first, last), *m, *nd, Close<T>{*alpha, *beta}, val, col, pntrb, pntre, x, *ldx, y, *ldy);
}

template <class T>
ORV_INLINE void csr_mm_seq_body(const Options& o, const Int* m, const Int* nd, const T* alpha, const T* val,
                                const Int* col, const Int* pntrb, const Int* pntre, const T* x, const Int* ldx, T* y,
                                const Int* ldy, const T* beta)
{
    run(o, Part(*m), *m, *nd, Close<T>{*alpha, *beta}, val, col, pntrb, pntre, x, *ldx, y, *ldy);
}

} // namespace

ORV_SPBLAS_csr_mm_par(SPBLAS_MEMBER) ORV_SPBLAS_csr_mm_seq(SPBLAS_MEMBER)

} // namespace orv::ORV_SPBLAS
