#include "compat/fftw/problem.h"

namespace orv::compat::fftw {
namespace {

bool farther(const Dim& a, const Dim& b)
{
    if (a.os != b.os) return a.os > b.os;
    return a.is != b.is ? a.is > b.is : a.n > b.n;
}

// Loops in one order, whatever order the program gave them.
void sort(Dims& loops)
{
    for (int k = 1; k < loops.rank; ++k)
        for (int j = k; j > 0 && farther(loops.dim[j], loops.dim[j - 1]); --j) {
            const Dim other = loops.dim[j];
            loops.dim[j] = loops.dim[j - 1], loops.dim[j - 1] = other;
        }
}

// In place every element stands where it stood, and a pair where a pair of reals stood.
bool stays(const Problem& p)
{
    const i64 in_unit = p.form == Form::from_half ? 2 : 1, out_unit = p.form == Form::to_half ? 2 : 1;
    const auto same = [&](const Dim& d) { return d.is * in_unit == d.os * out_unit; };
    const bool halved = in_unit != out_unit; // in the last dimension, which has its pairs in a row
    for (const Dim& d : p.loops)
        if (!same(d)) return false;
    for (int k = 0; k < p.dims.rank; ++k) {
        const Dim& d = p.dims.dim[k];
        if (halved && k == p.dims.rank - 1 ? d.n > 1 && (d.is != 1 || d.os != 1) : !same(d)) return false;
    }
    return true;
}

// Of split arrays both stand apart, or both in place.
bool crossed(const Arrays& a)
{
    return a.in != nullptr && ((a.in == a.out) != (a.in_im == a.out_im) || a.in == a.out_im || a.in_im == a.out);
}

} // namespace

bool Problem::normalise()
{
    if (!dims.valid() || !loops.valid() || dims.empty() || dims.rank + loops.rank > Dims::most) return false;
    const bool halves = form == Form::to_half || form == Form::from_half;
    Dims rest;
    for (int k = 0; k < dims.rank; ++k) { // a length of 1 is none; where one is halved, or a factor remains, it stays
        const bool single = dims.dim[k].n == 1, wave = form == Form::reals && is_wave(kinds[k]);
        if (single && wave && kinds[k] == redft00) return false; // that is a sum of two ends
        if (single && !wave && !(halves && k == dims.rank - 1)) continue;
        kinds[rest.rank] = kinds[k];
        rest.add(dims.dim[k]);
    }
    if (halves && rest.rank == 0) rest.add({1, 1, 1});
    dims = rest;
    rest = {};
    for (const Dim& d : loops)
        if (d.n != 1) rest.add(d);
    if (rest.empty()) rest = {}, rest.add({0, 0, 0});
    loops = rest;
    sort(loops);
    return !(in_place() && !stays(*this)) && !(split && form == Form::complex && crossed(arrays));
}

} // namespace orv::compat::fftw
