// A grid of names as a family of kernels has it: one list makes functions for both widths of integers.
#include "frame/export.h"
#include "frame/grid.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>

namespace {
using namespace orv;

// The list: every name is <type><base><operation>, and the parameters of an operation stand here once.
#define EACH_TYPE(M, ...) M(s, __VA_ARGS__) M(d, __VA_ARGS__) M(c, __VA_ARGS__) M(z, __VA_ARGS__)
#define EACH_BASE(t, M, ...) M(t, 0, __VA_ARGS__) M(t, 1, __VA_ARGS__)
#define EACH_MEMBER(M, operation, module) EACH_TYPE(EACH_BASE, M, operation, module)
#define PARAMETERS_at(T, Int) const Int *index, const T *x, T *y
#define PARAMETERS_count(T, Int) const Int *first, const Int *last, const Int *pointers, const T *x, T *y

// What the tokens mean.
using type_s = float;
using type_d = double;
using type_c = cpx<float>;
using type_z = cpx<double>;
using integer_wide = i64;
using integer_narrow = i32;

// The bodies, with the options of the name.
template <class T, class Int, int base> void at(const Int* index, const T* x, T* y) { *y = x[*index - base]; }
template <class T, class Int, int base>
void count(const Int* first, const Int* last, const Int* pointers, const T* x, T* y)
{
    for (Int i = *first; i <= *last; ++i) *y += x[pointers[i] - base];
}

// What a reader of the list makes of a member.
#define MEMBER(t, base, operation, module)                                                                             \
    constexpr auto& body_##module##_##t##base##operation = operation<type_##t, integer_##module, base>;                \
    ORV_EXPORT void toy_##module##_##t##base##operation(                                                               \
        ORV_PARAMETERS(ORV_COUNT(PARAMETERS_##operation(, )), value_argument, body_##module##_##t##base##operation))   \
    {                                                                                                                  \
        body_##module##_##t##base##operation(ORV_NAMES(ORV_COUNT(PARAMETERS_##operation(, ))));                        \
    }
EACH_MEMBER(MEMBER, at, wide)
EACH_MEMBER(MEMBER, at, narrow)
EACH_MEMBER(MEMBER, count, wide)
EACH_MEMBER(MEMBER, count, narrow)

// A function by the letters of its name, called with what they promise.
template <class T, class Int> void expect_computes(const std::string& module, char type, int base)
{
    const auto find = [&](const char* operation) {
        const std::string name = "toy_" + module + "_" + type + std::to_string(base) + operation;
        void* found = dlsym(RTLD_DEFAULT, name.c_str());
        EXPECT_NE(found, nullptr) << name;
        return found;
    };
    const T x[] = {one<T>, one<T> + one<T>, one<T> + one<T> + one<T>};
    // What lies between narrow integers tells when a wide one is read.
    const Int index[] = {Int(base + 1), -1}, first[] = {0, -1}, last[] = {1, -1},
              pointers[] = {Int(base), Int(base + 2)};
    T y{};
    if (auto* at = reinterpret_cast<void (*)(const Int*, const T*, T*)>(find("at"))) at(index, x, &y);
    EXPECT_EQ(y, x[1]) << module << type << base;
    using Count = void(const Int*, const Int*, const Int*, const T*, T*);
    y = {};
    if (auto* count = reinterpret_cast<Count*>(find("count"))) count(first, last, pointers, x, &y);
    EXPECT_EQ(y, x[0] + x[2]) << module << type << base;
}
template <class Int> void expect_all_compute(const std::string& module)
{
    for (const int base : {0, 1}) {
        expect_computes<float, Int>(module, 's', base);
        expect_computes<double, Int>(module, 'd', base);
        expect_computes<cpx<float>, Int>(module, 'c', base);
        expect_computes<cpx<double>, Int>(module, 'z', base);
    }
}

} // namespace

TEST(Grid, makes_functions_that_do_what_their_names_say_for_both_widths)
{
    expect_all_compute<i64>("wide");
    expect_all_compute<i32>("narrow");
}

TEST(Grid, counts_parameters)
{
    EXPECT_EQ(ORV_COUNT(int a), 1);
    EXPECT_EQ(ORV_COUNT(PARAMETERS_count(, )), 5);
    EXPECT_EQ(ORV_COUNT_REST(PARAMETERS_count(, )), 4);
    EXPECT_EQ(ORV_COUNT(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16), 16);
}
