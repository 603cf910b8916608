// The life of a Helmholtz solver: what stands in its arrays, stages, refusals with their messages, memory that runs
// out.
#include "tests/pde/messages.h"
#include "tests/pde/poisson.h"
#include "tests/support/probe.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

using namespace pdepl;
constexpr const char* log_name = "ORV_Poisson_Library_Log.txt";

template <class T> class PoissonLife : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(PoissonLife, Reals);

constexpr i64 cells_2d[] = {8, 5};
constexpr i64 cells_3d[] = {6, 8, 5};

TYPED_TEST(PoissonLife, begins_with_what_it_is_told)
{
    using T = TypeParam;
    Problem<T, 2> p("DnPx", cells_2d, T(2.5));
    std::fill(std::begin(p.ipar), std::end(p.ipar), 77);
    init_2d<T>(&p.from[0], &p.to[0], &p.from[1], &p.to[1], &p.n[0], &p.n[1], "DnPx", &p.q, p.ipar, p.dpar.data(),
               &p.stat);
    EXPECT_EQ(p.stat, 0);
    const std::vector<std::pair<int, i64>> expected = {{0, 0},
                                                       {1, 1},
                                                       {2, 1},
                                                       {4, 0},
                                                       {5, 1},
                                                       {6, 2},
                                                       {7, -1},
                                                       {10, 8},
                                                       {11, 5},
                                                       {21, 1},
                                                       {22, orv_pdepl_pl_get_max_thread()},
                                                       {40, 77}};
    for (const auto& [position, value] : expected) EXPECT_EQ(p.ipar[position], value) << position;
    EXPECT_LE(p.ipar[3], 15);
    EXPECT_EQ(p.dpar[0], p.to[0] - p.from[0]);
    EXPECT_EQ(p.dpar[1], p.to[1] - p.from[1]);
    EXPECT_EQ(p.dpar[3], T(2.5));
    EXPECT_EQ(p.dpar[4], sizeof(T) == 8 ? T(1e-10) : T(1e-4));

    Problem<T, 3> box("dNpPnD", cells_3d, T(1));
    box.init();
    const i64 sides[] = {0, 1, 2, 2, 1, 0, 6, 8, 5};
    for (int k = 0; k < 9; ++k) EXPECT_EQ(box.ipar[4 + k], sides[k]) << k;
    EXPECT_EQ(box.dpar[2], box.to[2] - box.from[2]);
}

TYPED_TEST(PoissonLife, makes_steps_spectrum_and_transforms)
{
    using T = TypeParam;
    for (const char* sides : {"dddn", "nnnd", "dndd", "ndnn", "pppp"}) {
        Problem<T, 2> p(sides, cells_2d, T(3));
        p.init();
        p.ipar[ipar_status] = 990;
        p.f.assign(p.f.size(), T(7));
        ASSERT_EQ(p.commit(), good) << sides;
        for (const T value : p.f) EXPECT_EQ(value, T(7)); // tables alone
        EXPECT_EQ(p.dpar[0], (p.to[0] - p.from[0]) / T(8));
        EXPECT_EQ(p.dpar[1], (p.to[1] - p.from[1]) / T(5));
        EXPECT_EQ(p.ipar[ipar_spectrum], 6);
        const bool mixed = sides[0] != sides[1], around = sides[0] == 'p';
        for (int i = 0; i <= 8; ++i) {
            const double a = (mixed ? 2 * i + 1 : around ? 4 * i : 2 * i) * std::acos(-1.) / 32;
            const double root = 2 * p.dpar[1] * std::sin(a) / p.dpar[0];
            const double expected = root * root + 2 + 3. * p.dpar[1] * p.dpar[1];
            EXPECT_NEAR(p.dpar[5 + i], expected, 8 * std::numeric_limits<T>::epsilon() * expected);
        }
        const i64* const inner = p.ipar + 40;
        EXPECT_EQ(inner[pdett::ipar_n], around ? 4 : 8);
        EXPECT_EQ(inner[pdett::ipar_kind], around || std::string(sides, 2) == "dd" ? 0
                                           : !mixed                                ? 1
                                           : sides[0] == 'n'                       ? 2
                                                                                   : 3);
        EXPECT_EQ(inner[2], p.ipar[2]);
        EXPECT_EQ(inner[8], p.ipar[21]);
        EXPECT_EQ(p.dpar[p.ipar[ipar_x_first] - 1], p.dpar[4]);
        if (around) {
            EXPECT_EQ(p.ipar[60 + pdett::ipar_kind], 1);
            const T* const sines = &p.dpar[p.ipar[ipar_x_first] - 1] + pdett::dpar_tables;
            EXPECT_EQ(sines[3], 0); // around n/2, behind the n/4 of them
            EXPECT_EQ(sines[4], 0);
        }
    }
}

