// The lists of prototypes, which kernels, core and tests take signatures from, against the lists of exported names.
#include "frame/kernels/blas.h"
#include "frame/kernels/lapack_ps.h"
#include "frame/kernels/trans.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

using Names = std::set<std::string>;

// What follows the tag in the names of abi/<module>.txt and <module>.probable.txt.
Names exported(const std::string& module)
{
    const std::string prefix = "orv_" + module + "_";
    Names names;
    for (const char* sort : {".txt", ".probable.txt"}) {
        std::ifstream list(ORV_ABI "/" + module + sort);
        for (std::string line; std::getline(list, line);)
            if (line.starts_with(prefix)) names.insert(line.substr(line.find('_', prefix.size()) + 1));
    }
    return names;
}

} // namespace

TEST(Prototypes, are_those_of_all_dense_kernels)
{
#define ORV_NAME(name, ...) kernels::blas::name::stem,
    using namespace orv;
    const Names names{
#include "frame/kernels/blas.def"
    };
    EXPECT_EQ(names, exported("blas"));
}
#undef ORV_NAME

TEST(Prototypes, are_those_of_all_kernels_for_lapack)
{
#define ORV_NAME(name, ...) kernels::lapack_ps::name::stem,
    using namespace orv;
    const Names names{
#include "frame/kernels/lapack_ps.def"
    };
    EXPECT_EQ(names, exported("lapack_ps"));
}
#undef ORV_NAME

TEST(Prototypes, are_those_of_all_copies_and_transpositions)
{
#define ORV_NAME(name, ...) kernels::trans::name::stem,
    using namespace orv;
    const Names names{
#include "frame/kernels/trans.def"
    };
    EXPECT_EQ(names, exported("trans"));
}
