// librsb behind the routines that bench/sparse.cpp times: it lays matrices out in its own blocks.
#include "bench/sparse_patterns.h"

#include <rsb.h>
#include <stdexcept>

struct orv::bench::Matrix {
    Matrix(const Rows& rows, bool symmetric, bool triangular)
    {
        static const rsb_err_t begun = rsb_lib_init(RSB_NULL_INIT_OPTIONS);
        rsb_err_t error = begun;
        const rsb_flags_t flags = symmetric    ? RSB_FLAG_SYMMETRIC | RSB_FLAG_LOWER
                                  : triangular ? RSB_FLAG_LOWER_TRIANGULAR
                                               : RSB_FLAG_NOFLAGS;
        if (error == RSB_ERR_NO_ERROR)
            a = rsb_mtx_alloc_from_csr_const(rows.val.data(), rows.begin.data(), rows.col.data(), rows.entries(),
                                             RSB_NUMERICAL_TYPE_DOUBLE, rows.n, rows.n, 1, 1, flags, &error);
        done(error);
    }
    Matrix(Matrix&& other) : a(std::exchange(other.a, nullptr)) {}
    ~Matrix() { rsb_mtx_free(a); }
    void mv(const double* x, double* y) const { done(rsb_spmv(RSB_TRANSPOSITION_N, &one, a, x, 1, &zero, y, 1)); }
    void sv(const double* x, double* y) const { done(rsb_spsv(RSB_TRANSPOSITION_N, &one, a, x, 1, y, 1)); }
    void mm(int columns, const double* x, double* y) const
    {
        done(rsb_spmm(RSB_TRANSPOSITION_N, &one, a, columns, RSB_FLAG_WANT_ROW_MAJOR_ORDER, x, columns, &zero, y,
                      columns));
    }

private:
    static constexpr double one = 1, zero = 0;
    static void done(rsb_err_t error)
    {
        if (error != RSB_ERR_NO_ERROR) throw std::runtime_error("librsb refuses");
    }
    rsb_mtx_t* a = nullptr;
};

ORV_BENCH_SPARSE
