// Sparse matrices: products and solves in every format. A problem has its matrix in full, zero outside of a band; what
// is called here stores that in the format of a letter, and calls the routine with the record.
//
// Letters. format: r CSR, s CSC, o coordinates, d diagonals, b blocks of order 2 (of 1 if sizes are odd), k skyline.
// base: z indices count from 0 and have 64 bits, o from 1 and 32.
#include "cli/verify/plans.h"

#include <complex>
#include <cstring>

namespace orv::verify {
namespace {

// A record with its arrays, over a matrix that is stored in full by columns.
template <class T, class Int> class Stored {
public:
    Stored(char format, const orv_sparse& like, i64 below, i64 above, const T* full)
        : record(like), below_(below), above_(above), full_(full)
    {
        const i64 m = record.rows, n = record.cols;
        record.format = ORV_SPARSE_CSR + static_cast<int>(std::strchr("rsodbk", format) - "rsodbk");
        record.bits = 8 * sizeof(Int);
        record.block = format == 'b' && m % 2 == 0 && n % 2 == 0 ? 2 : 1;
        if (format == 'b') record.diag = 'N'; // blocks with ones in them are whole
        unit_ = like.diag == 'U';
        if (format == 'o') coordinates(m, n);
        else if (format == 'd') diagonals(m, n);
        else if (format == 'k') skyline(m);
        else if (format == 's') compressed(n, m, [this](i64 line, i64 place) { return at(place, line); });
        else compressed(m / record.block, n / record.block, [this](i64 line, i64 place) { return at(line, place); });
        record.values = val_.data(), record.begin = begin_.data();
        record.row = record.col = col_.data();
        if (format == 'o') record.row = row_.data();
    }

    orv_sparse record;

private:
    bool in_band(i64 i, i64 j) const { return i - j <= below_ && j - i <= above_; }
    T at(i64 i, i64 j) const
    {
        if (unit_ && i == j) return T(1);
        if (record.kind == 'H' && i == j) return T(std::real(full_[i + j * record.rows]));
        if (in_band(i, j)) return full_[i + j * record.rows];
        const bool mirrored = record.kind == 'S' && i / record.block == j / record.block && in_band(j, i);
        return mirrored ? full_[j + i * record.rows] : T(0);
    }
    Int index(i64 i) const { return static_cast<Int>(i + record.base); }

    void coordinates(i64 m, i64 n)
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i)
                if (in_band(i, j)) row_.push_back(index(i)), col_.push_back(index(j)), val_.push_back(at(i, j));
        record.count = static_cast<i64>(val_.size());
    }
    void diagonals(i64 m, i64 n)
    {
        record.ld = std::max<i64>(m, 1);
        for (i64 d = std::max(-below_, 1 - m); d <= std::min(above_, n - 1); ++d, ++record.count) {
            col_.push_back(static_cast<Int>(d));
            for (i64 i = 0; i < m; ++i) val_.push_back(i + d >= 0 && i + d < n ? at(i, i + d) : T(0));
        }
    }
    void skyline(i64 m)
    {
        const bool lower = record.uplo == 'L';
        begin_.push_back(0);
        for (i64 line = 0; line < m; ++line) {
            for (i64 k = std::max<i64>(0, line - (lower ? below_ : above_)); k <= line; ++k)
                val_.push_back(lower ? at(line, k) : at(k, line));
            begin_.push_back(static_cast<Int>(val_.size()));
        }
    }
    // Lines of blocks with any element in the band.
    template <class At> void compressed(i64 lines, i64 places, const At& element)
    {
        const i64 b = record.block;
        const bool turned = record.format == ORV_SPARSE_CSC;
        begin_.push_back(0);
        for (i64 line = 0; line < lines; ++line) {
            for (i64 place = 0; place < places; ++place) {
                const i64 i = (turned ? place : line) * b, j = (turned ? line : place) * b;
                if (!(in_band(i, j) || in_band(i + b - 1, j) || in_band(i, j + b - 1))) continue;
                col_.push_back(index(place));
                for (i64 e = 0; e < b * b; ++e) {
                    const i64 r = record.base == 0 ? e / b : e % b, c = record.base == 0 ? e % b : e / b;
                    val_.push_back(element(line * b + r, place * b + c));
                }
            }
            begin_.push_back(static_cast<Int>(col_.size()));
        }
    }

    i64 below_, above_;
    const T* full_;
    bool unit_;
    std::vector<T> val_;
    std::vector<Int> begin_, row_, col_;
};

// act(record) with what a problem says of a matrix.
template <class T, class Act>
orv_status stored(char type, char format, char base, char kind, char uplo, char diag, i64 m, i64 n, i64 below,
                  i64 above, const T* a, const Act& act)
{
    orv_sparse like{};
    like.type = type, like.kind = kind, like.uplo = fold(uplo), like.diag = fold(diag);
    like.base = base == 'z' ? 0 : 1, like.rows = m, like.cols = n;
    if (like.base == 0) {
        const Stored<T, std::int64_t> matrix(format, like, below, above, a);
        return act(&matrix.record);
    }
    const Stored<T, std::int32_t> matrix(format, like, below, above, a);
    return act(&matrix.record);
}

