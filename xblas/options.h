// Options by their numbers, and the report of bad arguments.
#pragma once

#include "frame/symbol.h"
#include "frame/types.h"

#include <type_traits>

// One line a module: XBLAS(BLAS_ddot_x) is the symbol of a routine.
#define XBLAS(name) ORV_KERNEL(xblas, name)

// Tells of a bad argument: the routine's name, the argument's position negated, its value. The one here says nothing;
// a program that exports its own is called in its place.
ORV_EXPORT void XBLAS(BLAS_error)(const char* routine, orv::i64 code, orv::i64 value, const char* form, ...);

namespace orv::xblas {

// Callers may pass any number.
enum class Order : i32 { row_major = 101, column_major = 102 };
enum class Trans : i32 { none = 111, transpose = 112, conjugate = 113, conjugate_only = 191 };
enum class Uplo : i32 { upper = 121, lower = 122 };
enum class Diag : i32 { non_unit = 131, unit = 132 };
enum class Side : i32 { left = 141, right = 142 };
enum class Conj : i32 { conjugate = 191, none = 192 };
enum class Prec : i32 { single = 211, double_ = 212, indigenous = 213, extra = 214 };

constexpr bool known(Order o) { return o == Order::row_major || o == Order::column_major; }
constexpr bool known(Uplo u) { return u == Uplo::upper || u == Uplo::lower; }
constexpr bool known(Diag d) { return d == Diag::non_unit || d == Diag::unit; }
constexpr bool known(Trans t) { return t == Trans::none || t == Trans::transpose || t == Trans::conjugate; }
constexpr bool known(Prec p) { return p >= Prec::single && p <= Prec::extra; }

constexpr bool is_transposed(Trans t) { return t != Trans::none; }
constexpr double sign(bool conjugated) { return conjugated ? -1 : 1; }
constexpr double sign(Trans t) { return sign(t == Trans::conjugate); }

// A routine by the name that it reports under; has_prec: the caller chooses the arithmetic.
struct Routine {
    const char* name;
    bool has_prec = true;

    void report(i64 code, i64 value, const char* form = nullptr) const { XBLAS(BLAS_error)(name, code, value, form); }
    // Reports the argument at this position; true, for `return routine.bad(...)` in a check.
    bool bad(i64 position, i64 value) const { return report(-position, value), true; }
    template <class Option>
    requires std::is_enum_v<Option>
    bool bad(i64 position, Option value) const { return bad(position, static_cast<i64>(value)); }
};

} // namespace orv::xblas