TYPED_TEST(PoissonLife, runs_the_stages_that_its_code_leaves)
{
    using T = TypeParam;
    const auto committed = [](const std::vector<i64>& codes) {
        Problem<T, 2> p("dnnd", cells_2d, T(1));
        p.draw(3);
        p.init();
        for (const i64 code : codes) {
            p.ipar[ipar_status] = code;
            EXPECT_EQ(p.commit(), good) << code;
        }
        return p.f;
    };
    const auto all = committed({0}), none = committed({990, 999});
    EXPECT_EQ(committed({990, 9}), all);
    EXPECT_EQ(committed({990, 99, 909}), all);
    EXPECT_EQ(committed({90, 909}), all);
    EXPECT_NE(committed({90}), all);
    EXPECT_EQ(committed({90}), committed({990, 99}));
    EXPECT_EQ(committed({900}), committed({990, 909}));
    EXPECT_NE(committed({900}), none);
}

template <class T> Loop<T>* transforms_of_rows(const std::string& sides)
{
#define BY_LETTERS(pair)                                                                                               \
    if (sides.substr(0, 2) == #pair) {                                                                                 \
        if constexpr (std::is_same_v<T, double>) return orv_pdepl_d_ft_2d_##pair;                                      \
        else return orv_pdepl_s_ft_2d_##pair;                                                                          \
    }
    BY_LETTERS(dd)
    BY_LETTERS(dn)
    BY_LETTERS(nd)
    BY_LETTERS(nn)
#undef BY_LETTERS
    if constexpr (std::is_same_v<T, double>) return orv_pdepl_d_ft_2d_pp;
    else return orv_pdepl_s_ft_2d_pp;
}

TYPED_TEST(PoissonLife, transforms_rows_in_slices_to_the_same_bits)
{
    using T = TypeParam;
    for (const char* sides : {"dddd", "dndd", "nddd", "nndd", "ppdd"}) {
        Problem<T, 2> p(sides, cells_2d, T(1));
        p.draw(5);
        ASSERT_EQ(p.init(), good);
        ASSERT_EQ(p.commit(), good);
        auto whole = p.f, sliced = p.f;
        const auto transform = [&](std::vector<T>& f, i64 first, i64 rows) {
            Block<T> block{};
            block.f = f.data() + first * 9, block.dpar = p.dpar.data(), block.ipar = p.ipar;
            block.spectrum = block.dpar + 5, block.nx = 8, block.ny = rows - 1, block.handle = p.handles[0];
            auto* const loop = transforms_of_rows<T>(sides);
            loop(&block);
            EXPECT_EQ(block.status, 0);
        };
        transform(whole, 0, 6);
        for (const i64 first : {0, 1, 3}) transform(sliced, first, first == 0 ? 1 : first == 1 ? 2 : 3);
        EXPECT_EQ(whole, sliced) << sides;
        EXPECT_NE(whole, p.f);
    }
}

TYPED_TEST(PoissonLife, gives_corners_to_the_last_side)
{
    using T = TypeParam;
    Problem<T, 2> p("dddd", cells_2d, T(0));
    for (int side = 0; side < 4; ++side) p.bd[side].assign(p.bd[side].size(), T(side + 1));
    ASSERT_EQ(p.run(), good);
    EXPECT_EQ(p.f.front(), 3);
    EXPECT_EQ(p.f[8], 3);
    EXPECT_EQ(p.f[9 * 5], 4);
    EXPECT_EQ(p.f.back(), 4);
    EXPECT_EQ(p.f[9], 1);
    EXPECT_EQ(p.f[17], 2);
}

TYPED_TEST(PoissonLife, takes_missing_values_of_sides_as_zeros)
{
    using T = TypeParam;
    Problem<T, 2> told("dnnd", cells_2d, T(0)), untold("dnnd", cells_2d, T(0));
    told.draw(4);
    untold.f = told.f;
    for (auto& values : told.bd) values.assign(values.size(), T(0));
    EXPECT_EQ(told.run(), good);
    untold.init();
    for (auto* step : {commit_2d<T>, solve_2d<T>}) {
        step(untold.f.data(), nullptr, nullptr, nullptr, nullptr, &untold.handles[0], untold.ipar, untold.dpar.data(),
             &untold.stat);
        EXPECT_EQ(untold.stat, good);
    }
    EXPECT_EQ(untold.f, told.f);
}

