// orv/sparse.h behind the routines that bench/sparse.cpp times.
#include "bench/sparse_patterns.h"

#include <orv/sparse.h>

#include <stdexcept>

struct orv::bench::Matrix {
    Matrix(Rows&& from, bool symmetric, bool triangular) : rows(std::move(from))
    {
        record.format = ORV_SPARSE_CSR, record.type = 'd', record.bits = 32;
        record.kind = symmetric ? 'S' : triangular ? 'T' : 'G', record.uplo = 'L';
        record.rows = record.cols = rows.n, record.has_diagonal = 1; // as the peers believe, too
        record.begin = rows.begin.data(), record.col = rows.col.data(), record.values = rows.val.data();
    }
    void mv(const double* x, double* y) const { done(orv_sparse_dmv('N', 1, &record, x, 0, y)); }
    void sv(const double* x, double* y) const { done(orv_sparse_dsv('N', 1, &record, x, y)); }
    void mm(int columns, const double* x, double* y) const
    {
        done(orv_sparse_dmm('R', 'N', 1, &record, columns, x, columns, 0, y, columns));
    }

private:
    static void done(orv_status status)
    {
        if (status != ORV_OK) throw std::runtime_error(orv_last_error());
    }
    Rows rows;
    orv_sparse record{};
};

ORV_BENCH_SPARSE