template <class T> struct Routines;
#define ROUTINES(t, T)                                                                                                 \
    template <> struct Routines<T> {                                                                                   \
        static constexpr char type = *#t;                                                                              \
        static constexpr auto &mv = orv_sparse_##t##mv, &mm = orv_sparse_##t##mm, &sv = orv_sparse_##t##sv,            \
                              &sm = orv_sparse_##t##sm;                                                                \
    };
ROUTINES(s, float)
ROUTINES(d, double)
ROUTINES(c, std::complex<float>)
ROUTINES(z, std::complex<double>)

using Int = std::int64_t;

template <class T>
orv_status general_mv(char format, char base, char trans, Int m, Int n, Int kl, Int ku, T alpha, const T* a, const T* x,
                      T beta, T* y)
{
    return stored(Routines<T>::type, format, base, 'G', 'L', 'N', m, n, kl, ku, a,
                  [=](const orv_sparse* s) { return Routines<T>::mv(trans, alpha, s, x, beta, y); });
}
template <class T>
orv_status general_mm(char order, char format, char base, char trans, Int m, Int n, Int kl, Int ku, Int columns,
                      T alpha, const T* a, const T* x, T beta, T* y)
{
    const bool turned = trans != 'n', by_rows = order == 'r';
    const Int ldx = std::max<Int>(1, by_rows  ? columns
                                     : turned ? m
                                              : n),
              ldy = std::max<Int>(1, by_rows  ? columns
                                     : turned ? n
                                              : m);
    return stored(Routines<T>::type, format, base, 'G', 'L', 'N', m, n, kl, ku, a, [=](const orv_sparse* s) {
        return Routines<T>::mm(order, trans, alpha, s, columns, x, ldx, beta, y, ldy);
    });
}
template <class T, char kind>
orv_status half_mv(char format, char base, char uplo, Int n, Int k, T alpha, const T* a, const T* x, T beta, T* y)
{
    return stored(Routines<T>::type, format, base, kind, uplo, 'N', n, n, uplo == 'u' ? 0 : k, uplo == 'u' ? k : 0, a,
                  [=](const orv_sparse* s) { return Routines<T>::mv('N', alpha, s, x, beta, y); });
}
template <class T, class Act>
orv_status triangle(char format, char base, char uplo, char diag, Int n, Int k, const T* a, const Act& act)
{
    return stored(Routines<T>::type, format, base, 'T', uplo, diag, n, n, uplo == 'u' ? 0 : k, uplo == 'u' ? k : 0, a,
                  act);
}
template <class T>
orv_status triangular_mv(char format, char base, char uplo, char trans, char diag, Int n, Int k, T alpha, const T* a,
                         const T* x, T beta, T* y)
{
    return triangle(format, base, uplo, diag, n, k, a,
                    [=](const orv_sparse* s) { return Routines<T>::mv(trans, alpha, s, x, beta, y); });
}
template <class T>
orv_status triangular_sv(char format, char base, char uplo, char trans, char diag, Int n, Int k, T alpha, const T* a,
                         const T* x, T* y)
{
    return triangle(format, base, uplo, diag, n, k, a,
                    [=](const orv_sparse* s) { return Routines<T>::sv(trans, alpha, s, x, y); });
}
template <class T>
orv_status triangular_sm(char order, char format, char base, char uplo, char trans, char diag, Int n, Int k,
                         Int columns, T alpha, const T* a, const T* x, T* y)
{
    const Int ld = std::max<Int>(1, order == 'r' ? columns : n);
    return triangle(format, base, uplo, diag, n, k, a, [=](const orv_sparse* s) {
        return Routines<T>::sm(order, trans, alpha, s, columns, x, ld, y, ld);
    });
}

// ---- What they promise

