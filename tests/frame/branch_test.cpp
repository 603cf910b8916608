#include "tests/support/kernels.h"

#include <gtest/gtest.h>

TEST(Branch, tells_its_processor_class) { EXPECT_EQ(orv::test::kernel<int()>("dll_cpu_version")(), 3); }
