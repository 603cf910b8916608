// Batches of every length, form and width against sums in quadruple precision, and against each other bit by bit.
#include "tests/dft/batch/batch.h"

#include <cstdio>
#include <map>

namespace orv::test {
namespace {

// Columns of which only so many are different: those that agree must have results that agree in every bit.
template <class T> std::vector<T> repeated(const std::vector<T>& x, i64 n, i64 columns)
{
    std::vector<T> all;
    const i64 different = static_cast<i64>(x.size()) / n;
    for (i64 c = 0; c < columns; ++c)
        for (i64 j = 0; j < n; ++j) all.push_back(x[j + n * (c % different)]);
    return all;
}

constexpr i64 different = 3;
const i64 long_lengths[] = {273, 300,  343,  360,  400,  512,  605,  625,  676,
                            819, 1000, 1024, 1440, 2000, 2401, 3000, 3432, 4096};

// Mean square error in units of the last place of 1: a transform by factors makes 0.6 of a unit with each doubling of
// its length, as the squares of independent steps.
double bound(i64 n) { return 0.6 * std::sqrt(std::log2(n + 1.0)); }

// The largest error of an instance, as a share of the bound.
struct Worst {
    double share = 0;
    i64 n = 0;
};

TEST(Batch, gives_the_sums_of_the_definition)
{
    std::vector<i64> lengths(std::begin(long_lengths), std::end(long_lengths));
    for (i64 n = 2; n <= 256; ++n) lengths.push_back(n);
    std::map<std::string, Worst> worst;
    for (const i64 n : lengths) {
        if (!is_covered(n)) continue;
        const auto roots = quad_roots(n);
        every_instance([&]<class R>(bool forward) {
            const auto x = random_array<cpx<R>>(n * different, 1);
            const auto result = BatchPlanOf<R>({forward, "IT"}, n, different, different + 2).transformed(x);
            Errors errors;
            for (const i64 c : {i64{0}, different - 1}) {
                const std::vector<cpx<R>> column(x.begin() + n * c, x.begin() + n * (c + 1));
                for (const i64 k : points_to_see(n, n <= 48 ? n : 16))
                    errors.add(result[k + n * c], point(column, roots, forward ? k : (n - k) % n));
            }
            EXPECT_LE(errors.rms(), bound(n)) << n;
            Worst& w = worst[(forward ? "forward " : "inverse ") + token<R>()];
            if (errors.rms() / bound(n) > w.share) w = {errors.rms() / bound(n), n};
        });
    }
    for (const auto& [instance, w] : worst)
        std::printf("%s: worst rms error %.0f%% of the bound, n = %d\n", instance.c_str(), 100 * w.share,
                    static_cast<int>(w.n));
}

// Any number of columns, at any distance of elements, in every form: what a column becomes does not depend on others.
template <class R>
void compare(bool forward, i64 n, const std::vector<i64>& counts, i64 gap,
             std::initializer_list<const char*> forms = {"", "I", "T", "IT"})
{
    const auto x = random_array<cpx<R>>(n * different, 2);
    const auto expected = BatchPlanOf<R>({forward, "IT"}, n, different, different).transformed(x);
    for (const i64 columns : counts)
        for (const char* form : forms) {
            const BatchPlanOf<R> plan({forward, form}, n, columns, columns + gap);
            const auto result = plan.transformed(repeated(x, n, columns));
            const auto all = repeated(expected, n, columns);
            EXPECT_TRUE(same_bits(result.data(), all.data(), n * columns)) << n << " " << columns << " " << form;
        }
}

TEST(Batch, treats_all_columns_alike_whatever_their_number_and_form)
{
    every_instance([]<class R>(bool forward) {
        for (i64 n = 2; n <= 256; n += n < 40 ? 1 : 13)
            if (is_covered(n)) compare<R>(forward, n, {1, 2, 3, 4, 5, 7, 8, 16, 33, 70}, n % 3);
        compare<R>(forward, 4096, {1, 2, 5}, 1);
        for (const i64 n : {208, 224, 240, 416}) compare<R>(forward, n, {32}, 0); // rows that share cache sets
    });
}

TEST(BatchFull, treats_all_columns_alike_whatever_their_number_and_form)
{
    std::vector<i64> counts, widths;
    for (i64 columns = 1; columns <= 70; ++columns) counts.push_back(columns);
    for (int k = 0; k <= 12; ++k) widths.push_back(i64{1} << k);
    every_instance([&]<class R>(bool forward) {
        for (i64 n = 2; n <= 256; ++n)
            if (is_covered(n)) compare<R>(forward, n, counts, n % 3, {"IT"});
        for (const i64 n : {6, 13, 60, 100, 143, 196, 243, 256}) compare<R>(forward, n, widths, 2);
        for (const i64 n : long_lengths) compare<R>(forward, n, {1, 2, 3, 9, 64}, 3);
    });
}

TEST(Batch, gives_the_same_bits_to_teams_of_any_size)
{
    every_instance([]<class R>(bool forward) {
        for (const i64 n : {5, 12, 100, 252})
            for (const i64 columns : {1, 4, 9, 30})
                for (const char* form : batch_forms) {
                    const BatchPlanOf<R> plan({forward, form}, n, columns, columns + 1);
                    const auto x = random_array<cpx<R>>(n * columns, 3);
                    const auto alone = plan.transformed(x);
                    for (const i64 threads : {2, 3, 4, 5}) {
                        const auto shared = plan.transformed(x, threads);
                        EXPECT_TRUE(same_bits(alone.data(), shared.data(), n * columns)) << n << " " << threads;
                    }
                }
    });
}

TEST(Batch, takes_its_columns_at_any_address_of_their_elements)
{
    every_instance([]<class R>(bool forward) {
        for (const i64 n : {2, 7, 20, 36}) {
            const BatchPlanOf<R> plan({forward, "IT"}, n, 3, 3);
            const auto x = random_array<cpx<R>>(n * 3, 4);
            std::vector<cpx<R>> rows(n * 3), expected(rows);
            for (i64 i = 0; i < n * 3; ++i) rows[i] = x[i];
            expected = rows;
            ASSERT_EQ(plan.run(nullptr, expected.data()), 0);
            Guarded<unsigned char> room(n * 3 * sizeof(cpx<R>) + sizeof(R));
            auto* const across = reinterpret_cast<cpx<R>*>(room.data());
            std::memcpy(across, rows.data(), n * 3 * sizeof(cpx<R>));
            ASSERT_EQ(plan.run(nullptr, across), 0);
            EXPECT_EQ(std::memcmp(across, expected.data(), n * 3 * sizeof(cpx<R>)), 0) << n;
        }
    });
}

TEST(Batch, inverts)
{
    every_instance([]<class R>(bool forward) {
        const i64 n = 180, columns = 6;
        auto x = random_array<cpx<R>>(n * columns, 5);
        const auto spectrum = BatchPlanOf<R>({forward, "IT"}, n, columns, columns).transformed(x);
        const auto back = BatchPlanOf<R>({!forward, "IT"}, n, columns, columns).transformed(spectrum);
        for (i64 i = 0; i < n * columns; ++i) {
            EXPECT_NEAR(back[i].re / n, x[i].re, 8 * std::numeric_limits<R>::epsilon());
            EXPECT_NEAR(back[i].im / n, x[i].im, 8 * std::numeric_limits<R>::epsilon());
        }
    });
}

} // namespace
} // namespace orv::test
