// Products multiplied where their operands stand, to the bits that packing would give: so small ones that packing and
// the kernels' narrow panels would take longer than the sums, and real ones of so few rows that a packed B would be
// read hardly more often than it was written.
#include "blas/gemm/blocks.h"
#include "blas/gemm/direct.h"

namespace orv::gemm {
namespace {

// Asks what the blocked product would ask, and for the same work block: without memory the plain path serves, whose
// sums round differently, and small and large products shall go the same way then.
template <class T> T* take_block(i64 m, i64 n, i64 k, i64 kb)
{
    constexpr const Sizes& s = sizes<T>;
    const i64 rows = min(m, row_block<T>()), columns = min(n, column_block<T>(n, s.n_unit)), depth = min(k, kb);
    const AreaBytes bytes(round_up(rows, s.m_unit), round_up(columns, s.n_unit), round_up(depth, s.k_unit), sizeof(T),
                          s.n_unit * s.scratch_factor);
    const i64 a_scratch = room(bytes.a, AreaBytes::page_shift) + room(bytes.scratch, AreaBytes::line_shift);
    const i64 b = packs_b<T>(columns, depth) ? room(bytes.b, AreaBytes::page_shift) : 0;
    void* const block = orv_serv_allocate(a_scratch + b, 128);
    return orv_serv_check_ptr(block, routine, routine_length) == 0 ? static_cast<T*>(block) : nullptr;
}

// x(0:m, 0:k) := alpha*A, columns ldx elements apart.
template <class T> void scale(i64 m, i64 k, const factor<T>& alpha, const T* a, i64 lda, T* x, i64 ldx)
{
    constexpr i64 lanes = vec<T>::lanes;
    for (i64 p = 0; p < k; ++p, a += lda, x += ldx) {
        i64 i = 0;
        for (; i + lanes <= m; i += lanes) storeu(x + i, alpha * loadu(a + i));
        for (; i < m; ++i) store_first<1>(x + i, alpha * load_first<1>(a + i));
    }
}

// x(0:m, 0:k) := alpha*A^T or alpha*A^H.
template <bool conjugated, class T> void turn(i64 m, i64 k, const factor<T>& alpha, const T* a, i64 lda, T* x, i64 ldx)
{
    constexpr i64 lanes = vec<T>::lanes;
    const auto element = [&](vec<T> v) { return alpha * (conjugated ? conj(v) : v); };
    const i64 rows = m / lanes * lanes, steps = k / lanes * lanes;
    for (i64 i = 0; i < rows; i += lanes)
        for (i64 p = 0; p < steps; p += lanes) {
            vec<T> square[lanes];
            for (i64 l = 0; l < lanes; ++l) square[l] = element(loadu(a + p + (i + l) * lda));
            transpose(square);
            for (i64 l = 0; l < lanes; ++l) storeu(x + i + (p + l) * ldx, square[l]);
        }
    for (i64 i = 0; i < m; ++i)
        for (i64 p = i < rows ? steps : 0; p < k; ++p)
            store_first<1>(x + i + p * ldx, element(load_first<1>(a + p + i * lda)));
}

// The same of the letter.
template <class T> void copy(char transa, i64 m, i64 k, const factor<T>& alpha, const T* a, i64 lda, T* x, i64 ldx)
{
    if (is_plain(transa)) return scale(m, k, alpha, a, lda, x, ldx);
    if constexpr (is_complex<T>)
        if (is_conjugated(transa)) return turn<true>(m, k, alpha, a, lda, x, ldx);
    turn<false>(m, k, alpha, a, lda, x, ldx);
}

} // namespace

// Few rows want a B whose columns are read along memory; a transposed one is better packed.
//
// The volume up to which packing loses is 85 cubed for d: its kernels step through two rows at a time and gain little
// from panels. An element of B costs singles a shuffle to repeat, which their packed kernels do by loads: 21 cubed, or
// 13 where A is to be turned. Complex ones always pay for a copy of A: 13 cubed.
template <class T> bool is_better_in_place(const Product<T>& x)
{
    constexpr const Sizes& s = sizes<T>;
    constexpr i64 few_rows = is_complex<T> ? 0 : 8, most_rows = s.mb_small; // the work block holds so many
    const i64 volume = is_complex<T> ? 2500 : sizeof(T) == 8 ? 620000 : is_plain(x.transa) ? 10000 : 2500;
    if (x.m < s.m_min || x.n < s.n_min || x.k < s.k_min) return false;
    return (x.m <= few_rows && is_plain(x.transb)) ||
           (x.m <= most_rows && x.m * x.n <= volume && x.m * x.n * x.k <= volume); // neither product overflows
}

template <class T> void in_place(const Product<T>& x)
{
    const i64 kb = depth_block<T>(x.k, sizes<T>.k_unit);
    T* const block = take_block<T>(x.m, x.n, x.k, kb);
    if (block == nullptr) return plain(x);

    // Columns whole pages apart would fall into one set of the cache, and each strip of B read them from far again.
    constexpr i64 page = 4096, ways = 8;
    const bool collides = x.lda * i64(sizeof(T)) % page == 0 && x.k > ways;
    const bool copied = is_complex<T> || x.alpha != one<T> || !is_plain(x.transa) || collides;
    const bool nb = is_plain(x.transb);
    const factor<T> alpha(x.alpha);
    for (i64 p = 0; p < x.k; p += kb) {
        const T* a = corner(x.a, x.lda, x.transa, 0, p);
        const T* b = corner(x.b, x.ldb, x.transb, p, 0);
        const i64 depth = min(x.k - p, kb), ldx = copied ? round_up(x.m, vec<T>::lanes) : x.lda;
        if (copied) copy(x.transa, x.m, depth, alpha, a, x.lda, block, ldx), a = block;
        direct<T, RowLayout::adjacent, Alpha::absent>(x.m, x.n,
                                                      {.k = depth,
                                                       .x = a,
                                                       .ldx = ldx,
                                                       .y = b,
                                                       .y_step = nb ? 1 : x.ldb,
                                                       .y_column = nb ? x.ldb : 1,
                                                       .c = x.c,
                                                       .c_row = 1,
                                                       .c_column = x.ldc,
                                                       .conj_x = false,
                                                       .conj_y = is_conjugated(x.transb),
                                                       .replaces = p == 0 && x.beta == zero<T>,
                                                       .alpha = alpha});
    }
    orv_serv_deallocate(block);
}

#define IN_PLACE(T)                                                                                                    \
    template bool is_better_in_place(const Product<T>&);                                                               \
    template void in_place(const Product<T>&);

IN_PLACE(float)
IN_PLACE(double)
IN_PLACE(cpx<float>)
IN_PLACE(cpx<double>)

} // namespace orv::gemm
