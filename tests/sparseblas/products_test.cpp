// Matrices built in every way, multiplied and solved with in every way.
#include "tests/sparseblas/interface.h"

using namespace orv;
using namespace orv::test;

namespace {

// A random matrix behind a handle, and what it means. Entries are inserted by all routines in turn, in no order, some
// more than once.
template <class T> struct Built {
    const Interface& interface;
    int handle, m, n, base;
    Meaning<T> meaning;

    Built(const Interface& with, int rows, int cols, int structure, bool unit, int index_base, Random& random)
        : interface(with), handle(with.begin<T>("uscr_begin", rows, cols)), m(rows), n(cols), base(index_base),
          meaning(rows, cols, structure, unit)
    {
        EXPECT_GE(handle, 0);
        EXPECT_EQ(BLAS_ussp(handle, structure), 0);
        EXPECT_EQ(BLAS_ussp(handle, unit ? blas_unit_diag : blas_non_unit_diag), 0);
        EXPECT_EQ(BLAS_ussp(handle, base == 0 ? blas_zero_base : blas_one_base), 0);
        for (int k = 0; k < 12; ++k) insert(static_cast<int>(random.integer(0, 4)), random);
        if (structure == blas_lower_triangular || structure == blas_upper_triangular) // solves are to be exact
            for (int i = 0; i < m && !unit; ++i) {
                const T half = meaning.multiply(blas_no_trans, one<T>, unit_vector(i), std::vector<T>(at(m)))[at(i)];
                insert_one({i, i, element<T>::make(i % 2 == 0 ? 2 : -1) - half});
            }
        EXPECT_EQ((interface.call<T>("uscr_end", handle)), 0);
    }
    ~Built() { EXPECT_EQ(BLAS_usds(handle), 0); }

private:
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }
    std::vector<T> unit_vector(int i) const
    {
        std::vector<T> e(at(n));
        e[at(i)] = one<T>;
        return e;
    }
    Entry<T> entry(int i, int j, Random& random) const
    {
        T value = whole_number<T>(random);
        if constexpr (is_complex<T>)
            if (i == j && meaning.hermitian()) value.im = 0;
        return {i, j, value};
    }
    void insert_one(const Entry<T>& e)
    {
        EXPECT_EQ((interface.call<T>("uscr_insert_entry", handle, e.value, e.i + base, e.j + base)), 0);
        meaning.add(e);
    }
    // Entries that the structure takes, of a row (j free), a column (i free) or anywhere.
    std::vector<Entry<T>> some(int row, int col, Random& random) const
    {
        std::vector<Entry<T>> entries;
        for (int k = 0; k < 8; ++k) {
            const int i = row >= 0 ? row : static_cast<int>(random.integer(0, m - 1));
            const int j = col >= 0 ? col : static_cast<int>(random.integer(0, n - 1));
            if (meaning.takes(i, j)) entries.push_back(entry(i, j, random));
        }
        return entries;
    }
    void insert(int how, Random& random)
    {
        const int row = static_cast<int>(random.integer(0, m - 1)), col = static_cast<int>(random.integer(0, n - 1));
        const auto entries = some(how == 2 ? row : -1, how == 3 ? col : -1, random);
        std::vector<int> i, j;
        std::vector<T> values;
        for (const auto& e : entries) i.push_back(e.i + base), j.push_back(e.j + base), values.push_back(e.value);
        const int count = static_cast<int>(entries.size());
        const auto called = [&](const std::string& routine, auto... arguments) {
            EXPECT_EQ((interface.call<T>(routine, handle, arguments...)), 0) << routine;
        };
        const int *is = i.data(), *js = j.data();
        const T* vs = values.data();
        switch (how) {
        case 0:
            for (const auto& e : entries) insert_one(e);
            return;
        case 1:
            called("uscr_insert_entries", count, vs, is, js);
            break;
        case 2:
            called("uscr_insert_row", row + base, count, vs, js);
            break;
        case 3:
            called("uscr_insert_col", col + base, count, vs, is);
            break;
        default:
            return insert_clique(random);
        }
        for (const auto& e : entries) meaning.add(e);
    }
    // Two rows by three columns that meet outside the diagonal of a general matrix; one place of others.
    void insert_clique(Random& random)
    {
        std::vector<int> rows{0, m - 1}, cols{n - 1, 0, n / 2};
        if (!(meaning.takes(0, n - 1) && meaning.takes(m - 1, 0) && meaning.takes(0, 0))) {
            const auto entries = some(-1, -1, random);
            if (entries.empty()) return;
            rows = {entries[0].i}, cols = {entries[0].j};
        }
        const int k = static_cast<int>(rows.size()), l = static_cast<int>(cols.size());
        const int row_stride = 1, col_stride = k + 1;
        std::vector<T> values(at(l * col_stride));
        for (int r = 0; r < k; ++r)
            for (int c = 0; c < l; ++c) {
                const auto e = entry(rows[at(r)], cols[at(c)], random);
                values[at(r * row_stride + c * col_stride)] = e.value;
                meaning.add(e);
            }
        for (int& i : rows) i += base;
        for (int& j : cols) j += base;
        const int *is = rows.data(), *js = cols.data();
        const T* vs = values.data();
        EXPECT_EQ((interface.call<T>("uscr_insert_clique", handle, k, l, vs, row_stride, col_stride, is, js)), 0);
    }
};

