#include "core/branch/branches.h"
#include "tests/support/kernels.h"

#include <gtest/gtest.h>
#include <map>
#include <orv/branch.h>

TEST(Branch, tells_its_processor_class)
{
#define ENTRY(tag, code, needs) {#tag, code},
    const std::map<std::string, int> codes{ORV_EACH_BRANCH(ENTRY)};
    EXPECT_EQ(reinterpret_cast<int (*)()>(orv::test::branch_symbol("dll_cpu_version"))(), codes.at(orv_branch_name()));
}
