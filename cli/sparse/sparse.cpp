// `orv sparse`: a matrix from a file, and which format suits it.
#include "cli/sparse/matrix.h"
#include "cli/verbs.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <orv/orv.h>

namespace orv::cli {
namespace {

constexpr const char* usage =
    "usage: orv sparse FILE.mtx [--svg PICTURE.svg]\n\n"
    "Size, kind and pattern of a real matrix in Matrix Market form, what is wrong with it, and\n"
    "the formats that <orv/sparse.h> has for it, by memory and by the time of a product.\n";

void tell_sizes(const Matrix& matrix)
{
    const orv_sparse &a = matrix.rows(), &stored = matrix.stored();
    const auto *begin = static_cast<const int*>(a.begin), *col = static_cast<const int*>(a.col);
    int shortest = begin[1] - begin[0], longest = 0;
    std::int64_t empty = 0, bandwidth = 0, diagonal = 0;
    for (std::int64_t i = 0; i < a.rows; ++i) {
        const int length = begin[i + 1] - begin[i];
        shortest = std::min(shortest, length), longest = std::max(longest, length), empty += length == 0;
        bool stored_diagonal = false;
        for (int p = begin[i]; p < begin[i + 1]; ++p) {
            bandwidth = std::max(bandwidth, std::abs(col[p] - i));
            stored_diagonal |= col[p] == i;
        }
        diagonal += stored_diagonal;
    }
    const auto entries = static_cast<double>(a.count),
               elements = static_cast<double>(a.rows) * static_cast<double>(a.cols);
    std::printf("size       %lld by %lld, %lld entries", static_cast<long long>(a.rows), static_cast<long long>(a.cols),
                static_cast<long long>(a.count));
    if (stored.kind != 'G') std::printf(" (%lld in the file)", static_cast<long long>(stored.count));
    std::printf(", %.3g %% of all elements\n", 100 * entries / elements);
    std::printf("kind       %s\n", matrix.kind().c_str());
    std::printf("rows       %d to %d entries, %.3g on average", shortest, longest,
                entries / static_cast<double>(a.rows));
    std::printf(empty > 0 ? "; %lld are empty\n" : "\n", static_cast<long long>(empty));
    std::printf("diagonals  up to %lld from the main one, of which %lld of %lld elements are there\n",
                static_cast<long long>(bandwidth), static_cast<long long>(diagonal),
                static_cast<long long>(std::min(a.rows, a.cols)));
}

void tell_check(const Matrix& matrix)
{
    const orv_status status = orv_sparse_check(&matrix.stored());
    std::printf("check      %s\n\n", status == ORV_OK ? "nothing is wrong" : orv_last_error());
}

} // namespace

int sparse(Words words)
{
    const char *path = nullptr, *svg = nullptr;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (std::strcmp(words[i], "--help") == 0) return std::fputs(usage, stdout), 0;
        const bool names_svg = std::strcmp(words[i], "--svg") == 0;
        if ((names_svg && i + 1 == words.size()) || (!names_svg && (path != nullptr || words[i][0] == '-'))) {
            std::fprintf(stderr, "orv: sparse does not understand \"%s\"\n%s", words[i], usage);
            return 2;
        }
        if (names_svg) svg = words[++i];
        else path = words[i];
    }
    if (path == nullptr) {
        std::fprintf(stderr, "orv: sparse wants a file\n%s", usage);
        return 2;
    }
    const Matrix matrix("orv", path);
    tell_sizes(matrix);
    tell_check(matrix);
    constexpr int across = 64, down = 32; // letters are twice as high as wide
    print(picture_of(matrix.rows(), across, down));
    if (svg != nullptr) {
        if (!write_svg(matrix.rows(), path, svg)) {
            std::fprintf(stderr, "orv: %s: %s\n", svg, std::strerror(errno));
            return 1;
        }
        std::printf("picture written to %s\n", svg);
    }
    std::puts("");
    compare_formats(matrix);
    return 0;
}

} // namespace orv::cli
