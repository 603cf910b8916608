// Cubes of at most 10 points a side, dense on both sides: all rows, then all lines of the second dimension and of the
// third, each a transform in registers with neighbouring lines side by side. Of reals only the half spectrum is
// computed, of n/2 + 1 pairs a row; the other pairs of the output's rows are left alone.
#include "dft/compute/short_lines.h"
#include "dft/methods/method.h"
#include "dft/primitives/dft/kernels.h"

namespace orv::dft {
namespace {

constexpr int longest = 10;

// What a node keeps.
struct Side {
    i32 n;
    void release() {}
};
i64 side_of(const DftiNode& node) { return static_cast<const Side*>(node.method_data)->n; }

// Lines in planes: how far apart points of a line, lines, and planes are, in pairs.
template <class T> struct Lines {
    T* at;
    i64 point, line, plane;
};
template <class T, class R>
void transform_lines(i64 n, bool forward, Lines<T> from, Lines<cpx<R>> to, i64 lines, i64 planes)
{
    ShortLines<R>* const transform = short_lines<R>(n, forward);
    for (i64 p = 0; p < planes; ++p)
        transform(&from.at[p * from.plane].re, {2 * from.point, 2 * from.line}, &to.at[p * to.plane].re,
                  {2 * to.point, 2 * to.line}, lines);
}

template <bool forward, class R> i32 pairs(DftiNode* node, void* data, void* output, void*, void*)
{
    using T = cpx<R>;
    const i64 n = side_of(*node);
    const auto [from, to] = pairs_of<R>(*node, data, output);
    const Lines<T> first{to, 1, n, 0}, second{to, n, 1, n * n}, third{to, n * n, 1, 0};
    transform_lines(n, forward, Lines<const T>{from, 1, n, 0}, first, n * n, 1);
    transform_lines(n, forward, second, second, n, n);
    transform_lines(n, forward, third, third, n * n, 1);
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
template <bool forward, class R> i32 reals(DftiNode* node, void* data, void* output, void*, void*)
{
    using T = cpx<R>;
    const i64 n = side_of(*node), row = n / 2 + 1;
    auto* const half = static_cast<T*>(orv_serv_allocate(row * n * n * static_cast<i64>(sizeof(T)), page_bytes()));
    if (half == nullptr) return node_no_memory;
    const auto [from, to] = reals_of<R>(*node, forward, data, output);
    // Points of the third dimension are lines apart here; there, in the spectrum, rows have n pairs.
    const Lines<T> second{half, row, 1, n * row}, here{half, n * row, 1, row};
    const auto there = [n](auto* spectrum) {
        return Lines<std::remove_pointer_t<decltype(spectrum)>>{spectrum, n * n, 1, n};
    };
    if constexpr (forward) {
        reals_to_half(n, from, half);
        transform_lines(n, true, second, second, row, n);
        transform_lines(n, true, here, there(reinterpret_cast<T*>(to)), row, n);
    } else {
        transform_lines(n, false, there(reinterpret_cast<const T*>(from)), here, row, n);
        transform_lines(n, false, second, second, row, n);
        half_to_reals(n, half, to);
    }
    orv_serv_deallocate(half);
    return node_ok;
}

// ---- Commit

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
    if constexpr (is_complex<T>) finish(node, pairs<true, real_t<T>>, pairs<false, real_t<T>>);
    else finish(node, reals<true, T>, reals<false, T>);
    return node_ok;
}

} // namespace

ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_c2c){commit<cpx<float>>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_z2z){commit<cpx<double>>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_c2s){commit<float>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_z2d){commit<double>, detach<Side>};

} // namespace orv::dft
