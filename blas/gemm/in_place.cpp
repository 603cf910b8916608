// Products multiplied where their operands stand, to the bits that packing would give: so small ones that packing and
// the kernels' narrow panels would take longer than the sums, and real ones of so few rows that a packed B would be
// read hardly more often than it was written.
#include "blas/gemm/blocks.h"
#include "blas/gemm/direct.h"

namespace orv::gemm {
namespace {

// Asks what the blocked product would ask, and for the same work block. It stays unused, but without memory the plain
// path serves, whose sums round differently: small and large products shall go the same way then.
template <class T> void* take_block(i64 m, i64 n, i64 k, i64 kb)
{
    constexpr const Sizes& s = sizes<T>;
    best_entry<T>();
    const i64 rows = min(m, row_block<T>()), columns = min(n, column_block<T>(n, s.n_unit)), depth = min(k, kb);
    const AreaBytes bytes(round_up(rows, s.m_unit), round_up(columns, s.n_unit), round_up(depth, s.k_unit), sizeof(T),
                          s.n_unit * s.scratch_factor);
    const i64 a_scratch = room(bytes.a, AreaBytes::page_shift) + room(bytes.scratch, AreaBytes::line_shift);
    const i64 b = packs_b<T>(columns, depth) ? room(bytes.b, AreaBytes::page_shift) : 0;
    void* const block = orv_serv_allocate(a_scratch + b, 128);
    return orv_serv_check_ptr(block, routine, routine_length) == 0 ? block : nullptr;
}

template <class T> using Direct = void(i64 m, i64 n, i64 k, const Operands<T>& o);

// Alpha belongs into the elements of A. One that changes nothing may as well come at the end.
template <class T> Direct<T>* direct_kernel(char transa, T alpha)
{
    const bool plain = is_plain(transa);
    if constexpr (is_complex<T>) {
        if (is_conjugated(transa)) return direct<T, Rows::apart, Alpha::in_conj_x>;
    } else if (alpha == one<T>)
        return plain ? direct<T, Rows::adjacent, Alpha::at_end> : direct<T, Rows::apart, Alpha::at_end>;
    return plain ? direct<T, Rows::adjacent, Alpha::in_x> : direct<T, Rows::apart, Alpha::in_x>;
}

} // namespace

// Operands of few rows want a B whose columns are read along memory; a transposed one is better packed.
template <class T> bool is_better_in_place(const Product<T>& x)
{
    constexpr i64 small_volume = is_complex<T> ? 350 : 2500, few_rows = is_complex<T> ? 0 : 8;
    constexpr const Sizes& s = sizes<T>;
    if (x.m < s.m_min || x.n < s.n_min || x.k < s.k_min) return false;
    return (x.m <= few_rows && is_plain(x.transb)) ||
           (x.m * x.n <= small_volume && x.m * x.n * x.k <= small_volume); // neither product overflows
}

template <class T> void in_place(const Product<T>& x)
{
    const i64 kb = depth_block<T>(x.k, sizes<T>.k_unit);
    void* const block = take_block<T>(x.m, x.n, x.k, kb);
    if (block == nullptr) return plain(x);

    const bool nb = is_plain(x.transb);
    Operands<T> o = {.x = x.a,
                     .ldx = x.lda,
                     .y = x.b,
                     .y_step = nb ? 1 : x.ldb,
                     .y_column = nb ? x.ldb : 1,
                     .c = x.c,
                     .c_row = 1,
                     .c_column = x.ldc,
                     .conj_x = false,
                     .conj_y = is_conjugated(x.transb),
                     .replaces = x.beta == zero<T>,
                     .alpha = factor<T>(x.alpha)};
    Direct<T>* const multiply = direct_kernel(x.transa, x.alpha);
    const i64 x_step = is_plain(x.transa) ? x.lda : 1;
    for (i64 p = 0; p < x.k; p += kb, o.x += kb * x_step, o.y += kb * o.y_step, o.replaces = false)
        multiply(x.m, x.n, min(x.k - p, kb), o);
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
