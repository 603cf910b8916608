// Sine and cosine transforms of rows, as products with the matrix of sines or cosines.
#include "cli/verify/setting.h"

#include <cmath>
#include <type_traits>

namespace orv::verify {
namespace {

// Rows of m numbers are columns of a matrix.
template <class T> orv_status transform(bool forward, char kind, i64 m, i64 rows, const T* x, i64 ldx, T* y, i64 ldy)
{
    orv_trig* trig = nullptr;
    const int precision = std::is_same_v<T, double> ? ORV_DFT_DOUBLE : ORV_DFT_SINGLE;
    if (const orv_status status = orv_trig_create(&trig, precision, kind - '0', m)) return status;
    const orv_status status = forward ? orv_trig_forward_rows(trig, rows, x, 1, ldx, y, 1, ldy)
                                      : orv_trig_backward_rows(trig, rows, x, 1, ldx, y, 1, ldy);
    orv_trig_free(trig);
    return status;
}
template <class T> orv_status forward(char kind, i64 m, i64 rows, const T* x, i64 ldx, T* y, i64 ldy)
{
    return transform(true, kind, m, rows, x, ldx, y, ldy);
}
template <class T> orv_status backward(char kind, i64 m, i64 rows, const T* x, i64 ldx, T* y, i64 ldy)
{
    return transform(false, kind, m, rows, x, ldx, y, ldy);
}

// Points and frequencies of a kind, in units of which 2*pi are 8n.
struct Kind {
    View::Steps points, frequencies;
    int more; // cells than points
    bool is_sine;
};
constexpr Kind kinds[] = {{{4, 4}, {1, 1}, 1, true}, {{0, 4}, {0, 1}, -1, false}, {{0, 2}, {1, 2}, 0, false},
                          {{2, 2}, {1, 2}, 0, true}, {{1, 2}, {1, 2}, 0, false},  {{1, 2}, {1, 2}, 0, true}};

template <bool is_forward> Plan wave(Setting& s)
{
    const int number = s.letter("kind") - '0';
    const Kind& kind = kinds[number];
    const i64 m = s.extra("m", 5, number == ORV_TRIG_COSINE ? 2 : 1, 1 << 20), rows = s.size("rows", 1);
    const i64 n = m + kind.more;
    View waves{"", m, m};
    waves.points = 8 * n, waves.turns = 1;
    waves.part = kind.is_sine ? View::Part::imaginary : View::Part::real;
    waves.by_rows = is_forward ? kind.frequencies : kind.points;
    waves.by_columns = is_forward ? kind.points : kind.frequencies;
    // Ends between which whole cells lie belong to them by half, unless they are zero.
    if (number == ORV_TRIG_COSINE) waves.first_weight = waves.last_weight = 0.5;
    if (is_forward && number == ORV_TRIG_STAGGERED_COSINE) waves.first_weight = 0.5;
    if (is_forward && number == ORV_TRIG_STAGGERED_SINE) (m > 1 ? waves.last_weight : waves.first_weight) = 0.5;
    const Number scale{is_forward ? 2 / static_cast<double>(n) : 1, 0};
    const View x = s.matrix("x", "ldx", m, rows), y = s.matrix("y", "ldy", m, rows);
    // Half of a Fourier transform's, and running sums or divisions by small sines.
    const double roundings = 20 + 6 * std::log2(static_cast<double>(n + 1)) + std::sqrt(static_cast<double>(n));
    return {{{after(y), {{scale, {waves}, op(x)}}, roundings}}};
}

} // namespace

Group waves()
{
    const char* const arguments = "kind:012345 m rows x ldx y ldy";
    const std::vector<const char*> sizes{
        "m=2|3|4|5|6|7|8|9|15|16|17|31|32|33|63|64|65|97|100|127|128|129|255|257 rows=1",
        "m=2|7|64|100 rows=0|1|5 ldx=101 ldy=103", "m=500|511|512|513 rows=1",
        "times=4 m=100..300 rows=2..20 threads=2..8 eager=100000"};
    return {
        "trig",
        "sine and cosine transforms",
        {{"trig_forward", arguments, wave<true>, sizes, {routine<forward<float>>("s"), routine<forward<double>>("d")}},
         {"trig_backward",
          arguments,
          wave<false>,
          sizes,
          {routine<backward<float>>("s"), routine<backward<double>>("d")}}}};
}

} // namespace orv::verify
