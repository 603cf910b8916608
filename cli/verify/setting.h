// A problem with everything decided: letters checked, values read, what was left out filled in.
#pragma once

#include "cli/verify/family.h"

#include <map>

namespace orv::verify {

struct Argument {
    std::string name, letters; // letters that it takes
    char kind;                 // as of Routine
};
std::vector<Argument> arguments_of(const Family& family, const Routine& routine);

class Setting {
public:
    // Throws Mistake, like all that follows. by_rows: of a routine without a letter for it, as CBLAS has it.
    Setting(const Family& family, const Routine& routine, const Problem& problem, bool by_rows = false);

    const std::vector<Argument>& arguments() const { return arguments_; }
    const Routine& routine() const { return routine_; }
    bool has(const std::string& name) const { return kind_of(name) != 0; }
    char kind_of(const std::string& name) const; // 0: there is no such argument

    char letter(const std::string& name) const; // in lower case; '?' if there is no such argument
    char given_letter(const std::string& name) const { return letters_.at(name); }
    bool is_complex(const std::string& name) const { return kind_of(name) == 'c' || kind_of(name) == 'z'; }

    // Whole numbers: a dimension, a leading dimension, a stride (0 only if said), any other that need not be an
    // argument. A leading dimension that is too small is a problem of its own: the routine has to refuse it.
    i64 size(const std::string& name, i64 otherwise = 5);
    i64 leading(const std::string& name, i64 least);
    i64 stride(const std::string& name, bool zero = false);
    i64 extra(const std::string& name, i64 otherwise, i64 least, i64 most);

    // As the argument holds it, rounded to its type; 1 if there is no such argument.
    Number scalar(const std::string& name);
    // What is to be refused and why, or empty; the argument's number, counted from 1.
    const std::string& refusal() const { return refusal_; }
    int refused() const { return refused_; }
    // Kind of the numbers that are computed with, where an argument decides it; else 0.
    char work();

    // The extended precision routines read a result that a beta of 0 multiplies; their bands have no more diagonals
    // than the matrix.
    bool extended() const { return std::string(family_.name).starts_with("xblas_"); }
    i64 diagonals(i64 order) const; // at most, beside the main one

    // Views of arguments. Matrices stand by columns unless a letter order or ordering says rows.
    View vector(const std::string& name, i64 n, const std::string& stride, bool zero = false);
    View matrix(const std::string& name, const std::string& leading, i64 rows, i64 columns, i64 gap = 1);
    // op of it is rows by columns.
    View matrix_for(char op, const std::string& name, const std::string& leading, i64 rows, i64 columns);
    View band(const std::string& name, i64 rows, i64 columns, i64 below, i64 above);
    // One triangle of order n as the letter uplo says, in the storage that the arguments tell: of k diagonals, with a
    // leading dimension, or packed.
    View triangle(const std::string& name, i64 n, View::Rest rest);
    View triangular(const std::string& name, i64 n); // diag and all
    View element(const std::string& name, i64 position = 0) const;

    // The problem as it was decided, all values given. Throws if the line had a value that nothing asked for.
    Problem resolved() const;

private:
    i64 whole(const std::string& name, i64 otherwise, i64 least, i64 most, const std::string& expected);
    const std::string* given(const std::string& name) const { return problem_.find(name); }
    std::string what(const std::string& name) const { return std::string(family_.name) + ": " + name + "= wants "; }
    bool by_rows() const { return by_rows_ || letter("order") == 'r' || letter("ordering") == 'r'; }

    const Family& family_;
    const Routine& routine_;
    const Problem& problem_;
    bool by_rows_;
    std::vector<Argument> arguments_;
    std::map<std::string, char> letters_;
    std::map<std::string, std::string> values_; // decided
    std::vector<std::string> asked_;            // their names, in order
    std::string refusal_;
    int refused_ = 0;
};

// The operand that a letter makes of a view, and the result of a call.
inline Operand op(const View& view, char letter = 'n') { return {view, letter, false}; }
inline Operand after(const View& view) { return {view, 'n', true}; }
// rows by columns of ones.
inline Operand ones(i64 rows, i64 columns = 1) { return {{"", rows, columns}}; }

} // namespace orv::verify
