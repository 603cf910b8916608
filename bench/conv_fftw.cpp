// FFTW behind the routines that bench/conv.cpp times: forward both operands, multiplied, backward, in one transform of
// a power of two a side, planned by measurements and kept.
#include "bench/conv_routines.h"

#include <cstring>
#include <fftw3.h>
#include <map>
#include <tuple>

namespace {

template <class T> struct Fftw;
#define REAL(T_, prefix)                                                                                               \
    template <> struct Fftw<T_> {                                                                                      \
        using R = T_;                                                                                                  \
        using Plan = prefix##_plan;                                                                                    \
        static auto* native(std::complex<R>* a) { return reinterpret_cast<prefix##_complex*>(a); }                     \
        static void* take(std::size_t bytes) { return prefix##_malloc(bytes); }                                        \
        static Plan forward(int rank, const int* n, T_* a, std::complex<R>* b)                                         \
        {                                                                                                              \
            return prefix##_plan_dft_r2c(rank, n, a, native(b), FFTW_MEASURE);                                         \
        }                                                                                                              \
        static Plan backward(int rank, const int* n, std::complex<R>* b, T_* a)                                        \
        {                                                                                                              \
            return prefix##_plan_dft_c2r(rank, n, native(b), a, FFTW_MEASURE);                                         \
        }                                                                                                              \
        static void run(Plan p) { prefix##_execute(p); }                                                               \
    };                                                                                                                 \
    template <> struct Fftw<std::complex<T_>> : Fftw<T_> {                                                             \
        static Plan forward(int rank, const int* n, std::complex<R>* a, std::complex<R>* b)                            \
        {                                                                                                              \
            return prefix##_plan_dft(rank, n, native(a), native(b), FFTW_FORWARD, FFTW_MEASURE);                       \
        }                                                                                                              \
        static Plan backward(int rank, const int* n, std::complex<R>* b, std::complex<R>* a)                           \
        {                                                                                                              \
            return prefix##_plan_dft(rank, n, native(b), native(a), FFTW_BACKWARD, FFTW_MEASURE);                      \
        }                                                                                                              \
    };
REAL(float, fftwf)
REAL(double, fftw)

template <class T> class Plans {
public:
    Plans(int rank, long full) : lines_(1)
    {
        for (side_ = 1; side_ < full;) side_ *= 2;
        lines_ = rank == 1 ? 1 : side_;
        const int n[] = {static_cast<int>(side_), static_cast<int>(side_)};
        const auto points = static_cast<std::size_t>(side_ * lines_);
        a_ = static_cast<T*>(F::take(points * sizeof(T)));
        for (auto* spectrum : {&x_, &y_}) *spectrum = static_cast<Complex*>(F::take(points * sizeof(Complex)));
        to_x_ = F::forward(rank, n, a_, x_), to_y_ = F::forward(rank, n, a_, y_), back_ = F::backward(rank, n, y_, a_);
    }
    void convolve(long n, long m, const T* x, const T* y, T* z)
    {
        pack(n, x), F::run(to_x_);
        pack(m, y), F::run(to_y_);
        const bool real = sizeof(T) == sizeof(typename F::R);
        const long count = (real ? side_ / 2 + 1 : side_) * lines_;
        const auto scale = 1 / static_cast<typename F::R>(side_ * lines_);
        for (long i = 0; i < count; ++i) {
            const Complex a = x_[i], b = y_[i];
            y_[i] = {(a.real() * b.real() - a.imag() * b.imag()) * scale,
                     (a.real() * b.imag() + a.imag() * b.real()) * scale};
        }
        F::run(back_);
        const long full = n + m - 1;
        for (long i = 0; i < (lines_ == 1 ? 1 : full); ++i)
            std::memcpy(static_cast<void*>(z + i * full), a_ + i * side_, static_cast<std::size_t>(full) * sizeof(T));
    }

private:
    using F = Fftw<T>;
    using Complex = std::complex<typename F::R>;
    void pack(long n, const T* from)
    {
        std::memset(static_cast<void*>(a_), 0, static_cast<std::size_t>(side_ * lines_) * sizeof(T));
        for (long i = 0; i < (lines_ == 1 ? 1 : n); ++i)
            std::memcpy(static_cast<void*>(a_ + i * side_), from + i * n, static_cast<std::size_t>(n) * sizeof(T));
    }
    long side_, lines_;
    T* a_;
    Complex *x_, *y_;
    typename F::Plan to_x_, to_y_, back_;
};

template <class T> void convolve(int rank, int n, int m, const T* x, const T* y, T* z)
{
    static std::map<std::pair<int, int>, Plans<T>*> plans; // to the end of the program
    auto& p = plans[{rank, n + m - 1}];
    if (p == nullptr) p = new Plans<T>(rank, n + m - 1);
    p->convolve(n, m, x, y, z);
}

} // namespace

ORV_BENCH_CONVOLUTIONS
