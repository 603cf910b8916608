// Sums of natural logarithms, in double. A zero among the elements gives minus infinity, a negative one NaN.
#include "dft/primitives/members.h"

extern "C" double log(double);

namespace orv::dft {
namespace {

template <class Result, class T> Result sum_of_logarithms(const T* src, i32 n)
{
    double sum = 0;
    for (i32 i = 0; i < n; ++i) sum += log(src[i]);
    return static_cast<Result>(sum);
}

} // namespace

PRIMITIVE(1, ownsLnOne, log)
PRIMITIVE(2, ownsSumLn_32f, sum_of_logarithms<t_32f>)
PRIMITIVE(2, ownsSumLn_32f64f, sum_of_logarithms<t_64f>)
PRIMITIVE(2, ownsSumLn_16s32f, sum_of_logarithms<t_32f>)
PRIMITIVE(2, ownsSumLn_64f, sum_of_logarithms<t_64f>)

} // namespace orv::dft
