// Vectors with few entries, of any stride and base: each is one pass over the entries.
#include "compat/sparse/matrix.h"

namespace orv::sparseblas {
namespace {

// act(entry, place in y) for all entries.
template <class Act> int each(int nz, const int* indx, int incy, int index_base, const Act& act)
{
    if (nz < 0 || incy == 0 || (index_base != blas_zero_base && index_base != blas_one_base)) return refused;
    const int base = index_base == blas_one_base;
    for (int k = 0; k < nz; ++k) act(k, (i64{indx[k]} - base) * incy);
    return done;
}

template <class T>
int dot(int conjugates, int nz, const T* x, const int* indx, const T* y, int incy, T* r, int index_base)
{
    if (conjugates != blas_conj && conjugates != blas_no_conj) return refused;
    T sum = zero<T>;
    const int status = each(nz, indx, incy, index_base,
                            [&](int k, i64 at) { sum += (conjugates == blas_conj ? conj(x[k]) : x[k]) * y[at]; });
    if (status == done) *r = sum;
    return status;
}
template <class T> int add(int nz, T alpha, const T* x, const int* indx, T* y, int incy, int index_base)
{
    return each(nz, indx, incy, index_base, [=](int k, i64 at) { y[at] += alpha * x[k]; });
}
template <class T> int gather(int nz, const T* y, int incy, T* x, const int* indx, int index_base)
{
    return each(nz, indx, incy, index_base, [=](int k, i64 at) { x[k] = y[at]; });
}
template <class T> int gather_zero(int nz, T* y, int incy, T* x, const int* indx, int index_base)
{
    return each(nz, indx, incy, index_base, [=](int k, i64 at) { x[k] = y[at], y[at] = zero<T>; });
}
template <class T> int scatter(int nz, const T* x, T* y, int incy, const int* indx, int index_base)
{
    return each(nz, indx, incy, index_base, [=](int k, i64 at) { y[at] = x[k]; });
}

} // namespace
} // namespace orv::sparseblas

using namespace orv;
using namespace orv::sparseblas;

#define VECTORS(t, T)                                                                                                  \
    int BLAS_##t##usdot(blas_conj_type conj, int nz, In<T> x, const int* indx, In<T> y, int incy, Out<T> r,            \
                        blas_base_type base)                                                                           \
    {                                                                                                                  \
        return dot(conj, nz, array<T>(x), indx, array<T>(y), incy, static_cast<T*>(r), base);                          \
    }                                                                                                                  \
    int BLAS_##t##usaxpy(int nz, Scalar<T> alpha, In<T> x, const int* indx, Out<T> y, int incy, blas_base_type base)   \
    {                                                                                                                  \
        return add(nz, number<T>(alpha), array<T>(x), indx, static_cast<T*>(y), incy, base);                           \
    }                                                                                                                  \
    int BLAS_##t##usga(int nz, In<T> y, int incy, Out<T> x, const int* indx, blas_base_type base)                      \
    {                                                                                                                  \
        return gather(nz, array<T>(y), incy, static_cast<T*>(x), indx, base);                                          \
    }                                                                                                                  \
    int BLAS_##t##usgz(int nz, Out<T> y, int incy, Out<T> x, const int* indx, blas_base_type base)                     \
    {                                                                                                                  \
        return gather_zero(nz, static_cast<T*>(y), incy, static_cast<T*>(x), indx, base);                              \
    }                                                                                                                  \
    int BLAS_##t##ussc(int nz, In<T> x, Out<T> y, int incy, const int* indx, blas_base_type base)                      \
    {                                                                                                                  \
        return scatter(nz, array<T>(x), static_cast<T*>(y), incy, indx, base);                                         \
    }                                                                                                                  \
    void blas_##t##usdot_(const int* conj, const int* nz, const T* x, const int* indx, const T* y, const int* incy,    \
                          T* r, const int* base, int* istat)                                                           \
    {                                                                                                                  \
        *istat = dot(*conj, *nz, x, indx, y, *incy, r, *base);                                                         \
    }                                                                                                                  \
    void blas_##t##usaxpy_(const int* nz, const T* alpha, const T* x, const int* indx, T* y, const int* incy,          \
                           const int* base, int* istat)                                                                \
    {                                                                                                                  \
        *istat = add(*nz, *alpha, x, indx, y, *incy, *base);                                                           \
    }                                                                                                                  \
    void blas_##t##usga_(const int* nz, const T* y, const int* incy, T* x, const int* indx, const int* base,           \
                         int* istat)                                                                                   \
    {                                                                                                                  \
        *istat = gather(*nz, y, *incy, x, indx, *base);                                                                \
    }                                                                                                                  \
    void blas_##t##usgz_(const int* nz, T* y, const int* incy, T* x, const int* indx, const int* base, int* istat)     \
    {                                                                                                                  \
        *istat = gather_zero(*nz, y, *incy, x, indx, *base);                                                           \
    }                                                                                                                  \
    void blas_##t##ussc_(const int* nz, const T* x, T* y, const int* incy, const int* indx, const int* base,           \
                         int* istat)                                                                                   \
    {                                                                                                                  \
        *istat = scatter(*nz, x, y, *incy, indx, *base);                                                               \
    }

extern "C" {
VECTORS(s, float)
VECTORS(d, double)
VECTORS(c, cpx<float>)
VECTORS(z, cpx<double>)
}
