// What threads do of a long transform of reals: rows and columns, each in blocks whose lines in memory are read and
// written whole. A block stands in memory of the thread's own, where rows never fall on the same lines of a cache.
#include "dft/methods/long_real.h"
#include "dft/methods/product.h"
#include "frame/kernels/dft_compute.h"

#include <emmintrin.h>

namespace orv::dft::long_real {
namespace {

template <class T> constexpr i64 block = 128 / sizeof(T);     // rows or columns
constexpr i64 pitch_of(i64 n) { return (n + 7) / 8 * 8 | 8; } // an odd multiple of 8

template <class R> struct Call {
    using T = cpx<R>;
    const State<R>& state;
    const R* from;
    R* to;
    T *even, *odd; // between rows and columns: m1 for each k2
    R* column;     // of k2 = 0, for the thread that has it
    Layout layout;
    t_8u* memory; // of each thread: the block, then the engine's work area
    i64 memory_bytes, block_bytes;
    i32 arrived, status;

    void end_with(i32 s)
    {
        if (s != ok) __atomic_store_n(&status, s, __ATOMIC_RELAXED);
    }
    // Returns when all threads have arrived, false after an error of any. There is one such place in a call.
    bool wait_for_all(i32 threads)
    {
        __atomic_add_fetch(&arrived, 1, __ATOMIC_ACQ_REL);
        while (__atomic_load_n(&arrived, __ATOMIC_ACQUIRE) < threads) _mm_pause();
        return __atomic_load_n(&status, __ATOMIC_RELAXED) == ok;
    }
};

// ---- Rows

// Of even and odd elements each so many rows of m2 reals.
template <class R> struct Rows {
    R* begin;
    i64 pitch;
    R* even(i64 c) const { return begin + 2 * c * pitch; }
    R* odd(i64 c) const { return begin + (2 * c + 1) * pitch; }
};

template <bool forward, class R> void move_reals(const Call<R>& call, i64 j1, i64 count, Rows<R> rows)
{
    const i64 m1 = call.state.m1, m2 = call.state.m2;
    for (i64 j2 = 0; j2 < m2; ++j2)
        for (i64 c = 0; c < count; ++c) {
            const i64 at = 2 * (j1 + c + m1 * j2);
            R &even = rows.even(c)[j2], &odd = rows.odd(c)[j2];
            if constexpr (forward) even = call.from[at], odd = call.from[at + 1];
            else call.to[at] = even, call.to[at + 1] = odd;
        }
}
template <bool forward, class R> void move_half_spectra(const Call<R>& call, i64 j1, i64 count, Rows<R> rows)
{
    const i64 m1 = call.state.m1, m2 = call.state.m2;
    for (i64 k2 = 0; k2 < call.state.columns; ++k2)
        for (i64 c = 0; c < count; ++c) {
            const Spectrum<R> even(rows.even(c), m2, Layout::perm), odd(rows.odd(c), m2, Layout::perm);
            cpx<R>&at_even = call.even[k2 * m1 + j1 + c], &at_odd = call.odd[k2 * m1 + j1 + c];
            if constexpr (forward) at_even = even.get(k2), at_odd = odd.get(k2);
            else even.put(k2, at_even), odd.put(k2, at_odd);
        }
}
template <bool forward, class R> i32 transform_rows(const Call<R>& call, i32 thread, i32 threads, t_8u* memory)
{
    constexpr i64 most = block<cpx<R>>;
    const auto transform = forward ? Engine<R>::to_perm : Engine<R>::from_perm;
    const Rows<R> rows{reinterpret_cast<R*>(memory), pitch_of(call.state.m2)};
    const auto [begin, end] = slice(call.state.m1, most, thread, threads);
    i32 s = ok;
    for (i64 j1 = begin; j1 < end && s == ok; j1 += most) {
        const i64 count = min(most, end - j1);
        if (forward) move_reals<true>(call, j1, count, rows);
        else move_half_spectra<false>(call, j1, count, rows);
        for (i64 r = 0; r < 2 * count && s == ok; ++r) {
            R* const row = rows.begin + r * rows.pitch;
            s = transform(row, row, call.state.spec_r, memory + call.block_bytes);
        }
        if (forward) move_half_spectra<true>(call, j1, count, rows);
        else move_reals<false>(call, j1, count, rows);
    }
    return s;
}

// ---- Columns

// Columns of points k1, with those of the odd elements behind them. Column 0 is the spectrum of m1 reals: its half.
template <class R> struct Columns {
    cpx<R>* begin;
    i64 pitch;
    cpx<R>* even(i64 b) const { return begin + 2 * b * pitch; }
    cpx<R>* odd(i64 b) const { return begin + (2 * b + 1) * pitch; }
};

// Between a line of m1 pairs j1 and a column; the line is written over.
template <bool forward, class R>
i32 transform_column(const Call<R>& call, i64 k2, cpx<R>* line, cpx<R>* points, t_8u* work)
{
    const State<R>& state = call.state;
    const i64 m1 = state.m1;
    const cpx<R>* const twiddles = state.twiddle_a + k2 * m1;
    i32 s;
    if (k2 != 0 && forward) {
        multiply<false>(line, twiddles, line, m1);
        return Engine<R>::forward(line, points, state.spec_c, work);
    }
    if (k2 != 0) {
        s = Engine<R>::backward(points, line, state.spec_c, work);
        multiply<true>(line, twiddles, line, m1);
        return s;
    }
    R* const reals = call.column;
    const Spectrum<R> half(reals, m1, Layout::perm);
    if (forward) {
        for (i64 j1 = 0; j1 < m1; ++j1) reals[j1] = line[j1].re;
        s = Engine<R>::to_perm(reals, reals, state.spec_r2, work);
        for (i64 k1 = 0; 2 * k1 <= m1; ++k1) points[k1] = half.get(k1);
    } else {
        for (i64 k1 = 0; 2 * k1 <= m1; ++k1) half.put(k1, points[k1]);
        s = Engine<R>::from_perm(reals, reals, state.spec_r2, work);
        for (i64 j1 = 0; j1 < m1; ++j1) line[j1] = {reals[j1], 0};
    }
    return s;
}

// Two points of the spectrum from one of each half, and back.
template <class T> ORV_INLINE void join(T w, T even, T odd, T& x, T& mirrored)
{
    const T turned = w * odd;
    x = even + turned, mirrored = conj(even - turned);
}
template <class T> ORV_INLINE void part(T w, T x, T mirrored, T& even, T& odd)
{
    const T other = conj(mirrored);
    even = x + other, odd = (x - other) * conj(w);
}

// Columns k2 to k2 + count - 1, none of which has its mirror images in itself.
template <bool forward, class R> void recombine(const Call<R>& call, i64 k2, i64 count, Columns<R> columns)
{
    const State<R>& state = call.state;
    const i64 m1 = state.m1, m2 = state.m2;
    using T = std::conditional_t<forward, cpx<R>, const cpx<R>>;
    T* x = reinterpret_cast<T*>(forward ? call.to : const_cast<R*>(call.from)) + k2;
    T* mirrored = x + (state.points - 2 * k2);
    i64 q = k2 / m1, r = k2 % m1; // w^(m1*q + r) is the first one's
    for (i64 k1 = 0; k1 < m1; ++k1, x += m2, mirrored -= m2) {
        i64 next_q = q, next_r = r;
        for (i64 b = 0; b < count; ++b) {
            const cpx<R> w = state.root(next_q, next_r);
            if (++next_r == m1) next_r = 0, ++next_q;
            cpx<R>&even = columns.even(b)[k1], &odd = columns.odd(b)[k1];
            if constexpr (forward) join(w, even, odd, x[b], mirrored[-b]);
            else part(w, x[b], mirrored[-b], even, odd);
        }
        q += m2 / m1, r += m2 % m1;
        if (r >= m1) r -= m1, ++q;
    }
}
// Column 0, of which there is a half, and column m2/2, of which one half gives the other.
template <bool forward, class R> void recombine_with_itself(const Call<R>& call, i64 k2, Columns<R> columns)
{
    const State<R>& state = call.state;
    const i64 m1 = state.m1, pairs = k2 == 0 ? m1 / 2 + 1 : forward ? (m1 + 1) / 2 : m1;
    cpx<R>*const even = columns.even(0), *const odd = columns.odd(0);
    const Spectrum<R> x(forward ? call.to : const_cast<R*>(call.from), 2 * state.points, call.layout);
    for (i64 k1 = 0; k1 < pairs; ++k1) {
        const i64 k = k2 + state.m2 * k1;
        const cpx<R> w = state.root(k / m1, k % m1);
        if constexpr (forward) {
            cpx<R> at, mirrored;
            join(w, even[k1], odd[k1], at, mirrored);
            x.put(k, at), x.put(state.points - k, mirrored);
        } else part(w, x.get(k), x.get(state.points - k), even[k1], odd[k1]);
    }
}

template <bool forward, class R> i32 transform_columns(const Call<R>& call, i32 thread, i32 threads, t_8u* memory)
{
    constexpr i64 most = block<cpx<R>>;
    const State<R>& state = call.state;
    const i64 m1 = state.m1;
    const Columns<R> columns{reinterpret_cast<cpx<R>*>(memory), pitch_of(m1)};
    const auto [begin, end] = slice(state.columns, most, thread, threads);
    const auto alone = [&](i64 k2) { return k2 == 0 || 2 * k2 == state.m2; };
    const auto recombine_all = [&](i64 k2, i64 count) {
        if (alone(k2)) recombine_with_itself<forward>(call, k2, columns);
        else recombine<forward>(call, k2, count, columns);
    };
    i32 s = ok;
    for (i64 k2 = begin, count; k2 < end && s == ok; k2 += count) {
        for (count = 1; !alone(k2) && count < min(most, end - k2) && !alone(k2 + count);) ++count;
        if (!forward) recombine_all(k2, count);
        for (i64 b = 0; b < count && s == ok; ++b) {
            t_8u* const work = memory + call.block_bytes;
            const i64 line = (k2 + b) * m1;
            s = transform_column<forward>(call, k2 + b, call.even + line, columns.even(b), work);
            if (s == ok) s = transform_column<forward>(call, k2 + b, call.odd + line, columns.odd(b), work);
        }
        if (forward) recombine_all(k2, count);
    }
    return s;
}

// ---- The call

template <bool forward, class R> void task(i32 thread, i32 threads, void* argument)
{
    auto& call = *static_cast<Call<R>*>(argument);
    t_8u* const memory = call.memory + thread * call.memory_bytes;
    const auto rows = transform_rows<forward, R>;
    const auto columns = transform_columns<forward, R>;
    call.end_with((forward ? rows : columns)(call, thread, threads, memory));
    if (call.wait_for_all(threads)) call.end_with((forward ? columns : rows)(call, thread, threads, memory));
}

template <class R> struct Scaling {
    R* values;
    i64 count;
    R scale;
};
// Equal slices, the first ones longer by one where it does not come out even.
template <class R> void scale(i32 thread, i32 threads, void* argument)
{
    const auto& s = *static_cast<const Scaling<R>*>(argument);
    const i64 each = s.count / threads, more = s.count % threads;
    const i64 begin = thread * each + min(thread, more), count = each + (thread < more ? 1 : 0);
    if constexpr (sizeof(R) == 4) DFT(dft_sscal)(count, s.scale, s.values + begin, 1);
    else DFT(dft_dscal)(count, s.scale, s.values + begin, 1);
}

// Blocks of memory that go when the call ends.
struct Memory {
    t_8u* at;
    explicit Memory(i64 bytes) : at(static_cast<t_8u*>(orv_serv_allocate(bytes, 256))) {}
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    ~Memory()
    {
        if (at != nullptr) orv_serv_deallocate(at);
    }
};

} // namespace

template <class R, bool forward> i32 compute(DftiNode* node, void* data, void* output, void*, void*)
{
    using T = cpx<R>;
    constexpr i64 pair = sizeof(T);
    const auto& state = *static_cast<const State<R>*>(node->method_data);
    const i64 block_bytes = block<T> * max(2 * pitch_of(state.m1) * pair, pitch_of(state.m2) * pair);
    const i64 memory_bytes = round_up(block_bytes + state.buffer_bytes, cache_line);
    const Memory even(state.columns * state.m1 * pair), odd(state.columns * state.m1 * pair), column(state.m1 * pair);
    const Memory memory(state.threads * memory_bytes);
    if (even.at == nullptr || odd.at == nullptr || column.at == nullptr || memory.at == nullptr) return node_no_memory;

    const auto [from, to] = reals_of<R>(*node, forward, data, output);
    Call<R> call{state,
                 from,
                 to,
                 reinterpret_cast<T*>(even.at),
                 reinterpret_cast<T*>(odd.at),
                 reinterpret_cast<R*>(column.at),
                 state.layout,
                 memory.at,
                 memory_bytes,
                 block_bytes,
                 0,
                 ok};
    if (state.threads > 1) parallel_together(*node, state.threads, task<forward, R>, &call);
    else task<forward, R>(0, 1, &call);
    const double factor = forward ? node->committed_forward_scale : node->committed_backward_scale;
    if (factor != 1) {
        Scaling<R> all{to, 2 * state.points + (forward && state.layout == Layout::ccs ? 1 : 0), static_cast<R>(factor)};
        share(*node, state.threads, scale<R>, &all);
    }
    return DFT(transfer_ymp_orv_error)(call.status);
}

template DftiCompute compute<float, true>;
template DftiCompute compute<float, false>;
template DftiCompute compute<double, true>;
template DftiCompute compute<double, false>;

} // namespace orv::dft::long_real
