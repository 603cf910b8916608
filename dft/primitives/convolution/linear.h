// Linear convolution of n >= m elements by the plan: direct sums without memory, or transforms in a work area.
#pragma once

#include "dft/primitives/conv_direct.h"
#include "dft/primitives/conv_plan.h"
#include "dft/primitives/fft.h"
#include "frame/dft.h"

namespace orv::dft {

// The parts of a work area: two arrays of 2^order points, then the engine's record, its tables' source, its buffer.
template <class T> struct WorkArea {
    i32 order = 0, spec = 0, init = 0, buffer = 0;

    i64 points() const { return i64{1} << order; }
    i64 arrays() const { return 2 * points() * static_cast<i64>(sizeof(T)); }
    i64 bytes() const { return arrays() + spec + init + buffer; }
};

// Direct sums take none.
template <class T> i32 size_work_area(const ConvolutionPlan& plan, WorkArea<T>& area, i64& bytes)
{
    bytes = 0;
    if (plan.route == Route::direct) return ok;
    area.order = plan.order;
    const i32 status = RealEngine<T>::get_size(plan.order, scale_inverse, 0, &area.spec, &area.init, &area.buffer);
    if (status == ok) bytes = area.bytes();
    return status;
}

// One circular convolution after the other, of the filter with what stands in x.
template <class T> class CircularFilter {
public:
    CircularFilter(const WorkArea<T>& area, t_8u* memory)
        : x(reinterpret_cast<T*>(memory)), points(area.points()), filter_(x + points), memory_(memory + area.arrays()),
          buffer_(memory_ + area.spec + area.init)
    {
        init_memory_ = memory_ + area.spec;
    }
    i32 set(const T* b, i64 m, i32 order)
    {
        if (const i32 status = Engine::init(&spec_, order, scale_inverse, 0, memory_, init_memory_)) return status;
        copy(b, filter_, m), clear(filter_ + m, points - m);
        return Engine::forward(filter_, filter_, spec_, buffer_);
    }
    i32 apply()
    {
        if (const i32 status = Engine::forward(x, x, spec_, buffer_)) return status;
        if (const i32 status = Engine::multiply(filter_, x, static_cast<i32>(points))) return status;
        return Engine::inverse(x, x, spec_, buffer_);
    }

    T* const x;
    const i64 points;

private:
    using Engine = RealEngine<T>;
    T* filter_;
    t_8u *memory_, *buffer_, *init_memory_;
    YmpFftSpec* spec_ = nullptr;
};

// dst[p] to dst[p + step - 1] need a[p - m + 1] to a[p + step - 1]: overlapping pieces of a, zeros outside of it. With
// one transform the piece is all of a, and nothing stands before it.
template <class T>
i32 convolve_by_transforms(const ConvolutionPlan& plan, const WorkArea<T>& area, const T* a, i64 n, const T* b, i64 m,
                           T* dst, t_8u* memory)
{
    CircularFilter<T> filter(area, memory);
    if (const i32 status = filter.set(b, m, plan.order)) return status;
    const i64 results = n + m - 1, before = filter.points - plan.step;
    for (i64 p = 0; p < results; p += plan.step) {
        const i64 from = max(p - before, 0), to = min(p + plan.step, n), lead = from - (p - before);
        const i64 length = max(to - from, 0);
        clear(filter.x, lead);
        copy(a + from, filter.x + lead, length);
        clear(filter.x + lead + length, filter.points - lead - length);
        if (const i32 status = filter.apply()) return status;
        copy(filter.x + before, dst + p, min(plan.step, results - p));
    }
    return ok;
}

template <class T>
i32 convolve(const ConvolutionPlan& plan, const WorkArea<T>& area, const T* a, i64 n, const T* b, i64 m, T* dst,
             t_8u* memory)
{
    if (plan.route != Route::direct) return convolve_by_transforms(plan, area, a, n, b, m, dst, memory);
    convolve_directly(a, n, b, m, dst);
    return ok;
}

// A block of the core's memory for the time of a call.
class Block {
public:
    explicit Block(i64 bytes) : memory(bytes > 0 ? static_cast<t_8u*>(orv_dft_ympMalloc(bytes)) : nullptr) {}
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block()
    {
        if (memory) orv_dft_ympFree(memory);
    }
    t_8u* const memory;
};

} // namespace orv::dft
