// Bad arguments: found in the order of the reference, reported to the error routine of the interface that was called,
// with name and position; nothing is written.
#include "tests/compat/errors.h"

#include "tests/compat/expect.h"
#include "tests/compat/helpers/matrix_routines.h"

#include <orv/status.h>

#include <cctype>
#include <cstdarg>
#include <functional>
#include <ostream>

using namespace orv;
using namespace orv::test;

namespace {

std::vector<Report> reports;

void record(const char* routine, std::string name, i64 position, std::string text = "")
{
    reports.push_back({routine, std::move(name), position, std::move(text)});
}

std::string format(const char* form, va_list arguments)
{
    char text[256];
    vsnprintf(text, sizeof text, form, arguments);
    return text;
}

} // namespace

#define REPLACE extern "C" __attribute__((visibility("default"))) void
REPLACE xerbla_(const char* name, const i32* position, std::size_t length)
{
    record("xerbla_", {name, length}, *position);
}
REPLACE xerbla_64_(const char* name, const i64* position, std::size_t length)
{
    record("xerbla_64_", {name, length}, *position);
}
REPLACE orv_serv_xerbla(const char* name, const i64* negated_position, int length)
{
    record("orv_serv_xerbla", {name, static_cast<std::size_t>(length)}, -*negated_position);
}
#define REPLACE_CBLAS(symbol, Integer)                                                                                 \
    REPLACE symbol(Integer position, const char* name, const char* form, ...)                                          \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, form);                                                                                     \
        record(#symbol, name, position, format(form, arguments));                                                      \
        va_end(arguments);                                                                                             \
    }
REPLACE_CBLAS(cblas_xerbla, i32)
REPLACE_CBLAS(cblas_xerbla_64, i64)
REPLACE_CBLAS(cblas_xerbla64_, i64)

std::ostream& orv::test::operator<<(std::ostream& stream, const Report& r)
{
    return stream << r.routine << "(" << r.name << ", " << r.position << ", " << r.text << ")";
}

std::vector<Report> orv::test::take_reports() { return std::exchange(reports, {}); }

