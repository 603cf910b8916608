// The names that the libraries export.
#include "tests/support/sanitized.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>
#include <string>
#include <unistd.h>

namespace {

std::set<std::string> exported(const std::string& library)
{
    std::set<std::string> names;
    FILE* list = popen(("nm -D --defined-only " + library).c_str(), "r");
    char address[64], kind[8], name[256];
    while (fscanf(list, "%63s %7s %255s", address, kind, name) == 3) names.insert(name);
    pclose(list);
    return names;
}

// Every routine of the interface, by its published name.
std::set<std::string> routines()
{
    std::set<std::string> names;
    const auto family = [&](const std::string& letters, const std::string& rest, const std::string& before = "") {
        for (const char t : letters) names.insert(before + t + rest);
    };
    for (const char* rest : {"axpy", "axpby", "scal", "copy", "swap", "rot", "rotg", "gemm"}) family("sdcz", rest);
    for (const char* rest : {"axpyi", "gthr", "gthrz", "sctr"}) family("sdcz", rest);
    for (const char* rest : {"dot", "rotm", "rotmg", "nrm2", "asum", "doti", "roti"}) family("sd", rest);
    for (const char* rest : {"dotu", "dotc", "dotui", "dotci"}) family("cz", rest);
    family("sdcz", "amax", "i"), family("sdcz", "amin", "i");
    for (const char* rest : {"gemv", "gbmv", "trmv", "trsv", "tbmv", "tbsv", "tpmv", "tpsv"}) family("sdcz", rest);
    for (const char* rest : {"ger", "symv", "sbmv", "spmv", "syr", "spr", "syr2", "spr2"}) family("sd", rest);
    for (const char* rest : {"geru", "gerc", "hemv", "hbmv", "hpmv", "her", "hpr", "her2", "hpr2"}) family("cz", rest);
    for (const char* rest : {"symm", "syrk", "syr2k", "trmm", "trsm"}) family("sdcz", rest);
    for (const char* rest : {"hemm", "herk", "her2k", "gemm3m"}) family("cz", rest);
    for (const char* name : {"csscal", "zdscal", "csrot", "zdrot", "scnrm2", "dznrm2", "scasum", "dzasum", "scabs1",
                             "dcabs1", "sdsdot", "dsdot"})
        names.insert(name);
    return names;
}

// What the interfaces offer beyond the BLAS.
std::set<std::string> extensions()
{
    std::set<std::string> names;
    for (const char t : std::string("sdcz"))
        for (const char* rest : {"omatcopy", "imatcopy", "geadd"}) names.insert(t + std::string(rest));
    return names;
}

bool is_sparse(const std::string& name)
{
    return std::regex_match(name, std::regex("[sdcz](axpyi|dot[uc]?i|gthrz?|sctr|roti)"));
}
bool is_lapack(const std::string& name) { return name == "crot" || name == "zrot"; }

TEST(Names, the_stand_in_exports_the_standard_names_and_no_others)
{
    std::set<std::string> expected{"xerbla_",         "xerbla_64_",   "xerbla_array_",  "xerbla_array_64_",
                                   "lsame_",          "lsame_64_",    "cblas_xerbla",   "cblas_xerbla_64",
                                   "cblas_xerbla64_", "RowMajorStrg", "CBLAS_CallFromC"};
    for (const std::string& name : routines()) {
        if (is_lapack(name)) continue;
        expected.insert({name + "_", name + "_64_"});
        if (is_sparse(name)) continue; // no published form
        if (std::regex_match(name,
                             std::regex("(s|d|ds|sds)dot|[cz]dot[uc]|i[sdcz]amax|(s|d|sc|dz)(nrm2|asum)|[sd]cabs1")))
            expected.insert(name + "sub_");
        const bool sub = std::regex_match(name, std::regex("[cz]dot[uc]"));
        const std::string c = "cblas_" + name + (sub ? "_sub" : "");
        expected.insert({c, c + "_64", c + "64_"});
    }
    for (const std::string& name : extensions())
        expected.insert({name + "_", name + "_64_", "cblas_" + name, "cblas_" + name + "_64", "cblas_" + name + "64_"});
    EXPECT_EQ(exported(ORV_BLAS), expected);
}

TEST(Names, the_stand_in_has_all_that_the_reference_exports)
{
    if (access(REFERENCE_BLAS, R_OK) != 0) GTEST_SKIP() << "no reference library at " REFERENCE_BLAS;
    const std::set<std::string> ours = exported(ORV_BLAS), theirs = exported(REFERENCE_BLAS);
    EXPECT_GT(theirs.size(), 300u);
    for (const std::string& name : theirs) EXPECT_TRUE(ours.contains(name)) << name;
}

TEST(Names, the_core_has_every_routine_in_three_forms)
{
    const std::set<std::string> core = exported(ORV_CORE);
    for (const std::string& name : routines())
        for (const char* prefix : {"orv_", "orv_blas_", "orv_blas_lp64_"})
            EXPECT_TRUE(core.contains(prefix + name)) << prefix << name;
}

TEST(Names, the_core_has_no_blas_that_is_not_listed_here)
{
    std::set<std::string> known = routines();
    known.insert({"scgemm", "dzgemm"}); // products of real and complex matrices: no published name
    for (const std::string& name : exported(ORV_CORE)) {
        std::smatch parts;
        if (!std::regex_match(name, parts, std::regex("orv_blas_(lp64_)?(.*)"))) continue;
        EXPECT_TRUE(known.contains(parts[2])) << name;
    }
}

TEST(Names, the_stand_in_has_the_name_of_the_reference_and_finds_the_core_beside_it)
{
    FILE* list = popen("readelf -d " ORV_BLAS, "r");
    std::string text;
    for (int c; (c = getc(list)) != EOF;) text += static_cast<char>(c);
    pclose(list);
    EXPECT_NE(text.find("Library soname: [libblas.so.3]"), std::string::npos) << text;
    EXPECT_NE(text.find("[$ORIGIN"), std::string::npos) << text;
    EXPECT_NE(text.find("Shared library: [liborv.so"), std::string::npos) << text;
    if (!orv::test::sanitized()) {
        EXPECT_EQ(text.find("libstdc++"), std::string::npos) << text;
    }
}

} // namespace
