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

template <char opa, char opb, class T>
void add(u64 rows, u64 cols, T alpha, const T* a, u64 lda, T beta, const T* b, u64 ldb, T* c, u64 ldc)
{
    const Source from_a{a, lda, Scale<T, is_conjugating(opa)>(alpha)};
    const Source from_b{b, ldb, Scale<T, is_conjugating(opb)>(beta)};
    const Target to{c, ldc};
    if constexpr (!is_transposing(opb)) rows_upwards(rows, cols, SumOfSources{from_a, from_b}, to);
    else if constexpr (!is_transposing(opa)) sweep_bands(cols, rows, from_b, ldb, SumTarget{to, from_a}, ldc);
    else sweep_bands(cols, rows, SumOfSources{from_a, from_b}, lda, to, ldc);
}

// One bit a letter; the sum of both operands' is the code that selects. Real types have no conjugates.
enum : unsigned { n = 1, t = 2, r = 4, c = 8 };
constexpr unsigned code(char op)
{
    switch (fold(op)) {
    case 'N':
        return n;
    case 'T':
        return t;
    case 'R':
        return r;
    case 'C':
        return c;
    default:
        return 0;
    }
}
constexpr unsigned pair(unsigned a, unsigned b) { return a + 16 * b; }

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

    template <char opa, char opb> void add() const
    {
        trans::add<opa, opb>(rows, cols, alpha, a, lda, beta, b, ldb, c, ldc);
    }
    // With the operands exchanged, for pairs that have no routine of their own.
    template <char opb, char opa> void add_exchanged() const
    {
        trans::add<opb, opa>(rows, cols, beta, b, ldb, alpha, a, lda, c, ldc);
    }
};

template <class T> void add_real(unsigned code, const Operands<T>& o)
{
    switch (code) {
    case pair(n, n):
    case pair(r, n):
    case pair(n, r):
    case pair(r, r):
        return o.template add<'n', 'n'>();
    case pair(n, t):
    case pair(r, t):
    case pair(n, c):
    case pair(r, c):
        return o.template add<'n', 't'>();
    case pair(t, n):
    case pair(c, n):
    case pair(t, r):
    case pair(c, r):
        return o.template add_exchanged<'n', 't'>();
    case pair(t, t): // exchanged though it has a routine; the sum is the same
        return o.template add_exchanged<'t', 't'>();
    case pair(c, t):
    case pair(t, c):
    case pair(c, c):
        return o.template add<'t', 't'>();
    default: // a letter that names no operation
        return;
    }
}

template <class T> void add_complex(unsigned code, const Operands<T>& o)
{
    switch (code) {
    case pair(n, n):
        return o.template add<'n', 'n'>();
    case pair(n, t):
        return o.template add<'n', 't'>();
    case pair(n, c):
        return o.template add<'n', 'c'>();
    case pair(t, t):
        return o.template add<'t', 't'>();
    case pair(t, c):
        return o.template add<'t', 'c'>();
    case pair(c, c):
        return o.template add<'c', 'c'>();
    case pair(r, n):
        return o.template add<'r', 'n'>();
    case pair(r, t):
        return o.template add<'r', 't'>();
    case pair(r, c):
        return o.template add<'r', 'c'>();
    case pair(r, r):
        return o.template add<'r', 'r'>();
    case pair(t, n):
        return o.template add_exchanged<'n', 't'>();
    case pair(c, n):
        return o.template add_exchanged<'n', 'c'>();
    case pair(c, t):
        return o.template add_exchanged<'t', 'c'>();
    case pair(n, r):
        return o.template add_exchanged<'r', 'n'>();
    case pair(t, r):
        return o.template add_exchanged<'r', 't'>();
    case pair(c, r):
        return o.template add_exchanged<'r', 'c'>();
    default: // a letter that names no operation
        return;
    }
}

// The letter of the ordering as in ?omatcopy. A letter that is none leaves C alone.
template <class T> void omatadd(char ordering, char transa, char transb, Operands<T> o)
{
    if (o.rows == 0 || o.cols == 0) return;
    ordering = fold(ordering);
    if (ordering == 'C') {
        const u64 rows = o.rows;
        o.rows = o.cols, o.cols = rows;
    } else if (ordering != 'R') return;
    const unsigned a = code(transa), b = code(transb);
    if constexpr (is_complex<T>) add_complex(pair(a, b), o);
    else add_real(pair(a, b), o);
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
        trans::add<#opa[0], #opb[0]>(rows, cols, alpha, a, lda, beta, b, ldb, c, ldc);                                 \
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
