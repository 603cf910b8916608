// The smallest blocks of a triangle, four rows of T and a few columns of X at a time in registers.
//
// Row i of X becomes, with k ascending,
//   solve      (x(i) + (-t(i, k))*x(k) + ...) * (1/t(i, i))
//   multiply   t(i, i)*x(i) + t(i, k)*x(k) + ...
// for the rows k that a solve has done before; those of the own four come last in a solve, first in a product.
//
// T is packed in the order of that walk and in the form that the registers want: four rows after the other, each four
// column by column as far as its own square; signs turned and reciprocals taken for a solve. Each real fills eight
// bytes, singles twice, so that one load spreads it over a register.
//
// Registers run along rows of X. For side R these are pieces of columns of B, used where they stand; for side L they
// stand across, and some columns of B are copied, turned, to a strip and back.
#include "blas/level3/triangular.h"

#include "frame/products.h"

namespace orv::level3 {
namespace {

constexpr i64 unit = 4; // rows of T that are in registers together

template <class T> using real = real_t<T>;
template <class T> constexpr i64 copies = 8 / sizeof(real<T>);                      // of a real, side by side
template <class T> constexpr i64 element_reals = copies<T>*(is_complex<T> ? 2 : 1); // of an element

// Where the columns of row group g begin, in elements: group h has h + 1 squares.
constexpr i64 group_start(i64 g) { return unit * unit * (g * (g + 1) / 2); }

template <class T> void put(real<T>* at, T x)
{
    const auto* parts = reinterpret_cast<const real<T>*>(&x);
    for (i64 i = 0; i < element_reals<T>; ++i) at[i] = parts[i / copies<T>];
}

template <Task task, class T> T on_diagonal(T t)
{
    if constexpr (task == Task::solve) return first_lane(blas::quotient<Op::none>(splat(one<T>), t));
    else return t;
}

template <class T> ORV_INLINE vec<T> spread(const real<T>* p)
{
    if constexpr (sizeof(*p) == 4) return {load_pair(p).r};
    else return {load_splat(p).r};
}

// A register of X, and i times it.
template <class T> struct Multiplicand {
    vec<T> x, turned;
    ORV_INLINE explicit Multiplicand(vec<T> v) : x(v), turned(v)
    {
        if constexpr (is_complex<T>) turned = times_i(v);
    }
    ORV_INLINE vec<T> times(const real<T>* t) const
    {
        const vec<T> p = lane_product(spread<T>(t), x);
        if constexpr (is_complex<T>) return p + lane_product(spread<T>(t + copies<T>), turned);
        else return p;
    }
    ORV_INLINE void add_to(vec<T>& sum, const real<T>* t) const
    {
        sum += lane_product(spread<T>(t), x);
        if constexpr (is_complex<T>) sum += lane_product(spread<T>(t + copies<T>), turned);
    }
};

// All rows of X, `registers` wide; row i of the walk stands at x + i*step.
template <Task task, int registers, class T>
[[gnu::noinline]] void walk_groups(i64 order, const real<T>* packed, bool has_ones, T* x, i64 step)
{
    constexpr int count = unit * registers;
    constexpr i64 lanes = vec<T>::lanes, column = unit * element_reals<T>;
    const i64 groups = order / unit;
    for (i64 s = 0; s < groups; ++s) {
        const i64 g = task == Task::solve ? s : groups - 1 - s;
        const real<T>* t = packed + group_start(g) * element_reals<T>;
        const real<T>* const square = t + unit * g * column;
        T* const own = x + unit * g * step;
        vec<T> sums[count];
#pragma GCC unroll 8
        for (int i = 0; i < count; ++i) sums[i] = loadu(own + i / registers * step + i % registers * lanes);

        if constexpr (task == Task::multiply) {
#pragma GCC unroll 4
            for (int r = unit - 1; r >= 0; --r)
#pragma GCC unroll 2
                for (int q = 0; q < registers; ++q) {
                    vec<T>& sum = sums[r * registers + q];
                    if (!has_ones) sum = Multiplicand<T>(sum).times(square + r * column + r * element_reals<T>);
#pragma GCC unroll 4
                    for (int k = 0; k < r; ++k)
                        Multiplicand<T>(sums[k * registers + q])
                            .add_to(sum, square + k * column + r * element_reals<T>);
                }
        }
        const T* other = x;
        for (; t != square; t += column, other += step) {
            if constexpr (registers == 2) {
                const Multiplicand<T> f[] = {Multiplicand<T>(loadu(other)), Multiplicand<T>(loadu(other + lanes))};
#pragma GCC unroll 8
                for (int i = 0; i < count; ++i) f[i % 2].add_to(sums[i], t + i / 2 * element_reals<T>);
            } else {
                const Multiplicand<T> f(loadu(other));
#pragma GCC unroll 8
                for (int i = 0; i < count; ++i) f.add_to(sums[i], t + i * element_reals<T>);
            }
        }
        if constexpr (task == Task::solve) {
#pragma GCC unroll 4
            for (int k = 0; k < unit; ++k)
#pragma GCC unroll 2
                for (int q = 0; q < registers; ++q) {
                    vec<T>& solved = sums[k * registers + q];
                    if (!has_ones) solved = Multiplicand<T>(solved).times(square + k * column + k * element_reals<T>);
                    const Multiplicand<T> f(solved);
#pragma GCC unroll 4
                    for (int r = k + 1; r < unit; ++r)
                        f.add_to(sums[r * registers + q], square + k * column + r * element_reals<T>);
                }
        }
#pragma GCC unroll 8
        for (int i = 0; i < count; ++i) storeu(own + i / registers * step + i % registers * lanes, sums[i]);
    }
}

// Some columns of B, m rows, to rows of a strip, or back.
enum class Way { to_strip, from_strip };
template <Way way, int registers, class T> [[gnu::noinline]] void turn(i64 m, T* b, i64 ldb, T* strip)
{
    constexpr int lanes = vec<T>::lanes, width = registers * lanes;
    static_assert(unit % lanes == 0, "rows of B fill registers, and columns go in fours to one register or two");
    T* columns[width];
    for (int j = 0; j < width; ++j) columns[j] = b + j * ldb;
    for (i64 i = 0; i < m; i += lanes, strip += lanes * width)
#pragma GCC unroll 2
        for (int j = 0; j < width; j += lanes) {
            vec<T> square[lanes];
#pragma GCC unroll 4
            for (int l = 0; l < lanes; ++l)
                square[l] = loadu(way == Way::to_strip ? columns[j + l] + i : strip + l * width + j);
            transpose(square);
#pragma GCC unroll 4
            for (int l = 0; l < lanes; ++l)
                storeu(way == Way::to_strip ? strip + l * width + j : columns[j + l] + i, square[l]);
        }
}

// `registers` of columns of X.
template <Task task, int registers, class T> void columns(const Triangular<T>& x, const real<T>* packed, T* b, T* strip)
{
    constexpr i64 width = registers * vec<T>::lanes;
    const i64 step = x.right ? x.ldb : width;
    T* const rows = x.right ? b : strip;
    if (!x.right) turn<Way::to_strip, registers>(x.order, b, x.ldb, strip);
    const bool lower = x.lower();
    walk_groups<task, registers>(x.order, packed, x.form.unit, lower ? rows : rows + (x.order - 1) * step,
                                 lower ? step : -step);
    if (!x.right) turn<Way::from_strip, registers>(x.order, b, x.ldb, strip);
}

// read(t) is the element of op(A) for an element of A.
template <Task task, class T, class Read>
ORV_INLINE void pack_elements(const Triangular<T>& x, real<T>* to, const Read& read)
{
    // The walk goes from the first row to the last, or from the last to the first.
    const bool lower = x.lower();
    const i64 sign = lower ? 1 : -1, row = sign * x.t_row(), column = sign * x.t_column();
    const T* rows = lower ? x.a : x.a + (x.order - 1) * (x.lda + 1);
    const auto put_beside = [&](i64 r, T t) { put(to + r * element_reals<T>, task == Task::solve ? -t : t); };
    for (i64 i = 0; i < x.order; i += unit, rows += unit * row) {
        const T* t = rows;
        for (i64 k = 0; k < i; ++k, t += column, to += unit * element_reals<T>)
            for (i64 r = 0; r < unit; ++r) put_beside(r, read(t[r * row]));
        for (i64 k = 0; k < unit; ++k, t += column, to += unit * element_reals<T>) {
            if (!x.form.unit) put(to + k * element_reals<T>, on_diagonal<task>(read(t[k * row])));
            for (i64 r = k + 1; r < unit; ++r) put_beside(r, read(t[r * row]));
        }
    }
}

template <class R> bool is_subnormal(R x)
{
    constexpr R least = sizeof(R) == 4 ? __FLT_MIN__ : __DBL_MIN__;
    return x != 0 && magnitude(x) < least;
}
template <class R> bool is_subnormal(cpx<R> x) { return is_subnormal(x.re) || is_subnormal(x.im); }

template <class T> bool has_subnormal_diagonal(const Triangular<T>& x)
{
    for (i64 i = 0; i < x.order; ++i)
        if (is_subnormal(x.a[i * (x.lda + 1)])) return true;
    return false;
}

} // namespace

template <Task task, class T> void pack(const Triangular<T>& x, T* packed)
{
    auto* to = reinterpret_cast<real<T>*>(packed);
    if (x.form.op == Op::conjugate) pack_elements<task>(x, to, [](T t) ORV_INLINE_LAMBDA { return conj(t); });
    else pack_elements<task>(x, to, [](T t) ORV_INLINE_LAMBDA { return t; });
}

template <Task task, class T> void packed_triangle(const Triangular<T>& x, const T* packed, T* strip)
{
    constexpr i64 lanes = vec<T>::lanes;
    const auto* t = reinterpret_cast<const real<T>*>(packed);
    T* b = x.b;
    i64 left = x.others;
    for (; left >= 2 * lanes; left -= 2 * lanes, b += 2 * lanes * x.column_step()) columns<task, 2>(x, t, b, strip);
    if (left >= lanes) columns<task, 1>(x, t, b, strip);
}

// Whole fours of rows and columns in registers; what is left of rows, last in the walk of a solve, and what is left of
// columns on the plain path. A subnormal number on the diagonal has no reciprocal: then the plain path takes all.
template <Task task, class T> void last_level(const Triangular<T>& x, T* triangle, T* strip)
{
    if (task == Task::solve && !x.form.unit && has_subnormal_diagonal(x)) return plain<task>(x);
    const i64 most = x.order / unit * unit, columns = x.others / unit * unit;
    if (columns < x.others) plain<task>(x.sweep(columns, x.others - columns));
    if (columns == 0) return;
    const Triangular<T> whole = x.sweep(0, columns);
    const auto in_registers = [&](const Triangular<T>& y) {
        pack<task>(y, triangle);
        packed_triangle<task>(y, triangle, strip);
    };
    if (most == x.order) return in_registers(whole);
    const Piece core = piece_of(x.lower(), x.order, 0, most);
    const auto packed = [&] {
        if (most > 0) in_registers(whole.block(core.from, most));
    };
    const auto product = [&] {
        if (most > 0)
            gemm::plain(whole.rectangle(core.left_from, core.left, core.from, most, factor_of_rectangles<task, T>));
    };
    const Triangular<T> rest = whole.block(core.left_from, core.left);
    if constexpr (task == Task::solve) packed(), product(), plain<task>(rest);
    else plain<task>(rest), product(), packed();
}

#define BLOCK(name, T, task)                                                                                           \
    template void last_level<Task::task>(const Triangular<T>&, T*, T*);                                                \
    ORV_EXPORT void BLAS(name##_copya)(const char* side, TRIANGULAR_FLAGS, const i64* order, const T* a,               \
                                       const i64* lda, T* packed)                                                      \
    {                                                                                                                  \
        pack<Task::task>({is_right(*side), form_of_flags<T>(upper, is_n, is_t, diag), *order, 0, a, *lda, nullptr, 0}, \
                         packed);                                                                                      \
    }
BLOCK(strsm, float, solve)
BLOCK(dtrsm, double, solve)
BLOCK(ctrsm, cpx<float>, solve)
BLOCK(ztrsm, cpx<double>, solve)
BLOCK(strmm, float, multiply)
BLOCK(dtrmm, double, multiply)
BLOCK(ctrmm, cpx<float>, multiply)
BLOCK(ztrmm, cpx<double>, multiply)

// On the copied triangle: side, and which triangle op(A) is. The strip holds 4 elements for each row of B (side L).
#define PACKED(symbol, task, side, uplo)                                                                               \
    ORV_EXPORT void BLAS(symbol)(const char* diag, const i64* m, const i64* n, const double* packed, double* b,        \
                                 const i64* ldb, double* strip)                                                        \
    {                                                                                                                  \
        packed_triangle<Task::task>(Triangular<double>::of(is_right(#side[0]),                                         \
                                                           blas::form_of<double>(#uplo[0], 'N', *diag), *m, *n,        \
                                                           nullptr, 0, b, *ldb),                                       \
                                    packed, strip);                                                                    \
    }
PACKED(dtrsm_ll, solve, l, l)
PACKED(dtrsm_lu, solve, l, u)
PACKED(dtrsm_rl, solve, r, l)
PACKED(dtrsm_ru, solve, r, u)
PACKED(dtrmm_ll, multiply, l, l)
PACKED(dtrmm_lu, multiply, l, u)

} // namespace orv::level3
