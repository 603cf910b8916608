// Which long transforms of reals threads share, how their length divides, and their tables.
#include "dft/methods/long_real.h"

#include "frame/roots.h"

namespace orv::dft::long_real {
namespace {

constexpr i64 shortest = 16384;     // whose parts are worth waiting for each other
constexpr i64 longest_column = 512; // so far m1 grows beside m2
constexpr i64 most_points = i64{1} << 40;
constexpr i64 alignment = 256;

struct Split {
    i64 m1, m2;
};
// The factors of N, the smallest first, to m1 while it is the smaller one. Two begins with m2; squares of 3 and 5 are
// shared evenly before, for a factor 3 or 5 on each side costs less than 9 or 25 on one.
Split split_of(i64 rest)
{
    Split s{1, 1};
    if (rest % 2 == 0) rest /= 2, s.m2 = 2;
    for (const i64 d : {3, 5})
        if (rest % (d * d) == 0) rest /= d * d, s.m1 *= d, s.m2 *= d;
    for (i64 d = 2; rest > 1; ++d) {
        if (d * d > rest) d = rest;
        for (; rest % d == 0; rest /= d) {
            const bool to_first = s.m1 < s.m2 && (s.m1 == 1 || s.m1 * d <= longest_column);
            (to_first ? s.m1 : s.m2) *= d;
        }
    }
    return s;
}

// Roots by themselves, then the products of two of them that make the rest.
template <class R> void fill_roots(i32 thread, i32 threads, void* argument)
{
    const auto& s = *static_cast<const State<R>*>(argument);
    const i64 coarse = 2 * s.m2 + 1;
    const auto [begin, end] = slice(coarse + s.m1, 1, thread, threads);
    for (i64 i = begin; i < end; ++i)
        s.twiddle_b[i] = rounded<R>(i < coarse ? orv::root(-i, 2 * s.m2) : orv::root(coarse - i, 2 * s.half()));
}
template <class R> void fill_products(i32 thread, i32 threads, void* argument)
{
    const auto& s = *static_cast<const State<R>*>(argument);
    const auto [begin, end] = slice(s.columns, 1, thread, threads);
    for (i64 k2 = begin; k2 < end; ++k2) {
        cpx<R>* const row = s.twiddle_a + k2 * s.m1;
        for (i64 j = 0; j < s.m1; ++j) row[j] = s.root(2 * j * k2);
    }
}

template <class R> cpx<R>* allocate(i64 count)
{
    return static_cast<cpx<R>*>(orv_serv_malloc(count * static_cast<i64>(sizeof(cpx<R>)), alignment));
}

// A record of the engine, whose work area the buffer has to have room for.
template <class Init, class GetBytes>
i32 make(YmpDftSpec** spec, i64 length, Init init, GetBytes get_bytes, i64* buffer_bytes)
{
    const i32 status = init(spec, static_cast<i32>(length), scale_none, 0);
    i32 bytes = 0;
    if (status == ok) get_bytes(*spec, &bytes);
    *buffer_bytes = max(*buffer_bytes, bytes);
    return DFT(transfer_ymp_orv_error)(status);
}

} // namespace

template <class R> void State<R>::release()
{
    orv::dft::release(twiddle_a);
    orv::dft::release(twiddle_b);
    if (spec_r != nullptr) Engine<R>::free_real(spec_r);
    if (spec_r2 != nullptr) Engine<R>::free_real(spec_r2);
    if (spec_c != nullptr) Engine<R>::free_pairs(spec_c);
    *this = {};
}

template <class R> i32 State<R>::build(const DftiNode& node, i64 n, i32 team)
{
    if (n / 2 > most_points) return node_too_long;
    const Split split = split_of(n / 2);
    if (2 * split.m1 > engine_limit<R>(2 * split.m1) || split.m2 > engine_limit<R>(split.m2)) return node_too_long;
    m1 = split.m1, m2 = split.m2, columns = m2 / 2 + 1;
    twiddle_a = allocate<R>(m1 * columns);
    twiddle_b = allocate<R>(2 * m2 + 1 + m1);
    if (twiddle_a == nullptr || twiddle_b == nullptr) return node_no_memory;
    share(node, team, fill_roots<R>, this);
    share(node, team, fill_products<R>, this);
    using E = Engine<R>;
    if (const i32 status = make(&spec_r, m2, E::init_real, E::real_bytes, &buffer_bytes)) return status;
    if (const i32 status = make(&spec_r2, 2 * m1, E::init_real, E::real_bytes, &buffer_bytes)) return status;
    return make(&spec_c, 2 * m1, E::init_pairs, E::pairs_bytes, &buffer_bytes);
}

template struct State<float>;
template struct State<double>;

namespace {

template <class R> i32 commit(const DftiMethod* method, DftiNode* node)
{
    const u32 format = node->packed_format;
    if (!is_of<R>(*node, CFG_DOMAIN_REAL) || (format != CFG_CCS && format != CFG_PERM && format != CFG_CCE) ||
        !is_one_transform(*node) || !is_one_row(*node))
        return node_not_this_method;
    const i64 n = node->work_lengths.dims[0].n;
    const bool alone = node->effective_threads < 2 || node->number_of_user_threads > 1;
    if (n % 2 != 0 || n < shortest || (alone && n <= engine_limit<R>(n))) return node_not_this_method;
    take(method, node);
    auto* const state = state_of<State<R>>(node, alignment);
    if (state == nullptr) return give_up(node, node_no_memory);
    const i32 threads = alone ? 1 : node->effective_threads;
    if (state->half() != n / 2) {
        state->release();
        if (const i32 status = state->build(*node, n, threads)) return give_up(node, status);
    }
    state->threads = threads;
    state->packed_format = format, state->placement = node->placement;
    finish(node, compute<R, true>, compute<R, false>);
    return node_ok;
}

} // namespace
} // namespace orv::dft::long_real

using namespace orv::dft;

ORV_EXPORT constinit const DftiMethod DFT(par_1d_r2c_s){long_real::commit<float>, detach<long_real::State<float>>};
ORV_EXPORT constinit const DftiMethod DFT(par_1d_r2c_d){long_real::commit<double>, detach<long_real::State<double>>};
