// The Sparse BLAS as programs call it, from C and from Fortran, and matrices to build with it. Values are whole
// numbers, so results have no roundings.
#pragma once

#include "compat/include/blas_sparse.h"
#include "frame/types.h"
#include "tests/support/random.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace orv::test {

template <class T> inline constexpr char letter_of = '?';
template <> inline constexpr char letter_of<float> = 's';
template <> inline constexpr char letter_of<double> = 'd';
template <> inline constexpr char letter_of<cpx<float>> = 'c';
template <> inline constexpr char letter_of<cpx<double>> = 'z';

inline void* sparse_symbol(const std::string& name)
{
    void* address = dlsym(RTLD_DEFAULT, name.c_str());
    if (address == nullptr) throw std::runtime_error("no symbol " + name);
    return address;
}

// A routine of a type in the C interface: scalars by value, complex ones by address.
template <class T, class... A> int c_call(const std::string& routine, A... arguments)
{
    const auto as_passed = [](auto& argument) {
        using Argument = std::remove_reference_t<decltype(argument)>;
        if constexpr (std::is_same_v<Argument, T> && is_complex<T>) return static_cast<const void*>(&argument);
        else return argument;
    };
    using F = int(decltype(as_passed(arguments))...);
    return reinterpret_cast<F*>(sparse_symbol(std::string("BLAS_") + letter_of<T> + routine))(as_passed(arguments)...);
}
// The same in the Fortran interface: everything by address, the status behind.
template <class T, class... A> int fortran_call(const std::string& routine, A... arguments)
{
    const auto as_passed = [](auto& argument) {
        if constexpr (std::is_pointer_v<std::remove_reference_t<decltype(argument)>>) return argument;
        else return static_cast<const void*>(&argument);
    };
    int status = 77;
    using F = void(decltype(as_passed(arguments))..., int*);
    reinterpret_cast<F*>(sparse_symbol(std::string("blas_") + letter_of<T> + routine + "_"))(as_passed(arguments)...,
                                                                                             &status);
    return status;
}
struct Interface {
    bool fortran;
    template <class T, class... A> int call(const std::string& routine, A... arguments) const
    {
        return fortran ? fortran_call<T>(routine, arguments...) : c_call<T>(routine, arguments...);
    }
    // begin, block_begin, variable_block_begin: a handle
    template <class T, class... A> int begin(const std::string& routine, A... arguments) const
    {
        if (!fortran) return c_call<T>(routine, arguments...);
        int handle = 77;
        const int status = fortran_call<T>(routine, arguments..., &handle);
        EXPECT_EQ(status, handle == -1 ? -1 : 0);
        return handle;
    }
};
constexpr Interface interfaces[] = {{false}, {true}};

template <class Check> void each_type(const Check& check)
{
    for (const Interface& interface : interfaces) {
        check.template operator()<float>(interface);
        check.template operator()<double>(interface);
        check.template operator()<cpx<float>>(interface);
        check.template operator()<cpx<double>>(interface);
    }
}

template <class T> T whole_number(Random& random)
{
    const auto part = [&] { return static_cast<real_t<T>>(random.integer(-3, 3)); };
    if constexpr (is_complex<T>) {
        const auto re = part(), im = part();
        return {re, im};
    } else return part();
}
template <class T> std::vector<T> whole_numbers(i64 n, Random& random)
{
    std::vector<T> numbers;
    for (i64 i = 0; i < n; ++i) numbers.push_back(whole_number<T>(random));
    return numbers;
}

template <class T> struct Entry {
    int i, j;
    T value;
};

// What a structure makes of the entries that are inserted.
template <class T> class Meaning {
public:
    Meaning(int m, int n, int structure, bool unit)
        : m_(m), n_(n), structure_(structure), unit_(unit), a_(static_cast<std::size_t>(m * n))
    {
        for (int i = 0; unit && i < std::min(m, n); ++i) at(i, i) = one<T>;
    }
    bool takes(int i, int j) const
    {
        if (i == j) return !unit_;
        switch (structure_) {
        case blas_lower_triangular:
        case blas_lower_symmetric:
        case blas_lower_hermitian:
            return i > j;
        case blas_upper_triangular:
        case blas_upper_symmetric:
        case blas_upper_hermitian:
            return i < j;
        default:
            return true;
        }
    }
    void add(const Entry<T>& e)
    {
        at(e.i, e.j) += e.value;
        if (e.i == e.j) return;
        if (structure_ == blas_lower_symmetric || structure_ == blas_upper_symmetric) at(e.j, e.i) += e.value;
        if (structure_ == blas_lower_hermitian || structure_ == blas_upper_hermitian) at(e.j, e.i) += conj(e.value);
    }
    bool hermitian() const { return structure_ == blas_lower_hermitian || structure_ == blas_upper_hermitian; }
    // y := y + alpha*op(A)*x
    std::vector<T> multiply(int trans, T alpha, const std::vector<T>& x, std::vector<T> y) const
    {
        for (int i = 0; i < m_; ++i)
            for (int j = 0; j < n_; ++j) {
                const T a = trans == blas_conj_trans ? conj(at(i, j)) : at(i, j);
                if (trans == blas_no_trans) y[index(i)] += alpha * (a * x[index(j)]);
                else y[index(j)] += alpha * (a * x[index(i)]);
            }
        return y;
    }

private:
    static std::size_t index(int i) { return static_cast<std::size_t>(i); }
    T& at(int i, int j) { return a_[index(i * n_ + j)]; }
    T at(int i, int j) const { return a_[index(i * n_ + j)]; }

    int m_, n_, structure_;
    bool unit_;
    std::vector<T> a_;
};

// Elements apart by a stride, the first one last if it is negative.
template <class T> std::vector<T> spread(const std::vector<T>& x, int inc, T between)
{
    const int step = std::abs(inc), n = static_cast<int>(x.size());
    std::vector<T> all(n > 0 ? static_cast<std::size_t>((n - 1) * step + 1) : 0, between);
    for (int i = 0; i < n; ++i)
        all[static_cast<std::size_t>((inc < 0 ? n - 1 - i : i) * step)] = x[static_cast<std::size_t>(i)];
    return all;
}

constexpr int structures[] = {blas_general,         blas_lower_triangular, blas_upper_triangular, blas_lower_symmetric,
                              blas_upper_symmetric, blas_lower_hermitian,  blas_upper_hermitian};
constexpr int transpositions[] = {blas_no_trans, blas_trans, blas_conj_trans};

} // namespace orv::test
