// Eigen behind the routines that bench/sparse.cpp times.
#include "bench/sparse_patterns.h"

#include <Eigen/Sparse>

struct orv::bench::Matrix {
    Matrix(Rows&& from, bool is_symmetric, bool) : rows(std::move(from)), symmetric(is_symmetric) {}
    void mv(const double* x, double* y) const
    {
        const Eigen::Map<const Eigen::VectorXd> from(x, rows.n);
        Eigen::Map<Eigen::VectorXd> to(y, rows.n);
        if (symmetric) to.noalias() = view().selfadjointView<Eigen::Lower>() * from;
        else to.noalias() = view() * from;
    }
    void sv(const double* x, double* y) const
    {
        Eigen::Map<Eigen::VectorXd> to(y, rows.n);
        to = Eigen::Map<const Eigen::VectorXd>(x, rows.n);
        view().triangularView<Eigen::Lower>().solveInPlace(to);
    }
    void mm(int columns, const double* x, double* y) const
    {
        using Dense = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
        Eigen::Map<Dense>(y, rows.n, columns).noalias() = view() * Eigen::Map<const Dense>(x, rows.n, columns);
    }

private:
    Eigen::Map<const Eigen::SparseMatrix<double, Eigen::RowMajor>> view() const
    {
        return {rows.n, rows.n, rows.entries(), rows.begin.data(), rows.col.data(), rows.val.data()};
    }
    Rows rows;
    bool symmetric;
};

ORV_BENCH_SPARSE
