// The program's own threaded entries, which kernels find before the core's: they count, and pass on.
#include "frame/imports.h"
#include "tests/trans/matrices.h"

#include <dlfcn.h>

namespace orv::test {

Teams& teams()
{
    static Teams instance;
    return instance;
}

namespace {

template <class F> F* next(const char* name) { return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name)); }

template <class T>
void copy(const char* name, char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea,
          T* b, u64 ldb, u64 strideb)
{
    ++teams().copies;
    teams().last_copy = {ordering, trans};
    for (const u64 n : {rows, cols, lda, stridea, ldb, strideb}) teams().last_copy += ' ' + std::to_string(n);
    next<kernels::trans::Omatcopy2<T>>(name)(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);
}

template <class T> int square(const char* name, u64 n, T* ab, u64 ld)
{
    ++teams().squares;
    return teams().answer >= 0 ? teams().answer : next<imports::ImatcopySquarePar<T>>(name)(n, ab, ld);
}

} // namespace
} // namespace orv::test

#define TEAM(t, T)                                                                                                     \
    extern "C" __attribute__((visibility("default"), used)) void orv_trans_orv_##t##omatcopy2_par(                     \
        char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb,       \
        u64 strideb)                                                                                                   \
    {                                                                                                                  \
        test::copy("orv_trans_orv_" #t "omatcopy2_par", ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb,   \
                   strideb);                                                                                           \
    }                                                                                                                  \
    extern "C" __attribute__((visibility("default"), used)) int orv_trans_orv_##t##imatcopy_square_t_par(u64 n, T* ab, \
                                                                                                         u64 ld)       \
    {                                                                                                                  \
        return test::square("orv_trans_orv_" #t "imatcopy_square_t_par", n, ab, ld);                                   \
    }

using namespace orv;
TEAM(s, float)
TEAM(d, double)
TEAM(c, cpx<float>)
TEAM(z, cpx<double>)
