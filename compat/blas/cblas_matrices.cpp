// CBLAS, levels 2 and 3. A matrix stored by rows is its transpose stored by columns: the other triangle, the other
// transposition, rows and columns exchanged. What this leaves to do are conjugates of whole matrices or vectors, which
// Fortran's routines have no letter for: see "Conjugates" below.
#include "compat/blas/cblas.h"
#include "frame/arguments.h"

#include <initializer_list>
#include <tuple>

using namespace orv;
using namespace orv::compat;

namespace {

enum Layout { row_major = 101, column_major = 102 };

// An enumeration of CBLAS: letters[i] is Fortran's letter for the value first + i.
struct Option {
    const char* name;
    int first;
    const char* letters;
};
constexpr Option transposition{"TransA", 111, "NTC"}, transposition_of_b{"TransB", 111, "NTC"},
    transposition_of_only{"Trans", 111, "NTC"};
constexpr Option triangle{"Uplo", 121, "UL"}, diagonal{"Diag", 131, "NU"}, side_of{"Side", 141, "LR"};

constexpr char other_triangle(char uplo) { return uplo == 'U' ? 'L' : 'U'; }

// Two arguments that change places on the way to the column-major call.
struct Exchange {
    int one, other;
};
using Exchanges = std::initializer_list<Exchange>;

// The call that a program made, and the error routine of its interface. The reference library passes positions in the
// column-major call that it makes of a row-major one, and leaves it to the error routine to translate them if
// RowMajorStrg is set. Here they are those of the program's own call already. Checks come in the order of the
// reference, which is that of the column-major call.
template <class Int> struct Request : CblasCall<Int> {
    using CblasCall<Int>::report;
    int layout;

    bool by_rows() const { return layout == row_major; }

    // Whether kernels can run, to be asked where a call takes several steps; tells if not.
    bool can_run() const
    {
        const orv_status status = orv_branch_status();
        end(*this, status);
        return status == ORV_OK;
    }

    bool has_layout() const
    {
        if (layout == row_major || layout == column_major) return true;
        report(1, "Illegal layout setting, %d\n", layout);
        return false;
    }

    // The letter that a value stands for; 0, after a report, if it stands for none.
    char letter(int position, const Option& option, int value) const
    {
        for (int i = 0; option.letters[i] != '\0'; ++i)
            if (value == option.first + i) return option.letters[i];
        report(position, "Illegal %s setting, %d\n", option.name, value);
        return '\0';
    }

    // Whether the arguments of a column-major call are good; tells of the first that is not.
    template <class Check, class... A> bool accepts(Check check, Exchanges exchanges, A... arguments) const
    {
        const int bad = check(arguments...);
        if (bad == 0) [[likely]]
            return true;
        int position = bad;
        for (const Exchange& e : exchanges) {
            if (bad == e.one) position = e.other;
            if (bad == e.other) position = e.one;
        }
        report(position + 1);
        return false;
    }

    // The column-major call, if its arguments are good.
    template <auto& F, class Check, class... A> bool submit(Check check, Exchanges exchanges, A... arguments) const
    {
        if (!accepts(check, exchanges, arguments...)) return false;
        const orv_status status = F(arguments...);
        end(*this, status);
        return status == ORV_OK;
    }
};

// ---- Conjugates
//
// No memory is taken. A vector that is written is conjugated where it stands, before and after; one that is only read
// is conjugated in pieces on the stack.

template <class T> constexpr i64 piece = 8192 / sizeof(T);

template <class T> constexpr auto* general_product = orv_cgemv;
template <> constexpr auto* general_product<cpx<double>> = orv_zgemv;
template <class T> constexpr auto* rank_one_update = orv_cgeru;
template <> constexpr auto* rank_one_update<cpx<double>> = orv_zgeru;

// A vector by its logical elements.
template <class T> struct Vector {
    T* x;
    i64 inc;

    Vector(i64 n, T* data, i64 stride) : x(first(data, n, stride)), inc(stride) {}
    T& operator[](i64 i) const { return x[i * inc]; }
    // What a routine takes for the n elements from `from` on.
    T* part(i64 from, i64 n) const { return inc < 0 ? x + (from + n - 1) * inc : x + from * inc; }
    void conjugate(i64 n) const
    {
        for (i64 i = 0; i < n; ++i) x[i * inc] = conj(x[i * inc]);
    }
    void conjugates(i64 from, i64 n, std::remove_const_t<T>* copy) const
    {
        for (i64 i = 0; i < n; ++i) copy[i] = conj(x[(from + i) * inc]);
    }
};

// f(from, count, conjugates) for each piece of x(0:n).
template <class T, class F> void each_piece(i64 n, const T* x, i64 incx, F f)
{
    T conjugates[piece<T>];
    const Vector v(n, x, incx);
    for (i64 from = 0; from < n; from += piece<T>) {
        const i64 count = min(piece<T>, n - from);
        v.conjugates(from, count, conjugates);
        f(from, count, conjugates);
    }
}

// y := y + alpha*conj(B)*x as conj(y) := conj(y) + conj(alpha)*B*conj(x), B Hermitian, of order n, one triangle stored
// by columns with at most k elements beside its diagonal. Long vectors: column by column.
template <class T, class Diagonal>
void conjugate_hermitian_product(bool upper, i64 n, i64 k, T alpha, Diagonal diagonal, const T* x, i64 incx, T* y,
                                 i64 incy)
{
    auto* const product = general_product<T>;
    const Vector<const T> from(n, x, incx);
    const Vector<T> to(n, y, incy);
    for (i64 j = 0; j < n; ++j) {
        const T* const d = diagonal(j);
        const i64 length = min(k, upper ? j : n - 1 - j), row = upper ? j - length : j + 1;
        const T *const column = upper ? d - length : d + 1, factor = conj(alpha * from[j]);
        T dot = zero<T>;
        product('N', length, 1, one<T>, column, max(1, length), &factor, 1, one<T>, to.part(row, length), incy);
        product('T', length, 1, alpha, column, max(1, length), from.part(row, length), incx, one<T>, &dot, 1);
        to[j] += d->re * factor + conj(dot);
    }
}

// A(i,j) := A(i,j) + sum over v of conj(vectors[v](i))*factors(j)[v], the diagonal made real, in one triangle stored by
// columns. A column whose factors are 0 is left alone.
template <class T, int count, class Column, class Factors>
void update_triangle(bool upper, i64 n, const Vector<const T> (&vectors)[count], Factors factors, Column column)
{
    T conjugates[count][piece<T>];
    for (i64 from = 0; from < n; from += piece<T>) {
        const i64 to = min(n, from + piece<T>);
        for (int v = 0; v < count; ++v) vectors[v].conjugates(from, to - from, conjugates[v]);
        for (i64 j = upper ? from : 0; j < (upper ? n : to); ++j) {
            const i64 top = upper ? from : max(from, j), bottom = upper ? min(to, j + 1) : to;
            T factor[count], *const a = column(j);
            bool any = false;
            for (int v = 0; v < count; ++v) factor[v] = factors(v, j), any |= factor[v] != zero<T>;
            if (any)
                general_product<T>('N', bottom - top, count, one<T>, &conjugates[0][top - from], piece<T>, factor, 1,
                                   one<T>, a + top, 1);
            if (top <= j && j < bottom) a[j].im = 0;
        }
    }
}

// Column j of a triangle by columns, as if its rows counted from 0.
template <class T> T* column_of(bool /* upper */, i64 /* n */, i64 j, T* a, i64 lda) { return a + j * lda; }
template <class T> T* column_of(bool upper, i64 n, i64 j, T* ap)
{
    return ap + (upper ? j * (j + 1) / 2 : j * (2 * n - j - 1) / 2);
}

// ---- Families, each by the arguments of its routines behind the layout

template <auto& F, class Int, class Check, class T>
void gemm(const Request<Int>& r, Check check, int transa, int transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda,
          const T* b, i64 ldb, T beta, T* c, i64 ldc)
{
    const char ta = r.letter(2, transposition, transa);
    if (ta == '\0') return;
    const char tb = r.letter(r.by_rows() ? 2 : 3, transposition_of_b, transb); // as the reference reports it
    if (tb == '\0') return;
    if (r.by_rows())
        r.template submit<F>(check, {{1, 2}, {3, 4}, {8, 10}}, tb, ta, n, m, k, alpha, b, ldb, a, lda, beta, c, ldc);
    else r.template submit<F>(check, {}, ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <auto& F, class Int, class Check, class T>
void gemv(const Request<Int>& r, Check check, int trans, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x,
          i64 incx, T beta, T* y, i64 incy)
{
    const char op = r.letter(2, transposition, trans);
    if (op == '\0') return;
    if (!r.by_rows()) return void(r.template submit<F>(check, {}, op, m, n, alpha, a, lda, x, incx, beta, y, incy));
    const char flipped = op == 'N' ? 'T' : 'N';
    const bool conjugated = is_complex<T> && op == 'C';
    if (!r.template submit<F>(check, {{2, 3}}, flipped, n, m, conjugated ? zero<T> : alpha, a, lda, x, incx, beta, y,
                              incy))
        return;
    if constexpr (is_complex<T>) {
        if (!conjugated || alpha == zero<T>) return;
        const Vector<T> to(n, y, incy);
        to.conjugate(n);
        each_piece(m, x, incx, [&](i64 from, i64 count, const T* conjugates) {
            F('N', n, count, conj(alpha), a + from * lda, lda, conjugates, 1, one<T>, y, incy);
        });
        to.conjugate(n);
    }
}

template <auto& F, class Int, class Check, class T>
void gbmv(const Request<Int>& r, Check check, int trans, i64 m, i64 n, i64 kl, i64 ku, T alpha, const T* a, i64 lda,
          const T* x, i64 incx, T beta, T* y, i64 incy)
{
    const char op = r.letter(2, transposition, trans);
    if (op == '\0') return;
    if (!r.by_rows())
        return void(r.template submit<F>(check, {}, op, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy));
    const char flipped = op == 'N' ? 'T' : 'N';
    const bool conjugated = is_complex<T> && op == 'C';
    if (!r.template submit<F>(check, {{2, 3}, {4, 5}}, flipped, n, m, ku, kl, conjugated ? zero<T> : alpha, a, lda, x,
                              incx, beta, y, incy))
        return;
    if constexpr (is_complex<T>) {
        if (!conjugated || alpha == zero<T>) return;
        const Vector<T> to(n, y, incy);
        to.conjugate(n);
        each_piece(m, x, incx, [&](i64 from, i64 count, const T* conjugates) {
            // Columns of a band are a band, in the same array; its main diagonal starts in their first row.
            const i64 row = max(0, from - kl), above = kl + row - from, below = kl + ku - above;
            const i64 rows = min(n - row, count + below);
            if (rows <= 0) return;
            F('N', rows, count, below, above, conj(alpha), a + from * lda, lda, conjugates, 1, one<T>,
              to.part(row, rows), incy);
        });
        to.conjugate(n);
    }
}

template <auto& F, class Int, class Check, class T>
void ger(const Request<Int>& r, Check check, i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a,
         i64 lda)
{
    if (r.by_rows()) r.template submit<F>(check, {{1, 2}, {5, 7}}, n, m, alpha, y, incy, x, incx, a, lda);
    else r.template submit<F>(check, {}, m, n, alpha, x, incx, y, incy, a, lda);
}

template <auto& F, class Int, class Check, class T>
void gerc(const Request<Int>& r, Check check, i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a,
          i64 lda)
{
    if (!r.by_rows()) return void(r.template submit<F>(check, {}, m, n, alpha, x, incx, y, incy, a, lda));
    // Told by the name of the column-major call that it comes down to, as the reference tells it.
    const Request<Int> as_geru{{std::is_same_v<T, cpx<float>> ? "cblas_cgeru" : "cblas_zgeru", r.xerbla}, r.layout};
    if (!as_geru.accepts(check, {{1, 2}, {5, 7}}, n, m, alpha, y, incy, x, incx, a, lda) || !r.can_run()) return;
    each_piece(n, y, incy, [&](i64 from, i64 count, const T* conjugates) {
        end(r, rank_one_update<T>(count, m, alpha, conjugates, 1, x, incx, a + from, lda));
    });
}

// All that need nothing but the other triangle.
template <auto& F, class Int, class Check, class... A>
void symmetric(const Request<Int>& r, Check check, int uplo, A... rest)
{
    const char stored = r.letter(2, triangle, uplo);
    if (stored != '\0') r.template submit<F>(check, {}, r.by_rows() ? other_triangle(stored) : stored, rest...);
}

// Hermitian products: call(letter, alpha, x, incx, beta) is the column-major call, diagonal(upper, j) where it stands.
template <class Int, class T, class Call, class Diagonal>
void hermitian(const Request<Int>& r, int uplo, i64 n, i64 k, T alpha, const T* x, i64 incx, T beta, T* y, i64 incy,
               Call call, Diagonal diagonal)
{
    char stored = r.letter(2, triangle, uplo);
    if (stored == '\0') return;
    if (!r.by_rows()) return void(call(stored, alpha, x, incx, beta));
    stored = other_triangle(stored);
    if (!call(stored, zero<T>, x, incx, beta) || alpha == zero<T>) return;
    const Vector<T> to(n, y, incy);
    to.conjugate(n);
    if (n <= piece<T>)
        each_piece(n, x, incx,
                   [&](i64, i64, const T* conjugates) { call(stored, conj(alpha), conjugates, 1, one<T>); });
    else
        conjugate_hermitian_product(
            stored == 'U', n, k, alpha, [&](i64 j) { return diagonal(stored == 'U', j); }, x, incx, y, incy);
    to.conjugate(n);
}

template <auto& F, class Int, class Check, class T>
void hemv(const Request<Int>& r, Check check, int uplo, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx,
          T beta, T* y, i64 incy)
{
    const auto call = [&](char stored, T f, const T* from, i64 step, T g) {
        return r.template submit<F>(check, {}, stored, n, f, a, lda, from, step, g, y, incy);
    };
    hermitian(r, uplo, n, n, alpha, x, incx, beta, y, incy, call, [&](bool, i64 j) { return a + j + j * lda; });
}

template <auto& F, class Int, class Check, class T>
void hbmv(const Request<Int>& r, Check check, int uplo, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* x,
          i64 incx, T beta, T* y, i64 incy)
{
    const auto call = [&](char stored, T f, const T* from, i64 step, T g) {
        return r.template submit<F>(check, {}, stored, n, k, f, a, lda, from, step, g, y, incy);
    };
    hermitian(r, uplo, n, k, alpha, x, incx, beta, y, incy, call,
              [&](bool upper, i64 j) { return a + (upper ? k : 0) + j * lda; });
}

template <auto& F, class Int, class Check, class T>
void hpmv(const Request<Int>& r, Check check, int uplo, i64 n, T alpha, const T* ap, const T* x, i64 incx, T beta, T* y,
          i64 incy)
{
    const auto call = [&](char stored, T f, const T* from, i64 step, T g) {
        return r.template submit<F>(check, {}, stored, n, f, ap, from, step, g, y, incy);
    };
    hermitian(r, uplo, n, n, alpha, x, incx, beta, y, incy, call,
              [&](bool upper, i64 j) { return column_of(upper, n, j, ap) + j; });
}

// a: the full matrix and its leading dimension, or the packed one.
template <auto& F, class Int, class Check, class T, class... A>
void her(const Request<Int>& r, Check check, int uplo, i64 n, real_t<T> alpha, const T* x, i64 incx, T* a, A... lda)
{
    char stored = r.letter(2, triangle, uplo);
    if (stored == '\0') return;
    if (!r.by_rows()) return void(r.template submit<F>(check, {}, stored, n, alpha, x, incx, a, lda...));
    stored = other_triangle(stored);
    if (!r.accepts(check, {}, stored, n, alpha, x, incx, a, lda...) || alpha == 0 || !r.can_run()) return;
    if (n <= piece<T>) {
        each_piece(n, x, incx, [&](i64, i64, const T* xc) { end(r, F(stored, n, alpha, xc, 1, a, lda...)); });
        return;
    }
    const Vector<const T> vectors[] = {{n, x, incx}};
    update_triangle(
        stored == 'U', n, vectors, [&](int, i64 j) { return alpha * vectors[0][j]; },
        [&](i64 j) { return column_of(stored == 'U', n, j, a, lda...); });
}

template <auto& F, class Int, class Check, class T, class... A>
void her2(const Request<Int>& r, Check check, int uplo, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy,
          T* a, A... lda)
{
    char stored = r.letter(2, triangle, uplo);
    if (stored == '\0') return;
    if (!r.by_rows()) return void(r.template submit<F>(check, {}, stored, n, alpha, x, incx, y, incy, a, lda...));
    stored = other_triangle(stored);
    if (!r.accepts(check, {{5, 7}}, stored, n, alpha, y, incy, x, incx, a, lda...) || alpha == zero<T> || !r.can_run())
        return;
    if (n <= piece<T>) {
        each_piece(n, x, incx, [&](i64, i64, const T* xc) {
            each_piece(n, y, incy,
                       [&](i64, i64, const T* yc) { end(r, F(stored, n, alpha, yc, 1, xc, 1, a, lda...)); });
        });
        return;
    }
    const Vector<const T> vectors[] = {{n, y, incy}, {n, x, incx}};
    update_triangle(
        stored == 'U', n, vectors,
        [&](int v, i64 j) { return v == 0 ? alpha * vectors[1][j] : conj(alpha) * vectors[0][j]; },
        [&](i64 j) { return column_of(stored == 'U', n, j, a, lda...); });
}

// rest: the width of a band, the matrix, its leading dimension, as far as the routine has them; x, incx.
template <auto& F, class Int, class Check, class... A>
void triangular(const Request<Int>& r, Check check, int uplo, int trans, int diag, i64 n, A... rest)
{
    const char stored = r.letter(2, triangle, uplo);
    if (stored == '\0') return;
    const char op = r.letter(3, transposition, trans);
    if (op == '\0') return;
    const char unit = r.letter(4, diagonal, diag);
    if (unit == '\0') return;
    if (!r.by_rows()) return void(r.template submit<F>(check, {}, stored, op, unit, n, rest...));

    constexpr std::size_t count = sizeof...(A);
    using T = std::remove_pointer_t<std::tuple_element_t<count - 2, std::tuple<A...>>>;
    const char half = other_triangle(stored), flipped = op == 'N' ? 'T' : 'N';
    if (!r.accepts(check, {}, half, flipped, unit, n, rest...)) return;
    const auto arguments = std::tie(rest...);
    const Vector<T> x(n, std::get<count - 2>(arguments), std::get<count - 1>(arguments));
    const bool conjugated = is_complex<T> && op == 'C';
    if (conjugated) x.conjugate(n);
    end(r, F(half, flipped, unit, n, rest...));
    if (conjugated) x.conjugate(n);
}

template <auto& F, class Int, class Check, class T>
void symm(const Request<Int>& r, Check check, int side, int uplo, i64 m, i64 n, T alpha, const T* a, i64 lda,
          const T* b, i64 ldb, T beta, T* c, i64 ldc)
{
    const char from = r.letter(2, side_of, side);
    if (from == '\0') return;
    const char stored = r.letter(3, triangle, uplo);
    if (stored == '\0') return;
    if (r.by_rows())
        r.template submit<F>(check, {{3, 4}}, from == 'L' ? 'R' : 'L', other_triangle(stored), n, m, alpha, a, lda, b,
                             ldb, beta, c, ldc);
    else r.template submit<F>(check, {}, from, stored, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <auto& F, class Int, class Check, class T>
void trmm(const Request<Int>& r, Check check, int side, int uplo, int trans, int diag, i64 m, i64 n, T alpha,
          const T* a, i64 lda, T* b, i64 ldb)
{
    const char from = r.letter(2, side_of, side);
    if (from == '\0') return;
    const char stored = r.letter(3, triangle, uplo);
    if (stored == '\0') return;
    const char op = r.letter(4, transposition_of_only, trans);
    if (op == '\0') return;
    const char unit = r.letter(5, diagonal, diag);
    if (unit == '\0') return;
    if (r.by_rows())
        r.template submit<F>(check, {{5, 6}}, from == 'L' ? 'R' : 'L', other_triangle(stored), op, unit, n, m, alpha, a,
                             lda, b, ldb);
    else r.template submit<F>(check, {}, from, stored, op, unit, m, n, alpha, a, lda, b, ldb);
}

// The letters of an update whose second factor is the first one turned by `turned`; 0 after a report. In matrices
// stored by rows the reference gives uplo the position behind its own, but for her2k.
template <class Int> struct UpdateLetters {
    char half, op;

    UpdateLetters(const Request<Int>& r, int uplo, int trans, char turned, int position_by_rows = 3)
        : half(r.letter(r.by_rows() ? position_by_rows : 2, triangle, uplo)), op(0)
    {
        if (half != '\0') op = r.letter(3, transposition_of_only, trans);
        if (op != '\0' && r.by_rows()) half = other_triangle(half), op = op == 'N' ? turned : 'N';
    }
    bool good() const { return op != '\0'; }
};
template <class T, class F> constexpr char turned = is_complex<T> && !is_complex<F> ? 'C' : 'T';

template <auto& F, class Int, class Check, class S, class T>
void syrk(const Request<Int>& r, Check check, int uplo, int trans, i64 n, i64 k, S alpha, const T* a, i64 lda, S beta,
          T* c, i64 ldc)
{
    const UpdateLetters<Int> l(r, uplo, trans, turned<T, S>);
    if (l.good()) r.template submit<F>(check, {}, l.half, l.op, n, k, alpha, a, lda, beta, c, ldc);
}

template <auto& F, class Int, class Check, class S, class T>
void syr2k(const Request<Int>& r, Check check, int uplo, int trans, i64 n, i64 k, T alpha, const T* a, i64 lda,
           const T* b, i64 ldb, S beta, T* c, i64 ldc)
{
    const UpdateLetters<Int> l(r, uplo, trans, turned<T, S>, turned<T, S> == 'C' ? 2 : 3);
    const T factor = r.by_rows() && turned<T, S> == 'C' ? conj(alpha) : alpha;
    if (l.good()) r.template submit<F>(check, {}, l.half, l.op, n, k, factor, a, lda, b, ldb, beta, c, ldc);
}

// A routine's arguments as its family takes them: as the core does, but for enumerators.
template <class A, class C> auto value_of(C argument)
{
    if constexpr (std::is_same_v<A, char>) return argument;
    else return native<A>(argument);
}
template <auto& F, class Family, int... i, class... C>
void with_values(Family family, std::integer_sequence<int, i...>, C... arguments)
{
    family(value_of<value_argument<F, i>>(arguments)...);
}

} // namespace

#define MATRIX_FORM(symbol, xerbla, width, arity, name, check, family)                                                 \
    STANDARD void symbol(int layout, ORV_PARAMETERS_##arity(cblas##width##_argument, orv_##name))                      \
    {                                                                                                                  \
        const Request<i##width> request{{"cblas_" #name, xerbla}, layout};                                             \
        if (!request.has_layout()) return;                                                                             \
        with_values<orv_##name>([&](auto... values) { family<orv_##name>(request, arguments::check, values...); },     \
                                std::make_integer_sequence<int, arity>(), ORV_NAMES_##arity);                          \
    }
#define MATRIX(arity, name, check, family)                                                                             \
    MATRIX_FORM(cblas_##name, cblas_xerbla, 32, arity, name, check, family)                                            \
    MATRIX_FORM(cblas_##name##_64, cblas_xerbla_64, 64, arity, name, check, family)                                    \
    MATRIX_FORM(cblas_##name##64_, cblas_xerbla64_, 64, arity, name, check, family)
#include "compat/blas/matrices.def"
