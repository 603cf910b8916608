// What the interface promises besides results: plans that there are not, wisdom, memory, threads, names.
#include "tests/fftw/problem.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>
#include <thread>

namespace orv::test {
namespace {

template <class R> struct FftwContract : testing::Test {
    const Api<R>& api = ours<R>();
    std::vector<R> x = std::vector<R>(2000, R(1)), y = std::vector<R>(2000, R(2));
    using C = typename Api<R>::C;
    C *cx = reinterpret_cast<C*>(x.data()), *cy = reinterpret_cast<C*>(y.data());

    Plan line(int n, unsigned flags) { return api.plan("dft_1d", n, cx, cy, -1, flags); }
    // Whether there is a plan; it is not kept.
    bool is(Plan plan)
    {
        api.destroy(plan);
        return plan != nullptr;
    }
    std::string wisdom()
    {
        char* const text = api.template call<char*>("export_wisdom_to_string");
        const std::string copy = text;
        std::free(text);
        return copy;
    }
    int import(const std::string& text) { return api.template call<int>("import_wisdom_from_string", text.c_str()); }
    void forget() { api.template call<void>("forget_wisdom"); }
};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(FftwContract, Precisions);

TYPED_TEST(FftwContract, NoPlanOfNonsense)
{
    const auto& api = this->api;
    auto *const cx = this->cx, *const cy = this->cy;
    auto *const x = this->x.data(), *const y = this->y.data();
    const int n[] = {4, 0}, *none = nullptr;
    EXPECT_FALSE(this->is(api.plan("dft_1d", 0, cx, cy, -1, estimate)));
    EXPECT_FALSE(this->is(api.plan("dft_1d", -3, cx, cy, -1, estimate)));
    EXPECT_FALSE(this->is(api.plan("dft", 2, n, cx, cy, -1, estimate)));
    EXPECT_FALSE(this->is(api.plan("dft", -1, n, cx, cy, -1, estimate)));
    EXPECT_FALSE(this->is(api.plan("dft_1d", 4, cx, cy, 7, estimate))) << "a sign";
    EXPECT_FALSE(this->is(api.plan("many_dft", 1, n, -1, cx, none, 1, 4, cy, none, 1, 4, -1, estimate)));
    const Dim back{-4, 1, 1}, nothing{0, 1, 1}, four{4, 1, 1};
    EXPECT_FALSE(this->is(api.plan("guru64_dft", 1, &back, 0, none, cx, cy, -1, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_dft", 1, &nothing, 0, none, cx, cy, -1, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_dft", 1, &nothing, 1, &nothing, cx, cy, -1, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_dft", 1, &four, 1, &back, cx, cy, -1, estimate)));
    for (const int kind : {-1, 11}) EXPECT_FALSE(this->is(api.plan("r2r_1d", 8, x, y, kind, estimate))) << kind;
    const int redft00 = 3, kinds[] = {redft00, 10};
    EXPECT_FALSE(this->is(api.plan("r2r_1d", 1, x, y, redft00, estimate)));
    EXPECT_FALSE(this->is(api.plan("r2r_2d", 1, 4, x, y, redft00, 2, estimate)));
    EXPECT_TRUE(this->is(api.plan("r2r_2d", 2, 1, x, y, kinds[0], kinds[1], estimate)));
}

TYPED_TEST(FftwContract, NoPlanInPlaceWhereStridesDiffer)
{
    const auto& api = this->api;
    auto* const cx = this->cx;
    auto* const x = this->x.data();
    const Dim same{6, 2, 2}, other{6, 2, 3}, loop{5, 12, 12}, other_loop{5, 12, 13}, one{1, 12, 13}, unit{6, 1, 1},
        half_loop{5, 8, 4};
    const Dim *none = nullptr, *d = &same;
    const auto complex = [&](const Dim* dim, const Dim* l) {
        return this->is(api.plan("guru64_dft", 1, dim, 1, l, cx, cx, -1, estimate));
    };
    EXPECT_TRUE(complex(d, &loop));
    EXPECT_TRUE(complex(d, &one)) << "a stride that is not used";
    EXPECT_FALSE(complex(&other, &loop));
    EXPECT_FALSE(complex(d, &other_loop));
    const int dht = 2;
    EXPECT_TRUE(this->is(api.plan("guru64_r2r", 1, d, 1, &loop, x, x, &dht, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_r2r", 1, d, 1, &other_loop, x, x, &dht, estimate)));
    EXPECT_TRUE(this->is(api.plan("guru64_dft_r2c", 1, &unit, 1, &half_loop, x, cx, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_dft_r2c", 1, &unit, 1, &loop, x, cx, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_dft_r2c", 1, d, 0, none, x, cx, estimate)));
    EXPECT_TRUE(this->is(api.plan("guru64_split_dft", 1, d, 0, none, x, x + 20, x, x + 20, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_split_dft", 1, d, 0, none, x, x + 20, x, x + 40, estimate)));
    EXPECT_FALSE(this->is(api.plan("guru64_split_dft", 1, d, 0, none, x, x + 20, x + 20, x, estimate)));
}

TYPED_TEST(FftwContract, NothingToDoIsAPlanThatDoesNothing)
{
    const auto& api = this->api;
    const Dim four{4, 1, 1}, nothing{0, 1, 1};
    const Plan plan = api.plan("guru64_dft", 1, &four, 1, &nothing, this->cx, this->cy, -1, estimate);
    ASSERT_NE(plan, nullptr);
    const auto before = this->y;
    api.execute(plan), api.destroy(plan);
    EXPECT_EQ(this->y, before);
    api.destroy(nullptr);
}

TYPED_TEST(FftwContract, PlansRunOnOtherArraysAndOfManyThreads)
{
    using R = TypeParam;
    const auto& api = this->api;
    const int n = 60;
    const Plan plan = this->line(n, estimate),
               rows = api.plan("r2r_1d", n, this->x.data(), this->y.data(), 2, estimate);
    std::vector<std::vector<R>> results(4, std::vector<R>(3 * n));
    const auto run = [&](std::size_t t) {
        std::vector<R> in(2 * n + 1), out(2 * n + 1);
        using C = typename Api<R>::C;
        for (int i = 0; i < 200; ++i) { // of any alignment
            R *const from = in.data() + (t & 1), *const to = out.data() + (t & 1);
            for (int k = 0; k < 2 * n; ++k) from[k] = static_cast<R>(k * k % 17);
            api.template call<void>("execute_dft", plan, reinterpret_cast<C*>(from), reinterpret_cast<C*>(to));
            std::copy_n(to, 2 * n, results[t].begin());
            api.template call<void>("execute_r2r", rows, from, to);
            std::copy_n(to, n, results[t].begin() + 2 * n);
        }
    };
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < results.size(); ++t) threads.emplace_back(run, t);
    for (std::thread& t : threads) t.join();
    for (std::size_t t = 0; t < results.size(); ++t)
        for (std::size_t k = 0; k < results[t].size(); ++k)
            EXPECT_NEAR(results[t][k], results[0][k], 1000 * std::numeric_limits<R>::epsilon()) << t << " " << k;
    EXPECT_NEAR(
        results[0][0],
        [&] {
            R sum = 0;
            for (int k = 0; k < 2 * n; k += 2) sum += static_cast<R>(k * k % 17);
            return sum;
        }(),
        1000 * std::numeric_limits<R>::epsilon());
    api.destroy(plan), api.destroy(rows);
}

TYPED_TEST(FftwContract, WisdomOnlyPlansWhatIsKnown)
{
    this->forget();
    EXPECT_FALSE(this->is(this->line(8, wisdom_only)));
    EXPECT_TRUE(this->is(this->line(8, estimate)));
    EXPECT_TRUE(this->is(this->line(8, wisdom_only)));
    EXPECT_FALSE(this->is(this->line(9, wisdom_only)));
    // The same in other words.
    const Dim eight{8, 1, 1}, one{1, 77, 78};
    const Dim twice[] = {one, eight};
    const auto& api = this->api;
    EXPECT_TRUE(this->is(api.plan("guru64_dft", 2, twice, 1, &one, this->cx, this->cy, -1, wisdom_only)));
    EXPECT_FALSE(this->is(api.plan("guru64_dft", 2, twice, 1, &one, this->cx, this->cy, +1, wisdom_only)));
    EXPECT_FALSE(this->is(api.plan("guru64_dft", 2, twice, 1, &one, this->cx, this->cx, -1, wisdom_only)));
    // Loops in another order.
    const Dim loops[] = {{2, 16, 40}, {3, 32, 8}}, turned[] = {loops[1], loops[0]};
    const auto looped = [&](const Dim* l, unsigned flags) {
        return this->is(api.plan("guru64_dft", 1, &eight, 2, l, this->cx, this->cy, -1, flags));
    };
    EXPECT_FALSE(looped(loops, wisdom_only));
    EXPECT_TRUE(looped(loops, estimate));
    EXPECT_TRUE(looped(turned, wisdom_only));
    // Split plans too.
    auto* const x = this->x.data();
    const auto split = [&](unsigned flags) {
        return this->is(api.plan("guru64_split_dft", 1, &eight, 0, &one, x, x + 100, x + 200, x + 300, flags));
    };
    EXPECT_FALSE(split(wisdom_only));
    EXPECT_TRUE(split(estimate));
    EXPECT_TRUE(split(wisdom_only));
    const std::string text = this->wisdom();
    this->forget();
    EXPECT_FALSE(split(wisdom_only));
    EXPECT_EQ(this->import(text), 1);
    EXPECT_TRUE(split(wisdom_only));
    EXPECT_EQ(this->wisdom(), text);
    this->api.template call<void>("cleanup");
    EXPECT_FALSE(split(wisdom_only));
}

TYPED_TEST(FftwContract, WisdomOfOthersChangesNothing)
{
    this->forget();
    const std::string none = this->wisdom();
    this->is(this->line(8, estimate)), this->is(this->line(20, estimate));
    const std::string text = this->wisdom();
    this->forget();
    std::set<std::string> foreign{
        "", "foo", "()", "(", ")", "(fftw-3.3.10 fftw_wisdom #x458a31c8)", " " + text.substr(1)};
    for (std::size_t n = 0; n + 2 < text.size(); ++n) foreign.insert(text.substr(0, n)); // cut anywhere
    for (const char* letter : {"\x01", "(", ")", "X", "\n"})
        foreign.insert(std::string(text).insert(text.find("dims"), letter));
    for (const std::string& t : foreign) {
        EXPECT_EQ(this->import(t), 0) << t;
        EXPECT_EQ(this->wisdom(), none) << t;
    }
    if (debian<TypeParam>().there()) { // neither likes the other's
        const auto& debians = debian<TypeParam>();
        debians.destroy(debians.plan("dft_1d", 60, this->cx, this->cy, -1, measure));
        char* const theirs = debians.template call<char*>("export_wisdom_to_string");
        EXPECT_EQ(this->import(theirs), 0);
        EXPECT_EQ(debians.template call<int>("import_wisdom_from_string", text.c_str()), 0);
        std::free(theirs);
    }
}

TYPED_TEST(FftwContract, WisdomGoesByAnyRoad)
{
    const auto& api = this->api;
    this->forget();
    this->is(this->line(8, estimate)), this->is(this->line(20, estimate));
    const std::string text = this->wisdom();
    std::string letters;
    api.template call<void>(
        "export_wisdom", +[](char c, void* to) { *static_cast<std::string*>(to) += c; }, static_cast<void*>(&letters));
    EXPECT_EQ(letters, text);
    std::FILE* const file = std::tmpfile();
    api.template call<void>("export_wisdom_to_file", file);
    api.template call<void>("export_wisdom_to_file", file);
    std::rewind(file);
    for (int twice = 0; twice < 2; ++twice) { // one text behind the other
        this->forget();
        EXPECT_EQ(api.template call<int>("import_wisdom_from_file", file), 1) << twice;
        EXPECT_EQ(this->wisdom(), text);
    }
    EXPECT_EQ(api.template call<int>("import_wisdom_from_file", file), 0) << "its end";
    std::fclose(file);
    this->forget();
    std::istringstream in(text);
    EXPECT_EQ(api.template call<int>(
                  "import_wisdom", +[](void* from) { return static_cast<std::istringstream*>(from)->get(); },
                  static_cast<void*>(&in)),
              1);
    EXPECT_EQ(this->wisdom(), text);
    EXPECT_EQ(api.template call<int>("import_wisdom_from_filename", "/nowhere/at/all"), 0);
    EXPECT_EQ(api.template call<int>("export_wisdom_to_filename", "/nowhere/at/all"), 0);
    EXPECT_EQ(this->wisdom(), text);
}

TYPED_TEST(FftwContract, OperationsAndPlansCanBeAskedFor)
{
    const auto& api = this->api;
    const Plan plan = this->line(1024, estimate);
    double adds = 0, products = 0, both = 1;
    api.template call<void>("flops", plan, &adds, &products, &both);
    EXPECT_EQ(adds + products + 2 * both, 5 * 1024 * 10);
    EXPECT_GT(api.template call<double>("cost", plan), 0);
    EXPECT_GT(api.template call<double>("estimate_cost", plan), 0);
    char* const text = api.template call<char*>("sprint_plan", plan);
    EXPECT_EQ(text[0], '(');
    EXPECT_EQ(text[std::strlen(text) - 1], ')');
    EXPECT_NE(std::strstr(text, "orv"), nullptr);
    std::FILE* const file = std::tmpfile();
    api.template call<void>("fprint_plan", plan, file);
    std::rewind(file);
    char printed[1000] = "";
    EXPECT_EQ(std::fread(printed, 1, sizeof printed - 1, file), std::strlen(text));
    EXPECT_STREQ(printed, text);
    std::fclose(file), std::free(text), api.destroy(plan);
}

TYPED_TEST(FftwContract, MemoryIsAligned)
{
    const auto& api = this->api;
    for (const std::size_t n : {0, 1, 100, 100000}) {
        auto* const block = api.template call<void*>("malloc", n);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0u);
        std::memset(block, 0, n);
        auto* const reals = static_cast<TypeParam*>(block);
        EXPECT_EQ(api.template call<int>("alignment_of", reals), 0);
        EXPECT_EQ(api.template call<int>("alignment_of", reals + 1), static_cast<int>(sizeof(TypeParam)));
        api.template call<void>("free", block);
    }
    const std::size_t n = 10;
    api.template call<void>("free", api.template call<TypeParam*>("alloc_real", n));
    api.template call<void>("free", api.template call<void*>("alloc_complex", n));
    const void* nothing = nullptr;
    api.template call<void>("free", nothing);
}

TYPED_TEST(FftwContract, ThreadsAreThoseOfThePlanner)
{
    const auto& api = this->api;
    EXPECT_EQ(api.template call<int>("init_threads"), 1);
    EXPECT_EQ(api.template call<int>("planner_nthreads"), 1);
    api.template call<void>("plan_with_nthreads", 3);
    EXPECT_EQ(api.template call<int>("planner_nthreads"), 3);
    for (const int count : {3, 0, -1, 1 << 20}) {
        api.template call<void>("plan_with_nthreads", count);
        const Plan plan = this->line(500, estimate);
        ASSERT_NE(plan, nullptr) << count;
        api.execute(plan), api.destroy(plan);
        EXPECT_EQ(this->y[0], TypeParam(500));
    }
    api.template call<void>("make_planner_thread_safe");
    api.template call<void>("set_timelimit", 1.0);
    api.template call<void>("cleanup_threads");
    EXPECT_EQ(api.template call<int>("planner_nthreads"), 1);
}

// What FFTW's C header declares, and for Fortran what its library exports.
TYPED_TEST(FftwContract, EveryDocumentedNameIsThere)
{
    std::istringstream names(
        "execute execute_dft execute_dft_r2c execute_dft_c2r execute_r2r execute_split_dft "
        "execute_split_dft_r2c execute_split_dft_c2r destroy_plan forget_wisdom cleanup set_timelimit "
        "plan_with_nthreads planner_nthreads init_threads cleanup_threads threads_set_callback "
        "make_planner_thread_safe export_wisdom_to_filename export_wisdom_to_file "
        "export_wisdom_to_string export_wisdom import_system_wisdom import_wisdom_from_filename "
        "import_wisdom_from_file import_wisdom_from_string import_wisdom fprint_plan print_plan "
        "sprint_plan malloc alloc_real alloc_complex free flops estimate_cost cost alignment_of "
        "version cc codelet_optim");
    const std::string start = sizeof(TypeParam) == 4 ? "fftwf_" : "fftw_";
    for (std::string name; names >> name;) EXPECT_NO_THROW(this->api.symbol(start + name));
    EXPECT_EQ(std::strncmp(static_cast<const char*>(this->api.symbol(start + "version")), "fftw-3", 6), 0);
    NEED_DEBIAN(TypeParam);
    const std::string fortran = sizeof(TypeParam) == 4 ? "sfftw_" : "dfftw_";
    const std::string path = sizeof(TypeParam) == 4 ? DEBIAN_FFTW3F : DEBIAN_FFTW3;
    int found = 0;
    for (const std::string& library : {path, path.substr(0, path.find(".so")) + "_threads.so.3"}) {
        std::FILE* const list = popen(("nm -D --defined-only " + library + " 2>/dev/null").c_str(), "r");
        char address[64], kind[8], name[256];
        while (fscanf(list, "%63s %7s %255s", address, kind, name) == 3)
            if (std::string(name).rfind(fortran, 0) == 0) {
                ++found;
                EXPECT_NO_THROW(this->api.symbol(name));
            }
        pclose(list);
    }
    EXPECT_GE(found, 90);
}

TYPED_TEST(FftwContract, TheLibrariesOfThreadsLeadToTheLibraryItself)
{
    const std::string path = sizeof(TypeParam) == 4 ? ORV_FFTW3F : ORV_FFTW3;
    for (const char* kind : {"_threads", "_omp"}) {
        const std::string name = path.substr(0, path.find(".so")) + kind + ".so.3";
        void* const library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        const char* const symbol = sizeof(TypeParam) == 4 ? "fftwf_execute" : "fftw_execute";
        EXPECT_EQ(dlsym(library, symbol), this->api.symbol(symbol));
    }
}

} // namespace
} // namespace orv::test
