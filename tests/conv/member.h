// The kernels of the grid as their names say: read by a parser of its own, out of the list that abi/ holds.
#pragma once

#include "frame/kernels/conv.h"
#include "tests/support/kernels.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace orv::test::convolution {

using namespace orv::kernels::conv;

struct Member {
    std::string name, pair;
    bool direct, line, correlates, decimated;
};

inline std::vector<Member> members()
{
    std::vector<Member> all;
    std::ifstream list(ORV_ABI "/conv.txt");
    for (std::string line; std::getline(list, line);) {
        if (line.find("_conv_") == line.rfind("_conv_") && line.find("_corr_") == std::string::npos) continue;
        const std::string name = line.substr(line.find('_', std::string("orv_conv_").size()) + 1);
        const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
        all.push_back({name, name.substr(0, 2), has("direct"), has("_1d_"), has("_corr_"), has("_de")});
    }
    return all;
}

template <class Data_, class Sum_> struct Types {
    using Data = Data_;
    using Sum = Sum_;
};

// visit(Types of the pair's letters)
template <class Visit> void with_types(const std::string& pair, Visit visit)
{
    if (pair == "ss") visit(Types<float, float>());
    else if (pair == "sd") visit(Types<float, double>());
    else if (pair == "dd") visit(Types<double, double>());
    else if (pair == "cc") visit(Types<cpx<float>, cpx<float>>());
    else if (pair == "cz") visit(Types<cpx<float>, cpx<double>>());
    else if (pair == "zz") visit(Types<cpx<double>, cpx<double>>());
    else throw std::runtime_error("no pair: " + pair);
}

} // namespace orv::test::convolution
