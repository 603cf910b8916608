// The transforms of 2^order points as the tests call them: by kind and type, on records that touch unreadable pages.
#pragma once

#include "frame/kernels/dft_fft.h"
#include "tests/dft/primitive.h"
#include "tests/support/probe.h"

#include <memory>

namespace orv::test {

// A kind of records, by the letters of its names: C_64fc, C_64f (two arrays), R_64f.
enum class Shape { pairs, planes, reals };
template <class R_, Shape shape_> struct KindOf {
    using R = R_;
    static constexpr Shape shape = shape_;
    static constexpr bool real = shape == Shape::reals;
    static constexpr bool wide = sizeof(R) == 8;
    static std::string name() { return (real ? "R_" : "C_") + token<R>() + (shape == Shape::pairs ? "c" : ""); }
    static constexpr i32 id = (wide ? 7 : 4) + (shape == Shape::pairs ? 0 : shape == Shape::planes ? 1 : 2);
    static constexpr i32 limit = (wide ? 27 : 28) + (real ? 1 : 0);

    static auto* get_size() { return primitive<FftGetSize>("ympsFFTGetSize_" + name()); }
    static auto* init() { return primitive<FftInit>("ympsFFTInit_" + name()); }
    static auto* init_alloc() { return primitive<FftInitAlloc>("ympsFFTInitAlloc_" + name()); }
    static auto* free() { return primitive<FftFree>("ympsFFTFree_" + name()); }
    static auto* get_buf_size() { return primitive<FftGetBufSize>("ympsFFTGetBufSize_" + name()); }
};
template <class Visit> void each_kind(Visit visit)
{
    visit(KindOf<float, Shape::pairs>()), visit(KindOf<float, Shape::planes>()), visit(KindOf<float, Shape::reals>());
    visit(KindOf<double, Shape::pairs>()), visit(KindOf<double, Shape::planes>());
    visit(KindOf<double, Shape::reals>());
}
template <class Visit> void each_real_type(Visit visit) { visit(float()), visit(double()); }

struct Bytes {
    i32 spec = -1, init = -1, buffer = -1;
};
template <class Kind> Bytes sizes(i32 order, i32 flag = scale_none)
{
    Bytes bytes;
    EXPECT_EQ(Kind::get_size()(order, flag, 0, &bytes.spec, &bytes.init, &bytes.buffer), ok);
    return bytes;
}

// A record in memory of exactly the size told, so many bytes off the page behind it; what it was made from is gone.
template <class Kind> class Record {
public:
    explicit Record(i32 order, i32 flag = scale_none, int off = 0)
        : bytes_(sizes<Kind>(order, flag)), memory_(static_cast<std::size_t>(bytes_.spec + off)),
          buffer_(static_cast<std::size_t>(bytes_.buffer + off))
    {
        const Guarded<t_8u> init(static_cast<std::size_t>(bytes_.init + off));
        EXPECT_EQ(Kind::init()(&spec_, order, flag, 0, memory_.data(), bytes_.init ? init.data() : nullptr), ok);
    }
    const YmpFftSpec* spec() const { return spec_; }
    YmpFftSpec* spec() { return spec_; }
    t_8u* buffer() const { return bytes_.buffer ? buffer_.data() : nullptr; }

private:
    Bytes bytes_;
    Guarded<t_8u> memory_, buffer_;
    YmpFftSpec* spec_ = nullptr;
};

enum class Direction { forward, inverse };
inline const char* letters(Direction d) { return d == Direction::forward ? "Fwd" : "Inv"; }

// Of pairs and of two arrays; the latter are written as pairs by the tests.
template <class R> using PairsOf = std::vector<cpx<R>>;

template <class R> i32 transform(Direction d, const cpx<R>* src, cpx<R>* dst, const YmpFftSpec* spec, t_8u* buffer)
{
    const std::string name = std::string("ympsFFT") + letters(d) + "_CToC_" + token<cpx<R>>();
    if (src == dst) return primitive<FftInPlace<cpx<R>>>(name + "_I")(dst, spec, buffer);
    return primitive<Fft<cpx<R>>>(name)(src, dst, spec, buffer);
}
template <class R>
i32 transform(Direction d, const R* src_re, const R* src_im, R* dst_re, R* dst_im, const YmpFftSpec* spec, t_8u* buffer)
{
    const std::string name = std::string("ympsFFT") + letters(d) + "_CToC_" + token<R>();
    if (src_re == dst_re) return primitive<SplitFftInPlace<R>>(name + "_I")(dst_re, dst_im, spec, buffer);
    return primitive<SplitFft<R>>(name)(src_re, src_im, dst_re, dst_im, spec, buffer);
}
inline const char* const formats[] = {"Perm", "Pack", "CCS"};
template <class R>
i32 transform(Direction d, const std::string& format, const R* src, R* dst, const YmpFftSpec* spec, t_8u* buffer)
{
    const std::string name =
        (d == Direction::forward ? "ympsFFTFwd_RTo" + format : "ympsFFTInv_" + format + "ToR") + "_" + token<R>();
    if (src == dst) return primitive<FftInPlace<R>>(name + "_I")(dst, spec, buffer);
    return primitive<Fft<R>>(name)(src, dst, spec, buffer);
}

} // namespace orv::test
