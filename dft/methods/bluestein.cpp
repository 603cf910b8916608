// One transform of n points as a cyclic convolution of m, a power of two above 2n - 1. With the chirp
// c[k] = exp(i*pi*k*k/n)
//
//   X[k] = conj(c[k]) * sum of (x[j]*conj(c[j])) * c[k - j]
//
// for j*k = (j*j + k*k - (k - j)^2)/2. The sum is a convolution, for which a node of m points is committed; inverse,
// all factors are conjugated, and the spectrum of the chirp is too, for the chirp is even. table_a: n values of
// conj(c); table_b: the spectrum of c, divided by m. Reals go the same way: only half of their spectrum is read or
// written.
//
// Beside its data a call needs an array of m numbers; without memory it returns node_no_memory and writes nothing.
#include "dft/methods/method.h"
#include "dft/methods/product.h"

namespace orv::dft {
namespace {

constexpr i64 unit = 4; // of the slices of products

template <class R> struct State {
    using T = cpx<R>;
    i64 n;
    DftiNode* child;
    i64 m;
    T *table_a, *table_b; // one block
    void release()
    {
        if (child != nullptr) child->destroy(child);
        orv::dft::release(table_a);
        *this = {};
    }
};

template <class R> auto& create = DFT(dfti_create_dc1d);
template <> auto& create<float> = DFT(dfti_create_sc1d);

inline void sine_and_cosine(double angle, double* sine, double* cosine) { orv_serv_libm_sincos(angle, sine, cosine); }
inline void sine_and_cosine(float angle, float* sine, float* cosine) { orv_serv_libm_sincosf(angle, sine, cosine); }

// table_a := c with its mirror behind, zero between; k*k modulo 2n comes from its predecessor.
template <class R> void fill(State<R>& state)
{
    const i64 n = state.n, m = state.m;
    cpx<R>* const a = state.table_a;
    a[0] = {1, 0};
    for (i64 k = 1, p = 1; k < n; p = (p + 2 * k + 1) % (2 * n), ++k) {
        const R angle = static_cast<R>(p) / static_cast<R>(n) * static_cast<R>(3.14159265358979323846);
        sine_and_cosine(angle, &a[k].im, &a[k].re);
        a[m - k] = a[k];
    }
    clear(a + n, m - 2 * n + 1);
}

template <class R> i32 build(State<R>& state, i64 n)
{
    if (n > i64{1} << 30) return node_too_long; // 2n - 1 goes by 32 bits
    state.n = n;
    state.m = i64{2} << (31 - __builtin_clz(static_cast<u32>(2 * n - 1)));
    if (const i32 status = create<R>(&state.child, state.m)) return status;
    state.child->thread_limit = 1;
    if (const i32 status = state.child->methods->commit(state.child)) return status;
    using T = cpx<R>;
    state.table_a = static_cast<T*>(orv_serv_malloc(2 * state.m * static_cast<i64>(sizeof(T)), 4096));
    if (state.table_a == nullptr) return node_no_memory;
    state.table_b = state.table_a + state.m;

    fill(state);
    copy(state.table_a, state.table_b, state.m);
    if (const i32 status = state.child->compute_forward(state.child, state.table_b, nullptr, nullptr, nullptr))
        return status;
    const R part = R(1) / static_cast<R>(state.m); // exact
    for (i64 k = 0; k < state.m; ++k) state.table_b[k] = part * state.table_b[k];
    for (i64 k = 0; k < state.m; ++k) state.table_a[k].im = -state.table_a[k].im;
    return node_ok;
}

// ---- Stages. T: the elements of the node's arrays; all count from 0 to n.

template <class T> struct Stage {
    using R = real_t<T>;
    const T* x; // of reals, a spectrum for the inverse
    const cpx<R>* table;
    cpx<R>* w;
    T* y; // of reals, a spectrum forward
    i64 n;
    Layout layout;
};

// w := x*table_a; inverse, its conjugate
template <bool forward, class T> void first_product(i32 thread, i32 threads, void* argument)
{
    const auto& s = *static_cast<const Stage<T>*>(argument);
    const auto [begin, end] = slice(s.n, unit, thread, threads);
    if constexpr (is_complex<T>) {
        multiply<!forward>(s.x + begin, s.table + begin, s.w + begin, end - begin);
    } else if constexpr (forward) {
        for (i64 k = begin; k < end; ++k) s.w[k] = s.x[k] * s.table[k];
    } else {
        const Spectrum<const T> x(s.x, s.n, s.layout);
        for (i64 k = begin; k < end; ++k) s.w[k] = (2 * k <= s.n ? x.get(k) : conj(x.get(s.n - k))) * conj(s.table[k]);
    }
}
template <class R> void clear_rest(i32 thread, i32 threads, void* argument)
{
    const auto& s = *static_cast<const Stage<cpx<R>>*>(argument);
    const auto [begin, end] = slice(s.n, unit, thread, threads);
    clear(s.w + begin, end - begin);
}
template <bool forward, class R> void product_in_place(i32 thread, i32 threads, void* argument)
{
    const auto& s = *static_cast<const Stage<cpx<R>>*>(argument);
    const auto [begin, end] = slice(s.n, unit, thread, threads);
    multiply<!forward>(s.w + begin, s.table + begin, s.w + begin, end - begin);
}
template <bool forward, class T> void last_product(i32 thread, i32 threads, void* argument)
{
    const auto& s = *static_cast<const Stage<T>*>(argument);
    const auto [begin, end] = slice(is_complex<T> || !forward ? s.n : s.n / 2 + 1, unit, thread, threads);
    if constexpr (is_complex<T>) {
        multiply<!forward>(s.w + begin, s.table + begin, s.y + begin, end - begin);
    } else if constexpr (forward) {
        const Spectrum<T> y(s.y, s.n, s.layout);
        for (i64 k = begin; k < end; ++k) y.put(k, s.w[k] * s.table[k]);
    } else {
        for (i64 k = begin; k < end; ++k) s.y[k] = (s.w[k] * conj(s.table[k])).re;
    }
}

template <bool forward, class T> i32 convolve(const DftiNode& node, Arrays<T> arrays)
{
    using R = real_t<T>;
    const auto& state = *static_cast<const State<R>*>(node.method_data);
    const auto [n, child, m, table_a, table_b] = state;
    auto* const w = static_cast<cpx<R>*>(orv_serv_allocate(m * static_cast<i64>(sizeof(cpx<R>)), 4096));
    if (w == nullptr) return node_no_memory;

    const i32 threads = threads_allowed(node);
    Stage<T> outer{arrays.from, table_a, w, arrays.to, n, layout_of(node)};
    Stage<cpx<R>> rest{nullptr, nullptr, w + n, nullptr, m - n, outer.layout};
    Stage<cpx<R>> inner{nullptr, table_b, w, nullptr, m, outer.layout};
    share(node, threads, first_product<forward, T>, &outer);
    share(node, threads, clear_rest<R>, &rest);
    i32 status = child->compute_forward(child, w, nullptr, nullptr, nullptr);
    if (status == node_ok) {
        share(node, threads, product_in_place<forward, R>, &inner);
        status = child->compute_backward(child, w, nullptr, nullptr, nullptr);
    }
    if (status == node_ok) share(node, threads, last_product<forward, T>, &outer);
    orv_serv_deallocate(w);
    return status;
}

template <bool forward, class T> i32 compute(DftiNode* node, void* data, void* output, void*, void*)
{
    if constexpr (is_complex<T>) return convolve<forward, T>(*node, pairs_of<real_t<T>>(*node, data, output));
    else return convolve<forward, T>(*node, reals_of<T>(*node, forward, data, output));
}

template <class T> i32 commit(const DftiMethod* method, DftiNode* node)
{
    using R = real_t<T>;
    if (!is_of<R>(*node, is_complex<T> ? CFG_DOMAIN_COMPLEX : CFG_DOMAIN_REAL) ||
        node->complex_storage != CFG_STORE_COMPLEX || !is_ordered(*node) || !is_one_transform(*node) ||
        !is_unscaled(*node) || !is_one_row(*node))
        return node_not_this_method;
    const i64 n = node->work_lengths.dims[0].n;
    if (is_power_of_two(n)) return node_not_this_method;
    take(method, node);
    auto* const state = state_of<State<R>>(node);
    if (state == nullptr) return give_up(node, node_no_memory);
    if (state->n != n) {
        state->release();
        if (const i32 status = build(*state, n)) return give_up(node, status);
    }
    finish(node, compute<true, T>, compute<false, T>);
    return node_ok;
}

} // namespace

#define BLUESTEIN(letter, T)                                                                                           \
    ORV_EXPORT constinit const DftiMethod DFT(bluestein_##letter){commit<T>, detach<State<real_t<T>>>};
BLUESTEIN(c, cpx<float>)
BLUESTEIN(z, cpx<double>)
BLUESTEIN(s, float)
BLUESTEIN(d, double)

} // namespace orv::dft
