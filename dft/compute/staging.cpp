// Strided lines to rows of a buffer and back, whatever they are made of. Copies change no bit.
#include "dft/compute/columns.h"

namespace orv::dft {
namespace {

// Bodies for as many neighbouring columns as their index says; of pairs, for powers of two.
template <class T, class Widths> struct Bodies;
template <class T, int... below> struct Bodies<T, std::integer_sequence<int, below...>> {
    static constexpr ToRows<T>* to_rows[] = {&dft::to_rows<T, below + 1>...};
    static constexpr ToColumns<T>* to_columns[] = {&dft::to_columns<T, below + 1>...};
    static int width(i64 m) { return static_cast<int>(min(m, widest<T>)); }
    static ToRows<T>* rows(int width) { return to_rows[width - 1]; }
    static ToColumns<T>* columns(int width) { return to_columns[width - 1]; }
};
template <class R, int... order> struct Bodies<cpx<R>, std::integer_sequence<int, order...>> {
    static constexpr ToRows<cpx<R>>* to_rows[] = {&dft::to_rows<cpx<R>, 1 << order>...};
    static constexpr ToColumns<cpx<R>>* to_columns[] = {&dft::to_columns<cpx<R>, 1 << order>...};
    static int width(i64 m) { return 1 << log2(static_cast<u64>(min(m, widest<cpx<R>>))); }
    static ToRows<cpx<R>>* rows(int width) { return to_rows[log2(static_cast<u64>(width))]; }
    static ToColumns<cpx<R>>* columns(int width) { return to_columns[log2(static_cast<u64>(width))]; }
    static int log2(u64 n) { return 63 - __builtin_clzll(n); }
};
template <class T> inline constexpr int bodies = is_complex<T> ? 3 + sizeof(double) / sizeof(real_t<T>) : widest<T>;
template <class T> using BodiesOf = Bodies<T, std::make_integer_sequence<int, bodies<T>>>;

} // namespace

template <class T> void gather(i64 n, i64 m, T* dst, i64 ldd, const Lines<const T>& lines)
{
    Lines<const T> src = lines;
    if (src.is_dense())
        for (i64 j = 0; j < m; ++j) copy(src.line(j), dst + j * ldd, n);
    else if (src.are_neighbours())
        for (int width; m > 0; m -= width, dst += width * ldd, src = src.from(width))
            width = BodiesOf<T>::width(m), BodiesOf<T>::rows(width)(n, dst, ldd, src.data, src.stride);
    else
        for (i64 j = 0; j < m; ++j) to_rows<T, 1>(n, dst + j * ldd, 0, src.from(j).data, src.stride);
}

template <class T> void scatter(i64 n, i64 m, const Lines<T>& lines, const T* src, i64 lds)
{
    Lines<T> dst = lines;
    if (dst.is_dense())
        for (i64 j = 0; j < m; ++j) copy(src + j * lds, dst.line(j), n);
    else if (dst.are_neighbours())
        for (int width; m > 0; m -= width, src += width * lds, dst = dst.from(width))
            width = BodiesOf<T>::width(m), BodiesOf<T>::columns(width)(n, dst.data, dst.stride, src, lds);
    else
        for (i64 j = 0; j < m; ++j) to_columns<T, 1>(n, dst.from(j).data, dst.stride, src + j * lds, 0);
}

#define INSTANCES(T)                                                                                                   \
    template void gather<T>(i64, i64, T*, i64, const Lines<const T>&);                                                 \
    template void scatter<T>(i64, i64, const Lines<T>&, const T*, i64);
INSTANCES(float)
INSTANCES(double)
INSTANCES(cpx<float>)
INSTANCES(cpx<double>)

} // namespace orv::dft

using namespace orv;
using namespace orv::dft;

