// What one core can do, measured beside the libraries: the axes of the plots end here.
#include "bench/call.h"
#include "bench/library.h"

#include <algorithm>

#include <emmintrin.h>

namespace orv::bench {
namespace {

// Keeps a value in a register and hides it from the optimizer.
template <class V> inline void opaque(V& v) { asm volatile("" : "+x"(v)); }

template <class R> struct Pack;
template <> struct Pack<float> {
    using type = __m128;
};
template <> struct Pack<double> {
    using type = __m128d;
};

// At least so many operations, half of them products and half sums, on registers. Six chains of each kind are more
// than latency times throughput asks for, and leave registers for two constants.
template <class R> void arithmetic(double operations)
{
    using V = typename Pack<R>::type;
    constexpr int chains = 6, lanes = 16 / sizeof(R), per_round = 2 * chains * lanes;
    V product[chains], sum[chains];
#pragma GCC unroll 8
    for (int i = 0; i < chains; ++i) product[i] = sum[i] = V{} + R(1);
    V one = V{} + R(1), tiny = V{} + R(1e-9);
    opaque(one);
    opaque(tiny);
    for (i64 left = static_cast<i64>(operations); left > 0; left -= per_round) {
#pragma GCC unroll 8
        for (int i = 0; i < chains; ++i) {
            product[i] *= one;
            sum[i] += tiny;
            opaque(product[i]);
            opaque(sum[i]);
        }
    }
}

template <Use use> inline void touch(std::byte* at)
{
    auto* p = reinterpret_cast<float*>(at);
    __m128 v = _mm_setzero_ps();
    if constexpr (use != Use::written) v = _mm_loadu_ps(p);
    opaque(v);
    if constexpr (use != Use::read) _mm_storeu_ps(p, v);
}

// Reads and writes x and y once, 16 bytes at a time. Beyond the first cache it asks for what comes later.
template <bool far, Use X, Use Y> void move(std::byte* x, std::byte* y, i64 bytes)
{
    constexpr i64 line = 64, ahead = 512;
    for (i64 at = 0; at + line <= bytes; at += line) {
        if constexpr (far) {
            _mm_prefetch(x + at + ahead, _MM_HINT_T0);
            if (y != nullptr) _mm_prefetch(y + at + ahead, _MM_HINT_T0);
        }
#pragma GCC unroll 4
        for (i64 i = at; i < at + line; i += 16) touch<X>(x + i);
        if (y == nullptr) continue;
#pragma GCC unroll 4
        for (i64 i = at; i < at + line; i += 16) touch<Y>(y + i);
    }
}

template <Use X, Use Y> void move(std::byte* x, std::byte* y, i64 bytes)
{
    constexpr i64 near = 12 * 1024;
    if (bytes > near) move<true, X, Y>(x, y, bytes);
    else move<false, X, Y>(x, y, bytes);
}

void move(const Case& c, const Arena& arena)
{
    const Operand &first = c.operands.front(), &last = c.operands.back();
    std::byte *x = arena.address(first), *y = c.operands.size() > 1 ? arena.address(last) : nullptr;
    const i64 bytes = c.bytes(first);
    const auto uses = [&](Use a, Use b) { return first.use == a && last.use == b; };
    if (uses(Use::read, Use::read)) move<Use::read, Use::read>(x, y, bytes);
    else if (uses(Use::read, Use::written)) move<Use::read, Use::written>(x, y, bytes);
    else if (uses(Use::read, Use::updated)) move<Use::read, Use::updated>(x, y, bytes);
    else move<Use::updated, Use::updated>(x, y, bytes);
}

// Reads a far matrix as fast as memory gives it, eight stretches at a time: one stream alone stops at every page edge,
// as the processor's own look-ahead does. Asks for the next stretches at the end of these.
void read_far(std::byte* a, i64 bytes)
{
    constexpr i64 line = 64, streams = 8, ahead = 1024;
    constexpr i64 stretch = 32000; // streams a power of 2 apart would meet in the same places of the caches
    i64 at = 0;
    for (; at + streams * stretch <= bytes; at += streams * stretch)
        for (i64 i = at; i < at + stretch; i += line) {
            const i64 next = i + ahead < at + stretch ? ahead : ahead + (streams - 1) * stretch;
#pragma GCC unroll 8
            for (i64 s = 0; s < streams; ++s) {
                std::byte* const from = a + i + s * stretch;
                _mm_prefetch(from + next, _MM_HINT_T0);
#pragma GCC unroll 4
                for (i64 r = 0; r < line; r += 16) touch<Use::read>(from + r);
            }
        }
    move<Use::read, Use::read>(a + at, nullptr, bytes - at);
}

// The largest operand as far as the work goes, an updated one to and fro, as often as there are products.
void move_matrix(const Case& c, const Arena& arena)
{
    const auto smaller = [&](const Operand& a, const Operand& b) { return a.reals < b.reals; };
    const Operand& matrix = *std::max_element(c.operands.begin(), c.operands.end(), smaller);
    std::byte* a = arena.address(matrix);
    const i64 bytes = static_cast<i64>(c.work) / (matrix.use == Use::updated ? 2 : 1);
    for (i64 left = bytes; left > 0; left -= c.bytes(matrix)) {
        const i64 part = min(left, c.bytes(matrix));
        constexpr i64 far = i64(8) << 20;
        if (matrix.use == Use::updated) move<Use::updated, Use::read>(a, nullptr, part);
        else if (part >= far) read_far(a, part);
        else move<Use::read, Use::read>(a, nullptr, part);
    }
}

void move_kept(const Case& c, const Arena& arena)
{
    const Operand &matrix = c.operands[0], &x = c.operands[1], &y = c.operands[2];
    read_far(arena.address(matrix), c.bytes(matrix));
    move<Use::read, Use::written>(arena.address(x), arena.address(y), c.bytes(x));
}

// sum += (v/scale)^2 for each number in turn: what remains of a scaled norm if nothing else cost time, at any stride.
void ordered_norm(const Case& c, const Arena& arena)
{
    const auto* x = reinterpret_cast<const double*>(arena.address(c.operands[0]));
    __m128d sum{}, scale = _mm_set1_pd(1.5);
    opaque(scale);
    const auto numbers = static_cast<i64>(c.work) / static_cast<i64>(sizeof(double));
    for (i64 i = 0; i + 2 <= numbers; i += 2) {
        __m128d v = _mm_div_pd(_mm_loadu_pd(x + i), scale);
        v = _mm_mul_pd(v, v);
        sum = _mm_add_sd(sum, v);
        sum = _mm_add_sd(sum, _mm_unpackhi_pd(v, v));
    }
    opaque(sum);
}

// sum += x*y for each pair of singles in turn, in double: one addition waits for the one before, at any stride.
void ordered_dot(const Case& c, const Arena& arena)
{
    const auto* x = reinterpret_cast<const float*>(arena.address(c.operands.front()));
    const auto* y = reinterpret_cast<const float*>(arena.address(c.operands.back()));
    const auto pairs = static_cast<i64>(c.work) / static_cast<i64>(2 * sizeof(float));
    double sum = 0;
    for (i64 i = 0; i < pairs; ++i) sum += static_cast<double>(x[i]) * static_cast<double>(y[i]);
    opaque(sum);
}

// sum += v^2 for two singles at a time, in double: the conversion, the product and the sum share three ports.
void widened_norm(const Case& c, const Arena& arena)
{
    constexpr int chains = 8;
    const auto* x = reinterpret_cast<const float*>(arena.address(c.operands[0]));
    const auto numbers = static_cast<i64>(c.work) / static_cast<i64>(sizeof(float));
    __m128d sum[chains] = {};
    for (i64 i = 0; i + 2 * chains <= numbers; i += 2 * chains) {
        _mm_prefetch(reinterpret_cast<const char*>(x + i) + 2048, _MM_HINT_T0);
#pragma GCC unroll 8
        for (int k = 0; k < chains; ++k) {
            const __m128i bits = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(x + i + 2 * k));
            const __m128d v = _mm_cvtps_pd(_mm_castsi128_ps(bits));
            sum[k] = _mm_add_pd(sum[k], _mm_mul_pd(v, v));
        }
    }
    for (auto& s : sum) opaque(s);
}

} // namespace

Repeat bind_limit(const Case& c, const Arena& arena)
{
    switch (c.limit) {
    case Limit::none:
        break;
    case Limit::arithmetic:
        return [&c](long calls) {
            const double operations = c.work * static_cast<double>(calls);
            if (c.single()) arithmetic<float>(operations);
            else arithmetic<double>(operations);
        };
    case Limit::movement:
        return [&](long calls) {
            for (long i = 0; i < calls; ++i) move(c, arena);
        };
    case Limit::matrix:
        return [&](long calls) {
            for (long i = 0; i < calls; ++i) move_matrix(c, arena);
        };
    case Limit::kept:
        return [&](long calls) {
            for (long i = 0; i < calls; ++i) move_kept(c, arena);
        };
    case Limit::ordered_norm:
        return [&](long calls) {
            for (long i = 0; i < calls; ++i) ordered_norm(c, arena);
        };
    case Limit::ordered_dot:
        return [&](long calls) {
            for (long i = 0; i < calls; ++i) ordered_dot(c, arena);
        };
    case Limit::widened_norm:
        return [&](long calls) {
            for (long i = 0; i < calls; ++i) widened_norm(c, arena);
        };
    }
    return {};
}

} // namespace orv::bench