TYPED_TEST(PoissonLife, is_given_back_once)
{
    using T = TypeParam;
    Problem<T, 2> p("ppdd", cells_2d, T(0));
    ASSERT_EQ(p.run(), good);
    EXPECT_EQ(p.free(), 0);
    EXPECT_EQ(p.ipar[ipar_status], 0);
    EXPECT_EQ(p.free(), transform_failed);
    Problem<T, 3> box("ddnnpp", cells_3d, T(0));
    ASSERT_EQ(box.run(), good);
    EXPECT_EQ(box.free(), 0);
    EXPECT_EQ(box.free(), transform_failed);
}

TYPED_TEST(PoissonLife, ends_without_a_leak_wherever_memory_runs_out)
{
    using T = TypeParam;
    for (const char* sides : {"dddddd", "ppppnn"}) {
        i64 stat = 0, failures = 0;
        each_allocation_fails(
            [&] {
                Problem<T, 3> p(sides, cells_3d, T(1));
                stat = p.run();
                if (p.handles[0] != nullptr) p.free();
                else if (p.handles[1] != nullptr) ADD_FAILURE() << "a transform is left";
            },
            [&] {
                EXPECT_TRUE(stat == good || stat == not_allowed || stat == transform_failed) << stat;
                failures += stat != good;
            });
        EXPECT_GT(failures, 3);
    }
}

// ---- Messages

std::string whole(bool error, const std::string& line) { return "\n" + message(error ? 0x0b : 0x0c) + line + "\n\n"; }

// Runs the case silently, on standard output and into the log, in both languages. number: of the text in the C wording;
// value: what goes into it, if there is a position in it.
template <class Value>
void expect_message(bool error, int number, Value value, const std::function<void(i64* switches, bool fortran)>& run)
{
    for (const bool fortran : {false, true})
        for (const i64 channel : {-1, 0, 1}) {
            InFolder folder;
            i64 switches[2] = {error ? channel : 0, error ? 0 : channel}; // the other class is silent
            const std::string printed = shown([&] { run(switches, fortran); });
            std::string line;
            if constexpr (std::is_same_v<Value, const char*> || std::is_null_pointer_v<Value>)
                line = message(number, value);
            else line = message(number + (fortran ? 50 : 0), value);
            EXPECT_EQ(printed, channel > 0 ? whole(error, line) : "");
            EXPECT_EQ(log_in_folder(log_name), channel < 0 ? whole(error, line) : "");
        }
}

template <class T, int axes> struct Refusal {
    int number;
    i64 status;
    std::function<void(Problem<T, axes>&)> spoil;
    std::function<double(const Problem<T, axes>&)> shown; // none: no position in the text
    bool is_real = false;
};

template <class T, int axes>
void expect_refusals(const i64 (&cells)[axes], const char* sides, const std::vector<Refusal<T, axes>>& refusals)
{
    for (const auto& refusal : refusals) {
        const auto run = [&](i64* switches, bool fortran) {
            Problem<T, axes> p(sides, cells, T(1));
            p.init();
            p.ipar[ipar_errors] = switches[0], p.ipar[ipar_warnings] = switches[1], p.ipar[ipar_language] = !fortran;
            refusal.spoil(p);
            p.commit();
            EXPECT_EQ(p.stat, refusal.status) << refusal.number;
            EXPECT_EQ(p.ipar[ipar_status], refusal.status) << refusal.number;
            p.ipar[ipar_errors] = 0;
            EXPECT_EQ(p.solve(), not_ready) << refusal.number;
        };
        Problem<T, axes> spoilt(sides, cells, T(1));
        spoilt.init();
        refusal.spoil(spoilt);
        if (!refusal.shown) expect_message(true, refusal.number, nullptr, run);
        else if (refusal.is_real) expect_message(true, refusal.number, refusal.shown(spoilt), run);
        else expect_message(true, refusal.number, static_cast<long long>(refusal.shown(spoilt)), run);
    }
}

template <class T, int axes> Refusal<T, axes> bad_ipar(int number, int position, i64 value, i64 status = not_allowed)
{
    return {number, status, [=](auto& p) { p.ipar[position] = value; },
            [=](const auto&) { return static_cast<double>(value); }};
}
template <class T, int axes> Refusal<T, axes> bad_dpar(int number, int position, double value)
{
    return {number, not_allowed, [=](auto& p) { p.dpar[position] = static_cast<T>(value); },
            [=](const auto&) { return value; }, true};
}

