// A transform in one call.
#include "core/dft/nodes.h"

#include <type_traits>

using namespace orv;
using namespace orv::core;
using namespace orv::core::dft;

namespace {

template <class From, class To>
orv_status transform(Direction direction, int rank, const i64* lengths, const From* in, To* out)
{
    constexpr int precision = std::is_same_v<real_t<From>, double> ? ORV_DFT_DOUBLE : ORV_DFT_SINGLE;
    constexpr int domain = is_complex<From> && is_complex<To> ? ORV_DFT_COMPLEX : ORV_DFT_REAL;
    orv_dft dft{};
    Settings& s = dft.settings;
    s = defaults(precision, domain, rank, lengths);
    double elements = 1;
    for (int k = 0; k < rank; ++k) elements *= static_cast<double>(lengths[k]);
    s.placement = static_cast<const void*>(in) == out ? ORV_DFT_IN_PLACE : ORV_DFT_OUT_OF_PLACE;
    s.directions = direction == forward ? ORV_DFT_FORWARD : ORV_DFT_BACKWARD;
    s.scales[backward] = 1 / elements;
    orv_status status = check(s);
    if (status == ORV_OK) status = make_nodes(dft);
    if (status == ORV_OK) status = compute(dft, direction, {const_cast<From*>(in), nullptr}, {out, nullptr});
    drop_nodes(dft);
    return status;
}

template <class From, class To>
orv_status of_one_dimension(const char* routine, Direction direction, i64 n, const From* in, To* out)
{
    if (const auto status = check_lengths(routine, 1, 1, &n)) return status;
    if (const int wrong = in == nullptr ? 2 : out == nullptr ? 3 : 0) return bad_argument(routine, wrong, "null");
    return transform(direction, 1, &n, in, out);
}

template <class From, class To>
orv_status of_many(const char* routine, Direction direction, int rank, const i64* lengths, const From* in, To* out)
{
    if (rank < 1 || rank > ORV_DFT_MAX_RANK)
        return bad_argument(routine, 1, "%d, but a rank is from 1 to %d", rank, ORV_DFT_MAX_RANK);
    if (const auto status = check_lengths(routine, 2, rank, lengths)) return status;
    if (const int wrong = in == nullptr ? 3 : out == nullptr ? 4 : 0) return bad_argument(routine, wrong, "null");
    return transform(direction, rank, lengths, in, out);
}

} // namespace

#define TRANSFORM(t, suffix, direction, From, To)                                                                      \
    orv_status orv_##t##_##suffix(int64_t n, const From* in, To* out)                                                  \
    {                                                                                                                  \
        return of_one_dimension("orv_" #t "_" #suffix, direction, n, in, out);                                         \
    }                                                                                                                  \
    orv_status orv_##t##n_##suffix(int rank, const int64_t* lengths, const From* in, To* out)                          \
    {                                                                                                                  \
        return of_many("orv_" #t "n_" #suffix, direction, rank, lengths, in, out);                                     \
    }
#define TRANSFORMS(suffix, Signal, Spectrum)                                                                           \
    TRANSFORM(fft, suffix, forward, Signal, Spectrum) TRANSFORM(ifft, suffix, backward, Spectrum, Signal)
TRANSFORMS(c, cpx<float>, cpx<float>)
TRANSFORMS(z, cpx<double>, cpx<double>)
TRANSFORMS(s, float, cpx<float>)
TRANSFORMS(d, double, cpx<double>)
