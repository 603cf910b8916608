// Transforms as a caller describes them: lengths, strides, distances, storage; where each number of the input and of
// the result stands; and the result in quadruple precision, a sum of the definition along each dimension.
#pragma once

#include "frame/kernels/dft_compute.h"
#include "tests/dft/dft/general.h"
#include "tests/dft/node/node.h"

#include <array>
#include <map>

namespace orv::test {

using namespace orv::kernels::dft;

enum class Storage { pairs, split, half, CCS, PACK, PERM }; // the last four are of the real domain
inline const char* name_of(Storage s)
{
    return std::array{"pairs", "split", "half", "ccs", "pack", "perm"}[static_cast<std::size_t>(s)];
}

// An array's layout, in its own elements.
struct Layout {
    std::vector<i64> strides;
    i64 offset = 0, distance = 0;
    std::string line() const
    {
        std::string text = std::to_string(offset);
        for (const i64 s : strides) text += "," + std::to_string(s);
        return text + ":" + std::to_string(distance);
    }
};

struct Problem {
    bool real = false, forward = true, in_place = true;
    Storage storage = Storage::pairs;
    std::vector<i64> lengths;
    i64 count = 1;
    Layout signal, spectrum; // in place of the complex domain both are the same
    double scale = 1;

    int rank() const { return static_cast<int>(lengths.size()); }
    bool packed() const { return real && storage != Storage::half; }
    const Layout& input() const { return forward ? signal : spectrum; }
    const Layout& output() const { return forward ? spectrum : signal; }
    i64 points() const
    {
        i64 n = 1;
        for (const i64 length : lengths) n *= length;
        return n;
    }
    std::string line() const
    {
        std::string text = std::string(real ? "real" : "complex") + " " + name_of(storage) +
                           (forward ? " forward" : " backward") + (in_place ? " in place" : " apart") + " n=";
        for (const i64 n : lengths) text += std::to_string(n) + (&n == &lengths.back() ? "" : "x");
        return text + " count=" + std::to_string(count) + " signal=" + signal.line() + " spectrum=" + spectrum.line() +
               " scale=" + std::to_string(scale);
    }
};

// ---- Where numbers stand, in reals of their array (of each array, where there are two)

// A number's place: of its real part, and of its imaginary part or -1 if it has none.
struct Place {
    i64 re, im;
    bool conjugated = false; // stands for the conjugate of the number asked for
};

inline i64 element_at(const Layout& layout, const std::vector<i64>& index, i64 transform)
{
    i64 at = layout.offset + transform * layout.distance;
    for (std::size_t k = 0; k < index.size(); ++k) at += index[k] * layout.strides[k];
    return at;
}

inline Place signal_place(const Problem& p, const std::vector<i64>& index, i64 transform)
{
    const i64 at = element_at(p.signal, index, transform);
    if (p.real) return {at, -1};
    return p.storage == Storage::split ? Place{at, at} : Place{2 * at, 2 * at + 1};
}

// Number k of a packed spectrum of n reals, 2*k <= n: its places in the row.
inline Place packed_place(Storage storage, i64 n, i64 k)
{
    const bool even = n % 2 == 0;
    if (k == 0) return {0, -1};
    if (storage == Storage::CCS) return {2 * k, even && 2 * k == n ? -1 : 2 * k + 1};
    if (even && 2 * k == n) return {storage == Storage::PERM ? 1 : n - 1, -1};
    return even && storage == Storage::PERM ? Place{2 * k, 2 * k + 1} : Place{2 * k - 1, 2 * k};
}
inline i64 packed_row(Storage storage, i64 n) { return storage == Storage::CCS ? 2 * (n / 2 + 1) : n; }

// Frequencies that are stored: all, those of half the first dimension, or of packed ones those that are no conjugates
// of others. false for all others.
inline bool spectrum_place(const Problem& p, const std::vector<i64>& index, i64 transform, Place& place)
{
    if (!p.real) {
        const i64 at = element_at(p.spectrum, index, transform);
        place = p.storage == Storage::split ? Place{at, at} : Place{2 * at, 2 * at + 1};
        return true;
    }
    const i64 n = p.lengths[0];
    if (2 * index[0] > n) return false;
    if (!p.packed()) {
        const i64 at = element_at(p.spectrum, index, transform);
        place = {2 * at, 2 * at + 1};
        return true;
    }
    std::vector<i64> re = index;
    const Place row = packed_place(p.storage, n, index[0]);
    re[0] = row.re;
    std::vector<i64> im = re;
    if (row.im >= 0) im[0] = row.im;
    else if (p.rank() == 2) { // a column of reals is packed in its turn
        if (2 * index[1] > p.lengths[1]) return false;
        const Place column = packed_place(p.storage, p.lengths[1], index[1]);
        re[1] = column.re, im[1] = column.im;
        if (column.im < 0) im.clear();
    } else im.clear();
    place = {element_at(p.spectrum, re, transform), im.empty() ? -1 : element_at(p.spectrum, im, transform)};
    return true;
}

// Calls f(index) for every index below the lengths.
template <class F> void each_index(const std::vector<i64>& lengths, F f)
{
    std::vector<i64> index(lengths.size(), 0);
    for (;;) {
        f(static_cast<const std::vector<i64>&>(index));
        std::size_t k = 0;
        while (k < index.size() && ++index[k] == lengths[k]) index[k++] = 0;
        if (k == index.size()) return;
    }
}

// Reals that an array needs, and which of them belong to no element.
struct Extent {
    i64 reals = 0;
    std::vector<bool> used;
    void use(i64 at)
    {
        if (at < 0) return;
        reals = std::max(reals, at + 1);
        if (static_cast<i64>(used.size()) < reals) used.resize(reals, false);
        used[at] = true;
    }
};

// In place a row of reals has the room of its pairs.
inline Extent signal_extent(const Problem& p)
{
    Extent extent;
    std::vector<i64> shape = p.lengths;
    if (p.in_place && p.storage == Storage::half && p.signal.strides[0] == 1) shape[0] = 2 * (shape[0] / 2 + 1);
    for (i64 t = 0; t < p.count; ++t)
        each_index(shape, [&](const std::vector<i64>& index) {
            const Place at = signal_place(p, index, t);
            extent.use(at.re), extent.use(at.im);
        });
    return extent;
}
// The zeros of CCS belong to it.
inline Extent spectrum_extent(const Problem& p)
{
    Extent extent;
    std::vector<i64> shape = p.lengths;
    if (p.packed())
        for (i64& n : shape) n = packed_row(p.storage, n);
    else if (p.real) shape[0] = p.lengths[0] / 2 + 1;
    const bool pairs = !p.packed() && p.storage != Storage::split;
    for (i64 t = 0; t < p.count; ++t)
        each_index(shape, [&](const std::vector<i64>& index) {
            const i64 at = element_at(p.spectrum, index, t);
            extent.use(pairs ? 2 * at : at);
            if (pairs) extent.use(2 * at + 1);
        });
    return extent;
}

// ---- The definition

// One transform of numbers with the first index fastest. sign -1 forward.
inline void transform_by_definition(std::vector<QuadPair>& x, const std::vector<i64>& lengths, int sign)
{
    i64 stride = 1;
    for (const i64 n : lengths) {
        static std::map<i64, std::vector<QuadPair>> known;
        std::vector<QuadPair>& roots = known[n];
        if (roots.empty()) roots = quad_roots(n);
        std::vector<QuadPair> line(static_cast<std::size_t>(n));
        for (i64 start = 0; start < static_cast<i64>(x.size()); ++start) {
            if (start / stride % n != 0) continue;
            for (i64 k = 0; k < n; ++k) {
                QuadPair sum{0, 0};
                for (i64 j = 0; j < n; ++j)
                    sum = sum + x[start + j * stride] * roots[sign > 0 ? j * k % n : (n - j * k % n) % n];
                line[k] = sum;
            }
            for (i64 k = 0; k < n; ++k) x[start + k * stride] = line[k];
        }
        stride *= n;
    }
}

// Half of what FFTs of good libraries err by in the mean, times six: rms of the error in parts of the rms of the
// result.
template <class R> quad allowed_error(const std::vector<i64>& lengths)
{
    quad factors = 1;
    for (const i64 n : lengths) factors += std::log2(static_cast<double>(n) + 1);
    return 1.5 * quad(std::numeric_limits<R>::epsilon()) * factors;
}

// ---- Problems without gaps

inline Layout dense(const std::vector<i64>& shape, i64 gap = 0, i64 offset = 0)
{
    Layout layout;
    i64 step = 1;
    for (const i64 n : shape) layout.strides.push_back(step), step = step * n + gap;
    layout.distance = step, layout.offset = offset;
    return layout;
}

// Of complex numbers, in place.
inline Problem of_pairs(std::vector<i64> lengths, i64 count = 1, i64 gap = 0, i64 offset = 0)
{
    Problem p;
    p.lengths = lengths, p.count = count;
    p.signal = p.spectrum = dense(lengths, gap, offset);
    return p;
}
inline Problem of_reals(Storage storage, bool forward, bool in_place, std::vector<i64> lengths, i64 count = 1)
{
    Problem p;
    p.real = true, p.storage = storage, p.forward = forward, p.in_place = in_place;
    p.lengths = lengths, p.count = count;
    std::vector<i64> shape = lengths;
    if (storage == Storage::half) shape[0] = lengths[0] / 2 + 1;
    else
        for (i64& n : shape) n = packed_row(storage, n);
    p.spectrum = dense(shape);
    p.signal = in_place ? p.spectrum : dense(lengths);
    if (in_place && storage == Storage::half) {
        for (i64& stride : p.signal.strides) stride *= 2;
        p.signal.strides[0] = 1, p.signal.distance *= 2;
    }
    return p;
}

} // namespace orv::test
