// Copies without transposition: ?omatcopy2_n, ?omatcopy2_r.
#include "frame/kernels/trans.h"
#include "trans/omatcopy.h"
#include "trans/rows.h"

namespace orv::trans {

template <class T>
void copy(bool conjugated, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb, u64 strideb)
{
    const Scale<T> op(alpha, conjugated);
    // Without gaps all rows are one, with one rest.
    if (lda == cols && ldb == cols && stridea == 1 && strideb == 1) cols *= rows, rows = 1;
    if (stridea == 1 && strideb == 1) rows_upwards(rows, cols, Source{a, lda, op}, Target{b, ldb});
    else rows_upwards(rows, cols, StridedSource{a, lda, stridea, op}, StridedTarget{b, ldb, strideb});
}

template void copy(bool, u64, u64, float, const float*, u64, u64, float*, u64, u64);
template void copy(bool, u64, u64, double, const double*, u64, u64, double*, u64, u64);
template void copy(bool, u64, u64, cpx<float>, const cpx<float>*, u64, u64, cpx<float>*, u64, u64);
template void copy(bool, u64, u64, cpx<double>, const cpx<double>*, u64, u64, cpx<double>*, u64, u64);

} // namespace orv::trans

#define COPY(name, T, conjugated)                                                                                      \
    ORV_EXPORT void TRANS(name)(u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb,          \
                                u64 strideb)                                                                           \
    {                                                                                                                  \
        trans::copy(conjugated, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);                                  \
    }

namespace orv {

COPY(somatcopy2_n, float, false)
COPY(domatcopy2_n, double, false)
COPY(comatcopy2_n, cpx<float>, false)
COPY(zomatcopy2_n, cpx<double>, false)
COPY(comatcopy2_r, cpx<float>, true)
COPY(zomatcopy2_r, cpx<double>, true)

} // namespace orv
