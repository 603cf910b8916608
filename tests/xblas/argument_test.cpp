// Bad arguments: what each family reports for them and in which order it looks, what it takes for nothing to do, and
// what each precision is.
#include "tests/xblas/problem.h"
#include "tests/xblas/signature.h"

#include <algorithm>
#include <map>

namespace orv::test::extended {
namespace {

// The arguments of any routine by name, good ones to begin with.
struct Arguments {
    std::map<std::string, i64> value{{"order", column_major},
                                     {"trans", no_trans},
                                     {"transa", no_trans},
                                     {"transb", no_trans},
                                     {"uplo", upper},
                                     {"diag", non_unit},
                                     {"side", left},
                                     {"conj", no_conj},
                                     {"m", 3},
                                     {"n", 4},
                                     {"k", 2},
                                     {"kl", 1},
                                     {"ku", 1},
                                     {"lda", 5},
                                     {"ldb", 5},
                                     {"ldc", 5},
                                     {"ldt", 5},
                                     {"incx", 1},
                                     {"incy", 1},
                                     {"incw", 1},
                                     {"prec", double_},
                                     {"alpha", 2},
                                     {"beta", 3}};
};

// One check: a bad value of an argument, and what is reported.
struct Check {
    std::string argument;
    i64 bad;
    i64 code;
    std::string reported = argument; // the argument whose value is reported; empty: 0
};

// The checks of a family in their order. Bounds hold for the good arguments, column-major.
const std::map<std::string, std::vector<Check>> checks{
    {"dot", {{"n", -1, -2}, {"incx", 0, -5}, {"incy", 0, -8}}},
    {"sum", {{"n", -1, -1}, {"incx", 0, -3}}},
    {"axpby", {{"incx", 0, -4}, {"incy", 0, -7}}},
    {"waxpby", {{"incx", 0, -4}, {"incy", 0, -7}, {"incw", 0, -9}}},
    {"gemv", {{"m", -1, -3}, {"n", 0, -4}, {"n", -1, -4}, {"incx", 0, -9}, {"incy", 0, -12}, {"lda", 2, -7}}},
    {"gemv2", {{"m", -1, -3}, {"n", 0, -4}, {"incx", 0, -10}, {"incy", 0, -13}, {"lda", 2, -7}}},
    {"gbmv",
     {{"order", 103, -1},
      {"trans", 110, -2},
      {"trans", conj, -2},
      {"m", -1, -3},
      {"n", -1, -4},
      {"kl", -1, -5},
      {"kl", 3, -5},
      {"ku", -1, -6},
      {"ku", 4, -6},
      {"lda", 2, -9},
      {"incx", 0, -11},
      {"incy", 0, -14}}},
    {"gbmv2",
     {{"order", 103, -1},
      {"trans", 110, -2},
      {"m", -1, -3},
      {"n", -1, -4},
      {"kl", -1, -5},
      {"kl", 3, -5},
      {"ku", -1, -6},
      {"ku", 4, -6},
      {"lda", 2, -9},
      {"incx", 0, -12},
      {"incy", 0, -15}}},
    {"symv", {{"lda", 3, -3, "n"}, {"incx", 0, -8}, {"incy", 0, -11}}},
    {"hemv",
     {{"prec", 210, -12},
      {"order", 100, -1},
      {"uplo", 123, -2},
      {"lda", 3, -3, "n"},
      {"incx", 0, -8},
      {"incy", 0, -11}}},
    {"symv2", {{"lda", 3, -6}, {"incx", 0, -9}, {"incy", 0, -12}}},
    {"hemv2", {{"lda", 3, -6}, {"incx", 0, -9}, {"incy", 0, -12}}},
    {"sbmv",
     {{"prec", 215, -13},
      {"order", 100, -1},
      {"uplo", 123, -2},
      {"k", -1, -4},
      {"k", 5, -4},
      {"lda", 2, -7},
      {"incx", 0, -9},
      {"incy", 0, -12}}},
    {"hbmv",
     {{"prec", 215, -13},
      {"order", 100, -1},
      {"uplo", 123, -2},
      {"k", -1, -4},
      {"k", 5, -4},
      {"lda", 2, -7},
      {"incx", 0, -9},
      {"incy", 0, -12}}},
    {"spmv", {{"order", 100, -1}, {"uplo", 123, -2}, {"incx", 0, -7}, {"incy", 0, -10}}},
    {"hpmv", {{"order", 100, -1}, {"uplo", 123, -2}, {"incx", 0, -7}, {"incy", 0, -10}}},
    {"ge_sum_mv",
     {{"prec", 0, -14},
      {"order", 100, -1},
      {"m", -1, -2},
      {"n", -1, -3},
      {"lda", 2, -6},
      {"ldb", 2, -11},
      {"incx", 0, -8},
      {"incy", 0, -13}}},
    {"trmv",
     {{"order", 100, 0, ""},
      {"uplo", 0, 0, ""},
      {"trans", conj, 0, ""},
      {"diag", 130, 0, ""},
      {"ldt", -2, 0, ""},
      {"incx", 0, 0, ""},
      {"n", 0, -4},
      {"n", -1, -4}}},
    {"tpmv", {{"order", 100, -1}, {"uplo", 0, -2}, {"incx", 0, -9}}},
    {"trsv",
     {{"order", 100, 0, ""},
      {"uplo", 0, 0, ""},
      {"trans", conj, 0, ""},
      {"diag", 130, 0, ""},
      {"ldt", 3, 0, ""},
      {"incx", 0, 0, ""}}},
    {"tbsv",
     {{"order", 100, -1},
      {"uplo", 0, -2},
      {"trans", 110, -2, "uplo"},
      {"diag", 133, -4},
      {"n", -1, -5},
      {"k", 4, -6},
      {"ldt", 2, -9},
      {"ldt", 0, -9},
      {"incx", 0, -11, ""},
      {"prec", 300, -13}}},
    {"gemm", {{"m", -1, -4}, {"n", -1, -5}, {"k", -1, -6}, {"ldc", 2, -14}, {"lda", 2, -9}, {"ldb", 1, -11}}},
    {"symm", {}},
    {"hemm", {}},
};

class Caller {
public:
    explicit Caller(const Member& m) : m_(m), alpha_(m.type, 1), beta_(m.type, 1), y_(m.type, 64)
    {
        Random random(41);
        for (const std::string name : {"a", "b", "x"}) {
            const char type = name == "a" || (name == "b" && m.op == "ge_sum_mv") ? m.first
                              : m.op == "dot" || m.op.ends_with("axpby")          ? m.first
                                                                                  : m.second;
            inputs_.emplace(name, Array(type, 64)).first->second.fill(random);
        }
        y_.fill(random);
    }
    // What was reported; whether anything was written.
    std::vector<Report> operator()(const Arguments& arguments)
    {
        const auto given = [&](const std::string& name) { return arguments.value.at(name); };
        alpha_.set(0, static_cast<double>(given("alpha")), 0);
        beta_.set(0, static_cast<double>(given("beta")), 0);
        const std::string before = y_.bits();
        reports().clear();
        call_by_name(m_, given("prec"), given, [&](const std::string& name) -> const Array& {
            if (name == "alpha") return alpha_;
            if (name == "beta") return beta_;
            const auto input = inputs_.find(name == "tail" ? "x" : name);
            return input != inputs_.end() ? input->second : y_;
        });
        wrote = y_.bits() != before;
        return reports();
    }
    bool wrote = false;

private:
    Member m_;
    Array alpha_, beta_, y_;
    std::map<std::string, Array> inputs_;
};

bool applies(const Member& m, const Check& c)
{
    return (c.argument != "order" || m.for_c) && (c.argument != "prec" || m.has_prec);
}

TEST(ExtendedArguments, are_checked_in_each_familys_order_with_its_codes)
{
    for (const Member& m : members()) {
        Caller call(m);
        const std::vector<Check>& list = checks.at(m.op);
        for (std::size_t i = 0; i < list.size(); ++i)
            for (std::size_t j = i; j < list.size(); ++j) {
                const Check &first = list[i], &later = list[j];
                if (!applies(m, first) || !applies(m, later)) continue;
                if (i != j && first.argument == later.argument) continue;
                SCOPED_TRACE(m.name + ": " + first.argument + "=" + std::to_string(first.bad) + " " + later.argument +
                             "=" + std::to_string(later.bad));
                Arguments arguments;
                arguments.value[later.argument] = later.bad;
                arguments.value[first.argument] = first.bad;
                // Where nothing is to do, or the precision is none, some families look no further.
                if (m.op == "tbsv" && arguments.value["n"] == 0) continue;
                const i64 value = first.reported.empty() ? 0 : arguments.value[first.reported];
                ASSERT_EQ(call(arguments), (std::vector<Report>{{m.reported(), first.code, value, "null"}}));
                ASSERT_FALSE(call.wrote);
            }
    }
}

TEST(ExtendedArguments, that_are_good_are_not_reported)
{
    for (const Member& m : members()) {
        SCOPED_TRACE(m.name);
        Caller call(m);
        EXPECT_TRUE(call(Arguments{}).empty());
        EXPECT_TRUE(call.wrote);
    }
}

TEST(ExtendedArguments, with_an_unknown_precision_do_nothing_silently_in_most_families)
{
    for (const Member& m : members()) {
        const auto& list = checks.at(m.op);
        if (!m.has_prec || std::any_of(list.begin(), list.end(), [](const Check& c) { return c.argument == "prec"; }))
            continue;
        SCOPED_TRACE(m.name);
        Caller call(m);
        for (const i64 prec : {0, 210, 215}) {
            Arguments bad;
            bad.value["prec"] = prec;
            bad.value["incx"] = 0; // what is bad beside it is not looked at
            EXPECT_TRUE(call(bad).empty());
            EXPECT_FALSE(call.wrote);
        }
    }
}

// A routine of a family with some arguments changed: what it reports, and that it writes nothing.
std::vector<Report> report(const char* name, std::initializer_list<std::pair<const char*, i64>> changes,
                           bool writes = false)
{
    const Member m(name);
    Caller call(m);
    Arguments arguments;
    for (const auto& [argument, value] : changes) arguments.value[argument] = value;
    const auto reported = call(arguments);
    EXPECT_EQ(call.wrote, writes) << name;
    return reported;
}
using Reports = std::vector<Report>;

TEST(ExtendedArguments, with_nothing_to_do_are_not_looked_at_in_some_families)
{
    for (const char* name : {"BLAS_dsymv_x", "BLAS_zhemv_x", "BLAS_dsymv2_x", "BLAS_dsbmv_x", "BLAS_dspmv_x"}) {
        EXPECT_EQ(report(name, {{"n", 0}, {"incx", 0}, {"lda", 0}}), Reports());
        EXPECT_EQ(report(name, {{"alpha", 0}, {"beta", 1}, {"incx", 0}, {"lda", 0}}), Reports());
    }
    EXPECT_EQ(report("BLAS_dtpmv_x", {{"n", 0}, {"order", 0}}), Reports());
    EXPECT_EQ(report("BLAS_dge_sum_mv_x", {{"m", 0}, {"order", 0}}), Reports());
    EXPECT_EQ(report("BLAS_dtrsv_x", {{"n", 0}}), Reports());
    EXPECT_EQ(report("BLAS_dtbsv_x", {{"n", 0}, {"k", -1}, {"prec", 0}}), Reports());
    EXPECT_EQ(report("BLAS_dgemm_x", {{"m", 0}}), Reports());
    EXPECT_EQ(report("BLAS_dgemv_x", {{"m", 0}}), Reports());
    EXPECT_EQ(report("BLAS_daxpby_x", {{"n", -5}}), Reports());
}

TEST(ExtendedArguments, are_checked_before_a_look_at_what_is_to_do_in_others)
{
    EXPECT_EQ(report("BLAS_dsum_x", {{"n", 0}, {"incx", 0}}), (Reports{{"BLAS_dsum_x", -3, 0, "null"}}));
    EXPECT_EQ(report("BLAS_daxpby_x", {{"n", 0}, {"incx", 0}}), (Reports{{"BLAS_daxpby_x", -4, 0, "null"}}));
    EXPECT_EQ(report("BLAS_dgbmv_x", {{"alpha", 0}, {"beta", 1}, {"incy", 0}}),
              (Reports{{"BLAS_dgbmv_x", -14, 0, "null"}}));
    EXPECT_EQ(report("BLAS_dgemm_x", {{"k", 0}, {"lda", 0}}), (Reports{{"BLAS_dgemm_x", -9, 0, "null"}}));
    EXPECT_EQ(report("BLAS_dtrmv_x", {{"n", 0}}), (Reports{{"BLAS_dtrmv_x", -4, 0, "null"}}));
}

TEST(ExtendedArguments, bounds_for_leading_dimensions_follow_the_order)
{
    EXPECT_EQ(report("BLAS_dgemv_x", {{"order", row_major}, {"lda", 3}}), (Reports{{"BLAS_dgemv_x", -7, 3, "null"}}));
    EXPECT_EQ(report("BLAS_dgemv_x", {{"trans", trans}, {"lda", 3}}, true), Reports());
    EXPECT_EQ(report("BLAS_dgemv_x", {{"order", 9}, {"lda", 1}}, true), Reports()); // an unknown order has none
    // The routine with two vectors goes by the length of y alone.
    EXPECT_EQ(report("BLAS_dgemv2_x", {{"order", row_major}, {"m", 6}, {"lda", 4}}),
              (Reports{{"BLAS_dgemv2_x", -7, 4, "null"}}));
    EXPECT_EQ(report("BLAS_dgemv2_x", {{"trans", trans}, {"lda", 3}}), (Reports{{"BLAS_dgemv2_x", -7, 3, "null"}}));
    for (const i64 order : {row_major, i64(0)}) {
        EXPECT_EQ(report("BLAS_dgemm_x", {{"order", order}, {"ldc", 3}}), (Reports{{"BLAS_dgemm_x", -14, 3, "null"}}));
        EXPECT_EQ(report("BLAS_dgemm_x", {{"order", order}, {"lda", 1}}), (Reports{{"BLAS_dgemm_x", -9, 1, "null"}}));
        EXPECT_EQ(report("BLAS_dgemm_x", {{"order", order}, {"transa", trans}, {"lda", 2}}),
                  (Reports{{"BLAS_dgemm_x", -9, 2, "null"}}));
        EXPECT_EQ(report("BLAS_dgemm_x", {{"order", order}, {"ldb", 3}}), (Reports{{"BLAS_dgemm_x", -11, 3, "null"}}));
        EXPECT_EQ(report("BLAS_dgemm_x", {{"order", order}, {"transb", trans}, {"ldb", 1}}),
                  (Reports{{"BLAS_dgemm_x", -11, 1, "null"}}));
    }
    EXPECT_EQ(report("BLAS_dgemm_x", {{"transa", trans}, {"lda", 1}}), (Reports{{"BLAS_dgemm_x", -9, 1, "null"}}));
    EXPECT_EQ(report("BLAS_dgemm_x", {{"transb", trans}, {"ldb", 3}}), (Reports{{"BLAS_dgemm_x", -11, 3, "null"}}));
    EXPECT_EQ(report("BLAS_dge_sum_mv_x", {{"order", row_major}, {"lda", 3}}),
              (Reports{{"BLAS_dge_sum_mv", -6, 3, "null"}}));
}

TEST(ExtendedSymm, reports_nothing)
{
    for (const char* name : {"BLAS_dsymm_x", "BLAS_zhemm_x"})
        for (const auto& bad : {std::pair<const char*, i64>{"m", 0}, {"n", -1}, {"ldb", 2}, {"ldc", 2}, {"lda", 2}})
            EXPECT_EQ(report(name, {bad}), Reports()) << bad.first;
    EXPECT_EQ(report("BLAS_dsymm_x", {{"side", right}, {"lda", 3}}), Reports());
    EXPECT_EQ(report("BLAS_dsymm_x", {{"order", row_major}, {"ldc", 3}}), Reports());
    EXPECT_EQ(report("BLAS_dsymm_x", {{"alpha", 0}, {"beta", 1}}), Reports());
}

TEST(ExtendedTbsv, with_only_a_unit_diagonal_returns_at_once)
{
    for (const i64 prec : {double_, extra})
        EXPECT_EQ(report("BLAS_dtbsv_x", {{"k", 0}, {"alpha", 1}, {"diag", unit}, {"prec", prec}}), Reports());
}

TEST(ExtendedFpinfo, describes_every_precision)
{
    const auto c = kernel<i64(int, int)>("xblas", "BLAS_fpinfo_x");
    const auto fortran = kernel<i64(const int*, const int*)>("xblas", "blas_fpinfo_x");
    const std::map<int, std::vector<i64>> table{{211, {2, 24, 1, 1, -126, 127}},
                                                {212, {2, 53, 1, 1, -1022, 1023}},
                                                {213, {2, 53, 1, 1, -1022, 1023}},
                                                {214, {2, 105, 0, 0, -1022, 1023}}};
    for (int prec = 209; prec <= 216; ++prec)
        for (int what = 149; what <= 158; ++what) {
            const bool known = table.contains(prec) && what >= 151 && what <= 156;
            const i64 expected = known ? table.at(prec)[static_cast<std::size_t>(what - 151)] : 0;
            EXPECT_EQ(c(what, prec), expected);
            EXPECT_EQ(fortran(&what, &prec), expected);
        }
}

TEST(ExtendedMemory, stands_on_a_boundary_of_128_bytes)
{
    const auto take = kernel<void*(i64)>("xblas", "blas_malloc");
    const auto give = kernel<void(void*)>("xblas", "blas_free");
    void* block = take(1000);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 128, 0u);
    give(block);
}

TEST(ExtendedNames, are_all_read_by_the_parser)
{
    std::map<std::string, int> count;
    for (const Member& m : members()) ++count[m.op];
    const std::map<std::string, int> expected{
        {"axpby", 24}, {"dot", 56},   {"gbmv", 56}, {"gbmv2", 56}, {"ge_sum_mv", 56}, {"gemm", 56},
        {"gemv", 56},  {"gemv2", 56}, {"hbmv", 24}, {"hemm", 24},  {"hemv", 24},      {"hemv2", 24},
        {"hpmv", 24},  {"sbmv", 56},  {"spmv", 56}, {"sum", 8},    {"symm", 56},      {"symv", 56},
        {"symv2", 56}, {"tbsv", 24},  {"tpmv", 24}, {"trmv", 24},  {"trsv", 24},      {"waxpby", 56}};
    EXPECT_EQ(count, expected);
}

} // namespace
} // namespace orv::test::extended
