// What drivers share that draw problems at random.
#pragma once

#include "core/team/eagerness.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>
#include <orv/threads.h>

namespace orv::test {

// Teams are formed for work of any size.
class Drawn : public testing::Test {
public:
    Drawn() { orv_team_set_eagerness(1e9); }
    ~Drawn() override { orv_team_set_eagerness(1), orv_set_thread_num_threads(0); }
};

// run(random, T{}) so many times for each type, up to the first failure.
template <class... T> void draw(int problems, std::uint64_t stream, auto run)
{
    const auto all = [&]<class U>(U type) {
        Random random(stream);
        for (int i = 0; i < problems && !testing::Test::HasFailure(); ++i) {
            run(random, type);
            if (testing::Test::HasFailure()) ADD_FAILURE() << "problem " << i;
        }
    };
    (all(T{}), ...);
}

} // namespace orv::test
