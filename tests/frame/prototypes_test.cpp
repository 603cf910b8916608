// The prototypes, which kernels, core and tests take signatures from, against the lists of names.
#include "frame/kernels/blas.h"
#include "tests/support/kernels.h"

#include <algorithm>
#include <fnmatch.h>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orv::test {
namespace {

std::vector<std::string> lines(const std::string& list)
{
    std::ifstream file(ORV_ABI "/" + list + ".txt");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

using Names = std::set<std::string>;

// The names of abi/<module>.txt and <module>.probable.txt behind the tag: all that there may be, and those of the first
// list that match a line of abi/started.txt, which must be there unless they are data.
struct Listed {
    Names all, started;

    explicit Listed(const std::string& module)
    {
        const std::vector<std::string> patterns = lines("started"), data = lines("data");
        const auto is_one_of = [](const std::vector<std::string>& patterns, const std::string& name) {
            return std::ranges::any_of(patterns,
                                       [&](const std::string& p) { return fnmatch(p.c_str(), name.c_str(), 0) == 0; });
        };
        const std::string prefix = "orv_" + module + "_";
        for (const std::string sort : {"", ".probable"})
            for (const std::string& name : lines(module + sort)) {
                if (!name.starts_with(prefix)) continue;
                const std::string stem = name.substr(name.find('_', prefix.size()) + 1);
                all.insert(stem);
                if (sort.empty() && is_one_of(patterns, name) && !is_one_of(data, name)) started.insert(stem);
            }
    }
};

Names without(Names names, const Names& others)
{
    std::erase_if(names, [&](const std::string& name) { return others.contains(name); });
    return names;
}

} // namespace

TEST(Prototypes, are_those_of_all_kernels)
{
    std::map<std::string, Names> names;
    for (const Prototype& p : prototypes()) names[p.module].insert(p.stem);
    for (const auto& [module, of_prototypes] : names) {
        const Listed listed(module);
        EXPECT_EQ(without(of_prototypes, listed.all), Names()) << module;
        EXPECT_EQ(without(listed.started, of_prototypes), Names()) << module;
    }
    EXPECT_EQ(names.size(), 9U);
}

TEST(Prototypes, are_what_tests_call_kernels_by)
{
    EXPECT_NO_THROW(kernel<kernels::blas::Axpy<double>>("blas", "xdaxpy"));
    EXPECT_THROW(kernel<kernels::blas::Axpy<float>>("blas", "xdaxpy"), std::runtime_error);
}

} // namespace orv::test
