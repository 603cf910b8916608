// Tables of sines and cosines. Angles of kinds 0 and 1 are products, those of all others sums of steps: the last bits
// depend on it.
#include "pde/trig/trig.h"

extern "C" {
double sin(double);
double cos(double);
float sinf(float);
float cosf(float);
}

namespace orv::pdett {
namespace {

// Calls of their own: side by side, sine and cosine become one call of a function that the branch may not ask for.
[[gnu::noinline]] double sine_of(double x) { return sin(x); }
[[gnu::noinline]] double cosine_of(double x) { return cos(x); }
[[gnu::noinline]] float sine_of(float x) { return sinf(x); }
[[gnu::noinline]] float cosine_of(float x) { return cosf(x); }

// sin(start + step), sin(start + step + step), ...
template <class T> void sum_up(T start, T step, i64 count, T* sines)
{
    T angle = start;
    for (i64 k = 0; k < count; ++k) sines[k] = sine_of(angle += step);
}

} // namespace

template <class T> void fill_tables(i64 kind, i64 n, T* table)
{
    const T step = T(3.14159265358979323846) / static_cast<T>(n);
    const i64 count = n / 2;
    if (kind == sine) {
        for (i64 k = 1; k <= count; ++k) table[k - 1] = sine_of(static_cast<T>(k) * step);
        return;
    }
    T sum = 0;
    for (i64 k = 1; k <= count; ++k) {
        sum += step;
        const T angle = kind == cosine ? static_cast<T>(k) * step : sum;
        table[2 * k - 2] = cosine_of(angle);
        table[2 * k - 1] = sine_of(angle);
    }
    if (kind == cosine) return;
    sum_up(-step / 2, step, count, table + half_angles(kind, n));
    if (kind >= staggered2_cosine) sum_up(-step / 4, step / 2, n, table + quarter_angles(n));
}
template void fill_tables(i64 kind, i64 n, float* table);
template void fill_tables(i64 kind, i64 n, double* table);

} // namespace orv::pdett
