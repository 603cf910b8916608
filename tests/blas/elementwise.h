// Kernels that compute each element alone are held bit for bit to the same operation in scalar code, on every path.
#pragma once

#include "tests/support/kernels.h"
#include "tests/support/vectors.h"

#include <gtest/gtest.h>

namespace orv::test {

// A kernel on two vectors, as called, and what it does to element i of each.
template <class T> struct PairKernel {
    const char* name;
    void (*call)(i64 n, T* x, i64 incx, T* y, i64 incy);
    void (*element)(T& x, T& y);
};

template <class T> void expect_pair(const PairKernel<T>& kernel, i64 n, i64 incx, i64 incy, Place px, Place py)
{
    SCOPED_TRACE(problem(kernel.name, letter<T>, n, incx, incy, px, py));
    Random random(static_cast<std::uint64_t>(n + 1000 * incx + 100000 * incy));
    Strided<T> x(n, incx, px), y(n, incy, py);
    x.fill(random), y.fill(random);
    Strided<T> expected_x(x, {}), expected_y(y, {});
    for (i64 i = 0; i < n; ++i) kernel.element(expected_x(i), expected_y(i));

    kernel.call(n, x.data(), incx, y.data(), incy);
    ASSERT_EQ(x.bits(), expected_x.bits());
    ASSERT_EQ(y.bits(), expected_y.bits());
}

inline constexpr i64 strides[] = {1, -1, 2, -3, 0};

// All strides at all lengths, unit strides at every alignment of both vectors, and long vectors.
template <class T> void expect_pairs(const PairKernel<T>& kernel)
{
    for (const i64 n : vector_lengths()) {
        for (const i64 incx : strides)
            for (const i64 incy : strides) expect_pair(kernel, n, incx, incy, {}, {});
        if (testing::Test::HasFailure()) return;
    }
    for (const i64 n : {1, 2, 3, 7, 17, 30, 67, 133, 200})
        for (const Place& px : places<T>())
            for (const Place& py : places<T>()) expect_pair(kernel, n, 1, 1, px, py);
    for (const i64 n : long_lengths<T>()) {
        for (const std::size_t shift : {0, 4, 8, 12}) {
            if (shift % sizeof(real_t<T>) != 0) continue;
            expect_pair(kernel, n, 1, 1, {Edge::start, shift}, {});
            expect_pair(kernel, n, -1, -1, {}, {Edge::start, shift});
        }
        expect_pair(kernel, n, 2, -3, {}, {});
    }
}

} // namespace orv::test
