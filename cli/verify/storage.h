// The arrays of a problem, before and after the call.
#pragma once

#include "cli/verify/setting.h"

#include <cstddef>
#include <string_view>

namespace orv::verify {

// n numbers of a kind (s d c z i), all bits set at first: NaN. What was there before the call is kept.
class Array {
public:
    // The first element stands shift reals behind a boundary of 64 bytes.
    Array(char kind, i64 n, i64 shift = 0);

    char kind() const { return kind_; }
    bool is_complex() const { return kind_ == 'c' || kind_ == 'z'; }
    i64 size() const { return n_; }
    void* data() { return now_.data() + start_; }

    Number operator()(i64 i, bool after) const;
    void set(i64 i, Number value);
    void set_whole(i64 i, i64 value);

    void remember() { before_ = now_; }
    void restore() { now_ = before_; }
    bool same_bits(const Array& other) const { return bytes() == other.bytes(); }
    // Position of an element that changed though it may not, n (or -1) for one behind (before) the array; -2: none.
    i64 touched(const std::vector<bool>& may_change) const;

private:
    std::string_view bytes() const
    {
        return {reinterpret_cast<const char*>(now_.data()) + start_, static_cast<std::size_t>(n_) * width_};
    }

    char kind_;
    i64 n_;
    std::size_t width_, start_;
    std::vector<std::byte> now_, before_;
};

// Names to arrays.
class Arrays {
public:
    // All that the plan sees and the routine is given, filled: where the plan reads before the call with random
    // numbers.
    Arrays(const Setting& setting, const Plan& plan, i64 seed, i64 shift);

    Array* find(const std::string& name);
    const Array& at(const std::string& name) const;
    void remember();
    void restore(); // what was remembered, at the same addresses

    auto begin() { return arrays_.begin(); } // pairs of a name and an array
    auto end() { return arrays_.end(); }
    auto begin() const { return arrays_.begin(); }
    auto end() const { return arrays_.end(); }

    // Throws nothing; a sentence about the first array that was written where it may not be, or none.
    std::string touched(const Plan& plan) const;

private:
    std::vector<std::pair<std::string, Array>> arrays_;
};

// An operand's elements: (i,j) of op(view).
class Elements {
public:
    Elements(const Operand& operand, const Arrays& arrays);
    bool complex() const
    {
        const View& v = operand_.view;
        return array_ ? operand_.op != 'a' && array_->is_complex() : v.turns != 0 && v.part == View::Part::whole;
    }
    i64 rows() const { return turned_ ? operand_.view.columns : operand_.view.rows; }
    i64 columns() const { return turned_ ? operand_.view.rows : operand_.view.columns; }
    Number operator()(i64 i, i64 j) const;

private:
    Number root(i64 i, i64 j) const;

    const Operand& operand_;
    const Array* array_; // none: ones or roots
    bool turned_;
    std::vector<Number> roots_; // one turn of them, where elements are roots
};

// body(operand) for all operands of a plan.
template <class Body> void for_each_operand(const Plan& plan, const Body& body)
{
    for (const Equation& e : plan.equations) {
        if (e.value) body(*e.value);
        for (const Term& t : e.terms) {
            body(t.left);
            if (t.right) body(*t.right);
        }
    }
}

} // namespace orv::verify
