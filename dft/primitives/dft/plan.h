// How a length is transformed, and what that takes: decided and counted here alone, for the queries of sizes, for Init
// and for what Init builds.
#pragma once

#include "dft/primitives/dft/any_radix.h"
#include "dft/primitives/dft/kernels.h"

namespace orv::dft::general {

using Kind = YmpDftSpec::Kind;

inline constexpr i64 boundary = 64; // of records, tables and work areas
constexpr i64 whole_boundaries(i64 bytes) { return round_up(bytes, boundary); }
template <class T> ORV_INLINE T* on_boundary(T* p)
{
    auto address = reinterpret_cast<std::uintptr_t>(p);
    return reinterpret_cast<T*>((address + (boundary - 1)) & ~std::uintptr_t{boundary - 1});
}

enum class Method { fixed, power_of_two, factors, direct, convolution, refused };
enum class Elements { complex, real };

// A real transform of an even length is a complex one of half the length, whose results are recombined.
struct Plan {
    Method method;
    Elements elements; // of the transform of so many points
    i32 points;
    bool halved;
    i32 last; // factor
    i32 convolution;
    DftFactor factors[YmpDftSpec::most_factors]; // without their tables
};

inline constexpr i32 longest_length = (1 << 26) - 1; // but for powers of two

// Elements that stages work on until all of them are done: they stay in the nearest cache.
inline constexpr i64 working_set = 500;

// The way for n points, n > 0. Out of order, factors stay as they are found.
Plan plan(i32 n, Elements elements, bool out_of_order);

// What a kind of record means.
constexpr bool is_real(i32 id) { return id == Kind::R_32f || id == Kind::R_64f; }
constexpr bool is_out_of_order(i32 id) { return id == Kind::OutOrd_32fc || id == Kind::OutOrd_64fc; }
inline Plan plan_of(const YmpDftSpec& spec)
{
    return plan(spec.length, is_real(spec.id) ? Elements::real : Elements::complex, is_out_of_order(spec.id));
}

// Radixes that have a body.
constexpr bool has_prime(i64 r, Elements elements)
{
    if (elements == Elements::real) return r == 3 || r == 5 || r == 7 || r == 11 || r == 13;
    return (r > 1 && r < 9) || r == 11 || r == 13 || r == 16;
}
constexpr bool has_fact(i64 r, Elements elements) // 6 out of order alone
{
    return has_prime(r, elements) && r != 8 && r != 16;
}

// Neighbours of the same radix have one table of it.
constexpr bool shares_table(const Plan& p, i32 k) { return k > 0 && p.factors[k].radix == p.factors[k - 1].radix; }
// Whether factor k has a table of its own.
constexpr bool owns_table(const Plan& p, i32 k)
{
    const i32 radix = p.factors[k].radix;
    return !(k == p.last ? has_prime(radix, p.elements) : has_fact(radix, p.elements)) && !shares_table(p, k);
}

// Columns of a stage that are turned: of real transforms column 0 is not, and half of the others are conjugates.
constexpr i64 first_turned(Elements elements) { return elements == Elements::real ? 1 : 0; }
constexpr i64 end_of_turned(i64 count, Elements elements)
{
    return elements == Elements::real ? (count + 1) / 2 : count;
}

// Bytes of tables, in elements of R.
template <class R> constexpr i64 bytes_of_twiddles(const DftFactor& f, Elements elements)
{
    constexpr i64 lanes = pairs<R>::lanes;
    const i64 columns = end_of_turned(f.count, elements) - first_turned(elements);
    return round_up(columns, lanes) / lanes * (f.radix - 1) * registers_of_twiddle * vector_bytes;
}
constexpr i64 bytes_of_permutation(const Plan& p) { return p.factors[p.last].stride * i64{sizeof(i32)}; }
template <class R> constexpr i64 bytes_of_base(i64 n) { return n * i64{sizeof(cpx<R>)}; }
template <class R> constexpr i64 bytes_of_recombination(i64 points) { return (points / 2 + 1) * i64{sizeof(cpx<R>)}; }

// Areas at the head of a buffer; what else a transform works in comes behind. The result of factors, where it cannot
// grow in its own place; what is convolved; and the half of a real spectrum that is transformed.
template <class R> constexpr i64 area_of_result(i64 points) { return whole_boundaries(bytes_of_base<R>(points)); }
template <class R> constexpr i64 area_of_convolution(i64 length) { return whole_boundaries(bytes_of_base<R>(length)); }
template <class R> constexpr i64 area_of_half(i64 points) { return whole_boundaries(bytes_of_base<R>(points)); }

} // namespace orv::dft::general
