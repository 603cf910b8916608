// The walk over arrays whose elements do not meet: single elements up to a 16-byte boundary of dst, whole registers,
// and the last few elements alone. Four compiled bodies differ in whether the sources stand on boundaries by then. An
// operation has two forms, for elements and for registers, that agree in every bit.
#pragma once

#include "dft/primitives/members.h"
#include "frame/simd_int.h"

namespace orv::dft {

template <class T> inline constexpr bool is_floating = std::is_floating_point_v<real_t<T>>;
template <class T> inline constexpr int bits_of = 8 * sizeof(real_t<T>);

// Elements that registers exist for; others go one by one.
template <class T> inline constexpr bool has_registers = is_floating<T> || bits_of<T> == 16;

template <bool aligned, class T> ORV_INLINE auto load_register(const T* p)
{
    if constexpr (!is_floating<T>) return load_words<aligned>(p);
    else if constexpr (aligned) return load(p);
    else return loadu(p);
}

// Operands: an array, or the same value everywhere.
template <class T> struct Array {
    const T* p;
    ORV_INLINE T at(i64 i) const { return p[i]; }
    template <bool aligned> ORV_INLINE auto from(i64 i) const { return load_register<aligned>(p + i); }
    ORV_INLINE bool on_boundary(i64 i) const { return is_aligned(p + i, vector_bytes); }
};
template <class T> struct Constant {
    T c;
    ORV_INLINE T at(i64) const { return c; }
    template <bool> ORV_INLINE auto from(i64) const
    {
        if constexpr (is_floating<T>) return splat(c);
        else return splat_words(c);
    }
    ORV_INLINE static constexpr bool on_boundary(i64) { return true; }
};

// The products of two arrays, as one operand. Op: how elements and registers multiply.
template <class T, class Op> struct Products {
    Array<T> a, b;
    ORV_INLINE T at(i64 i) const { return Op::of(a.at(i), b.at(i)); }
    template <bool aligned> ORV_INLINE auto from(i64 i) const
    {
        return Op::of(a.template from<aligned>(i), b.template from<aligned>(i));
    }
    ORV_INLINE bool on_boundary(i64 i) const { return a.on_boundary(i) && b.on_boundary(i); }
};

// How many elements stand before the next boundary. Where elements lie across boundaries there is none: the answer is
// 0.
template <class T> ORV_INLINE i64 to_boundary(const T* p)
{
    constexpr i64 bytes = sizeof(T);
    const i64 gap = static_cast<i64>(-reinterpret_cast<std::uintptr_t>(p) % vector_bytes);
    return gap % bytes == 0 ? gap / bytes : 0;
}

// dst[i] := op(a(i), b(i)) for 0 <= i < n. dst may be an operand.
template <class A, class B, class T, class Op> ORV_INLINE void walk(A a, B b, T* dst, i64 n, Op op)
{
    constexpr i64 lanes = vector_bytes / sizeof(T);
    i64 i = 0;
    const auto alone = [&](i64 end) ORV_INLINE_LAMBDA {
        for (; i < end; ++i) dst[i] = op(a.at(i), b.at(i));
    };
    const auto registers = [&](auto on_a, auto on_b) ORV_INLINE_LAMBDA {
        for (; i <= n - lanes; i += lanes) storeu(dst + i, op(a.template from<on_a()>(i), b.template from<on_b()>(i)));
    };
    constexpr std::true_type on{};
    constexpr std::false_type off{};
    if constexpr (has_registers<T>)
        if (n >= 2 * lanes - 1) { // a whole register is left behind any boundary
            alone(to_boundary(dst));
            if (b.on_boundary(i)) a.on_boundary(i) ? registers(on, on) : registers(off, on);
            else a.on_boundary(i) ? registers(on, off) : registers(off, off);
        }
    alone(n);
}

} // namespace orv::dft
