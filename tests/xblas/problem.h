// What the tests of all families share: vectors with strides, scalars, expected results, recorded reports.
#pragma once

#include "tests/support/line.h"
#include "tests/xblas/member.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

namespace orv::test::extended {

inline i64 index(i64 i, i64 n, i64 inc) { return inc < 0 ? (i - (n - 1)) * inc : i * inc; }

// n logical elements; the gaps are NaN.
struct Vector {
    i64 n, inc;
    Array data;

    Vector(char type, i64 n, i64 inc, Random& random, Edge edge = Edge::end)
        : n(n), inc(inc), data(type, n < 1 ? 0 : 1 + (n - 1) * std::abs(inc), edge)
    {
        for (i64 i = 0; i < n; ++i) data.fill(random, index(i, n, inc));
    }
    Element operator[](i64 i) const { return data[index(i, n, inc)]; }
};

inline Array scalar(char type, double re, double im)
{
    Array a(type, 1);
    a.set(0, re, im);
    return a;
}
// Pairs of alpha and beta through every case that a routine may tell apart.
inline std::vector<std::pair<Array, Array>> scalars(char type, Random& random)
{
    std::vector<std::pair<Array, Array>> all;
    const auto any = [&] { return scalar(type, random.value<double>() + 2, random.value<double>()); };
    for (const double alpha : {0.0, 1.0, 2.0})
        for (const double beta : {0.0, 1.0, 2.0})
            all.emplace_back(alpha == 2 ? any() : scalar(type, alpha, 0), beta == 2 ? any() : scalar(type, beta, 0));
    all.emplace_back(scalar(type, 0, 1), scalar(type, 1, 1)); // complex: neither 0 nor 1
    all.emplace_back(any(), scalar(type, -1, 0));
    return all;
}

inline bool equals(const Array& scalar, double value) { return scalar[0].re == value && scalar[0].im == 0; }

inline void store(const Ring& ring, Array& out, i64 i, Complex result)
{
    out.set(i, ring.close(result.re), ring.close(result.im));
}

// The line that repeats a problem: options become letters in the order of the call, Fortran's order is by columns.
inline std::string repeat(const Member& m, i64 prec, const std::map<std::string, i64>& values)
{
    std::string letters, type = m.name.substr(5);
    type.erase(1, m.op.size());
    std::set<std::string> options;
    const auto add = [&](const std::string& option, const char* meanings,
                         i64 first) { // meanings of first, first + 1, ...
        options.insert(option);
        if (const auto found = values.find(option); found != values.end())
            letters += found->second >= first && found->second < first + 3 ? meanings[found->second - first] : '?';
    };
    add("conj", "cn", conj);
    if (letters.empty() && m.op != "sum" && !m.op.ends_with("axpby")) letters = values.contains("order") ? "" : "c";
    add("order", "rc", row_major), add("side", "lr", left), add("uplo", "ul", upper);
    for (const char* name : {"trans", "transa", "transb"}) add(name, "ntc", no_trans);
    add("diag", "nu", non_unit);
    Line line("xblas_" + m.op, type, letters);
    for (const auto& [name, value] : values)
        if (!options.contains(name)) line.with(name == "ldt" ? "lda" : name, value);
    const char* const precisions[] = {"single", "double", "indigenous", "extra"};
    if (prec != 0) line.Problem::with("prec", std::string(precisions[prec - single]));
    return line.text(m.name);
}
inline std::string text(const Member& m, i64 prec, std::initializer_list<std::pair<const char*, i64>> values)
{
    return repeat(m, prec, {values.begin(), values.end()});
}

inline ::testing::AssertionResult same(const Array& computed, const Array& expected)
{
    if (computed.bits() == expected.bits()) return ::testing::AssertionSuccess();
    for (i64 i = 0; i < computed.length(); ++i) {
        const Element a = computed[i], b = expected[i];
        if (std::memcmp(&a, &b, sizeof a) != 0)
            return ::testing::AssertionFailure() << std::hexfloat << "element " << i << " is " << a.re << ' ' << a.im
                                                 << ", expected " << b.re << ' ' << b.im;
    }
    return ::testing::AssertionFailure();
}

// What reached the error routine, which this program exports in place of the library's.
struct Report {
    std::string routine;
    i64 code, value;
    std::string form;
    bool operator==(const Report&) const = default;
};
std::vector<Report>& reports();

inline void PrintTo(const Report& r, std::ostream* out)
{
    *out << r.routine << ' ' << r.code << ' ' << r.value << ' ' << r.form;
}

} // namespace orv::test::extended
