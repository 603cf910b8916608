// Products and solves: the core does them, on the compressed rows of the handle.
#include "compat/sparse/matrix.h"

namespace orv::sparseblas {
namespace {

// The core's routines by type.
template <class T> struct Core;
#define CORE(t, T)                                                                                                     \
    template <> struct Core<T> {                                                                                       \
        static constexpr auto& mv = orv_sparse_##t##mv;                                                                \
        static constexpr auto& mm = orv_sparse_##t##mm;                                                                \
        static constexpr auto& sv = orv_sparse_##t##sv;                                                                \
        static constexpr auto& sm = orv_sparse_##t##sm;                                                                \
    };
CORE(s, float)
CORE(d, double)
CORE(c, cpx<float>)
CORE(z, cpx<double>)
#undef CORE

// Letters of the core; 0 for what is none.
char trans_letter(int trans)
{
    return trans == blas_no_trans ? 'N' : trans == blas_trans ? 'T' : trans == blas_conj_trans ? 'C' : '\0';
}
char order_letter(int order) { return order == blas_rowmajor ? 'R' : order == blas_colmajor ? 'C' : '\0'; }

template <class T> const Matrix* finished(int handle)
{
    const Matrix* a = matrix_of_type<T>(handle);
    return a != nullptr && a->state == blas_valid_handle ? a : nullptr;
}
int answer(orv_status status) { return status == ORV_OK ? done : refused; }

// A vector with a stride, and a copy without where it is not 1.
template <class T> class Contiguous {
public:
    Contiguous(const T* x, i64 n, i64 inc) : x_(first(x, n, inc)), n_(n), inc_(inc)
    {
        if (inc == 1) return;
        ready_ = copy_.reserve(static_cast<std::size_t>(n));
        for (i64 i = 0; ready_ && i < n; ++i) copy_[static_cast<std::size_t>(i)] = x_[i * inc];
    }
    bool ready() const { return ready_; }
    T* data() const { return inc_ == 1 ? const_cast<T*>(x_) : copy_.data(); }
    void put_back() const
    {
        for (i64 i = 0; inc_ != 1 && i < n_; ++i) const_cast<T*>(x_)[i * inc_] = copy_[static_cast<std::size_t>(i)];
    }

private:
    const T* x_;
    i64 n_, inc_;
    Array<T> copy_;
    bool ready_ = true;
};

template <class T> int multiply(int trans, T alpha, int handle, const T* x, int incx, T* y, int incy)
{
    const Matrix* a = finished<T>(handle);
    const char op = trans_letter(trans);
    if (a == nullptr || op == '\0' || incx == 0 || incy == 0) return refused;
    const Contiguous<T> from(x, op == 'N' ? a->cols : a->rows, incx), to(y, op == 'N' ? a->rows : a->cols, incy);
    if (!from.ready() || !to.ready()) return refused;
    const orv_sparse record = a->record();
    if (Core<T>::mv(op, alpha, &record, from.data(), one<T>, to.data()) != ORV_OK) return refused;
    to.put_back();
    return done;
}

template <class T> int solve(int trans, T alpha, int handle, T* x, int incx)
{
    const Matrix* a = finished<T>(handle);
    const char op = trans_letter(trans);
    if (a == nullptr || op == '\0' || incx == 0) return refused;
    const Contiguous<T> in_place(x, a->rows, incx);
    if (!in_place.ready()) return refused;
    const orv_sparse record = a->record();
    if (Core<T>::sv(op, alpha, &record, in_place.data(), in_place.data()) != ORV_OK) return refused;
    in_place.put_back();
    return done;
}

template <class T>
int multiply_dense(int order, int trans, int nrhs, T alpha, int handle, const T* b, int ldb, T* c, int ldc)
{
    const Matrix* a = finished<T>(handle);
    if (a == nullptr) return refused;
    const orv_sparse record =
        a->record(); // the core refuses letters of 0, dimensions, and solves that are not with triangles
    return answer(Core<T>::mm(order_letter(order), trans_letter(trans), alpha, &record, nrhs, b, ldb, one<T>, c, ldc));
}

template <class T> int solve_dense(int order, int trans, int nrhs, T alpha, int handle, T* b, int ldb)
{
    const Matrix* a = finished<T>(handle);
    if (a == nullptr) return refused;
    const orv_sparse record = a->record();
    return answer(Core<T>::sm(order_letter(order), trans_letter(trans), alpha, &record, nrhs, b, ldb, b, ldb));
}

} // namespace
} // namespace orv::sparseblas

using namespace orv;
using namespace orv::sparseblas;

#define PRODUCTS(t, T)                                                                                                 \
    int BLAS_##t##usmv(blas_trans_type transa, Scalar<T> alpha, int A, In<T> x, int incx, Out<T> y, int incy)          \
    {                                                                                                                  \
        return multiply<T>(transa, number<T>(alpha), A, array<T>(x), incx, static_cast<T*>(y), incy);                  \
    }                                                                                                                  \
    int BLAS_##t##ussv(blas_trans_type transt, Scalar<T> alpha, int A, Out<T> x, int incx)                             \
    {                                                                                                                  \
        return solve<T>(transt, number<T>(alpha), A, static_cast<T*>(x), incx);                                        \
    }                                                                                                                  \
    int BLAS_##t##usmm(blas_order_type order, blas_trans_type transa, int nrhs, Scalar<T> alpha, int A, In<T> b,       \
                       int ldb, Out<T> c, int ldc)                                                                     \
    {                                                                                                                  \
        return multiply_dense<T>(order, transa, nrhs, number<T>(alpha), A, array<T>(b), ldb, static_cast<T*>(c), ldc); \
    }                                                                                                                  \
    int BLAS_##t##ussm(blas_order_type order, blas_trans_type transt, int nrhs, Scalar<T> alpha, int A, Out<T> b,      \
                       int ldb)                                                                                        \
    {                                                                                                                  \
        return solve_dense<T>(order, transt, nrhs, number<T>(alpha), A, static_cast<T*>(b), ldb);                      \
    }                                                                                                                  \
    void blas_##t##usmv_(const int* trans, const T* alpha, const int* a, const T* x, const int* incx, T* y,            \
                         const int* incy, int* istat)                                                                  \
    {                                                                                                                  \
        *istat = multiply(*trans, *alpha, *a, x, *incx, y, *incy);                                                     \
    }                                                                                                                  \
    void blas_##t##ussv_(const int* trans, const T* alpha, const int* a, T* x, const int* incx, int* istat)            \
    {                                                                                                                  \
        *istat = solve(*trans, *alpha, *a, x, *incx);                                                                  \
    }                                                                                                                  \
    void blas_##t##usmm_(const int* order, const int* trans, const int* nrhs, const T* alpha, const int* a,            \
                         const T* b, const int* ldb, T* c, const int* ldc, int* istat)                                 \
    {                                                                                                                  \
        *istat = multiply_dense(*order, *trans, *nrhs, *alpha, *a, b, *ldb, c, *ldc);                                  \
    }                                                                                                                  \
    void blas_##t##ussm_(const int* order, const int* trans, const int* nrhs, const T* alpha, const int* a, T* b,      \
                         const int* ldb, int* istat)                                                                   \
    {                                                                                                                  \
        *istat = solve_dense(*order, *trans, *nrhs, *alpha, *a, b, *ldb);                                              \
    }

extern "C" {
PRODUCTS(s, float)
PRODUCTS(d, double)
PRODUCTS(c, cpx<float>)
PRODUCTS(z, cpx<double>)
}
