// In place without a square's symmetry and without work space: ?imatcopy_mipt_t and _c follow cycles, ?imatcopy_mipt_n
// and _r only change the leading dimension.
#include "frame/kernels/trans.h"
#include "trans/imatcopy.h"
#include "trans/rows.h"

namespace orv::trans {

// What stands at position p = i*lda + j goes to j*ldb + i. Over the ldb*lda positions of a matrix that fills its
// leading dimensions this is a permutation, a set of cycles. Each cycle is moved once, from the smallest of its
// positions that holds an element; positions in the padding are passed through, but neither read nor the reason for a
// write.
template <class T> void follow_cycles(bool conjugated, u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb)
{
    const auto next = [=](u64 p) { return p / lda + p % lda * ldb; };
    const auto op = [=](T x) { return alpha * (conjugated ? conj(x) : x); };
    for (u64 i = 0; i < rows; ++i)
        for (u64 j = 0; j < cols; ++j) {
            const u64 p = i * lda + j;
            u64 k = next(p);
            while (k > p || k % lda >= cols) k = next(k);
            if (k != p) continue; // the cycle has been moved from there
            T moving = ab[p];
            bool is_element = true;
            do {
                k = next(k);
                const bool holds_element = k % lda < cols && k / lda < rows;
                const T found = holds_element ? ab[k] : zero<T>;
                if (is_element) ab[k] = op(moving);
                moving = found, is_element = holds_element;
            } while (k != p);
        }
}

// Rows that move apart are taken from the last element to the first, so that nothing is overwritten unread.
template <class T> void move_rows(bool conjugated, u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb)
{
    const Source from{ab, lda, Scale<T>(alpha, conjugated)};
    const Target to{ab, ldb};
    if (lda < ldb) rows_downwards(rows, cols, from, to);
    else rows_upwards(rows, cols, from, to);
}

} // namespace orv::trans

#define INSTANCES(T)                                                                                                   \
    template void trans::follow_cycles(bool, u64, u64, T, T*, u64, u64);                                               \
    template void trans::move_rows(bool, u64, u64, T, T*, u64, u64);
#define MIPT(name, T, method, conjugated)                                                                              \
    ORV_EXPORT void TRANS(name)(u64 rows, u64 cols, T alpha, T * ab, u64 lda, u64 ldb)                                 \
    {                                                                                                                  \
        trans::method(conjugated, rows, cols, alpha, ab, lda, ldb);                                                    \
    }

namespace orv {

INSTANCES(float)
INSTANCES(double)
INSTANCES(cpx<float>)
INSTANCES(cpx<double>)
MIPT(simatcopy_mipt_t, float, follow_cycles, false)
MIPT(dimatcopy_mipt_t, double, follow_cycles, false)
MIPT(cimatcopy_mipt_t, cpx<float>, follow_cycles, false)
MIPT(zimatcopy_mipt_t, cpx<double>, follow_cycles, false)
MIPT(cimatcopy_mipt_c, cpx<float>, follow_cycles, true)
MIPT(zimatcopy_mipt_c, cpx<double>, follow_cycles, true)
MIPT(simatcopy_mipt_n, float, move_rows, false)
MIPT(dimatcopy_mipt_n, double, move_rows, false)
MIPT(cimatcopy_mipt_n, cpx<float>, move_rows, false)
MIPT(zimatcopy_mipt_n, cpx<double>, move_rows, false)
MIPT(cimatcopy_mipt_r, cpx<float>, move_rows, true)
MIPT(zimatcopy_mipt_r, cpx<double>, move_rows, true)

} // namespace orv
