// Eigen behind the routines of bench/sparse_pairs.h.
#include "bench/sparse_pairs.h"

#include <Eigen/Sparse>

struct orv::bench::Pair {
    explicit Pair(Rows&& from) : rows(std::move(from))
    {
        std::vector<double> values;
        const auto places = places_of(rows, values);
        for (std::size_t e = 0; e < places.size(); ++e)
            triplets.emplace_back(places[e].first, places[e].second, values[e]);
    }
    void csrcsc(double* y) const
    {
        const Eigen::SparseMatrix<double, Eigen::ColMajor> c = view();
        finish(c, y);
    }
    void coocsr(double* y) const
    {
        Matrix c(rows.n, rows.n);
        c.setFromTriplets(triplets.begin(), triplets.end());
        finish(c, y);
    }
    void add(double* y) const
    {
        const Matrix turned = view().transpose(), c = view() + turned;
        finish(c, y);
    }
    void multiply(double* y) const
    {
        const Matrix c = view() * view();
        finish(c, y);
    }

private:
    using Matrix = Eigen::SparseMatrix<double, Eigen::RowMajor>;
    template <class Any> void finish(const Any& c, double* y) const
    {
        const int* begin = c.outerIndexPtr() + rows.n / 2;
        tell(static_cast<int>(c.nonZeros()), c.valuePtr() + begin[0], c.valuePtr() + begin[1], y);
    }
    Eigen::Map<const Matrix> view() const
    {
        return {rows.n, rows.n, rows.entries(), rows.begin.data(), rows.col.data(), rows.val.data()};
    }
    Rows rows;
    std::vector<Eigen::Triplet<double>> triplets;
};

ORV_BENCH_SPARSE_PAIRS
