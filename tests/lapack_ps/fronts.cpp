#include "tests/lapack_ps/fronts.h"

#include <algorithm>
#include <dlfcn.h>

namespace orv::test {
namespace {

FrontCalls* listener = nullptr;
using P = const void*; // every argument is a pointer

// The core's own routine.
template <class... A> void pass_on(const char* symbol, A... arguments)
{
    reinterpret_cast<void (*)(A...)>(dlsym(RTLD_NEXT, symbol))(arguments...);
}

void note(const std::string& call)
{
    if (listener != nullptr) listener->calls.push_back(call);
}

} // namespace

FrontCalls::FrontCalls() { listener = this; }
FrontCalls::~FrontCalls() { listener = nullptr; }
int FrontCalls::count(const std::string& call) const
{
    return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

} // namespace orv::test

using namespace orv::test;

#define FRONT(name, call, parameters, ...)                                                                             \
    extern "C" __attribute__((visibility("default"), used)) void orv_blas_##name parameters                            \
    {                                                                                                                  \
        note(call);                                                                                                    \
        pass_on("orv_blas_" #name, __VA_ARGS__);                                                                       \
    }
#define FRONT_4(name) FRONT(name, #name, (P a, P b, P c, P d), a, b, c, d)
#define FRONT_5(name) FRONT(name, #name, (P a, P b, P c, P d, P e), a, b, c, d, e)
#define FRONT_6(name) FRONT(name, #name, (P a, P b, P c, P d, P e, P f), a, b, c, d, e, f)
#define FRONT_9(name) FRONT(name, #name, (P a, P b, P c, P d, P e, P f, P g, P h, P i), a, b, c, d, e, f, g, h, i)
#define FRONT_WORD_7(name)                                                                                             \
    FRONT(name, std::string(#name " ") + word, (const char* word, P b, P c, P d, P e, P f, P g), word, b, c, d, e, f, g)
#define FRONT_WORD_11(name)                                                                                            \
    FRONT(name, std::string(#name " ") + word, (const char* word, P b, P c, P d, P e, P f, P g, P h, P i, P j, P k),   \
          word, b, c, d, e, f, g, h, i, j, k)

FRONT_4(sscal)
FRONT_4(dscal)
FRONT_4(csscal)
FRONT_4(zdscal)
FRONT_5(sswap)
FRONT_5(dswap)
FRONT_5(cswap)
FRONT_5(zswap)
FRONT_6(cdotc)
FRONT_6(zdotc)
FRONT_WORD_7(ssyr)
FRONT_WORD_7(zher)
FRONT_9(sger)
FRONT_9(dger)
FRONT_9(cgeru)
FRONT_9(zgeru)
FRONT_9(cgerc)
FRONT_WORD_11(sgemv)
FRONT_WORD_11(dgemv)
FRONT_WORD_11(cgemv)
FRONT_WORD_11(zgemv)
