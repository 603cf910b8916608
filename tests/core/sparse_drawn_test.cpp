// Sparse products and solves drawn at random: format, kind, sizes, options, layout, width and threads.
#include "core/team/eagerness.h"
#include "tests/core/sparse_operands.h"

using namespace orv;
using namespace orv::test;

namespace {

constexpr int problems = 1000; // of each type and width

// Teams are formed for work of any size.
class DrawnSparse : public testing::Test {
public:
    DrawnSparse() { orv_team_set_eagerness(1e9); }
    ~DrawnSparse() override { orv_team_set_eagerness(1), orv_set_thread_num_threads(0); }
};

char one_of(Random& random, const std::string& letters)
{
    return letters[static_cast<std::size_t>(random.integer(0, static_cast<i64>(letters.size()) - 1))];
}

template <class T> T number(Random& random)
{
    switch (random.integer(0, 3)) {
    case 0:
        return zero<T>;
    case 1:
        return one<T>;
    default:
        return random.value<T>();
    }
}

Style draw_style(Random& random, bool solve)
{
    Style s;
    s.format = static_cast<int>(random.integer(ORV_SPARSE_CSR, ORV_SPARSE_SKY));
    s.kind = one_of(random, solve ? "TTTD" : "GGGSHATD");
    s.uplo = one_of(random, "LU"), s.diag = one_of(random, "NU");
    s.base = static_cast<int>(random.integer(0, 1));
    if (s.format == ORV_SPARSE_BSR) s.block = random.integer(1, 9);
    return s;
}

// One product or solve.
template <class T, class Int> void run(Random& random)
{
    const bool solve = random.integer(0, 3) == 0;
    Style style;
    char trans;
    do style = draw_style(random, solve), trans = one_of(random, "NNTC");
    while (!exists<T>(style, trans));
    const auto length = [&] {
        return style.block * random.integer(0, (random.integer(0, 9) ? 40 : 150) / style.block);
    };
    const i64 m = length(), k = style.kind == 'G' ? length() : m;
    const auto a = sample<T>(m, k, style, random.integer(0, random.integer(0, 9) ? 6 : 70));
    const Stored<T, Int> stored(style, a);

    const bool dense = random.integer(0, 1);
    const i64 columns = dense ? random.integer(1, 60) : 1;
    const char order = dense ? one_of(random, "RC") : 'C';
    const T alpha = number<T>(random), beta = solve ? zero<T> : number<T>(random);
    const i64 rows = trans == 'N' ? m : k, cols = trans == 'N' ? k : m;
    const Operands<T> o(rows, cols, columns, order == 'R', beta == zero<T>, random.integer(m * k == 0, 9));
    const int threads = static_cast<int>(random.integer(1, 5));
    orv_set_thread_num_threads(threads);
    SCOPED_TRACE(style.text() + ' ' + trans + ' ' + order + ' ' + std::to_string(m) + 'x' + std::to_string(k) +
                 (solve ? " solve, " : " product, ") + std::to_string(columns) + (dense ? " columns" : " vector") +
                 ", " + std::to_string(threads) + " threads, " + letter<T> + std::to_string(8 * sizeof(Int)));

    const i64 ldx = o.x.template ld<i64>(), ldy = o.y.template ld<i64>();
    const orv_sparse* const matrix = &stored.record;
    orv_status status;
    if (solve)
        status = dense ? sparse_sm<T>(order, trans, alpha, matrix, columns, o.x.data(), ldx, o.y.data(), ldy)
                       : sparse_sv<T>(trans, alpha, matrix, o.x.data(), o.y.data());
    else
        status = dense ? sparse_mm<T>(order, trans, alpha, matrix, columns, o.x.data(), ldx, beta, o.y.data(), ldy)
                       : sparse_mv<T>(trans, alpha, matrix, o.x.data(), beta, o.y.data());
    ASSERT_EQ(status, ORV_OK) << orv_last_error();
    EXPECT_LE(solve ? residual(style, trans, a, alpha, o, columns)
                    : worst(style, trans, a, alpha, beta, o, rows, columns),
              1);
    EXPECT_TRUE(o.y.padding_is_untouched());
}

} // namespace

TEST_F(DrawnSparse, products_and_solves_are_within_the_textbook_bound)
{
    each_type([]<class T, class Int> {
        Random random(91);
        for (int i = 0; i < problems && !testing::Test::HasFailure(); ++i) {
            run<T, Int>(random);
            if (testing::Test::HasFailure()) ADD_FAILURE() << "problem " << i;
        }
    });
}