template <class Check> void each_matrix(const std::vector<int>& of, const Check& check)
{
    each_type([&]<class T>(const Interface& interface) {
        Random random(5);
        for (const int structure : of)
            for (const bool unit : {false, true})
                for (const auto& [m, n] : {std::pair{1, 1}, {9, 9}, {4, 13}, {13, 4}}) {
                    if (m != n && structure != blas_general) continue;
                    const Built<T> a(interface, m, n, structure, unit, structure % 2, random);
                    check(a, random);
                }
    });
}
const std::vector<int> all(std::begin(structures), std::end(structures));
const std::vector<int> triangular{blas_lower_triangular, blas_upper_triangular};

template <class T> T scale()
{
    if constexpr (is_complex<T>) return {2, -1};
    else return -2;
}
std::size_t index(int i) { return static_cast<std::size_t>(i); }

} // namespace

TEST(SparseBlasProduct, of_every_structure_is_what_the_entries_mean_with_any_strides)
{
    each_matrix(all, []<class T>(const Built<T>& a, Random& random) {
        for (const int trans : transpositions)
            for (const auto& [incx, incy] : {std::pair{1, 1}, {2, 1}, {-1, 3}, {1, -2}}) {
                const bool turned = trans != blas_no_trans;
                const auto x = whole_numbers<T>(turned ? a.m : a.n, random),
                           y = whole_numbers<T>(turned ? a.n : a.m, random);
                const T between = element<T>::make(99);
                const auto xs = spread(x, incx, between);
                auto ys = spread(y, incy, between);
                const T* from = xs.data();
                ASSERT_EQ(
                    (a.interface.template call<T>("usmv", trans, scale<T>(), a.handle, from, incx, ys.data(), incy)),
                    0);
                EXPECT_EQ(ys, spread(a.meaning.multiply(trans, scale<T>(), x, y), incy, between));
            }
    });
}

TEST(SparseBlasProduct, with_dense_matrices_of_either_order_is_that_of_their_columns)
{
    each_matrix(all, []<class T>(const Built<T>& a, Random& random) {
        for (const int order : {blas_rowmajor, blas_colmajor})
            for (const int trans : transpositions)
                for (const int nrhs : {0, 1, 5}) {
                    const int xrows = trans != blas_no_trans ? a.m : a.n, yrows = trans != blas_no_trans ? a.n : a.m;
                    const bool by_rows = order == blas_rowmajor;
                    const int ldb = (by_rows ? nrhs : xrows) + 2, ldc = (by_rows ? nrhs : yrows) + 1;
                    const auto b = whole_numbers<T>(ldb * (by_rows ? xrows : nrhs), random);
                    const auto before = whole_numbers<T>(ldc * (by_rows ? yrows : nrhs), random);
                    auto c = before, expected = before;
                    for (int k = 0; k < nrhs; ++k) {
                        std::vector<T> x, y;
                        for (int i = 0; i < xrows; ++i) x.push_back(b[index(by_rows ? i * ldb + k : i + k * ldb)]);
                        for (int i = 0; i < yrows; ++i) y.push_back(before[index(by_rows ? i * ldc + k : i + k * ldc)]);
                        y = a.meaning.multiply(trans, scale<T>(), x, y);
                        for (int i = 0; i < yrows; ++i)
                            expected[index(by_rows ? i * ldc + k : i + k * ldc)] = y[index(i)];
                    }
                    const T* from = b.data();
                    ASSERT_EQ((a.interface.template call<T>("usmm", order, trans, nrhs, scale<T>(), a.handle, from, ldb,
                                                            c.data(), ldc)),
                              0);
                    EXPECT_EQ(c, expected);
                }
    });
}

