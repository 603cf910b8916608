// Transposition out of place: ?omatcopy2_t, ?omatcopy2_c.
#include "frame/kernels/trans.h"
#include "trans/omatcopy.h"
#include "trans/sweep.h"

namespace orv::trans {

template <class T>
void transpose(bool conjugated, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb,
               u64 strideb)
{
    const auto with = [&](auto op, auto order) {
        if (stridea == 1 && strideb == 1) order(Source{a, lda, op}, Target{b, ldb});
        else order(StridedSource{a, lda, stridea, op}, StridedTarget{b, ldb, strideb});
    };
    const auto in_bands = [=](auto from, auto to) { sweep_bands(rows, cols, from, lda, to, ldb); };
    if (alpha == one<T> && is_complex<T> && conjugated) with(Move<T, is_complex<T>>{}, in_bands);
    else if (alpha == one<T>) with(Move<T, false>{}, in_bands);
    else with(Scale<T>(alpha, conjugated), [=](auto from, auto to) { sweep_halves(rows, cols, from, lda, to, ldb); });
}

template void transpose(bool, u64, u64, float, const float*, u64, u64, float*, u64, u64);
template void transpose(bool, u64, u64, double, const double*, u64, u64, double*, u64, u64);
template void transpose(bool, u64, u64, cpx<float>, const cpx<float>*, u64, u64, cpx<float>*, u64, u64);
template void transpose(bool, u64, u64, cpx<double>, const cpx<double>*, u64, u64, cpx<double>*, u64, u64);

} // namespace orv::trans

#define TRANSPOSE(name, T, conjugated)                                                                                 \
    ORV_EXPORT void TRANS(name)(u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb,          \
                                u64 strideb)                                                                           \
    {                                                                                                                  \
        trans::transpose(conjugated, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);                             \
    }

namespace orv {

TRANSPOSE(somatcopy2_t, float, false)
TRANSPOSE(domatcopy2_t, double, false)
TRANSPOSE(comatcopy2_t, cpx<float>, false)
TRANSPOSE(zomatcopy2_t, cpx<double>, false)
TRANSPOSE(comatcopy2_c, cpx<float>, true)
TRANSPOSE(zomatcopy2_c, cpx<double>, true)

} // namespace orv
