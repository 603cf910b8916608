// Cubes of at most 10 points a side, dense on both sides: three times all rows, each by straight code, and behind each
// time the cube is turned so that the next dimension has the rows; after three times it stands as it did. Of reals only
// the half spectrum is computed, of n/2 + 1 pairs a row; the other pairs of the output's rows are left alone.
#include "dft/methods/method.h"
#include "dft/primitives/dft/kernels.h"

namespace orv::dft {
namespace {

constexpr i64 longest = 10;

struct Side {
    i32 n;
    void release() {}
};
i64 side_of(const DftiNode& node) { return static_cast<const Side*>(node.method_data)->n; }

template <class Form, bool forward> auto row_of(i64 n) { return general::Bodies<Form, forward>::fixed.of[n]; }
template <class R> using Pairs = general::Interleaved<R>;
template <class R> using Reals = general::Reals<R>;

// to[i][k][j] := from[k][j][i], 0 <= k < slow, j < middle, i < fast; rows of either side are a pitch apart.
template <class T> void turn(const T* from, i64 from_pitch, i64 slow, i64 middle, i64 fast, T* to, i64 to_pitch)
{
    for (i64 k = 0; k < slow; ++k)
        for (i64 j = 0; j < middle; ++j, from += from_pitch)
            for (i64 i = 0; i < fast; ++i) to[(i * slow + k) * to_pitch + j] = from[i];
}
template <bool forward, class R> void transform_rows(i64 rows, i64 n, const cpx<R>* from, cpx<R>* to)
{
    const auto row = row_of<Pairs<R>, forward>(n);
    for (i64 r = 0; r < rows; ++r) row(from + r * n, to + r * n);
}

template <class R, bool forward> i32 pairs(DftiNode* node, void* data, void* output, void*, void*)
{
    const i64 n = side_of(*node);
    const auto [from, to] = pairs_of<R>(*node, data, output);
    alignas(cache_line) cpx<R> cube[longest * longest * longest];
    for (int pass = 0; pass < 3; ++pass) {
        transform_rows<forward>(n * n, n, pass == 0 ? from : to, cube);
        turn(cube, n, n, n, n, to, n);
    }
    return node_ok;
}

template <class R> void reals_to_half(i64 n, const R* from, cpx<R>* half)
{
    const auto row = row_of<Reals<R>, true>(n);
    R packed[longest];
    for (i64 r = 0; r < n * n; ++r, from += n) {
        row(from, packed);
        const Spectrum<R> spectrum(packed, n, Layout::perm);
        for (i64 h = 0; h <= n / 2; ++h) *half++ = spectrum.get(h);
    }
}
template <class R> void half_to_reals(i64 n, const cpx<R>* half, R* to)
{
    const auto row = row_of<Reals<R>, false>(n);
    R packed[longest];
    for (i64 r = 0; r < n * n; ++r, to += n) {
        const Spectrum<R> spectrum(packed, n, Layout::perm);
        for (i64 h = 0; h <= n / 2; ++h) spectrum.put(h, *half++);
        row(packed, to);
    }
}
template <class R, bool forward> i32 reals(DftiNode* node, void* data, void* output, void*, void*)
{
    using T = cpx<R>;
    const i64 n = side_of(*node), half = n / 2 + 1, all = half * n * n;
    auto* const a = static_cast<T*>(orv_serv_allocate(2 * all * static_cast<i64>(sizeof(T)), page_bytes()));
    if (a == nullptr) return node_no_memory;
    T* const b = a + all;
    const auto [from, to] = reals_of<R>(*node, forward, data, output);
    if (forward) reals_to_half(n, from, b);
    if (forward) turn(b, half, n, n, half, a, n);
    else turn(reinterpret_cast<const T*>(from), n, n, n, half, a, n);
    transform_rows<forward>(half * n, n, a, b);
    turn(b, n, half, n, n, a, n);
    transform_rows<forward>(half * n, n, a, b);
    if (forward) turn(b, n, n, half, n, reinterpret_cast<T*>(to), n);
    else turn(b, n, n, half, n, a, half);
    if (!forward) half_to_reals(n, a, to);
    orv_serv_deallocate(a);
    return node_ok;
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
    using R = real_t<T>;
    const u32 storage = is_complex<T> ? node->complex_storage : node->conjugate_even_storage;
    if (!is_of<R>(*node, is_complex<T> ? CFG_DOMAIN_COMPLEX : CFG_DOMAIN_REAL) || storage != CFG_STORE_COMPLEX ||
        !is_one_transform(*node) || !is_unscaled(*node) || !is_dense_cube(node->work_lengths))
        return node_not_this_method;
    take(method, node);
    auto* const side = state_of<Side>(node);
    if (side == nullptr) return give_up(node, node_no_memory);
    side->n = static_cast<i32>(node->work_lengths.dims[0].n);
    if constexpr (is_complex<T>) finish(node, pairs<R, true>, pairs<R, false>);
    else finish(node, reals<R, true>, reals<R, false>);
    return node_ok;
}

} // namespace

ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_c2c){commit<cpx<float>>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_z2z){commit<cpx<double>>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_c2s){commit<float>, detach<Side>};
ORV_EXPORT constinit const DftiMethod DFT(tiny_3d_z2d){commit<double>, detach<Side>};

} // namespace orv::dft