#define STAGING(t, T)                                                                                                  \
    ORV_EXPORT void DFT(gather_##t##_##t)(i64 n, i64 m, T * dst, i64 ldd, const T* src, i64 stride, i64 distance)      \
    {                                                                                                                  \
        gather<T>(n, m, dst, ldd, lines_of(src, stride, distance));                                                    \
    }                                                                                                                  \
    ORV_EXPORT void DFT(scatter_##t##_##t)(i64 n, i64 m, T * dst, i64 stride, i64 distance, const T* src, i64 lds)     \
    {                                                                                                                  \
        scatter<T>(n, m, lines_of(dst, stride, distance), src, lds);                                                   \
    }
STAGING(s, float)
STAGING(d, double)
STAGING(c, cpx<float>)
STAGING(z, cpx<double>)

// Two arrays in turn; rows of one part are two lengths of a pair's row apart.
#define SPLIT_STAGING(t, R)                                                                                            \
    ORV_EXPORT void DFT(gather_##t##_##t)(i64 n, i64 m, R * dst_re, R * dst_im, i64 ldd, const R* src_re,              \
                                          const R* src_im, i64 stride, i64 distance)                                   \
    {                                                                                                                  \
        gather<R>(n, m, dst_re, 2 * ldd, lines_of(src_re, stride, distance));                                          \
        gather<R>(n, m, dst_im, 2 * ldd, lines_of(src_im, stride, distance));                                          \
    }                                                                                                                  \
    ORV_EXPORT void DFT(scatter_##t##_##t)(i64 n, i64 m, R * dst_re, R * dst_im, i64 stride, i64 distance,             \
                                           const R* src_re, const R* src_im, i64 lds)                                  \
    {                                                                                                                  \
        scatter<R>(n, m, lines_of(dst_re, stride, distance), src_re, 2 * lds);                                         \
        scatter<R>(n, m, lines_of(dst_im, stride, distance), src_im, 2 * lds);                                         \
    }
SPLIT_STAGING(ss, float)
SPLIT_STAGING(dd, double)

#define ROW(w, t, T)                                                                                                   \
    ORV_EXPORT void DFT(dft_row_##t##copy_##w)(i64 n, T * dst, i64 ldd, const T* src, i64 stride)                      \
    {                                                                                                                  \
        to_rows<T, w>(n, dst, ldd, reinterpret_cast<const real_t<T>*>(src), stride * reals<T>);                        \
    }                                                                                                                  \
    ORV_EXPORT void DFT(dft_row_##t##copy_back_##w)(i64 n, T * dst, i64 stride, const T* src, i64 lds)                 \
    {                                                                                                                  \
        to_columns<T, w>(n, reinterpret_cast<real_t<T>*>(dst), stride * reals<T>, src, lds);                           \
    }
#define WHOLE_ROW(w, t, T)                                                                                             \
    ORV_EXPORT void DFT(dft_row_##t##copy_##w##_r_mod8)(i64 n, T * dst, const T* src, i64 stride)                      \
    {                                                                                                                  \
        DFT(dft_row_##t##copy_##w)(n, dst, n, src, stride);                                                            \
    }                                                                                                                  \
    ORV_EXPORT void DFT(dft_row_##t##copy_back_##w##_rout_mod8)(i64 n, T * dst, i64 stride, const T* src)              \
    {                                                                                                                  \
        DFT(dft_row_##t##copy_back_##w)(n, dst, stride, src, n);                                                       \
    }
#define SPLIT_ROW(w, t, R)                                                                                             \
    ORV_EXPORT void DFT(dft_row_##t##t##copy_##w)(i64 n, R * dst_re, R * dst_im, i64 ldd, const R* src_re,             \
                                                  const R* src_im, i64 stride)                                         \
    {                                                                                                                  \
        to_rows<R, w>(n, dst_re, 2 * ldd, src_re, stride);                                                             \
        to_rows<R, w>(n, dst_im, 2 * ldd, src_im, stride);                                                             \
    }                                                                                                                  \
    ORV_EXPORT void DFT(dft_row_##t##t##copy_back_##w)(i64 n, R * dst_re, R * dst_im, i64 stride, const R* src_re,     \
                                                       const R* src_im, i64 lds)                                       \
    {                                                                                                                  \
        to_columns<R, w>(n, dst_re, stride, src_re, 2 * lds);                                                          \
        to_columns<R, w>(n, dst_im, stride, src_im, 2 * lds);                                                          \
    }
ROW(2, c, cpx<float>)
ROW(4, c, cpx<float>)
ROW(8, c, cpx<float>)
ROW(16, c, cpx<float>)
ROW(2, z, cpx<double>)
ROW(4, z, cpx<double>)
ROW(8, z, cpx<double>)
WHOLE_ROW(8, c, cpx<float>)
WHOLE_ROW(16, c, cpx<float>)
WHOLE_ROW(4, z, cpx<double>)
WHOLE_ROW(8, z, cpx<double>)
ROW(1, s, float)
ROW(1, d, double)
ORV_DFT_WIDTHS_TO_16(ROW, s, float)
ORV_DFT_WIDTHS_TO_16(SPLIT_ROW, s, float)
ORV_DFT_WIDTHS_TO_8(ROW, d, double)
ORV_DFT_WIDTHS_TO_8(SPLIT_ROW, d, double)
