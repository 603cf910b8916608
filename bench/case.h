// A case is one call worth timing: a routine's name with its arguments, the work it does, and how far two correct
// answers may lie apart. Operands stand in memory that all competitors share; everything else is in the record.
#pragma once

#include "frame/types.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace orv::bench {

// spent: left behind in a state of its own, which is not compared.
enum class Use { read, written, updated, spent };
enum class Result { none, single_real, double_real, single_complex, double_complex, index };

// What the axis of a plot ends at: multiplies and adds from registers; the operands moved and nothing computed; of a
// matrix as much moved as the work says; a matrix that libraries keep for themselves, the first operand, read and two
// vectors moved; one division and one dependent addition for each number, in order; one
// dependent addition for each pair of numbers, in order; a conversion, a product and a sum for two numbers; or unknown.
enum class Limit { none, arithmetic, movement, matrix, kept, ordered_norm, ordered_dot, widened_norm };

struct Operand {
    i64 reals; // numbers of the case's precision, complex ones being two
    Use use;
    i64 offset = 0;          // bytes from the start of the shared memory
    double scale = 1;        // numbers lie between -scale and scale
    std::vector<i64> ones{}; // but these elements are 1
    int origin = -1;         // the operand that it is copied from before each call, if any
    bool compared() const { return use == Use::written || use == Use::updated; }
};

// Everything passes by pointer: to an operand, or to a value kept here. Integers are stored in 64 bits, of which a
// little-endian callee with 32-bit integers reads its half.
struct Argument {
    enum class Kind { operand, letter, value } kind;
    int operand = 0;
    alignas(16) std::array<std::byte, 40> value{};
};

// A call of one routine with some of a case's arguments.
struct Step {
    std::string routine;
    std::vector<int> arguments;
};

struct Case {
    std::string kernel, variant; // "dgemm", "NN beta=1"
    i64 size;                    // the abscissa of a plot
    char type;                   // s d c z
    bool quick = true;           // part of the short run
    int threads = 1;
    bool overhead = false; // compares the standard interface with the kernel under it
    std::vector<Operand> operands{};
    std::vector<Argument> arguments{};
    Result result = Result::none;
    // Where one call is not all, or kernels have names of their own. Empty: `kernel` with all arguments.
    std::vector<Step> standard_steps{}, kernel_steps{};
    double work = 0; // of one call, in units
    std::string unit{};
    Limit limit = Limit::none;
    double roundings = 8, magnitude = 4; // results may differ by eps * roundings * magnitude

    bool single() const { return type == 's' || type == 'c'; }
    int reals() const { return type == 'c' || type == 'z' ? 2 : 1; }
    i64 bytes(const Operand& o) const { return o.reals * (single() ? 4 : 8); }
    std::string name() const { return kernel + " " + variant + " " + std::to_string(size); }

    // Arguments, in the routine's order.
    Case& letter(char c) { return put(Argument::Kind::letter, &c, 1); }
    Case& integer(i64 n) { return put(Argument::Kind::value, &n, sizeof n); }
    Case& numbers(std::initializer_list<double> list); // reals of the case's precision
    Case& scalar(double re, double im) { return reals() == 1 ? numbers({re}) : numbers({re, im}); }
    Case& vector(i64 n, i64 inc, Use use);
    Case& matrix(i64 rows, i64 columns, Use use);
    Case& operand(i64 elements, Use use); // with no stride behind it
    Case& packed(i64 n, Use use);         // a triangle
    Case& kept(i64 elements);             // what each library keeps for itself; no argument
    // An operand that is a fresh copy of another before each call, the time of which counts for all libraries: for
    // routines that cannot be repeated on what they leave. Numbers lie between -scale and scale but for the ones.
    Case& renewed(i64 elements, Use use, double scale, std::vector<i64> ones);

private:
    Case& put(Argument::Kind kind, const void* value, std::size_t bytes);
};

// The tables of cases; a new family adds its function here and to all_cases().
std::vector<Case> gemm_cases();
std::vector<Case> matrix_matrix_cases();
std::vector<Case> vector_cases();
std::vector<Case> extended_cases();
std::vector<Case> matrix_vector_cases();
std::vector<Case> transpose_cases();
std::vector<Case> fft_cases();
std::vector<Case> conv_cases();
std::vector<Case> trig_cases();
std::vector<Case> sort_cases();
std::vector<Case> poisson_cases();
std::vector<Case> sparse_cases();
std::vector<Case> sparse_pair_cases();
std::vector<Case> factor_cases();
std::vector<Case> rotation_cases();
std::vector<Case> norm_cases();
std::vector<Case> all_cases();

} // namespace orv::bench
