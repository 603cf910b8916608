// The planners, from the simplest to the general one. None looks at the arrays: what is in them stays.
#include "compat/fftw/plan.h"
#include "compat/fftw/wisdom.h"

namespace orv::compat::fftw {
namespace {

Plan* planned(Problem problem)
{
    if (!problem.normalise()) return nullptr;
    if ((problem.flags & wisdom_only) != 0 && !is_known(problem)) return nullptr;
    Plan* const plan = make_plan(problem);
    if (plan != nullptr) note(problem);
    return plan;
}

Plan* complex_plan(const Dims& dims, const Dims& loops, void* in, void* out, int sign, unsigned flags)
{
    if (sign != forward && sign != backward) return nullptr;
    return planned({Form::complex, static_cast<Sign>(sign), false, dims, loops, {in, nullptr, out, nullptr}, flags});
}
Plan* half_plan(Form form, const Dims& dims, const Dims& loops, void* in, void* out, unsigned flags)
{
    return planned({form, forward, false, dims, loops, {in, nullptr, out, nullptr}, flags});
}
Plan* split_plan(Form form, const Dims& dims, const Dims& loops, Arrays arrays, unsigned flags)
{
    return planned({form, forward, true, dims, loops, arrays, flags});
}
Plan* reals_plan(const Dims& dims, const Dims& loops, R* in, R* out, const int* kinds, unsigned flags)
{
    Problem problem{Form::reals, forward, false, dims, loops, {in, nullptr, out, nullptr}, flags};
    for (int k = 0; k < dims.rank; ++k) {
        if (kinds[k] < r2hc || kinds[k] > rodft11) return nullptr;
        problem.kinds[k] = static_cast<RealKind>(kinds[k]);
    }
    return planned(problem);
}

// A batch at a distance.
Dims many(int count, int in_distance, int out_distance)
{
    const ShortDim loop{count, in_distance, out_distance};
    return {1, &loop};
}

// The lengths of what reals and their half spectrum stand in, where the program does not tell: in place a row of reals
// has room for the pairs.
struct HalfRows {
    int reals[Dims::most], pairs[Dims::most];
    HalfRows(int rank, const int* n, bool in_place)
    {
        for (int k = 0; k < rank && k < Dims::most; ++k) reals[k] = pairs[k] = n[k];
        if (rank < 1 || rank > Dims::most) return;
        pairs[rank - 1] = n[rank - 1] / 2 + 1;
        if (in_place) reals[rank - 1] = 2 * pairs[rank - 1];
    }
};
Plan* many_half(Form form, int rank, const int* n, int count, void* in, Side in_side, int in_distance, void* out,
                Side out_side, int out_distance, unsigned flags)
{
    const HalfRows rows(rank, n, in == out);
    if (in_side.embed == nullptr) in_side.embed = form == Form::to_half ? rows.reals : rows.pairs;
    if (out_side.embed == nullptr) out_side.embed = form == Form::to_half ? rows.pairs : rows.reals;
    return half_plan(form, by_rows(rank, n, in_side, out_side), many(count, in_distance, out_distance), in, out, flags);
}

constexpr Side whole{nullptr, 1};

} // namespace

// ---- Complex

EXPORT Plan* X(plan_many_dft)(int rank, const int* n, int count, C* in, const int* in_embed, int in_stride,
                              int in_distance, C* out, const int* out_embed, int out_stride, int out_distance, int sign,
                              unsigned flags)
{
    return complex_plan(by_rows(rank, n, {in_embed, in_stride}, {out_embed, out_stride}),
                        many(count, in_distance, out_distance), in, out, sign, flags);
}
EXPORT Plan* X(plan_dft)(int rank, const int* n, C* in, C* out, int sign, unsigned flags)
{
    return complex_plan(by_rows(rank, n, whole, whole), {}, in, out, sign, flags);
}
EXPORT Plan* X(plan_dft_1d)(int n, C* in, C* out, int sign, unsigned flags)
{
    return X(plan_dft)(1, &n, in, out, sign, flags);
}
EXPORT Plan* X(plan_dft_2d)(int n0, int n1, C* in, C* out, int sign, unsigned flags)
{
    const int n[] = {n0, n1};
    return X(plan_dft)(2, n, in, out, sign, flags);
}
EXPORT Plan* X(plan_dft_3d)(int n0, int n1, int n2, C* in, C* out, int sign, unsigned flags)
{
    const int n[] = {n0, n1, n2};
    return X(plan_dft)(3, n, in, out, sign, flags);
}

// ---- Reals to half of their spectrum, and back

EXPORT Plan* X(plan_many_dft_r2c)(int rank, const int* n, int count, R* in, const int* in_embed, int in_stride,
                                  int in_distance, C* out, const int* out_embed, int out_stride, int out_distance,
                                  unsigned flags)
{
    return many_half(Form::to_half, rank, n, count, in, {in_embed, in_stride}, in_distance, out,
                     {out_embed, out_stride}, out_distance, flags);
}
EXPORT Plan* X(plan_many_dft_c2r)(int rank, const int* n, int count, C* in, const int* in_embed, int in_stride,
                                  int in_distance, R* out, const int* out_embed, int out_stride, int out_distance,
                                  unsigned flags)
{
    return many_half(Form::from_half, rank, n, count, in, {in_embed, in_stride}, in_distance, out,
                     {out_embed, out_stride}, out_distance, flags);
}
#define HALF(name, From, To)                                                                                           \
    EXPORT Plan* X(plan_dft_##name)(int rank, const int* n, From* in, To* out, unsigned flags)                         \
    {                                                                                                                  \
        return X(plan_many_dft_##name)(rank, n, 1, in, nullptr, 1, 0, out, nullptr, 1, 0, flags);                      \
    }                                                                                                                  \
    EXPORT Plan* X(plan_dft_##name##_1d)(int n, From* in, To* out, unsigned flags)                                     \
    {                                                                                                                  \
        return X(plan_dft_##name)(1, &n, in, out, flags);                                                              \
    }                                                                                                                  \
    EXPORT Plan* X(plan_dft_##name##_2d)(int n0, int n1, From* in, To* out, unsigned flags)                            \
    {                                                                                                                  \
        const int n[] = {n0, n1};                                                                                      \
        return X(plan_dft_##name)(2, n, in, out, flags);                                                               \
    }                                                                                                                  \
    EXPORT Plan* X(plan_dft_##name##_3d)(int n0, int n1, int n2, From* in, To* out, unsigned flags)                    \
    {                                                                                                                  \
        const int n[] = {n0, n1, n2};                                                                                  \
        return X(plan_dft_##name)(3, n, in, out, flags);                                                               \
    }
HALF(r2c, R, C)
HALF(c2r, C, R)

// ---- Reals to reals

EXPORT Plan* X(plan_many_r2r)(int rank, const int* n, int count, R* in, const int* in_embed, int in_stride,
                              int in_distance, R* out, const int* out_embed, int out_stride, int out_distance,
                              const int* kinds, unsigned flags)
{
    return reals_plan(by_rows(rank, n, {in_embed, in_stride}, {out_embed, out_stride}),
                      many(count, in_distance, out_distance), in, out, kinds, flags);
}
EXPORT Plan* X(plan_r2r)(int rank, const int* n, R* in, R* out, const int* kinds, unsigned flags)
{
    return reals_plan(by_rows(rank, n, whole, whole), {}, in, out, kinds, flags);
}
EXPORT Plan* X(plan_r2r_1d)(int n, R* in, R* out, int kind, unsigned flags)
{
    return X(plan_r2r)(1, &n, in, out, &kind, flags);
}
EXPORT Plan* X(plan_r2r_2d)(int n0, int n1, R* in, R* out, int kind0, int kind1, unsigned flags)
{
    const int n[] = {n0, n1}, kinds[] = {kind0, kind1};
    return X(plan_r2r)(2, n, in, out, kinds, flags);
}
EXPORT Plan* X(plan_r2r_3d)(int n0, int n1, int n2, R* in, R* out, int kind0, int kind1, int kind2, unsigned flags)
{
    const int n[] = {n0, n1, n2}, kinds[] = {kind0, kind1, kind2};
    return X(plan_r2r)(3, n, in, out, kinds, flags);
}

// ---- Any strides and loops, with short and with long integers

#define GURU(guru, D)                                                                                                  \
    EXPORT Plan* X(plan_##guru##_dft)(int rank, const D* dims, int loops, const D* loop, C* in, C* out, int sign,      \
                                      unsigned flags)                                                                  \
    {                                                                                                                  \
        return complex_plan({rank, dims}, {loops, loop}, in, out, sign, flags);                                        \
    }                                                                                                                  \
    EXPORT Plan* X(plan_##guru##_split_dft)(int rank, const D* dims, int loops, const D* loop, R* ri, R* ii, R* ro,    \
                                            R* io, unsigned flags)                                                     \
    {                                                                                                                  \
        return split_plan(Form::complex, {rank, dims}, {loops, loop}, {ri, ii, ro, io}, flags);                        \
    }                                                                                                                  \
    EXPORT Plan* X(plan_##guru##_dft_r2c)(int rank, const D* dims, int loops, const D* loop, R* in, C* out,            \
                                          unsigned flags)                                                              \
    {                                                                                                                  \
        return half_plan(Form::to_half, {rank, dims}, {loops, loop}, in, out, flags);                                  \
    }                                                                                                                  \
    EXPORT Plan* X(plan_##guru##_dft_c2r)(int rank, const D* dims, int loops, const D* loop, C* in, R* out,            \
                                          unsigned flags)                                                              \
    {                                                                                                                  \
        return half_plan(Form::from_half, {rank, dims}, {loops, loop}, in, out, flags);                                \
    }                                                                                                                  \
    EXPORT Plan* X(plan_##guru##_split_dft_r2c)(int rank, const D* dims, int loops, const D* loop, R* in, R* ro,       \
                                                R* io, unsigned flags)                                                 \
    {                                                                                                                  \
        return split_plan(Form::to_half, {rank, dims}, {loops, loop}, {in, nullptr, ro, io}, flags);                   \
    }                                                                                                                  \
    EXPORT Plan* X(plan_##guru##_split_dft_c2r)(int rank, const D* dims, int loops, const D* loop, R* ri, R* ii,       \
                                                R* out, unsigned flags)                                                \
    {                                                                                                                  \
        return split_plan(Form::from_half, {rank, dims}, {loops, loop}, {ri, ii, out, nullptr}, flags);                \
    }                                                                                                                  \
    EXPORT Plan* X(plan_##guru##_r2r)(int rank, const D* dims, int loops, const D* loop, R* in, R* out,                \
                                      const int* kinds, unsigned flags)                                                \
    {                                                                                                                  \
        return reals_plan({rank, dims}, {loops, loop}, in, out, kinds, flags);                                         \
    }
GURU(guru, ShortDim)
GURU(guru64, Dim)

} // namespace orv::compat::fftw