TEST(SparseBlasSolve, undoes_the_product)
{
    each_matrix(triangular, []<class T>(const Built<T>& a, Random& random) {
        for (const int trans : transpositions)
            for (const int inc : {1, 3, -2}) {
                const auto x = whole_numbers<T>(a.n, random);
                auto right = spread(a.meaning.multiply(trans, one<T>, x, std::vector<T>(index(a.m))), inc, one<T>);
                ASSERT_EQ((a.interface.template call<T>("ussv", trans, one<T>, a.handle, right.data(), inc)), 0);
                EXPECT_EQ(right, spread(x, inc, one<T>));
            }
    });
}

TEST(SparseBlasSolve, for_many_columns_is_that_of_each_times_alpha)
{
    each_matrix(triangular, []<class T>(const Built<T>& a, Random& random) {
        for (const int order : {blas_rowmajor, blas_colmajor})
            for (const int trans : transpositions) {
                const int nrhs = 3, ld = (order == blas_rowmajor ? nrhs : a.n) + 2;
                const T alpha = element<T>::make(4);
                std::vector<T> b(index(ld * (order == blas_rowmajor ? a.n : nrhs)), one<T>), expected = b;
                for (int k = 0; k < nrhs; ++k) {
                    const auto x = whole_numbers<T>(a.n, random);
                    const auto right = a.meaning.multiply(trans, one<T>, x, std::vector<T>(index(a.m)));
                    for (int i = 0; i < a.n; ++i) {
                        const auto at = index(order == blas_rowmajor ? i * ld + k : i + k * ld);
                        b[at] = right[index(i)], expected[at] = alpha * x[index(i)];
                    }
                }
                ASSERT_EQ((a.interface.template call<T>("ussm", order, trans, nrhs, alpha, a.handle, b.data(), ld)), 0);
                EXPECT_EQ(b, expected);
            }
    });
}

TEST(SparseBlasBlocks, are_inserted_whole_with_any_strides)
{
    each_type([]<class T>(const Interface& interface) {
        for (const bool variable : {false, true}) {
            const std::vector<int> k{2, variable ? 1 : 2, variable ? 4 : 2}, l{3, variable ? 2 : 3};
            const int *rows = k.data(), *cols = l.data(), blocks = 3, columns = 2, two = 2, three = 3;
            const int base = interface.fortran ? 1 : 0;
            const int handle = variable ? interface.begin<T>("uscr_variable_block_begin", blocks, columns, rows, cols)
                                        : interface.begin<T>("uscr_block_begin", blocks, columns, two, three);
            ASSERT_GE(handle, 0);
            const int m = k[0] + k[1] + k[2], n = l[0] + l[1];
            EXPECT_EQ(BLAS_usgp(handle, blas_num_rows), m);
            EXPECT_EQ(BLAS_usgp(handle, blas_num_cols), n);
            Meaning<T> meaning(m, n, blas_general, false);
            Random random(3);
            for (const auto& [i, j] : {std::pair{2, 1}, {0, 0}, {2, 0}, {0, 0}}) {
                const int row_stride = l[index(j)] + 1, col_stride = 1; // by rows
                const auto values = whole_numbers<T>(row_stride * k[index(i)], random);
                const T* vs = values.data();
                ASSERT_EQ(
                    (interface.call<T>("uscr_insert_block", handle, vs, row_stride, col_stride, i + base, j + base)),
                    0);
                for (int r = 0; r < k[index(i)]; ++r)
                    for (int c = 0; c < l[index(j)]; ++c)
                        meaning.add({(i > 0 ? k[0] : 0) + (i > 1 ? k[1] : 0) + r, (j > 0 ? l[0] : 0) + c,
                                     values[index(r * row_stride + c)]});
            }
            const T one_value = one<T>;
            for (const auto& [i, j] : {std::pair{3, 0}, {0, 2}, {-1, 0}, {0, -1}})
                EXPECT_EQ((interface.call<T>("uscr_insert_block", handle, &one_value, 1, 1, i + base, j + base)), -1);
            ASSERT_EQ((interface.call<T>("uscr_end", handle)), 0);
            const auto x = whole_numbers<T>(n, random), y = whole_numbers<T>(m, random);
            auto z = y;
            const T* from = x.data();
            ASSERT_EQ((interface.call<T>("usmv", int{blas_no_trans}, one<T>, handle, from, 1, z.data(), 1)), 0);
            EXPECT_EQ(z, meaning.multiply(blas_no_trans, one<T>, x, y));
            EXPECT_EQ(BLAS_usds(handle), 0);
        }
    });
}

