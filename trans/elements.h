// What every routine of this folder does with a matrix: elements are read through a source and written through a
// target.
//
// Matrices are thought of as row-major: element (i,j) at p[i*ld + j]. A source answers get<n>(i, j), elements (i,j) to
// (i,j+n-1) in the first n lanes; a target takes put<n>(i, j, v). n is up to `lanes`. at(i, j) is the same matrix from
// element (i,j) on, and ask(level, i, j) asks for the cache line of that element.
#pragma once

#include "frame/simd.h"

namespace orv::trans {

// The cache that a line is wanted in.
enum class Level { first, second };
ORV_INLINE void ask(Level level, const void* p) { level == Level::first ? prefetch(p) : prefetch_second_level(p); }

// What becomes of an element on its way. Moving keeps its bits; a complex scale multiplies in full, so that a scale of
// 1 does not keep the bits of infinities and negative zeros. Conjugating on the way changes the factor only.
template <class T, bool conjugated> struct Move {
    ORV_INLINE vec<T> operator()(vec<T> x) const
    {
        if constexpr (conjugated) return conj(x);
        else return x;
    }
};
template <class T> struct Scale {
    factor<T> alpha;
    explicit Scale(T a, bool conjugated = false) : alpha(a, conjugated) {}
    ORV_INLINE vec<T> operator()(vec<T> x) const { return alpha * x; }
};

template <class T, class Op> struct Source {
    using element = T;
    static constexpr int lanes = vec<T>::lanes;
    const T* p;
    u64 ld;
    Op op;
    ORV_INLINE Source at(u64 i, u64 j) const { return {p + i * ld + j, ld, op}; }
    ORV_INLINE void ask(Level level, u64 i, u64 j) const { trans::ask(level, p + i * ld + j); }
    template <int n> ORV_INLINE vec<T> get(u64 i, u64 j) const { return op(load_first<n>(p + i * ld + j)); }
};
template <class T, class Op> Source(const T*, u64, Op) -> Source<T, Op>;

// The same with neighbours in a row inc apart: one element at a time.
template <class T, class Op> struct StridedSource {
    using element = T;
    static constexpr int lanes = 1;
    const T* p;
    u64 ld, inc;
    Op op;
    ORV_INLINE StridedSource at(u64 i, u64 j) const { return {p + i * ld + j * inc, ld, inc, op}; }
    ORV_INLINE void ask(Level level, u64 i, u64 j) const { trans::ask(level, p + i * ld + j * inc); }
    template <int> ORV_INLINE vec<T> get(u64 i, u64 j) const { return op(load_first<1>(p + i * ld + j * inc)); }
};
template <class T, class Op> StridedSource(const T*, u64, u64, Op) -> StridedSource<T, Op>;

template <class T> struct StridedTarget {
    T* p;
    u64 ld, inc;
    ORV_INLINE StridedTarget at(u64 i, u64 j) const { return {p + i * ld + j * inc, ld, inc}; }
    ORV_INLINE void ask(Level level, u64 i, u64 j) const { trans::ask(level, p + i * ld + j * inc); }
    template <int> ORV_INLINE void put(u64 i, u64 j, vec<T> v) const { store_first<1>(p + i * ld + j * inc, v); }
};
template <class T> StridedTarget(T*, u64, u64) -> StridedTarget<T>;

// The sum of two.
template <class A, class B> struct SumOfSources {
    using element = typename A::element;
    static constexpr int lanes = A::lanes;
    A a;
    B b;
    ORV_INLINE SumOfSources at(u64 i, u64 j) const { return {a.at(i, j), b.at(i, j)}; }
    ORV_INLINE void ask(Level level, u64 i, u64 j) const { a.ask(level, i, j), b.ask(level, i, j); }
    template <int n> ORV_INLINE vec<element> get(u64 i, u64 j) const
    {
        return a.template get<n>(i, j) + b.template get<n>(i, j);
    }
};
template <class A, class B> SumOfSources(A, B) -> SumOfSources<A, B>;

template <class T> struct Target {
    T* p;
    u64 ld;
    ORV_INLINE Target at(u64 i, u64 j) const { return {p + i * ld + j, ld}; }
    ORV_INLINE void ask(Level level, u64 i, u64 j) const { trans::ask(level, p + i * ld + j); }
    template <int n> ORV_INLINE void put(u64 i, u64 j, vec<T> v) const { store_first<n>(p + i * ld + j, v); }
};
template <class T> Target(T*, u64) -> Target<T>;

// Receives a source's elements with what stands at the same place in another source added in front.
template <class T, class A> struct SumTarget {
    Target<T> target;
    A addend;
    ORV_INLINE SumTarget at(u64 i, u64 j) const { return {target.at(i, j), addend.at(i, j)}; }
    ORV_INLINE void ask(Level level, u64 i, u64 j) const { target.ask(level, i, j), addend.ask(level, i, j); }
    template <int n> ORV_INLINE void put(u64 i, u64 j, vec<T> v) const
    {
        target.template put<n>(i, j, addend.template get<n>(i, j) + v);
    }
};
template <class T, class A> SumTarget(Target<T>, A) -> SumTarget<T, A>;

} // namespace orv::trans
