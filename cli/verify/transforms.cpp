// Fourier transforms of one dimension, as products with the matrix of roots.
#include "cli/verify/setting.h"

#include <cmath>

namespace orv::verify {
namespace {

Operand roots(i64 rows, i64 columns, i64 points, int turns)
{
    View v{"", rows, columns};
    v.points = points, v.turns = turns;
    return {v};
}

// The bounds are those of sums in any order; a transform adds up far less, so these are generous. Roots are rounded
// where they are used, and the inverse multiplies once more.
double roundings(i64 n) { return 12 + 6 * std::log2(static_cast<double>(n)); }

// out[k] := sum of in[j]*exp(-2*pi*i*j*k/n), of reals the first half.
Plan fft(Setting& s)
{
    const i64 n = s.extra("n", 5, 1, 1 << 20);
    const View in{"in", n}, out{"out", s.is_complex("in") ? n : n / 2 + 1};
    return {{{after(out), {{{1, 0}, roots(out.rows, n, n, -1), op(in)}}, roundings(n)}}};
}
// out[j] := sum of in[k]*exp(2*pi*i*j*k/n)/n; of a half spectrum every number stands for its conjugate, too.
Plan ifft(Setting& s)
{
    const i64 n = s.extra("n", 5, 1, 1 << 20);
    const bool half = !s.is_complex("out");
    const Number each{1 / static_cast<double>(n), 0};
    const View in{"in", half ? n / 2 + 1 : n}, out{"out", n};
    Operand all = roots(n, in.rows, n, 1);
    if (half) all.view.first_weight = 0.5;
    if (half && n % 2 == 0) all.view.last_weight = 0.5;
    std::vector<Term> terms{{each, all, op(in)}};
    if (half) all.op = 'r', terms.push_back({each, all, op(in, 'r')});
    return {{{after(out), terms, roundings(n)}}};
}

} // namespace

#define ALL(name)                                                                                                      \
    routine<orv_##name##_s>("s"), routine<orv_##name##_d>("d"), routine<orv_##name##_c>("c"),                          \
        routine<orv_##name##_z>("z")

Group transforms()
{
    const std::vector<const char*> lengths{
        "n=1|2|3|4|5|6|7|8|9|10|11|12|13|15|16|17|19|25|27|30|31|32|33|49|53|60|63|64|65|97|100|120|121|127|128|129",
        "n=210|211|243|255|256|257|360|500|512", "z n=1000|1024", "s n=997", "times=4 n=130..500 threads=2..8"};
    return {"dft",
            "Fourier transforms",
            {{"fft", "n in out", fft, lengths, {ALL(fft)}}, {"ifft", "n in out", ifft, lengths, {ALL(ifft)}}}};
}

#undef ALL

} // namespace orv::verify
