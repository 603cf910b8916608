// The route through a transform. All outputs are computed, and those that are asked for are copied out.
//
// z stays as it is if memory or a transform is refused, but for one dimension whose result goes straight to z.
#include "conv/fft_line.h"
#include "conv/members.h"
#include "conv/pieces.h"

namespace orv::conv {
namespace {

template <class I, class T> Status convolve_line(const Problem<T>& p)
{
    if constexpr (is_complex<T>) return convolve_pairs<I>(p);
    else return convolve_reals<I>(p);
}

template <class I, class T> Status convolve_all(const Problem<T>& p)
{
    i64 lengths[most_dimensions], count = 1;
    for (i32 d = 0; d < p.z.rank; ++d) count *= lengths[d] = p.full(d);
    const Block<I> full(count);
    if (full.refused()) return no_memory;
    const View<I> result = View<I>::dense(full.data(), p.z.rank, lengths);
    const Status status = p.z.rank == 1 ? convolve_pieces(convolved_x(p), p.y, result)
                                        : convolve_window(convolved_x(p), p.y, result, false);
    if (status == ok) cut_out(p, full.data());
    return status;
}

struct fft {
    static constexpr i32 least_rank = 1;
    static constexpr bool has_undecimated_lines = false;
    template <class Pair> static Status run_line(const Problem<typename Pair::Data>& p)
    {
        return convolve_line<typename Pair::Sum>(p);
    }
    template <class Pair> static Status run(const Problem<typename Pair::Data>& p)
    {
        return convolve_all<typename Pair::Sum>(p);
    }
};

} // namespace

ORV_CONV_ROUTE(CONV_EXPORT, fft)

} // namespace orv::conv
