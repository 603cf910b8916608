// The loops that anyone would write, as a peer for sparse products and solves.
#include "bench/sparse_patterns.h"

struct orv::bench::Matrix {
    Matrix(Rows&& from, bool is_symmetric, bool) : rows(std::move(from)), symmetric(is_symmetric) {}
    void mv(const double* x, double* y) const
    {
        const int *begin = rows.begin.data(), *col = rows.col.data();
        const double* val = rows.val.data();
        if (symmetric) std::fill(y, y + rows.n, 0.0);
        for (int i = 0; i < rows.n; ++i) {
            double sum = 0;
            for (int e = begin[i]; e < begin[i + 1]; ++e) {
                sum += val[e] * x[col[e]];
                if (symmetric && col[e] != i) y[col[e]] += val[e] * x[i];
            }
            y[i] = symmetric ? y[i] + sum : sum;
        }
    }
    void sv(const double* x, double* y) const
    {
        const int *begin = rows.begin.data(), *col = rows.col.data();
        const double* val = rows.val.data();
        for (int i = 0; i < rows.n; ++i) {
            double sum = 0;
            const int diagonal = begin[i + 1] - 1;
            for (int e = begin[i]; e < diagonal; ++e) sum += val[e] * y[col[e]];
            y[i] = (x[i] - sum) / val[diagonal];
        }
    }
    void mm(int columns, const double* x, double* y) const
    {
        for (int i = 0; i < rows.n; ++i) {
            double* const to = y + static_cast<long>(i) * columns;
            std::fill(to, to + columns, 0.0);
            for (int e = rows.begin[Rows::at(i)]; e < rows.begin[Rows::at(i) + 1]; ++e) {
                const double* const from = x + static_cast<long>(rows.col[Rows::at(e)]) * columns;
                const double a = rows.val[Rows::at(e)];
                for (int j = 0; j < columns; ++j) to[j] += a * from[j];
            }
        }
    }

private:
    Rows rows;
    bool symmetric;
};

ORV_BENCH_SPARSE
