// Solves A*X = B with a tridiagonal A by elimination with row exchanges.
//
//   dl, d, du   sub-, main and superdiagonal of A; overwritten: d and du with those of U, dl with its second
//               superdiagonal
//   b           n by nrhs, columns ldb apart; becomes X
//   info        0, or one more than the index of the first pivot that is zero: B is then as far as the elimination came
//
// Rows i and i+1 change places if |d(i)| < |dl(i)|, so a NaN stays where it is. n = 0 does nothing but info = 0;
// without right-hand sides the elimination takes place. No memory is taken.
//
// Published source: Anderson et al., LAPACK Users' Guide, 3rd ed., 1999 (gtsv).
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/right_sides.h"

namespace orv::lapack {
namespace {

// Steps whose factors are kept on the stack before they are applied to the columns, each of which is then walked down
// without a stop.
constexpr i64 steps_at_once = 64;

template <class T> struct Step {
    T factor;
    bool exchanged, singular;
};

template <class T> struct Elimination {
    i64 n;
    T *dl, *d, *du;
    T pivot; // d(i), of which the next step needs the value before memory has it

    // Step i: row i+1 loses its element below the diagonal.
    ORV_INLINE Step<T> step(i64 i)
    {
        const bool last = i == n - 2;
        const T below = dl[i], next = d[i + 1], beside = du[i];
        if (magnitude(pivot) < magnitude(below)) {
            const T factor = pivot / below;
            d[i] = below, du[i] = next;
            d[i + 1] = pivot = beside - factor * next;
            if (!last) {
                const T beyond = du[i + 1];
                dl[i] = beyond, du[i + 1] = -factor * beyond;
            }
            return {factor, true, false};
        }
        if (pivot == 0) return {0, false, true};
        const T factor = below / pivot;
        d[i + 1] = pivot = next - factor * beside;
        if (!last) dl[i] = 0;
        return {factor, false, false};
    }

    // Both return the index of the first zero pivot but the last, or n - 1.
    i64 with_one_column(T* b)
    {
        T current = b[0];
        i64 i = 0;
        for (; i < n - 1; ++i) {
            const Step<T> s = step(i);
            if (s.singular) break;
            const T next = b[i + 1];
            b[i] = s.exchanged ? next : current;
            current = s.exchanged ? current - s.factor * next : next - s.factor * current;
        }
        b[i] = current;
        return i;
    }
    i64 with_columns(i64 columns, T* b, i64 ldb)
    {
        Step<T> steps[steps_at_once];
        for (i64 i = 0; i < n - 1;) {
            const i64 wanted = min(steps_at_once, n - 1 - i);
            i64 done = 0;
            while (done < wanted && !(steps[done] = step(i + done)).singular) ++done;
            in_groups(columns, b + i, ldb, [&](const auto& group) {
                eliminate(
                    group, 0, done, [&](i64 k) { return steps[k].factor; }, [&](i64 k) { return steps[k].exchanged; });
            });
            i += done;
            if (done < wanted) return i;
        }
        return n - 1;
    }
};

template <class T> void gtsv(i64 n, i64 nrhs, T* dl, T* d, T* du, T* b, i64 ldb, i64* info)
{
    *info = 0;
    if (n == 0) return;
    Elimination<T> elimination{n, dl, d, du, d[0]};
    const i64 pivot = nrhs == 1 ? elimination.with_one_column(b) : elimination.with_columns(nrhs, b, ldb);
    if (d[pivot] == 0) return void(*info = pivot + 1);
    in_groups(nrhs, b, ldb, [&](const auto& group) {
        back_substitute(group, n, du, dl, [&](auto row, i64 i) ORV_INLINE_LAMBDA { return row / d[i]; });
    });
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define GTSV(name, T)                                                                                                  \
    ORV_EXPORT void LAPACK_PS(name)(const i64* n, const i64* nrhs, T* dl, T* d, T* du, T* b, const i64* ldb,           \
                                    i64* info)                                                                         \
    {                                                                                                                  \
        lapack::gtsv(*n, *nrhs, dl, d, du, b, *ldb, info);                                                             \
    }

GTSV(sgtsv_small, float)
GTSV(dgtsv_small, double)
