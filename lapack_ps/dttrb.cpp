// Tridiagonal systems A*X = B without exchanges, by elimination from both ends at a time: two chains of dependent steps
// run side by side and meet in the middle.
//
//   dttrfb    factors A in place: sub-, main and superdiagonal dl, d, du
//   dttrsb    solves op(A)*X = B with these factors; trans N: A, C: its conjugate transpose, all else: its transpose
//   dtsvb     both; with one right-hand side, in a single pass
//
//   b         n by nrhs, columns ldb apart; becomes X
//   info      0, or one more than the index of the first pivot met that is zero or NaN; the factorisation stops there,
//             and so does what dtsvb did to a single right-hand side. dttrsb sets it to 0.
//
// With h = (n - 1)/2, the factorisation takes h times a step from the top (i = 0, 1, ..) and one from the bottom
// (j = n-1, n-2, ..), then for even n one more from the top, and inverts the pivot where they meet, at n - h - 1:
//
//   top       r = 1/d(i), m = dl(i)*r;      d(i) := r, dl(i) := m,      d(i+1) := d(i+1) - m*du(i)
//   bottom    r = 1/d(j), m = dl(j-1)*r;    d(j) := r, dl(j-1) := m,    d(j-1) := d(j-1) - m*du(j-1)
//
// A solve goes inward in the same order, multiplies where the steps meet, and goes back outward.
// n = 0 does nothing but info = 0, and so does dtsvb with nrhs = 0. No memory is taken.
//
// Published source: Dongarra, Bunch, Moler, Stewart, LINPACK Users' Guide, 1979 (ptsl, for positive definite ones).
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/right_sides.h"

