// The letters of a sparse kernel's name, read from the lists of names alone: a test of a grid must not trust the grid.
#pragma once

#include "frame/types.h"

#include <fstream>
#include <regex>
#include <string>
#include <type_traits>
#include <vector>

namespace orv::test {

struct SparseName {
    std::string text; // without module and tag
    char type, op, kind, triangle, diagonal, layout;
    std::string format, form, run;
    int base;

    bool transposes() const { return op == 't' || op == 'c'; }
    bool conjugates() const { return op == 's' || op == 'c'; }
    bool unit() const { return diagonal == 'u'; }
    bool by_rows() const { return layout == 'c'; }
    bool keeps(i64 i, i64 j) const // whether an entry counts as it is stored
    {
        if (i == j) return kind != 'a' && !unit();
        return kind != 'd' && (triangle == '_' || (triangle == 'l') == (i > j));
    }
};

// The grid names of a format and a form, of one module's lists.
inline std::vector<SparseName> sparse_names(const std::string& format, const std::string& form)
{
    static const std::regex grammar("orv_spblas_mc3_(([sdcz])(csr|coo|dia|bsr)([01])([ntcs])([gshatd])([lu_])([nu_])"
                                    "([cf])__(mv|mm|sv|sm|gemv)out_(par|seq))");
    std::vector<SparseName> names;
    for (const char* sort : {"", ".probable"}) {
        std::ifstream list(std::string(ORV_ABI "/spblas") + sort + ".txt");
        for (std::string line; std::getline(list, line);) {
            std::smatch part;
            if (!std::regex_match(line, part, grammar) || part[3] != format || part[10] != form) continue;
            const auto letter = [&](int i) { return part[i].str()[0]; };
            names.push_back({part[1], letter(2), letter(5), letter(6), letter(7), letter(8), letter(9), part[3],
                             part[10], part[11], letter(4) - '0'});
        }
    }
    return names;
}

// The same kernel for indices from 1, of one for indices from 0.
inline SparseName from_one(SparseName name)
{
    name.text[name.text.find(name.format + '0') + 3] = '1', name.text[name.text.find("c__")] = 'f';
    name.base = 1, name.layout = 'f';
    return name;
}

template <class Int> inline constexpr const char* module_of = std::is_same_v<Int, i64> ? "spblas" : "spblas_lp64";

// visit.operator()<T, Int>() for the type of a name and both widths of integers.
template <class Visitor> void each_width(char type, const Visitor& visit)
{
    const auto both = [&]<class T> {
        visit.template operator()<T, i64>();
        visit.template operator()<T, i32>();
    };
    switch (type) {
    case 's':
        return both.template operator()<float>();
    case 'd':
        return both.template operator()<double>();
    case 'c':
        return both.template operator()<cpx<float>>();
    default:
        return both.template operator()<cpx<double>>();
    }
}

} // namespace orv::test
