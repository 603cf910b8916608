// C := alpha*op(A) + beta*op(B): ?omatadd by letters, and one routine for each pair of operations, the first on A and
// the second on B.
//
// n: as it is, t: transposed, r: conjugate, c: conjugate transposed. rows and cols are those of C; A and B have the
// shape that op makes of it, and neither may overlap C, except that an operand that is not transposed may be C itself.
// Matrices are row-major, ld the distance of their rows. Each product and the sum are rounded once; no factor is
// special, so NaN always spreads.
#include "frame/kernels/trans.h"
#include "trans/rows.h"
#include "trans/sweep.h"

namespace orv::trans {
namespace {

constexpr bool is_transposing(char op) { return op == 't' || op == 'c'; }
constexpr bool is_conjugating(char op) { return op == 'r' || op == 'c'; }

// A is not transposed where B is not.
template <class T>
void add(char opa, char opb, u64 rows, u64 cols, T alpha, const T* a, u64 lda, T beta, const T* b, u64 ldb, T* c,
         u64 ldc)
{
    const Source from_a{a, lda, Scale<T>(alpha, is_conjugating(opa))};
    const Source from_b{b, ldb, Scale<T>(beta, is_conjugating(opb))};
    const Target to{c, ldc};
    if (!is_transposing(opb)) rows_upwards(rows, cols, SumOfSources{from_a, from_b}, to);
    else if (!is_transposing(opa)) sweep_bands(cols, rows, from_b, ldb, SumTarget{to, from_a}, ldc);
    else sweep_bands(cols, rows, SumOfSources{from_a, from_b}, lda, to, ldc);
}

template <class T> struct Operands {
    u64 rows, cols;
    T alpha;
    const T* a;
    u64 lda;
    T beta;
    const T* b;
    u64 ldb;
    T* c;
    u64 ldc;
};

// A letter in lower case, of real matrices without conjugates; 0 if it is none.
template <class T> constexpr char operation(char letter)
{
    switch (fold(letter)) {
    case 'N':
        return 'n';
    case 'T':
        return 't';
    case 'R':
        return is_complex<T> ? 'r' : 'n';
    case 'C':
        return is_complex<T> ? 'c' : 't';
    default:
        return 0;
    }
}

// Pairs that have a routine of their own have their operations in this order; others go with the operands exchanged.
constexpr int rank(char op) { return op == 'r' ? 0 : op == 'n' ? 1 : op == 't' ? 2 : 3; }

// The letter of the ordering as in ?omatcopy. A letter that is none leaves C alone.
template <class T> void omatadd(char ordering, char transa, char transb, Operands<T> o)
{
    if (o.rows == 0 || o.cols == 0) return;
    ordering = fold(ordering);
    if (ordering == 'C') {
        const u64 rows = o.rows;
        o.rows = o.cols, o.cols = rows;
    } else if (ordering != 'R') return;
    const char opa = operation<T>(transa), opb = operation<T>(transb);
    if (opa == 0 || opb == 0) return;
    // Of real matrices T with T goes exchanged though it has a routine; the sum is the same.
    const bool twice_t = !is_complex<T> && fold(transa) == 'T' && fold(transb) == 'T';
    if (rank(opa) > rank(opb) || twice_t)
        add(opb, opa, o.rows, o.cols, o.beta, o.b, o.ldb, o.alpha, o.a, o.lda, o.c, o.ldc);
    else add(opa, opb, o.rows, o.cols, o.alpha, o.a, o.lda, o.beta, o.b, o.ldb, o.c, o.ldc);
}

} // namespace
} // namespace orv::trans

#define OMATADD(name, T)                                                                                               \
    ORV_EXPORT void TRANS(name)(char ordering, char transa, char transb, u64 rows, u64 cols, T alpha, const T* a,      \
                                u64 lda, T beta, const T* b, u64 ldb, T* c, u64 ldc)                                   \
    {                                                                                                                  \
        trans::omatadd<T>(ordering, transa, transb, {rows, cols, alpha, a, lda, beta, b, ldb, c, ldc});                \
    }
#define PAIR(name, T, opa, opb)                                                                                        \
    ORV_EXPORT void TRANS(name##_##opa##opb)(u64 rows, u64 cols, T alpha, const T* a, u64 lda, T beta, const T* b,     \
                                             u64 ldb, T* c, u64 ldc)                                                   \
    {                                                                                                                  \
        trans::add(#opa[0], #opb[0], rows, cols, alpha, a, lda, beta, b, ldb, c, ldc);                                 \
    }
#define REAL(name, T) OMATADD(name, T) PAIR(name, T, n, n) PAIR(name, T, n, t) PAIR(name, T, t, t)
#define COMPLEX(name, T)                                                                                               \
    REAL(name, T)                                                                                                      \
    PAIR(name, T, n, c)                                                                                                \
    PAIR(name, T, t, c)                                                                                                \
    PAIR(name, T, c, c)                                                                                                \
    PAIR(name, T, r, n) PAIR(name, T, r, t) PAIR(name, T, r, c) PAIR(name, T, r, r)

namespace orv {

REAL(somatadd, float)
REAL(domatadd, double)
COMPLEX(comatadd, cpx<float>)
COMPLEX(zomatadd, cpx<double>)

} // namespace orv
