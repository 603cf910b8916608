// liborv_lapack and the reference, called alike.
#pragma once

#include "tests/compat/errors.h"
#include "tests/support/bounds.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cmath>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace orv::test {

// A library, and which of its two sets of names: dpotrf_, or dpotrf_64_ with 64-bit integers.
struct Library {
    void* handle;
    bool wide;
};
inline void* opened(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    return handle;
}
inline Library ours(bool wide = false)
{
    static void* const handle = opened(ORV_LAPACK);
    return {handle, wide};
}
inline Library theirs()
{
    static void* const handle = opened(REFERENCE_LAPACK);
    return {handle, false};
}

// An array of integers; numbers are passed by pointer.
using Integers = std::vector<i32>;

namespace detail {

// An argument of a routine with wide integers: those of the test go in and come back.
template <class P> struct Wide {
    const P* pointer;
    const void* get() const { return pointer; }
};
template <> struct Wide<i32> {
    const i32* pointer;
    i64 held = *pointer;
    ~Wide()
    {
        if (held != *pointer) *const_cast<i32*>(pointer) = static_cast<i32>(held);
    }
    const void* get() const { return &held; }
};
template <> struct Wide<Integers> {
    const Integers* pointer;
    std::vector<i64> held{pointer->begin(), pointer->end()};
    ~Wide() { std::copy(held.begin(), held.end(), const_cast<Integers*>(pointer)->begin()); }
    const void* get() const { return held.data(); }
};

inline const void* address(const void* pointer) { return pointer; }
inline const void* address(const Integers* array) { return array->data(); }

template <class> using Address = const void*;
using Length = std::size_t;

} // namespace detail

// Scalars by pointer, arrays as they are, Fortran's lengths of strings behind all.
template <class R, class... P> R call(Library library, const std::string& name, const P*... arguments)
{
    void* const found = dlsym(library.handle, (name + (library.wide ? "64_" : "")).c_str());
    if (found == nullptr) throw std::runtime_error("no symbol " + name);
    using detail::Length;
    auto* const routine = reinterpret_cast<R (*)(detail::Address<P>..., Length, Length, Length)>(found);
    if (library.wide) return routine(detail::Wide<P>{arguments}.get()..., 1, 1, 1);
    return routine(detail::address(arguments)..., 1, 1, 1);
}

template <class T> std::string named(const char* name) { return letter<T> + std::string(name) + '_'; }

template <class T> std::vector<T> random_values(i64 n, int stream)
{
    Random random(stream);
    std::vector<T> values(n);
    random.fill(values);
    return values;
}
template <class T> long double size_of(T a)
{
    if constexpr (is_complex<T>) return std::hypot((long double)a.re, (long double)a.im);
    else return std::fabs((long double)a);
}

// Two vectors that came by different orders of the same `terms` operations on data without cancellation, or by backward
// stable methods on a problem with a condition number below 4: each is off by at most gamma(terms) of the largest.
template <class T>
void expect_close(const std::vector<T>& mine, const std::vector<T>& other, i64 terms, const std::string& what)
{
    long double largest = 0, off = 0;
    ASSERT_EQ(mine.size(), other.size());
    for (std::size_t i = 0; i < mine.size(); ++i) {
        largest = std::max(largest, size_of(other[i]));
        const long double difference = size_of(mine[i] - other[i]);
        off = difference <= off ? off : difference; // NaN stays
    }
    EXPECT_LE(off, 8 * gamma_n<T>(terms + 4) * largest) << what;
}

// Runs body(library, result) on both, ours by both sets of names, and compares what it leaves in the result.
template <class T>
void expect_same(i64 terms, const std::string& what, const std::function<void(Library, std::vector<T>&)>& body,
                 bool both_widths = true)
{
    std::vector<T> mine, wide, other;
    body(ours(), mine), body(theirs(), other);
    expect_close(mine, other, terms, what);
    if (both_widths) {
        body(ours(true), wide);
        expect_close(wide, other, terms, what + " with 64-bit integers");
    }
    EXPECT_TRUE(take_reports().empty()) << what;
}

class Lapack : public testing::Test {
    void SetUp() override
    {
        if (access(REFERENCE_LAPACK, R_OK) != 0) GTEST_SKIP() << "the reference LAPACK is not installed";
    }
};

} // namespace orv::test
