// orv/sparse.h behind the routines of bench/sparse_pairs.h.
#include "bench/sparse_pairs.h"

#include <orv/sparse.h>

#include <stdexcept>

struct orv::bench::Pair {
    explicit Pair(Rows&& from) : rows(std::move(from))
    {
        for (const auto& [i, j] : places_of(rows, values)) row.push_back(i), column.push_back(j);
        a.type = list.type = 'd', a.bits = list.bits = 32;
        a.rows = a.cols = list.rows = list.cols = rows.n;
        a.format = ORV_SPARSE_CSR;
        a.begin = rows.begin.data(), a.col = rows.col.data(), a.values = rows.val.data();
        list.format = ORV_SPARSE_COO, list.count = rows.entries();
        list.row = row.data(), list.col = column.data(), list.values = values.data();
    }
    void csrcsc(double* y) const
    {
        finish(ORV_SPARSE_CSC, y, [this](orv_sparse* c) { return orv_sparse_convert('N', &a, c); });
    }
    void coocsr(double* y) const
    {
        finish(ORV_SPARSE_CSR, y, [this](orv_sparse* c) { return orv_sparse_convert('N', &list, c); });
    }
    void add(double* y) const
    {
        finish(ORV_SPARSE_CSR, y, [this](orv_sparse* c) { return orv_sparse_dadd('T', 1, &a, &a, c); });
    }
    void multiply(double* y) const
    {
        finish(ORV_SPARSE_CSR, y, [this](orv_sparse* c) { return orv_sparse_multiply('N', &a, 'N', &a, c); });
    }

private:
    template <class Make> static void finish(int format, double* y, const Make& make)
    {
        orv_sparse c{};
        c.format = format, c.bits = 32;
        if (make(&c) != ORV_OK) throw std::runtime_error(orv_last_error());
        const int* begin = static_cast<const int*>(c.begin) + c.rows / 2;
        const double* val = static_cast<const double*>(c.values);
        tell(static_cast<int>(c.count), val + begin[0], val + begin[1], y);
        orv_sparse_free(&c);
    }
    Rows rows;
    std::vector<int> row, column;
    std::vector<double> values;
    orv_sparse a{}, list{};
};

ORV_BENCH_SPARSE_PAIRS
