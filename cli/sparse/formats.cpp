// The matrix in every format that does not waste too much, and how long a product takes there.
#include "cli/sparse/matrix.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <orv/orv.h>

namespace orv::cli {
namespace {

struct Candidate {
    std::string name;
    Sparse matrix;
    double bytes = 0, seconds = 0;
    std::string left_out{}; // why, if it is
};

double bytes_of(const orv_sparse& a)
{
    constexpr std::int64_t value = sizeof(double);
    const std::int64_t index = a.bits / 8, block = a.block * a.block;
    const auto bytes = [&]() -> std::int64_t {
        switch (a.format) {
        case ORV_SPARSE_CSR:
            return (a.rows + 1) * index + a.count * (index + value);
        case ORV_SPARSE_CSC:
            return (a.cols + 1) * index + a.count * (index + value);
        case ORV_SPARSE_COO:
            return a.count * (2 * index + value);
        case ORV_SPARSE_DIA:
            return a.count * (index + a.ld * value);
        case ORV_SPARSE_BSR:
            return (a.rows / a.block + 1) * index + a.count * (index + block * value);
        default:
            return (a.rows + 1) * index + a.count * value;
        }
    };
    return static_cast<double>(bytes());
}

std::string told(double bytes)
{
    static constexpr const char* units[] = {"B", "KiB", "MiB", "GiB"};
    int unit = 0;
    for (; unit < 3 && bytes >= 1024; ++unit) bytes /= 1024;
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
    return text;
}

// Nothing larger than that beside compressed rows is worth a measurement.
constexpr double most_waste = 8;

Candidate candidate(const Matrix& matrix, const std::string& name, const orv_sparse& form)
{
    Candidate c{name, {}};
    *c.matrix.get() = form;
    c.matrix->bits = 32;
    orv_sparse sizes = *c.matrix.get();
    const orv_status status = orv_sparse_convert_sizes('N', &matrix.stored(), &sizes);
    if (status == ORV_NO_MEMORY) give_up();
    if (status != ORV_OK) {
        c.left_out = "is impossible with 32-bit indices";
        return c;
    }
    c.bytes = bytes_of(sizes);
    if (c.bytes > most_waste * bytes_of(matrix.rows()) + 4096) c.left_out = "would take " + told(c.bytes);
    else if (orv_sparse_convert('N', &matrix.stored(), c.matrix.get()) != ORV_OK) give_up();
    return c;
}

std::vector<Candidate> candidates(const Matrix& matrix)
{
    static constexpr struct {
        const char* name;
        int format;
    } general[] = {{"CSR", ORV_SPARSE_CSR}, {"CSC", ORV_SPARSE_CSC}, {"COO", ORV_SPARSE_COO}, {"DIA", ORV_SPARSE_DIA}};
    const orv_sparse& stored = matrix.stored();
    std::vector<Candidate> all;
    orv_sparse form{};
    for (const auto& [name, format] : general) {
        form.format = format;
        all.push_back(candidate(matrix, name, form));
    }
    form.format = ORV_SPARSE_BSR;
    for (const int block : {2, 3, 4, 8}) {
        if (stored.rows % block != 0 || stored.cols % block != 0) continue;
        form.block = block;
        all.push_back(candidate(matrix, "BSR " + std::to_string(block), form));
    }
    if (stored.kind == 'G') return all;
    form = {};
    form.kind = stored.kind, form.uplo = 'L';
    form.format = ORV_SPARSE_CSR;
    all.push_back(candidate(matrix, "CSR, half", form));
    form.format = ORV_SPARSE_SKY;
    all.push_back(candidate(matrix, "SKY, half", form));
    return all;
}

// Seconds of a product: the fastest of some batches, which go round the formats, so that all see the same machine.
void measure(std::vector<Candidate>& all, const orv_sparse& rows)
{
    using Clock = std::chrono::steady_clock;
    const std::vector<double> x(static_cast<std::size_t>(rows.cols), 1.0);
    std::vector<double> y(static_cast<std::size_t>(rows.rows));
    const auto seconds = [&](const Candidate& c, long calls) {
        const auto start = Clock::now();
        for (long i = 0; i < calls; ++i)
            if (orv_sparse_dmv('N', 1, c.matrix.get(), x.data(), 0, y.data()) != ORV_OK) give_up();
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    constexpr int batches = 9;
    constexpr double batch = 0.004;
    for (Candidate& c : all) {
        if (!c.left_out.empty()) continue;
        seconds(c, 1);
        c.seconds = seconds(c, 1);
    }
    for (int b = 0; b < batches; ++b)
        for (Candidate& c : all) {
            if (!c.left_out.empty()) continue;
            const long calls = std::max(1L, static_cast<long>(batch / std::max(c.seconds, 1e-8)));
            c.seconds = std::min(c.seconds, seconds(c, calls) / static_cast<double>(calls));
        }
}

} // namespace

void compare_formats(const Matrix& matrix)
{
    const orv_sparse& rows = matrix.rows();
    auto all = candidates(matrix);
    measure(all, rows);
    const double plain = bytes_of(rows);
    std::printf("format           memory  beside CSR  us a product   GFLOP/s  (%d threads at most)\n",
                orv_get_num_threads());
    std::vector<const Candidate*> measured;
    for (const Candidate& c : all) {
        if (!c.left_out.empty()) {
            std::printf("%-10s  %s, and is left out\n", c.name.c_str(), c.left_out.c_str());
            continue;
        }
        measured.push_back(&c);
        std::printf("%-10s  %11s %11.2f %13.2f %9.2f\n", c.name.c_str(), told(c.bytes).c_str(), c.bytes / plain,
                    1e6 * c.seconds, 2e-9 * static_cast<double>(rows.count) / c.seconds);
    }
    std::sort(measured.begin(), measured.end(), [](auto* a, auto* b) { return a->seconds < b->seconds; });
    const double lead = measured[1]->seconds / measured[0]->seconds;
    std::printf("\nThe fastest here is %s, ", measured[0]->name.c_str());
    if (lead < 1.05) std::printf("but %s is as fast within five percent.\n", measured[1]->name.c_str());
    else std::printf("%.2f times as fast as %s, the next.\n", lead, measured[1]->name.c_str());
}

} // namespace orv::cli
