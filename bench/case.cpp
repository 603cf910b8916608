#include "bench/case.h"

#include <cstdlib>

namespace orv::bench {

Case& Case::put(Argument::Kind kind, const void* value, std::size_t bytes)
{
    Argument a{kind};
    std::memcpy(a.value.data(), value, bytes);
    arguments.push_back(a);
    return *this;
}

Case& Case::numbers(std::initializer_list<double> list)
{
    Argument a{Argument::Kind::value};
    std::byte* to = a.value.data();
    for (const double number : list) {
        const float rounded = static_cast<float>(number);
        if (single()) std::memcpy(to, &rounded, 4);
        else std::memcpy(to, &number, 8);
        to += single() ? 4 : 8;
    }
    arguments.push_back(a);
    return *this;
}

Case& Case::renewed(i64 elements, Use use, double scale, std::vector<i64> ones)
{
    kept(elements);
    const int origin = static_cast<int>(operands.size()) - 1;
    operands.back().scale = scale;
    operands.back().ones = std::move(ones);
    operand(elements, use);
    operands.back().origin = origin;
    return *this;
}

// Operands follow each other, each on its own pages and half a page further in than the one before: addresses that
// nearly agree modulo 4096 would make loads of one wait for stores to the other.
Case& Case::operand(i64 elements, Use use)
{
    constexpr i64 page = 4096, stagger = 2112;
    Operand o{elements * reals(), use};
    if (!operands.empty()) {
        const Operand& last = operands.back();
        o.offset = round_up(last.offset + bytes(last), page) + stagger * static_cast<i64>(operands.size());
    }
    Argument a{Argument::Kind::operand};
    a.operand = static_cast<int>(operands.size());
    operands.push_back(o);
    arguments.push_back(a);
    return *this;
}

Case& Case::vector(i64 n, i64 inc, Use use) { return operand((n - 1) * std::abs(inc) + 1, use).integer(inc); }

Case& Case::matrix(i64 rows, i64 columns, Use use) { return operand(rows * columns, use).integer(rows); }

Case& Case::kept(i64 elements)
{
    operand(elements, Use::read);
    arguments.pop_back();
    return *this;
}

Case& Case::packed(i64 n, Use use) { return operand(n * (n + 1) / 2, use); }

std::vector<Case> all_cases()
{
    std::vector<Case> all;
    for (auto* family : {gemm_cases, matrix_matrix_cases, vector_cases, matrix_vector_cases, extended_cases,
                         transpose_cases, fft_cases, conv_cases, trig_cases, poisson_cases, sort_cases, sparse_cases,
                         sparse_pair_cases, factor_cases, rotation_cases, norm_cases}) {
        for (Case& c : family()) all.push_back(std::move(c));
    }
    return all;
}

} // namespace orv::bench