TYPED_TEST(PoissonLife, refuses_what_makes_no_sense_with_a_message)
{
    using T = TypeParam;
    expect_refusals<T, 2>(cells_2d, "dndn",
                          {bad_ipar<T, 2>(117, 0, 5, not_ready),
                           bad_ipar<T, 2>(117, 0, 9999, not_ready),
                           bad_ipar<T, 2>(117, 0, -9, not_ready),
                           bad_ipar<T, 2>(100, 10, 0),
                           bad_ipar<T, 2>(101, 11, -1),
                           bad_ipar<T, 2>(106, 3, 16),
                           bad_ipar<T, 2>(107, 4, -1),
                           bad_ipar<T, 2>(108, 5, 3),
                           bad_ipar<T, 2>(109, 6, 9),
                           bad_ipar<T, 2>(110, 7, -1),
                           bad_ipar<T, 2>(113, 4, 2),
                           bad_ipar<T, 2>(114, 6, 2),
                           bad_dpar<T, 2>(103, 0, 0),
                           bad_dpar<T, 2>(104, 1, -2),
                           {120, not_allowed, [](auto& p) { p.ipar[0] = 99, p.dpar[1] = 0; }, nullptr}});
    expect_refusals<T, 3>(cells_3d, "ddddnn",
                          {bad_ipar<T, 3>(102, 12, 0), bad_ipar<T, 3>(111, 8, 4), bad_ipar<T, 3>(112, 9, -1),
                           bad_ipar<T, 3>(115, 8, 2), bad_dpar<T, 3>(105, 2, -0.5)});
}

TYPED_TEST(PoissonLife, tells_of_transforms_that_cannot_be_made_behind_their_own_message)
{
    using T = TypeParam;
    for (const int axis : {0, 1}) {
        Problem<T, 3> p("dddddd", cells_3d, T(1));
        p.init();
        p.ipar[ipar_errors] = 1, p.ipar[ipar_cells + axis] = 1;
        const std::string printed = shown([&] { p.commit(); }), told = whole(true, message(axis == 0 ? 123 : 125));
        EXPECT_EQ(p.stat, transform_failed);
        EXPECT_EQ(p.handles[0], nullptr); // the one along x is given back
        EXPECT_EQ(printed.find(message(451, 1LL)) != std::string::npos, true) << printed;
        EXPECT_EQ(printed.substr(printed.size() - told.size()), told);
        p.ipar[ipar_errors] = 0;
    }
}

TYPED_TEST(PoissonLife, warns_of_a_negative_q_and_goes_on)
{
    using T = TypeParam;
    expect_message(false, 129, -2.5, [](i64* switches, bool fortran) {
        Problem<T, 2> p("dddd", cells_2d, T(-2.5));
        p.init();
        p.ipar[ipar_warnings] = switches[1], p.ipar[ipar_language] = !fortran;
        EXPECT_EQ(p.commit(), good);
        EXPECT_EQ(p.solve(), good);
    });
}

TYPED_TEST(PoissonLife, tells_that_a_constant_was_chosen)
{
    using T = TypeParam;
    expect_message(false, 128, nullptr, [](i64* switches, bool fortran) {
        Problem<T, 2> p("nnpp", cells_2d, T(0));
        p.init();
        p.ipar[ipar_warnings] = switches[1], p.ipar[ipar_language] = !fortran;
        EXPECT_EQ(p.commit(), good);
        EXPECT_EQ(p.solve(), singular);
    });
}

TYPED_TEST(PoissonLife, tells_of_sides_that_changed_after_the_commit)
{
    using T = TypeParam;
    expect_message(true, 118, nullptr, [](i64* switches, bool fortran) {
        Problem<T, 2> p("dddd", cells_2d, T(0));
        p.init();
        p.commit();
        p.ipar[ipar_errors] = switches[0], p.ipar[ipar_language] = !fortran;
        p.ipar[4] = 2;
        EXPECT_EQ(p.solve(), not_allowed);
        p.ipar[ipar_errors] = 0;
    });
}

TYPED_TEST(PoissonLife, lives_without_a_folder_for_its_log)
{
    InFolder folder;
    Problem<TypeParam, 2> p("dddd", cells_2d, TypeParam(0));
    p.init();
    p.ipar[ipar_errors] = -1, p.ipar[ipar_status] = 7;
    folder.vanish();
    EXPECT_EQ(shown([&] { p.commit(); }), message(0) + message(201) + message(202));
    EXPECT_EQ(p.stat, not_ready);
}

TEST(PoissonLetters, are_compared_at_their_place)
{
    auto* const compare = kernel<kernels::pdepl::chr_cpm>();
    const i64 first = 1, third = 3;
    EXPECT_NE(compare("dnp", "d", &first), 0);
    EXPECT_EQ(compare("dnp", "D", &first), 0);
    EXPECT_NE(compare("dnp", "p", &third), 0);
}

} // namespace
} // namespace orv::test