namespace orv::lapack {
namespace {

template <class T> bool is_pivot(T a) { return !is_nan(a) && a != zero<T>; }

// Where and how many: h steps from each end, one more from the top if n is even, and the row where they meet.
struct Meeting {
    i64 h, row;
    bool even;
    explicit Meeting(i64 n) : h((n - 1) / 2), row(n - h - 1), even(row != h) {}
};

// The factorisation; a single right-hand side b goes inward with it if there is one. Returns info.
template <bool with_side, class T> i64 factor(i64 n, T* dl, T* d, const T* du, T* b)
{
    if (n == 0) return 0;
    const Meeting meeting(n);

    // The pivots, and elements of b, that the next steps wait for. Where the two ends meet, both update the same one:
    // so what is updated is read anew.
    T upper = d[0], lower = d[n - 1], x = zero<T>, y = zero<T>;
    if constexpr (with_side) x = b[0], y = b[n - 1];

    const auto top = [&](i64 i) ORV_INLINE_LAMBDA {
        const T r = reciprocal(upper), m = dl[i] * r;
        d[i] = r, dl[i] = m;
        d[i + 1] = upper = d[i + 1] - m * du[i];
        if constexpr (with_side) b[i + 1] = x = b[i + 1] - x * m;
    };
    const auto bottom = [&](i64 j) ORV_INLINE_LAMBDA {
        const T r = reciprocal(lower), m = dl[j - 1] * r;
        d[j] = r, dl[j - 1] = m;
        d[j - 1] = lower = d[j - 1] - m * du[j - 1];
        if constexpr (with_side) {
            const T t = y * r;
            b[j] = t, b[j - 1] = y = b[j - 1] - t * du[j - 1];
        }
    };

    for (i64 i = 0; i < meeting.h; ++i) {
        if (!is_pivot(upper)) return i + 1;
        top(i);
        if (!is_pivot(lower)) return n - i;
        bottom(n - 1 - i);
    }
    if (meeting.even) {
        if (!is_pivot(upper)) return meeting.h + 1;
        // The bottom has updated the row that this step goes to; the row it starts from is the top's own.
        top(meeting.h);
    }
    T& last = d[meeting.row];
    if (!is_pivot(last)) return meeting.row + 1;
    last = reciprocal(last);
    return 0;
}

// A solve of one group of columns. Going inward, one end multiplies the row that it leaves by the inverted pivot
// (`dividing`) and the other end does so going outward; transposition swaps their parts.
template <Transposition op, class T, int columns> struct Solve {
    i64 n;
    const T *dl, *d, *du;
    Group<T, columns> b;

    using R = Row<T, columns>;
    static constexpr bool top_divides = op != Transposition::none;

    // From row `from`, whose elements x holds, to its neighbour, whose elements x becomes.
    template <bool dividing> ORV_INLINE void inward(R& x, i64 from, i64 to) const
    {
        const i64 link = min(from, to);
        if constexpr (dividing) {
            x = coefficient<op>(d, from) * x;
            b.set(from, x);
        }
        x = minus_product(b[to], coefficient<op>(dividing ? du : dl, link), x);
        b.set(to, x);
    }
    template <bool dividing> ORV_INLINE void outward(R& x, i64 from, i64 to) const
    {
        x = minus_product(b[to], coefficient<op>(dividing ? du : dl, min(from, to)), x);
        if constexpr (dividing) x = coefficient<op>(d, to) * x;
        b.set(to, x);
    }

    void inward_all(const Meeting& meeting) const
    {
        R top = b[0], bottom = b[n - 1];
        for (i64 i = 0; i < meeting.h; ++i) {
            inward<top_divides>(top, i, i + 1);
            inward<!top_divides>(bottom, n - 1 - i, n - 2 - i);
        }
        if (meeting.even) inward<top_divides>(top, meeting.h, meeting.row);
    }
    void outward_all(const Meeting& meeting) const
    {
        R top = coefficient<op>(d, meeting.row) * b[meeting.row], bottom = top;
        b.set(meeting.row, top);
        for (i64 k = 0; k < meeting.h; ++k) {
            outward<!top_divides>(top, meeting.row - k, meeting.row - k - 1);
            outward<top_divides>(bottom, meeting.row + k, meeting.row + k + 1);
        }
        if (meeting.even) outward<!top_divides>(top, 1, 0);
    }
};

template <Transposition op, class T> void solve(i64 n, i64 nrhs, const T* dl, const T* d, const T* du, T* b, i64 ldb)
{
    const Meeting meeting(n);
    in_groups(nrhs, b, ldb, [&]<int columns>(const Group<T, columns>& group) {
        const Solve<op, T, columns> solve{n, dl, d, du, group};
        solve.inward_all(meeting);
        solve.outward_all(meeting);
    });
}

template <class T> void solve(char trans, i64 n, i64 nrhs, const T* dl, const T* d, const T* du, T* b, i64 ldb)
{
    if (n == 0) return;
    if (fold(trans) == 'N') solve<Transposition::none>(n, nrhs, dl, d, du, b, ldb);
    else if (!is_complex<T> || fold(trans) != 'C') solve<Transposition::plain>(n, nrhs, dl, d, du, b, ldb);
    else if constexpr (is_complex<T>) solve<Transposition::conjugate>(n, nrhs, dl, d, du, b, ldb);
}

// Factors and solves. Returns info.
template <class T> i64 dtsvb(i64 n, i64 nrhs, T* dl, T* d, const T* du, T* b, i64 ldb)
{
    if (n == 0 || nrhs == 0) return 0;
    const i64 info = nrhs == 1 ? factor<true>(n, dl, d, du, b) : factor<false>(n, dl, d, du, b);
    if (info != 0) return info;
    if (nrhs == 1) Solve<Transposition::none, T, 1>{n, dl, d, du, {b, ldb}}.outward_all(Meeting(n));
    else solve<Transposition::none>(n, nrhs, dl, d, du, b, ldb);
    return 0;
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define DTTRB(t, T)                                                                                                    \
    ORV_EXPORT void LAPACK_PS(t##dttrfb)(const i64* n, T* dl, T* d, const T* du, i64* info)                            \
    {                                                                                                                  \
        *info = lapack::factor<false>(*n, dl, d, du, static_cast<T*>(nullptr));                                        \
    }                                                                                                                  \
    ORV_EXPORT void LAPACK_PS(x##t##dttrsb)(const char* trans, const i64* n, const i64* nrhs, const T* dl, const T* d, \
                                            const T* du, T* b, const i64* ldb, i64* info)                              \
    {                                                                                                                  \
        *info = 0;                                                                                                     \
        lapack::solve(*trans, *n, *nrhs, dl, d, du, b, *ldb);                                                          \
    }                                                                                                                  \
    ORV_EXPORT void LAPACK_PS(t##dtsvb)(const i64* n, const i64* nrhs, T* dl, T* d, const T* du, T* b, const i64* ldb, \
                                        i64* info)                                                                     \
    {                                                                                                                  \
        *info = lapack::dtsvb(*n, *nrhs, dl, d, du, b, *ldb);                                                          \
    }

DTTRB(s, float)
DTTRB(d, double)
DTTRB(c, cpx<float>)
DTTRB(z, cpx<double>)
