// Triangular systems for tests: matrices in every storage, calls by name, and what results should be.
#pragma once

#include "frame/kernels/blas.h"
#include "tests/support/bounds.h"
#include "tests/support/kernels.h"
#include "tests/support/probe.h"
#include "tests/support/vectors.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace orv::test {

enum class Storage { full, packed, band };

// A triangle with all else in the storage, and a unit diagonal, NaN. The storage touches an unreadable page.
template <class T> class TriangularMatrix {
public:
    const Storage storage;
    const bool upper, unit;
    const i64 n, k, lda;

    TriangularMatrix(Storage storage, bool upper, bool unit, i64 n, i64 k, i64 pad, Edge edge = Edge::end)
        : storage(storage), upper(upper), unit(unit), n(n), k(storage == Storage::band ? k : max(n - 1, 0)),
          lda(storage == Storage::band ? k + 1 + pad : max(n, 1) + pad), data_(size(), edge)
    {
        // Diagonals of about 1 and columns of about the same sum: solutions neither grow nor vanish.
        Random random(static_cast<std::uint64_t>(n * 7 + k));
        const real_t<T> scale = real_t<T>(1) / static_cast<real_t<T>>(min(this->k, max(n, 1)) + 1);
        each([&](i64 i, i64 j) {
            T& e = data_[index(i, j)];
            e = scale * random.value<T>();
            if (i == j) e = e + (random.integer(0, 1) != 0 ? one<T> : -one<T>);
        });
        before_.assign(bytes().begin(), bytes().end());
    }

    const T* operator*() const { return data_.data(); }
    T& at(i64 i, i64 j) const { return data_[index(i, j)]; }
    bool unchanged() const { return std::equal(before_.begin(), before_.end(), bytes().begin()); }

    // body(i, j) for all elements that are to be read.
    template <class Body> void each(const Body& body) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = upper ? max(0, j - k) : j; i <= (upper ? j : min(n - 1, j + k)); ++i)
                if (i != j || !unit) body(i, j);
    }

private:
    std::size_t size() const
    {
        if (n <= 0) return 0;
        if (storage == Storage::packed) return static_cast<std::size_t>(n * (n + 1) / 2);
        return static_cast<std::size_t>((n - 1) * lda + (storage == Storage::band ? k + 1 : n));
    }
    std::size_t index(i64 i, i64 j) const
    {
        if (storage == Storage::packed)
            return static_cast<std::size_t>(upper ? j * (j + 1) / 2 + i : j * (2 * n - j + 1) / 2 + i - j);
        return static_cast<std::size_t>(j * lda + (storage == Storage::full ? i : upper ? k + i - j : i - j));
    }
    std::span<const std::byte> bytes() const { return std::as_bytes(data_.span()); }

    Guarded<T> data_;
    std::vector<std::byte> before_;
};

// A letter in the given case.
inline char cased(char letter, bool lower) { return static_cast<char>(lower ? letter | 0x20 : letter); }

// The routine of that name on a matrix. Options in lower case if asked.
template <class T>
void call(void* routine, const TriangularMatrix<T>& a, char trans, T* x, i64 incx, bool lower_case = false)
{
    const char uplo = cased(a.upper ? 'U' : 'L', lower_case), op = cased(trans, lower_case);
    const char diag = cased(a.unit ? 'U' : 'N', lower_case);
    if (a.storage == Storage::full)
        reinterpret_cast<kernels::blas::Trmv<T>*>(routine)(&uplo, &op, &diag, &a.n, *a, &a.lda, x, &incx);
    else if (a.storage == Storage::packed)
        reinterpret_cast<kernels::blas::Tpmv<T>*>(routine)(&uplo, &op, &diag, &a.n, *a, x, &incx);
    else reinterpret_cast<kernels::blas::Tbmv<T>*>(routine)(&uplo, &op, &diag, &a.n, &a.k, *a, &a.lda, x, &incx);
}

// One number for the size of an element, as bounds of complex arithmetic take it.
template <class T> long double size_of(T a)
{
    if constexpr (is_complex<T>)
        return std::fabs(static_cast<long double>(a.re)) + std::fabs(static_cast<long double>(a.im));
    else return std::fabs(static_cast<long double>(a));
}

