// What a routine computes on several threads, and whether it woke them.
#pragma once

#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cstring>
#include <gtest/gtest.h>
#include <orv/threads.h>
#include <string>
#include <vector>

namespace orv::test {

extern int teams; // parallel regions that were opened

// What call(elements) leaves of `start`, on so many threads; `shared`: with a team, if it may have one.
template <class T, class Call>
std::vector<T> on_threads(int threads, bool shared, const std::vector<T>& start, Call call)
{
    EXPECT_EQ(orv_set_thread_num_threads(threads), ORV_OK);
    auto result = start;
    teams = 0;
    EXPECT_EQ(call(result.data()), ORV_OK);
    EXPECT_EQ(teams, shared && threads > 1 ? 1 : 0) << threads << " threads";
    orv_set_thread_num_threads(0);
    return result;
}

template <class T> bool same_bits(const std::vector<T>& x, const std::vector<T>& y)
{
    return std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0;
}

// The same on `least` threads and on up to `more` above them; returns it.
template <class T, class Call>
std::vector<T> expect_same_bits(const std::string& text, const std::vector<T>& start, bool shared, Call call,
                                int least = 1, int more = 2)
{
    SCOPED_TRACE(text + " " + letter<T>);
    const auto first = on_threads(least, shared, start, call);
    EXPECT_FALSE(same_bits(first, start)) << "nothing was computed";
    for (int threads = least + 1; threads <= least + more; ++threads)
        EXPECT_TRUE(same_bits(on_threads(threads, shared, start, call), first)) << threads << " threads";
    return first;
}

} // namespace orv::test