namespace {

std::string upper(std::string name)
{
    for (char& c : name) c = static_cast<char>(std::toupper(c));
    name.resize(6, ' ');
    return name;
}

// Who hears of a bad argument, and under which name.
Report expected_report(const Interface& via, const std::string& routine, i64 position, std::string text = "")
{
    switch (via.style) {
    case Style::pointer:
        return {"orv_serv_xerbla", upper(routine), position, ""};
    case Style::fortran:
        return {via.bits == 32 ? "xerbla_" : "xerbla_64_", upper(routine), position, ""};
    default:
        return {"cblas_xerbla" + std::string(via.suffix), "cblas_" + routine, position, text};
    }
}

void handler(const char* routine, int argument) { record("handler", routine, argument); }

// Calls with arguments of which numbers 1 to n are named by position; C is m by n with a guard of its own.
template <class T> struct GemmCall {
    char transa = 'N', transb = 'T';
    int layout = 102, order_a = 111, order_b = 112;
    i64 m = 3, n = 4, k = 5, lda = 5, ldb = 5, ldc = 5;

    void run(const Interface& via) const
    {
        std::vector<T> a(64, one<T>), b(64, one<T>), c(64, one<T>);
        const auto untouched = c;
        const std::string routine = std::string(1, letter<T>) + "gemm";
        if (via.style == Style::cblas)
            call<void>(via, routine, layout, order_a, order_b, Int{m}, Int{n}, Int{k}, one<T>, a.data(), Int{lda},
                       b.data(), Int{ldb}, zero<T>, c.data(), Int{ldc});
        else if (via.style == Style::value) {
            status = call<int>(via, routine, transa, transb, Int{m}, Int{n}, Int{k}, one<T>, a.data(), Int{lda},
                               b.data(), Int{ldb}, zero<T>, c.data(), Int{ldc});
        } else
            call<void>(via, routine, transa, transb, Int{m}, Int{n}, Int{k}, one<T>, a.data(), Int{lda}, b.data(),
                       Int{ldb}, zero<T>, c.data(), Int{ldc});
        EXPECT_TRUE(c == untouched);
    }
    mutable orv_status status = 0;
};

// Spoilers, in the order in which the reference tests: each with the position that it reports.
template <class Call> struct Spoiler {
    i64 position;
    std::function<void(Call&)> spoil;
    std::string text = {};
};

// Spoils one argument, and then it together with all that are tested later: the report is the same.
template <class Call>
void each_is_found_first(const Interface& via, const std::string& routine, const Call& good,
                         const std::vector<Spoiler<Call>>& spoilers)
{
    for (std::size_t first = 0; first < spoilers.size(); ++first)
        for (const bool with_later : {false, true}) {
            const auto& expected = spoilers[first];
            SCOPED_TRACE(via.symbol(routine) + " argument " + std::to_string(expected.position));
            Call call = good;
            for (std::size_t i = spoilers.size(); i-- > first;)
                if (i == first || with_later) spoilers[i].spoil(call);
            call.run(via);
            if (via.style == Style::value) {
                EXPECT_EQ(call.status, -expected.position);
                EXPECT_TRUE(take_reports().empty());
                EXPECT_EQ(orv_last_error(), "orv_" + routine + ": argument " + std::to_string(expected.position) +
                                                " is not allowed; see the routine's description for its range");
            } else
                EXPECT_EQ(take_reports(), std::vector{expected_report(via, routine, expected.position, expected.text)});
        }
}

template <class T> void gemm_errors(const Interface& via)
{
    using Call = GemmCall<T>;
    const std::string routine = std::string(1, letter<T>) + "gemm";
    if (via.style != Style::cblas) {
        const std::vector<Spoiler<Call>> spoilers{
            {1, [](Call& c) { c.transa = '/'; }}, {2, [](Call& c) { c.transb = 'n' + 0x20; }},
            {3, [](Call& c) { c.m = -1; }},       {4, [](Call& c) { c.n = -1; }},
            {5, [](Call& c) { c.k = -1; }},       {8, [](Call& c) { c.lda = 2; }},
            {10, [](Call& c) { c.ldb = 3; }},     {13, [](Call& c) { c.ldc = 2; }},
        };
        each_is_found_first(via, routine, Call{}, spoilers);
        return;
    }
    const Spoiler<Call> layout{1, [](Call& c) { c.layout = 7; }, "Illegal layout setting, 7\n"};
    const Spoiler<Call> order_a{2, [](Call& c) { c.order_a = 110; }, "Illegal TransA setting, 110\n"};
    Spoiler<Call> order_b{3, [](Call& c) { c.order_b = 114; }, "Illegal TransB setting, 114\n"};
    const Spoiler<Call> m{4, [](Call&c) { c.m = -1; }}, n{5, [](Call&c) { c.n = -1; }}, k{6, [](Call&c) { c.k = -1; }},
        lda{9, [](Call&c) { c.lda = 2; }}, ldb{11, [](Call&c) { c.ldb = 3; }}, ldc{14, [](Call&c) { c.ldc = 2; }};
    each_is_found_first(via, routine, Call{}, {layout, order_a, order_b, m, n, k, lda, ldb, ldc});

    // A row-major product is a column-major one with its operands in the other order; so are its checks.
    Call rows;
    rows.layout = 101;
    order_b.position = 2; // as the reference has it
    each_is_found_first(via, routine, rows, {order_a, order_b, n, m, k, ldb, lda, ldc});
}

TEST(Errors, gemm_reports_the_first_bad_argument_of_the_reference)
{
    for (const Interface& via : interfaces) {
        gemm_errors<float>(via), gemm_errors<double>(via);
        gemm_errors<cpx<float>>(via), gemm_errors<cpx<double>>(via);
    }
}

// How CBLAS words a bad option: by its name, which is Trans where there is but one of three.
std::string words(const MatrixRoutine& routine, std::string word, long value)
{
    const std::string rest = routine.rest;
    const bool is_only =
        rest.starts_with("tr") ? rest.back() == 'm' : rest.find("rk") != rest.npos || rest.back() == 'k';
    if (word.starts_with("trans")) word = word == "transb" ? "TransB" : is_only ? "Trans" : "TransA";
    else if (word == "uplo" || word == "diag" || word == "side") word[0] = static_cast<char>(std::toupper(word[0]));
    else return "";
    return "Illegal " + word + " setting, " + std::to_string(value) + "\n";
}

// What the reference has in matrices stored by rows besides the places that arguments have in the call.
i64 position_by_rows(const std::string& routine, const std::string& word, i64 position)
{
    if (word == "transb") return 2;
    const bool updates = routine.starts_with("syrk") || routine.starts_with("herk") || routine.starts_with("syr2k");
    return word == "uplo" && updates ? 3 : position;
}

// Spoils each argument of a routine of level 2 or 3 that is checked, by itself and with all that are looked at later.
void argument_errors(const Interface& via, const MatrixRoutine& routine, char type, int layout)
{
    const std::string name = type + std::string(routine.rest);
    const bool by_rows = layout == 101;
    const bool as_geru = by_rows && std::string(routine.rest) == "gerc";
    const std::string told_name = as_geru ? type + std::string("geru") : name;
    char arguments[most_words][8], order[most_words][8];
    const int count = split(routine.arguments, arguments);
    int tested = by_rows ? split(routine.by_rows, order) : 0;
    if (!by_rows)
        for (int i = 0; i < count; ++i)
            if (checked_index(arguments[i]) >= 0) std::strcpy(order[tested++], arguments[i]);
    void* const function = symbol(via.symbol(name));
    const Passing passing = via.style == Style::cblas ? by_cblas : via.style == Style::value ? by_value : by_pointer;
    for (int first = 0; first < tested; ++first) {
        const std::string word = order[first];
        const auto& spoilt = checked[checked_index(order[first])];
        // An option that one type alone refuses is told by different positions: reference_test.cpp compares them.
        if (via.style == Style::cblas && (word == "transs" || word == "transh")) continue;
        i64 position = via.style == Style::cblas ? 2 : 1;
        for (int i = 0; arguments[i] != word; ++i) ++position;
        if (by_rows) position = position_by_rows(routine.rest, word, position);
        const std::string text = via.style == Style::cblas ? words(routine, word, spoilt.bad_value) : "";
        for (const int last : {first + 1, tested}) {
            SCOPED_TRACE(via.symbol(name) + " layout " + std::to_string(layout) + " " + word);
            unsigned bad = 0;
            for (int i = first; i < last; ++i) bad |= 1u << checked_index(order[i]);
            const int status = call_routine(&routine, type, function, passing, layout, bad);
            EXPECT_NE(status, -1000) << "something was written";
            if (via.style == Style::value) {
                EXPECT_EQ(status, -position);
                EXPECT_EQ(orv_last_error(), "orv_" + name + ": argument " + std::to_string(position) +
                                                " is not allowed; see the routine's description for its range");
            }
            const auto reports = take_reports();
            if (via.style == Style::value) EXPECT_TRUE(reports.empty());
            else EXPECT_EQ(reports, std::vector{expected_report(via, told_name, position, text)});
        }
    }
}

TEST(Errors, matrices_report_the_first_bad_argument_of_the_reference)
{
    for (const Interface& via : interfaces)
        for (const MatrixRoutine& routine : matrix_routines)
            for (const char* type = routine.types; *type != '\0'; ++type) {
                argument_errors(via, routine, *type, 102);
                if (via.style != Style::cblas) continue;
                argument_errors(via, routine, *type, 101);
                const std::string name = *type + std::string(routine.rest);
                call_routine(&routine, *type, symbol(via.symbol(name)), by_cblas, 7, ~0u);
                EXPECT_EQ(take_reports(), std::vector{expected_report(via, name, 1, "Illegal layout setting, 7\n")});
                if (testing::Test::HasFailure()) return;
            }
}

// In the widths of 64 bits a dimension is not cut to 32.
TEST(Errors, dimensions_keep_their_width)
{
    for (const Interface& via : interfaces) {
        if (via.bits == 32) continue;
        std::vector<double> c(1, 1);
        if (via.style == Style::cblas) {
            call<void>(via, "dgemm", 102, 111, 111, Int{0}, Int{1}, Int{1}, 1.0, c.data(), Int{i64(1) << 32}, c.data(),
                       Int{i64(1) << 32}, 1.0, c.data(), Int{i64(1) << 32});
        } else
            call<void>(via, "dgemm", 'N', 'N', Int{0}, Int{1}, Int{1}, 1.0, c.data(), Int{i64(1) << 32}, c.data(),
                       Int{i64(1) << 32}, 1.0, c.data(), Int{i64(1) << 32});
        EXPECT_TRUE(take_reports().empty()) << via.symbol("dgemm");
    }
}

TEST(Errors, the_native_interface_tells_the_users_handler_and_the_standard_ones_do_not)
{
    const auto before = orv_set_argument_handler(handler);
    for (const Interface& via : interfaces) {
        GemmCall<double> bad;
        bad.m = -1;
        bad.run(via);
        const auto told = take_reports();
        ASSERT_EQ(told.size(), 1u) << via.symbol("dgemm");
        EXPECT_EQ(told[0].routine == "handler", via.style == Style::value) << via.symbol("dgemm");
    }
    orv_set_argument_handler(before);
}

template <class Int> void call_array(void* routine, const char* name, const Int* length, const Int* position)
{
    reinterpret_cast<void (*)(const char*, const Int*, const Int*, std::size_t)>(routine)(name, length, position, 1);
}

TEST(Errors, vectors_take_whatever_comes)
{
    double x = 1, y = 2;
    for (const Interface& via : interfaces) {
        call<void>(via, "daxpy", Int{-3}, 1.0, &x, Int{0}, &y, Int{0});
        EXPECT_EQ(call<double>(via, "ddot", Int{-1}, &x, Int{1}, &y, Int{1}), 0);
    }
    EXPECT_EQ(y, 2);
    EXPECT_TRUE(take_reports().empty());
}

// Names in arrays of characters: 32 letters of a string, filled up with blanks.
TEST(Errors, xerbla_array_hands_its_name_on_as_a_string)
{
    const i32 length = 7, long_length = 40, position = 5;
    const i64 length64 = 3, position64 = 6;
    const std::string letters(40, 'A');
    call_array(symbol("xerbla_array_"), "DGEMM3M", &length, &position);
    call_array(symbol("xerbla_array_"), letters.c_str(), &long_length, &position);
    call_array(symbol("xerbla_array_64_"), "ABCD", &length64, &position64);
    EXPECT_EQ(take_reports(), (std::vector<Report>{{"xerbla_", "DGEMM3M" + std::string(25, ' '), 5, ""},
                                                   {"xerbla_", std::string(32, 'A'), 5, ""},
                                                   {"xerbla_64_", "ABC" + std::string(29, ' '), 6, ""}}));
}

TEST(Letters, lsame_compares_letters_in_either_case_and_nothing_else_loosely)
{
    using Lsame = int(const char*, const char*, std::size_t, std::size_t);
    for (const char* name : {"lsame_", "lsame_64_"})
        for (int i = 0; i < 256; ++i)
            for (int j = 0; j < 256; ++j) {
                const char a = static_cast<char>(i), b = static_cast<char>(j);
                const bool letters = i < 128 && j < 128 && std::isalpha(i) && std::isalpha(j);
                const bool same = i == j || (letters && std::tolower(i) == std::tolower(j));
                ASSERT_EQ(reinterpret_cast<Lsame*>(symbol(name))(&a, &b, 1, 1) != 0, same) << name << i << ' ' << j;
            }
}

} // namespace
