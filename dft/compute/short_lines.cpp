#include "dft/compute/short_lines_of.h"

namespace orv::dft {

template <class R> ShortLines<R>* short_lines(i64 n, bool forward)
{
    return forward ? find_short<R, true>(n) : find_short<R, false>(n);
}
template ShortLines<float>* short_lines(i64, bool);
template ShortLines<double>* short_lines(i64, bool);

} // namespace orv::dft
