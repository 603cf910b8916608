// Cubes of at most 10 points a side, dense on both sides: all rows, then all lines of the second dimension and of the
// third, each a transform in registers with neighbouring lines side by side. Of reals only the half spectrum is
// computed, of n/2 + 1 pairs a row; the other pairs of the output's rows are left alone.
#include "dft/methods/method.h"
#include "dft/primitives/dft/butterflies.h"
#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/fft/butterfly.h"

namespace orv::dft {
namespace {

constexpr int longest = 10;

// ---- Lines

// put(k) takes point k of the transform of get(0), ..., get(n - 1), all of which have been asked for before.
template <int n, bool forward, class R, class Get, class Put> ORV_INLINE void line(Get get, Put put)
{
    vec<cpx<R>> x[n];
    if constexpr (is_power_of_two(n))
        transform<n, forward>(x, get, [&](auto k) ORV_INLINE_LAMBDA {
            constexpr int count = n < 4 ? n : 4; // so many results are there after k
            general::steps<count>([&](auto i) ORV_INLINE_LAMBDA { put(k + i * (n / count), x[k + i * (n / count)]); });
        });
    else {
        general::steps<n>([&](auto j) ORV_INLINE_LAMBDA { x[j] = get(j); });
        general::butterfly<n, forward>(x);
        general::steps<n>([&](auto k) ORV_INLINE_LAMBDA { put(k, x[k]); });
    }
}

// Lines in planes: how far apart points of a line, lines, and planes are.
template <class T> struct Lines {
    T* at;
    i64 point, line, plane;
};
// One lane at the last line, where a register has two; where there is one, lines are as good as neighbours.
template <bool neighbours, int lanes, class T> ORV_INLINE auto load_lanes(const T* at, i64 line)
{
    if constexpr (lanes < vec<T>::lanes) return load_first<lanes>(at);
    else if constexpr (neighbours) return loadu(at);
    else return gather(at, line);
}
template <bool neighbours, int lanes, class T> ORV_INLINE void store_lanes(T* at, i64 line, vec<T> x)
{
    if constexpr (lanes < vec<T>::lanes) store_first<lanes>(at, x);
    else if constexpr (neighbours) storeu(at, x);
    else scatter(at, line, x);
}
template <int n, bool forward, bool neighbours, class T>
[[gnu::noinline]] void transform_lines(Lines<const T> from, Lines<T> to, i64 lines, i64 planes)
{
    constexpr int all_lanes = vec<T>::lanes;
    static_assert(all_lanes <= 2, "what is left of the lines is one");
    for (; planes > 0; --planes, from.at += from.plane, to.at += to.plane) {
        const T* source = from.at;
        T* target = to.at;
        const auto some = [&](auto lanes) ORV_INLINE_LAMBDA {
            line<n, forward, real_t<T>>(
                [&](i64 j)
                    ORV_INLINE_LAMBDA { return load_lanes<neighbours, lanes>(source + j * from.point, from.line); },
                [&](i64 k, vec<T> x)
                    ORV_INLINE_LAMBDA { store_lanes<neighbours, lanes>(target + k * to.point, to.line, x); });
            source += lanes * from.line, target += lanes * to.line;
        };
        i64 left = lines;
        for (; left >= all_lanes; left -= all_lanes) some(std::integral_constant<int, all_lanes>());
        if (left > 0) some(std::integral_constant<int, 1>());
    }
}

template <class T> Lines<const T> as_source(Lines<T> l) { return {l.at, l.point, l.line, l.plane}; }

template <int n, bool forward, class R> i32 pairs(DftiNode* node, void* data, void* output, void*, void*)
{
    using T = cpx<R>;
    const auto [from, to] = pairs_of<R>(*node, data, output);
    const Lines<T> first{to, 1, n, 0}, second{to, n, 1, n * n}, third{to, n * n, 1, 0};
    transform_lines<n, forward, false>(Lines<const T>{from, 1, n, 0}, first, n * n, 1);
    transform_lines<n, forward, true>(as_source(second), second, n, n);
    transform_lines<n, forward, true>(as_source(third), third, n * n, 1);
    return node_ok;
}

// ---- Reals: half is an array of n/2 + 1 pairs a row, without gaps

template <bool forward, class R> auto row_of(i64 n) { return general::Bodies<general::Reals<R>, forward>::fixed.of[n]; }

template <class R> void reals_to_half(i64 n, const R* from, cpx<R>* half)
{
    R packed[longest];
    for (i64 r = 0; r < n * n; ++r, from += n) {
        row_of<true, R>(n)(from, packed);
        const Spectrum<R> spectrum(packed, n, Layout::perm);
        for (i64 h = 0; h <= n / 2; ++h) *half++ = spectrum.get(h);
    }
}
template <class R> void half_to_reals(i64 n, const cpx<R>* half, R* to)
{
    R packed[longest];
    for (i64 r = 0; r < n * n; ++r, to += n) {
        const Spectrum<R> spectrum(packed, n, Layout::perm);
        for (i64 h = 0; h <= n / 2; ++h) spectrum.put(h, *half++);
        row_of<false, R>(n)(packed, to);
    }
}
template <int n, bool forward, class R> i32 reals(DftiNode* node, void* data, void* output, void*, void*)
{
    using T = cpx<R>;
    constexpr i64 row = n / 2 + 1;
    auto* const half = static_cast<T*>(orv_serv_allocate(row * n * n * static_cast<i64>(sizeof(T)), page_bytes()));
    if (half == nullptr) return node_no_memory;
    const auto [from, to] = reals_of<R>(*node, forward, data, output);
    // Points of the third dimension are lines apart here; there, in the spectrum, rows have n pairs.
    const Lines<T> second{half, row, 1, n * row}, here{half, n * row, 1, row};
    const auto there = [](auto* spectrum) {
        return Lines<std::remove_pointer_t<decltype(spectrum)>>{spectrum, n * n, 1, n};
    };
    if constexpr (forward) {
        reals_to_half(n, from, half);
        transform_lines<n, true, true>(as_source(second), second, row, n);
        transform_lines<n, true, true>(as_source(here), there(reinterpret_cast<T*>(to)), row, n);
    } else {
        transform_lines<n, false, true>(there(reinterpret_cast<const T*>(from)), here, row, n);
        transform_lines<n, false, true>(as_source(second), second, row, n);
    }
    if (!forward) half_to_reals(n, half, to);
    orv_serv_deallocate(half);
    return node_ok;
}

// ---- Commit

struct Side {
    i32 n;
    void release() {}
};

struct Both {
    DftiCompute *forward, *backward;
};
template <class T, int n> constexpr Both both()
{
    if constexpr (is_complex<T>) return {pairs<n, true, real_t<T>>, pairs<n, false, real_t<T>>};
    else return {reals<n, true, T>, reals<n, false, T>};
}
template <class T, int... below> constexpr Both by_side(i64 n, std::integer_sequence<int, below...>)
{
    constexpr Both all[] = {both<T, below + 1>()...};
    return all[n - 1];
}

bool is_dense_cube(const Iotensor& lengths)
{
    if (lengths.rank != 3) return false;
    const i64 n = lengths.dims[0].n;
    i64 stride = 1;
    for (i32 k = 0; k < 3; ++k, stride *= n)
        if (lengths.dims[k].n != n || lengths.dims[k].is != stride || lengths.dims[k].os != stride) return false;
    return n <= longest;
}
template <class T> i32 commit(const DftiMethod* method, DftiNode* node)
{
    const u32 storage = is_complex<T> ? node->complex_storage : node->conjugate_even_storage;
    if (!is_of<real_t<T>>(*node, is_complex<T> ? CFG_DOMAIN_COMPLEX : CFG_DOMAIN_REAL) ||
        storage != CFG_STORE_COMPLEX || !is_one_transform(*node) || !is_unscaled(*node) ||
        !is_dense_cube(node->work_lengths))
        return node_not_this_method;
    take(method, node);
    auto* const side = state_of<Side>(node);
    if (side == nullptr) return give_up(node, node_no_memory);
    side->n = static_cast<i32>(node->work_lengths.dims[0].n);
    const Both compute = by_side<T>(side->n, std::make_integer_sequence<int, longest>());
    finish(node, compute.forward, compute.backward);
    return node_ok;
}

} // namespace

ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_c2c){commit<cpx<float>>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_z2z){commit<cpx<double>>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_c2s){commit<float>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_z2d){commit<double>, detach<Side>};

} // namespace orv::dft