TEST(SparseBlasVectors, do_what_the_standard_says_of_each_entry)
{
    each_type([]<class T>(const Interface& interface) {
        Random random(1);
        const std::vector<int> places{7, 0, 3, 11};
        for (const int base : {0, 1})
            for (const int incy : {1, 2}) {
                const int index_base = base == 0 ? blas_zero_base : blas_one_base, nz = 4;
                std::vector<int> indx = places;
                for (int& i : indx) i += base;
                const int* is = indx.data();
                const auto x = whole_numbers<T>(nz, random), y = whole_numbers<T>(12 * incy, random);
                const auto at = [&](int k) { return index(places[index(k)] * incy); };
                const T *xs = x.data(), *ys = y.data();
                for (const int with : {blas_conj, blas_no_conj}) {
                    T r = one<T>, expected = zero<T>;
                    ASSERT_EQ((interface.call<T>("usdot", with, nz, xs, is, ys, incy, &r, index_base)), 0);
                    for (int k = 0; k < nz; ++k)
                        expected += (with == blas_conj ? conj(x[index(k)]) : x[index(k)]) * y[at(k)];
                    EXPECT_EQ(r, expected);
                }
                auto added = y, expected = y, zeroed = y, scattered = y;
                for (int k = 0; k < nz; ++k) expected[at(k)] += scale<T>() * x[index(k)];
                ASSERT_EQ((interface.call<T>("usaxpy", nz, scale<T>(), xs, is, added.data(), incy, index_base)), 0);
                EXPECT_EQ(added, expected);
                std::vector<T> picked(4), picked_too(4), expected_picked;
                for (int k = 0; k < nz; ++k) expected_picked.push_back(y[at(k)]);
                ASSERT_EQ((interface.call<T>("usga", nz, ys, incy, picked.data(), is, index_base)), 0);
                EXPECT_EQ(picked, expected_picked);
                expected = y;
                for (int k = 0; k < nz; ++k) expected[at(k)] = zero<T>;
                ASSERT_EQ((interface.call<T>("usgz", nz, zeroed.data(), incy, picked_too.data(), is, index_base)), 0);
                EXPECT_EQ(zeroed, expected);
                EXPECT_EQ(picked_too, expected_picked);
                for (int k = 0; k < nz; ++k) expected[at(k)] = x[index(k)];
                scattered = y;
                auto expected_scattered = y;
                for (int k = 0; k < nz; ++k) expected_scattered[at(k)] = x[index(k)];
                ASSERT_EQ((interface.call<T>("ussc", nz, xs, scattered.data(), incy, is, index_base)), 0);
                EXPECT_EQ(scattered, expected_scattered);

                auto left = y;
                EXPECT_EQ((interface.call<T>("ussc", nz, xs, left.data(), 0, is, index_base)), -1);
                EXPECT_EQ((interface.call<T>("ussc", -1, xs, left.data(), 1, is, index_base)), -1);
                EXPECT_EQ((interface.call<T>("ussc", nz, xs, left.data(), 1, is, 1)), -1);
                EXPECT_EQ((interface.call<T>("ussc", 0, xs, left.data(), 1, is, index_base)), 0);
                T r = one<T>;
                EXPECT_EQ((interface.call<T>("usdot", 0, nz, xs, is, ys, incy, &r, index_base)), -1);
                EXPECT_EQ(r, one<T>);
                EXPECT_EQ(left, y);
            }
    });
}
