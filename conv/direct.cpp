// The route of direct sums: which operand is summed over, and what is copied before.
//
// Copies change no sum, they bring strided elements together where they are read often enough. A refused copy leaves z
// alone.
#include "conv/members.h"
#include "conv/memory.h"
#include "conv/sums.h"

namespace orv::conv {
namespace {

// An operand as it is, or a copy of it without gaps.
template <class T> class Gathered {
public:
    [[gnu::noinline]] Gathered(const View<const T>& v, bool wanted) : view(v), block_(wanted ? v.total() : 0, wanted)
    {
        if (!wanted || block_.data() == nullptr) return;
        const View<T> dense = View<T>::dense(block_.data(), v.rank, v.n);
        copy(v, dense);
        view = read(dense);
    }
    bool refused() const { return block_.refused(); }

    View<const T> view;

private:
    Block<T> block_;
};

template <class T>
using Sums = void(const View<const T>& a, const View<const T>& b, const View<T>& z, const i64* shift, const i64* step);

// The shorter operand is summed over, from its end: so convolution is the correlation with the reversed one. It is
// copied whatever its strides are, which costs least of all.
template <class T> Status convolve(const Problem<T>& p, Sums<T>* sum)
{
    const bool swapped = p.y.total() < p.x.total();
    const View<const T>&shorter = swapped ? p.y : p.x, &other = swapped ? p.x : p.y;
    const auto n_kernel = static_cast<double>(shorter.total()), n_other = static_cast<double>(other.total());
    const Gathered<T> kernel(shorter.reversed(), true);
    if (kernel.refused()) return no_memory;
    const Gathered<T> signal(other, !other.is_dense() && 2 * n_other < static_cast<double>(p.z.total()) * n_kernel);
    if (signal.refused()) return no_memory;
    i64 shift[most_dimensions] = {};
    for (i32 d = 0; d < p.z.rank; ++d) shift[d] = p.start[d] - (shorter.n[d] - 1);
    sum(kernel.view, signal.view, p.z, shift, p.step);
    return ok;
}

// x is summed over, however long it is.
template <class T> Status correlate(const Problem<T>& p, Sums<T>* sum)
{
    const auto nx = static_cast<double>(p.x.total()), ny = static_cast<double>(p.y.total());
    const auto nz = static_cast<double>(p.z.total());
    const bool in_place = nz * nx < 2 * ny || nz * ny < 2 * nx;
    const Gathered<T> x(p.x, !in_place && !p.x.is_dense());
    if (x.refused()) return no_memory;
    const Gathered<T> y(p.y, !in_place && !p.y.is_dense());
    if (y.refused()) return no_memory;
    sum(x.view, y.view, p.z, p.start, p.step);
    return ok;
}

struct direct {
    static constexpr i32 least_rank = 2;
    static constexpr bool has_undecimated_lines = true;
    template <class Pair> static Status run(const Problem<typename Pair::Data>& p)
    {
        constexpr auto sum = sum_products<typename Pair::Sum, typename Pair::Data>;
        return p.correlates ? correlate(p, sum) : convolve(p, sum);
    }
    template <class Pair> static Status run_line(const Problem<typename Pair::Data>& p) { return run<Pair>(p); }
};

} // namespace

ORV_CONV_ROUTE(CONV_EXPORT, direct)

} // namespace orv::conv