// op(A)*x in long double, the magnitude of each element being that of |op(A)|*|x|.
template <class T> std::vector<ComplexEntry> product(const TriangularMatrix<T>& a, char trans, const std::vector<T>& x)
{
    std::vector<ComplexEntry> y(x.size());
    const auto add = [&](i64 to, T e, T f) {
        ComplexEntry& r = y[static_cast<std::size_t>(to)];
        if constexpr (is_complex<T>) {
            const long double re = e.re, im = trans == 'C' ? -e.im : e.im;
            r.re.exact += re * f.re - im * f.im, r.im.exact += re * f.im + im * f.re;
        } else r.re.exact += static_cast<long double>(e) * f;
        r.re.magnitude += size_of(e) * size_of(f);
    };
    a.each([&](i64 i, i64 j) {
        if (trans == 'N') add(i, a.at(i, j), x[static_cast<std::size_t>(j)]);
        else add(j, a.at(i, j), x[static_cast<std::size_t>(i)]);
    });
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (a.unit) add(static_cast<i64>(i), one<T>, x[i]);
        y[i].im.magnitude = y[i].re.magnitude;
        // A product, a sum for each of at most k + 1 terms, joins of partial sums, a division.
        y[i].re.roundings = y[i].im.roundings = static_cast<long double>(min(a.k + 1, a.n)) + (is_complex<T> ? 16 : 6);
    }
    return y;
}

template <class T> long double part_excess(T computed, const ComplexEntry& e)
{
    if constexpr (is_complex<T>) return excess(computed, e);
    else return excess(computed, e.re);
}

enum class Task { solve, multiply };

// Runs routine by routine, counts nothing allocated, and keeps the worst error: of a product that of each element, of a
// solution that of its residual, |b - op(A)*x| <= gamma*|op(A)|*|x| (Higham, theorem 8.5).
template <class T> struct TriangularSweep {
    Task task;
    std::string name;
    void* routine = kernel_address("blas", name);
    long double worst = 0;

    TriangularSweep(Task task, std::string name) : task(task), name(std::move(name)) {}

    void run(const TriangularMatrix<T>& a, char trans, i64 incx, Place place = {})
    {
        SCOPED_TRACE(text(a, trans, incx));
        Random random(static_cast<std::uint64_t>(a.n));
        Strided<T> x(a.n, incx, place);
        x.fill(random);
        Strided<T> before(x, {});
        {
            ProbeScope scope;
            call(routine, a, trans, x.data(), incx, a.n % 3 == 1);
            ASSERT_EQ(scope->allocations, 0);
        }
        std::vector<T> given, result;
        for (i64 i = 0; i < a.n; ++i) given.push_back(before(i)), result.push_back(x(i)), before(i) = x(i);
        ASSERT_EQ(x.bits(), before.bits()) << "gaps";
        ASSERT_TRUE(a.unchanged());
        const bool solves = task == Task::solve;
        const std::vector<ComplexEntry> expected = product(a, trans, solves ? result : given);
        for (std::size_t i = 0; i < given.size(); ++i) {
            const long double e = part_excess(solves ? given[i] : result[i], expected[i]);
            ASSERT_LE(e, 1) << "element " << i;
            worst = std::max(worst, e);
        }
    }

    std::string text(const TriangularMatrix<T>& a, char trans, i64 incx) const
    {
        const char* const storage = a.storage == Storage::full ? "tr" : a.storage == Storage::band ? "tb" : "tp";
        Line text = line<T>(storage + std::string(task == Task::solve ? "sv" : "mv"),
                            {a.upper ? 'U' : 'L', trans, a.unit ? 'U' : 'N'});
        text.with("n", a.n);
        if (a.storage == Storage::band) text.with("k", a.k);
        if (a.storage != Storage::packed) text.with("lda", a.lda);
        return text.with("incx", incx).text(name);
    }

    // All options.
    template <class Strides>
    void run(Storage storage, i64 n, i64 k, i64 pad, const Strides& strides, Edge edge = Edge::end)
    {
        for (const bool upper : {false, true})
            for (const bool unit : {false, true}) {
                const TriangularMatrix<T> a(storage, upper, unit, n, k, pad, edge);
                for (const char trans : {'N', 'T', 'C'})
                    for (const i64 incx : strides) {
                        if (!is_complex<T> && trans == 'C' && n > 70) continue; // T
                        run(a, trans, incx, {edge, 0});
                        if (testing::Test::HasFailure()) return;
                    }
            }
    }
    ~TriangularSweep() { std::printf("%s: worst error %.2Lf of its bound\n", name.c_str(), worst); }
};

inline constexpr i64 all_strides[] = {1, -1, 2, -3}, few_strides[] = {1, -2};

template <class T> std::vector<T> values(const Strided<T>& x, i64 n)
{
    std::vector<T> v;
    for (i64 i = 0; i < n; ++i) v.push_back(x(i));
    return v;
}

} // namespace orv::test
