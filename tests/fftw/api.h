// FFTW's interface by name, in a library that a test loads: ours, and Debian's as an oracle.
#pragma once

#include <cstddef>
#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace orv::test {

struct Dim {
    std::ptrdiff_t n, is, os;
};
struct ShortDim {
    int n, is, os;
};
using Plan = void*;

constexpr unsigned measure = 0, destroy_input = 1, unaligned = 2, exhaustive = 8, preserve_input = 16, patient = 32,
                   estimate = 64, wisdom_only = 1u << 21;

// One library: f<R>(prefix) of "plan_dft_1d" is fftw_plan_dft_1d or fftwf_plan_dft_1d. Arguments have to have the types
// that the interface wants.
template <class R> class Api {
public:
    using C = R[2];

    explicit Api(const char* path) : library_(path[0] ? dlopen(path, RTLD_NOW | RTLD_LOCAL) : nullptr) {}
    bool there() const { return library_ != nullptr; }

    template <class Result, class... Args> Result call(const std::string& name, Args... args) const
    {
        return reinterpret_cast<Result (*)(Args...)>(symbol((sizeof(R) == 4 ? "fftwf_" : "fftw_") + name))(args...);
    }
    template <class... Args> void fortran(const std::string& name, Args... args) const
    {
        reinterpret_cast<void (*)(Args...)>(symbol((sizeof(R) == 4 ? "sfftw_" : "dfftw_") + name))(args...);
    }
    template <class... Args> Plan plan(const std::string& name, Args... args) const
    {
        return call<Plan>("plan_" + name, args...);
    }
    void execute(Plan plan) const { call<void>("execute", plan); }
    void destroy(Plan plan) const { call<void>("destroy_plan", plan); }
    void* symbol(const std::string& name) const
    {
        void* const address = dlsym(library_, name.c_str());
        if (address == nullptr) throw std::runtime_error("no symbol " + name);
        return address;
    }

private:
    void* library_;
};

template <class R> const Api<R>& ours()
{
    static const Api<R> api(sizeof(R) == 4 ? ORV_FFTW3F : ORV_FFTW3);
    return api;
}
template <class R> const Api<R>& debian()
{
    static const Api<R> api(sizeof(R) == 4 ? DEBIAN_FFTW3F : DEBIAN_FFTW3);
    return api;
}
#define NEED_DEBIAN(R)                                                                                                 \
    if (!debian<R>().there()) GTEST_SKIP() << "Debian's FFTW is not installed"

} // namespace orv::test
