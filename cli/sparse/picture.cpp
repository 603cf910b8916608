// A matrix' pattern: letters on the terminal, squares in an SVG file. Both show how full each part of it is.
#include "cli/sparse/matrix.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orv::cli {
namespace {

constexpr char shades[] = " .:-=+*#@";
constexpr int darkest = sizeof shades - 2;

// Patterns are sparse, so shades go by the root of what is full; a single entry can be seen.
int shade(double density)
{
    return density <= 0 ? 0 : std::clamp(1 + static_cast<int>(std::sqrt(density) * darkest), 1, darkest);
}

// How many of n elements the cells have that lie before this one.
std::int64_t before(std::int64_t n, int cell, int cells) { return n * cell / cells; }

} // namespace

Picture picture_of(const orv_sparse& rows, int across, int down)
{
    across = static_cast<int>(std::min<std::int64_t>(across, rows.cols));
    down = static_cast<int>(std::min<std::int64_t>(down, rows.rows));
    Picture picture{across, down, {}};
    const auto *begin = static_cast<const int*>(rows.begin), *col = static_cast<const int*>(rows.col);
    for (int cell = 0; cell < down; ++cell) {
        const std::int64_t first = before(rows.rows, cell, down), last = before(rows.rows, cell + 1, down);
        std::vector<double> counts(static_cast<std::size_t>(across));
        for (int p = begin[first]; p < begin[last]; ++p) {
            std::int64_t c = static_cast<std::int64_t>(col[p]) * across / rows.cols;
            while (before(rows.cols, static_cast<int>(c) + 1, across) <= col[p]) ++c;
            counts[static_cast<std::size_t>(c)] += 1;
        }
        for (int c = 0; c < across; ++c) {
            const std::int64_t columns = before(rows.cols, c + 1, across) - before(rows.cols, c, across);
            picture.density.push_back(counts[static_cast<std::size_t>(c)] /
                                      static_cast<double>((last - first) * columns));
        }
    }
    return picture;
}

void print(const Picture& picture)
{
    const std::string edge = "  +" + std::string(static_cast<std::size_t>(picture.across), '-') + "+";
    std::puts(edge.c_str());
    for (int row = 0; row < picture.down; ++row) {
        std::string line;
        for (int column = 0; column < picture.across; ++column) line += shades[shade(picture.at(row, column))];
        std::printf("  |%s|\n", line.c_str());
    }
    std::puts(edge.c_str());
}

bool write_svg(const orv_sparse& rows, const std::string& title, const char* path)
{
    constexpr int most = 400;
    const auto longest = static_cast<double>(std::max(rows.rows, rows.cols));
    const auto cells = [=](std::int64_t n) {
        return std::max(
            1, static_cast<int>(std::lround(std::min(longest, double{most}) * static_cast<double>(n) / longest)));
    };
    const Picture picture = picture_of(rows, cells(rows.cols), cells(rows.rows));
    std::FILE* out = std::fopen(path, "w");
    if (out == nullptr) return false;
    std::fprintf(out, "<svg xmlns='http://www.w3.org/2000/svg' viewBox='-1 -1 %d %d' width='800'>\n<title>",
                 picture.across + 2, picture.down + 2);
    for (const char c : title)
        c == '<' ? std::fputs("&lt;", out) : c == '&' ? std::fputs("&amp;", out) : std::fputc(c, out);
    std::fprintf(
        out, "</title>\n<rect x='-.5' y='-.5' width='%d' height='%d' fill='#fff' stroke='#888' stroke-width='.5'/>\n",
        picture.across + 1, picture.down + 1);
    for (int s = 1; s <= darkest; ++s) { // a path for each shade, of its runs along the rows
        std::fprintf(out, "<path fill='#203a8f' fill-opacity='%.2f' d='", 0.2 + 0.8 * s / darkest);
        for (int row = 0; row < picture.down; ++row)
            for (int column = 0, end; column < picture.across; column = end) {
                end = column + 1;
                if (shade(picture.at(row, column)) != s) continue;
                while (end < picture.across && shade(picture.at(row, end)) == s) ++end;
                std::fprintf(out, "M%d %dh%dv1h-%dz", column, row, end - column, end - column);
            }
        std::fputs("'/>\n", out);
    }
    std::fputs("</svg>\n", out);
    const bool broken = std::ferror(out) != 0;
    return std::fclose(out) == 0 && !broken;
}

} // namespace orv::cli
