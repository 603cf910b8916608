#include "tests/lapack_ps/fronts.h"

#include <algorithm>
#include <dlfcn.h>

namespace orv::test {
namespace {

FrontCalls* listener = nullptr;
using P = const void*; // every argument is a pointer

// The core's own routine.
template <class Result = void, class... A> Result pass_on(const char* symbol, A... arguments)
{
    return reinterpret_cast<Result (*)(A...)>(dlsym(RTLD_NEXT, symbol))(arguments...);
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

// FRONT(result, symbol, call, (parameters), arguments)
#define FRONT(result, symbol, call, parameters, ...)                                                                   \
    extern "C" __attribute__((visibility("default"), used)) result symbol parameters                                   \
    {                                                                                                                  \
        note(call);                                                                                                    \
        return pass_on<result>(#symbol, __VA_ARGS__);                                                                  \
    }
#define BLAS_4(name) FRONT(void, orv_blas_##name, #name, (P a, P b, P c, P d), a, b, c, d)
#define BLAS_5(name) FRONT(void, orv_blas_##name, #name, (P a, P b, P c, P d, P e), a, b, c, d, e)
#define BLAS_6(name) FRONT(void, orv_blas_##name, #name, (P a, P b, P c, P d, P e, P f), a, b, c, d, e, f)
#define BLAS_9(name)                                                                                                   \
    FRONT(void, orv_blas_##name, #name, (P a, P b, P c, P d, P e, P f, P g, P h, P i), a, b, c, d, e, f, g, h, i)
#define BLAS_WORD_7(name)                                                                                              \
    FRONT(void, orv_blas_##name, std::string(#name " ") + word, (const char* word, P b, P c, P d, P e, P f, P g),      \
          word, b, c, d, e, f, g)
#define BLAS_WORD_11(name)                                                                                             \
    FRONT(void, orv_blas_##name, std::string(#name " ") + word,                                                        \
          (const char* word, P b, P c, P d, P e, P f, P g, P h, P i, P j, P k), word, b, c, d, e, f, g, h, i, j, k)
#define BLAS_WORDS_13(name)                                                                                            \
    FRONT(void, orv_blas_##name, std::string(#name " ") + a + ' ' + b,                                                 \
          (const char* a, const char* b, P c, P d, P e, P f, P g, P h, P i, P j, P k, P l, P m), a, b, c, d, e, f, g,  \
          h, i, j, k, l, m)

BLAS_4(sscal)
BLAS_4(dscal)
BLAS_4(csscal)
BLAS_4(zdscal)
BLAS_5(scopy)
BLAS_5(dcopy)
BLAS_5(sswap)
BLAS_5(dswap)
BLAS_5(cswap)
BLAS_5(zswap)
BLAS_6(cdotc)
BLAS_6(zdotc)
BLAS_WORD_7(ssyr)
BLAS_WORD_7(zher)
BLAS_9(sger)
BLAS_9(dger)
BLAS_9(cgeru)
BLAS_9(zgeru)
BLAS_9(cgerc)
BLAS_WORD_11(sgemv)
BLAS_WORD_11(dgemv)
BLAS_WORD_11(cgemv)
BLAS_WORD_11(zgemv)
BLAS_WORDS_13(sgemm)
BLAS_WORDS_13(dgemm)

#define LAPACK_LASSQ(t) FRONT(void, orv_lapack_##t##lassq, #t "lassq", (P a, P b, P c, P d, P e), a, b, c, d, e)
LAPACK_LASSQ(s)
LAPACK_LASSQ(d)
LAPACK_LASSQ(c)
LAPACK_LASSQ(z)

#define LAPACK_REAL(t, T)                                                                                              \
    FRONT(T, orv_blas_##t##nrm2, #t "nrm2", (P a, P b, P c), a, b, c)                                                  \
    FRONT(T, orv_lapack_##t##lamch, std::string(#t "lamch ") + word, (const char* word), word)                         \
    FRONT(void, orv_lapack_##t##labad, #t "labad", (P a, P b), a, b)                                                   \
    FRONT(T, orv_lapack_##t##lamc3, #t "lamc3", (P a, P b), a, b)                                                      \
    FRONT(void, orv_lapack_##t##lacpy, std::string(#t "lacpy ") + word,                                                \
          (const char* word, P b, P c, P d, P e, P f, P g), word, b, c, d, e, f, g)                                    \
    FRONT(void, orv_lapack_##t##lascl, std::string(#t "lascl ") + word,                                                \
          (const char* word, P b, P c, P d, P e, P f, P g, P h, P i, P j), word, b, c, d, e, f, g, h, i, j)            \
    FRONT(void, orv_lapack_##t##lasd5, #t "lasd5", (P a, P b, P c, P d, P e, P f, P g), a, b, c, d, e, f, g)
LAPACK_REAL(s, float)
LAPACK_REAL(d, double)
