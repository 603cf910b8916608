#include "core/pde/trig.h"
#include "frame/roots.h"

namespace orv::core::pde {
namespace {

using namespace kernels::pdett;

// sin((2k-1)*pi/circle*2) for k = 1 to count.
template <class T> void fill_odd_sines(T* sines, i64 count, i64 circle)
{
    RootWalk roots(circle);
    for (i64 k = 0; k < count; ++k) sines[k] = rounded<T>(roots.at(2 * k + 1)).im;
}

template <class T> void fill(T* dpar, i64 kind, i64 n)
{
    T* const tables = dpar + dpar_tables;
    const i64 count = n / 2;
    RootWalk roots(2 * n);
    for (i64 k = 1; k <= count; ++k) {
        const cpx<T> root = rounded<T>(roots.at(k));
        if (kind == sine) tables[k - 1] = root.im;
        else tables[2 * k - 2] = root.re, tables[2 * k - 1] = root.im;
    }
    if (kind >= staggered_cosine) fill_odd_sines(tables + half_angles(kind, n), count, 4 * n);
    if (kind >= staggered2_cosine) fill_odd_sines(tables + quarter_angles(n), n, 8 * n);
}

} // namespace

void fill_tables(float* dpar, i64 kind, i64 n) { fill(dpar, kind, n); }
void fill_tables(double* dpar, i64 kind, i64 n) { fill(dpar, kind, n); }

} // namespace orv::core::pde
