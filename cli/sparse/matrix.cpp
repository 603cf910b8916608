#include "cli/sparse/matrix.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <orv/orv.h>

namespace orv::cli {

void give_up()
{
    std::fprintf(stderr, "orv: %s\n", orv_last_error());
    std::exit(1);
}

namespace {

void convert(char trans, const orv_sparse& from, Sparse& to)
{
    if (orv_sparse_convert(trans, &from, to.get()) != ORV_OK) give_up();
}

// Whether two matrices in sorted compressed rows have entries in the same places; and if so, factor times the values.
bool same_pattern(const orv_sparse& a, const orv_sparse& b)
{
    const auto same = [](const void* x, const void* y, std::int64_t numbers) {
        return numbers == 0 || std::memcmp(x, y, static_cast<std::size_t>(numbers) * sizeof(int)) == 0;
    };
    return a.count == b.count && same(a.begin, b.begin, a.rows + 1) && same(a.col, b.col, a.count);
}
bool same_values(const orv_sparse& a, const orv_sparse& b, double factor)
{
    const auto *x = static_cast<const double*>(a.values), *y = static_cast<const double*>(b.values);
    return std::equal(x, x + a.count, y, [=](double value, double other) { return value == factor * other; });
}

} // namespace

Matrix::Matrix(const char* program, const char* path)
{
    open_market(&file_, program, path);
    read_market(&file_);
    const bool general = file_.symmetry == market_general;
    if (!general && file_.rows != file_.columns)
        refuse(&file_, file_.sizes, "a symmetric matrix has as many columns as rows");
    for (long e = 0; e < file_.count; ++e) {
        if (!general && file_.row[e] < file_.column[e]) { // to the lower triangle, wherever the file has it
            std::swap(file_.row[e], file_.column[e]);
            if (file_.symmetry == market_skew) file_.value[e] = -file_.value[e];
        }
        ++file_.row[e], ++file_.column[e]; // what is wrong with it shall be told as the file counts
    }
    stored_.format = ORV_SPARSE_COO, stored_.type = 'd', stored_.bits = 32, stored_.base = 1;
    stored_.kind = general ? 'G' : file_.symmetry == market_symmetric ? 'S' : 'A', stored_.uplo = 'L';
    stored_.rows = file_.rows, stored_.cols = file_.columns, stored_.count = file_.count;
    stored_.row = file_.row, stored_.col = file_.column, stored_.values = file_.value;
    rows_->format = ORV_SPARSE_CSR, rows_->bits = 32;
    convert('N', stored_, rows_);
}

std::string Matrix::kind() const
{
    switch (file_.symmetry) {
    case market_symmetric:
        return "symmetric";
    case market_skew:
        return "skew-symmetric";
    default:
        return "general" + nature_of_general();
    }
}

std::string Matrix::nature_of_general() const
{
    const orv_sparse& a = rows();
    if (a.rows != a.cols || a.count == 0) return "";
    const auto *begin = static_cast<const int*>(a.begin), *col = static_cast<const int*>(a.col);
    bool lower = true, upper = true;
    for (std::int64_t i = 0; i < a.rows; ++i)
        for (int p = begin[i]; p < begin[i + 1]; ++p) lower &= col[p] <= i, upper &= col[p] >= i;
    if (lower && upper) return ", in fact diagonal";
    if (lower || upper) return lower ? ", in fact lower triangular" : ", in fact upper triangular";
    Sparse turned;
    turned->format = ORV_SPARSE_CSR, turned->bits = 32;
    convert('T', a, turned);
    if (!same_pattern(a, *turned.get())) return "";
    if (same_values(a, *turned.get(), 1)) return ", in fact symmetric";
    return same_values(a, *turned.get(), -1) ? ", in fact skew-symmetric" : ", with a symmetric pattern";
}

} // namespace orv::cli