View band(i64 m, i64 n, i64 below, i64 above)
{
    View a{.array = "a", .rows = m, .columns = n, .row = 1, .column = m};
    a.below = below, a.above = above;
    return a;
}
View half(Setting& s, View::Rest rest)
{
    const i64 n = s.size("n"), k = s.size("k", 2);
    const bool upper = s.letter("uplo") == 'u';
    View a = band(n, n, upper ? 0 : k, upper ? k : 0);
    a.rest = rest;
    return a;
}
View dense(Setting& s, const char* name, i64 rows)
{
    const i64 columns = s.has("columns") ? s.size("columns") : 1;
    const bool by_rows = s.letter("order") == 'r';
    return {.array = name,
            .rows = rows,
            .columns = columns,
            .row = by_rows ? columns : 1,
            .column = by_rows ? 1 : std::max<i64>(rows, 1)};
}
Plan product(Setting& s, const View& a)
{
    const char trans = s.has("trans") ? s.letter("trans") : 'n';
    const View x = dense(s, "x", trans == 'n' ? a.columns : a.rows),
               y = dense(s, "y", trans == 'n' ? a.rows : a.columns);
    const double terms = roundings_of_sum(trans == 'n' ? a.columns : a.rows);
    Equation e{after(y), {{s.scalar("alpha"), op(a, trans), op(x)}}, terms};
    add_scaled(s, e.terms, y);
    return {{e}};
}
Plan general(Setting& s)
{
    const i64 m = s.size("m"), n = s.size("n"), kl = s.size("kl", 2), ku = s.size("ku", 1);
    return product(s, band(m, n, kl, ku));
}
Plan symmetric(Setting& s) { return product(s, half(s, View::Rest::symmetric)); }
Plan hermitian(Setting& s) { return product(s, half(s, View::Rest::hermitian)); }
View triangle_of(Setting& s)
{
    View a = half(s, View::Rest::zero);
    a.dominant = true, a.unit = s.letter("diag") == 'u';
    return a;
}
Plan triangular(Setting& s) { return product(s, triangle_of(s)); }
Plan solution(Setting& s)
{
    const View a = triangle_of(s), x = dense(s, "x", a.rows), y = dense(s, "y", a.rows);
    return {{{{},
              {{{1, 0}, op(a, s.letter("trans")), after(y)}, {-s.scalar("alpha"), op(x)}},
              // blocks of order 2 are inverted
              roundings_of_sum(a.rows) + (s.letter("format") == 'b' ? 20 : 0)}}};
}

} // namespace

#define ALL(name)                                                                                                      \
    routine<name<float>>("s"), routine<name<double>>("d"), routine<name<std::complex<float>>>("c"),                    \
        routine<name<std::complex<double>>>("z")
#define ALL_OF(name, kind)                                                                                             \
    routine<name<float, kind>>("s"), routine<name<double, kind>>("d"), routine<name<std::complex<float>, kind>>("c"),  \
        routine<name<std::complex<double>, kind>>("z")

Group sparse_matrices()
{
    const std::vector<const char*> general_sizes{
        "m=0|1|2|6|9 n=0|1|4|9", "m=70 n=70 kl=3 ku=69 beta=0|1", "m=33 n=90 kl=5 ku=64", "m=90 n=33 kl=64 ku=5",
        "times=6 m=20..200 n=20..200 kl=0..30 ku=0..30 threads=2..5 eager=100000"};
    const std::vector<const char*> halves{"n=0|1|2|5|8 k=0|1|3", "n=70 k=69 beta=0|1",
                                          "times=6 n=20..200 k=0..30 threads=2..5 eager=100000"},
        solves{"n=0|1|2|5|8 k=0|1|3", "n=70 k=69"};
    return {
        "spblas",
        "sparse matrices",
        {{"sparse_mv",
          "format:rsodb base:zo trans m n kl ku alpha a x beta y",
          general,
          general_sizes,
          {ALL(general_mv)}},
         {"sparse_mm",
          "order:cr format:rsodb base:zo trans m n kl ku columns alpha a x beta y",
          general,
          {"m=1|6|9 n=1|9 columns=1|8", "m=40 n=30 columns=24|51",
           "times=6 m=20..90 n=20..90 kl=0..30 ku=0..30 columns=1..40 threads=2..5 eager=100000"},
          {ALL(general_mm)}},
         {"sparse_symv", "format:rsodbk base:zo uplo n k alpha a x beta y", symmetric, halves, {ALL_OF(half_mv, 'S')}},
         {"sparse_hemv",
          "format:rsod base:zo uplo n k alpha a x beta y",
          hermitian,
          halves,
          {routine<half_mv<std::complex<float>, 'H'>>("c"), routine<half_mv<std::complex<double>, 'H'>>("z")}},
         {"sparse_trmv",
          "format:rsodb base:zo uplo trans diag n k alpha a x beta y",
          triangular,
          halves,
          {ALL(triangular_mv)}},
         {"sparse_trsv",
          "format:rsodb base:zo uplo trans diag n k alpha a x y",
          solution,
          solves,
          {ALL(triangular_sv)}},
         {"sparse_trsm",
          "order:cr format:rsodb base:zo uplo trans diag n k columns alpha a x y",
          solution,
          {"n=1|4|9 columns=1|3", "times=6 n=20..90 k=0..30 columns=1..60 threads=2..5 eager=100000"},
          {ALL(triangular_sm)}},
         {"sparse_skymv",
          "format:k base:zo uplo trans:nt diag n k alpha a x beta y",
          triangular,
          halves,
          {ALL(triangular_mv)}},
         {"sparse_skysv",
          "format:k base:zo uplo trans:nt diag n k alpha a x y",
          solution,
          solves,
          {ALL(triangular_sv)}}}};
}

} // namespace orv::verify
