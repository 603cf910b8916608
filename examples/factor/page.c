/* The page: what the matrix looks like, and how long its factors take, beside another run. */
#include "examples/page.h"
#include "factor.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char* const style =
    ".spy{width:420px;max-width:100%;background:#fff;border:1px solid #d8d8d2}pre{font-size:12px;line-height:1.4;"
    "color:#5c6370;white-space:pre-wrap}td:first-child,th:first-child{text-align:left}.bar{height:18px;float:left}"
    ".row{clear:both;margin:.2em 0}.label{font-size:13px;color:#5c6370;clear:both;padding-top:.6em}"
    ".key{display:inline-block;width:11px;height:11px;margin:0 5px 0 14px}";

/* A cell is dark where the matrix has an element in it; the matrix is looked at through `cells` by `cells` of them. */
static void spy(FILE* out, const struct matrix* matrix)
{
    enum { most_cells = 210 };
    const int n = matrix->n, cells = n < most_cells ? n : most_cells;
    char* dark = calloc((size_t)cells * (size_t)cells, 1);
    if (dark == NULL) return;
    for (long j = 0; j < n; ++j)
        for (long i = 0; i < n; ++i)
            if (matrix->a[i + j * n] != 0) dark[i * cells / n * cells + j * cells / n] = 1;
    fprintf(out, "<svg class=spy viewBox='0 0 %d %d' shape-rendering=crispEdges><path fill='#22408a' d='", cells,
            cells);
    for (int i = 0; i < cells; ++i)
        for (int j = 0, end; j < cells; j = end + 1) {
            for (end = j; end < cells && dark[i * cells + end];) ++end;
            if (end > j) fprintf(out, "M%d %dh%dv1h-%dz", j, i, end - j, end - j);
        }
    fprintf(out, "'/></svg>\n");
    free(dark);
}

/* The colour of a library, by the start of its file name. */
static const char* colour(const char* library)
{
    static const struct {
        const char *start, *colour;
    } known[] = {{"liborv_mc3", "#4269d0"}, {"liborv", "#8fa6e6"},  {"libblas", "#7d8597"},
                 {"liblapack", "#e8871e"},  {"libgomp", "#3a9e97"}, {"", "#d8d8d2"}};
    int i = 0;
    while (strncmp(library, known[i].start, strlen(known[i].start)) != 0) ++i;
    return known[i].colour;
}

/* One bar a method and run, as long as its time, in the colours of the libraries that the time was spent in. */
static void bars(FILE* out, const struct run* const* runs, int count)
{
    double longest = 0;
    for (int r = 0; r < count; ++r)
        for (int i = 0; i < runs[r]->count; ++i) longest = fmax(longest, runs[r]->method[i].seconds);
    for (int i = 0; i < most_methods; ++i)
        for (int r = 0; r < count; ++r) {
            if (i >= runs[r]->count) continue;
            const struct method* m = &runs[r]->method[i];
            double rest = 1;
            fprintf(out, "<div class=label>%s on <code>", m->name);
            text(out, runs[r]->blas);
            fprintf(out, "</code>: %.3f s</div><div class=row>", m->seconds);
            for (int s = 0; s <= m->share_count; ++s) {
                const char* name = s < m->share_count ? m->share[s].library : "elsewhere";
                const double part = s < m->share_count ? m->share[s].part : fmax(rest, 0);
                rest -= part;
                fprintf(out, "<div class=bar title='%s %.1f %%' style='width:%.1fpx;background:%s'></div>", name,
                        100 * part, 780 * part * m->seconds / longest, colour(name));
            }
            fprintf(out, "</div>\n");
        }
    fprintf(out,
            "<p class=label><span class=key style='background:%s'></span>kernels of orv<span class=key "
            "style='background:%s'></span>libblas<span class=key style='background:%s'></span>LAPACK<span "
            "class=key style='background:%s'></span>waiting for other threads</p>\n",
            colour("liborv_mc3"), colour("libblas"), colour("liblapack"), colour("libgomp"));
}

static void table(FILE* out, const struct run* const* runs, int count)
{
    fprintf(out, "<table><tr><th>method<th>BLAS<th>seconds<th>GFLOP/s<th>&Vert;b &minus; Ax&Vert; / "
                 "(&Vert;A&Vert; &Vert;x&Vert;)<th>max |x &minus; 1|</tr>\n");
    for (int i = 0; i < most_methods; ++i)
        for (int r = 0; r < count; ++r) {
            if (i >= runs[r]->count) continue;
            const struct method* m = &runs[r]->method[i];
            fprintf(out, "<tr><td>%s<td>%s<td>%.4f<td>%.2f<td>%.1e<td>%.1e</tr>\n", m->name,
                    r == 0 ? "this one" : "the other", m->seconds, m->speed, m->residual, m->error);
        }
    fprintf(out, "</table>\n");
}

int write_page(const char* path, const char* name, const struct matrix* matrix, const struct run* run,
               const struct run* other)
{
    const struct run* const runs[] = {run, other};
    const int count = other == NULL || other->count == 0 ? 1 : 2;
    FILE* out = open_page(path, "A matrix, factored", "", style);
    if (out == NULL) return -1;
    fprintf(out, "<p><code>");
    text(out, name);
    fprintf(out, "</code>: %d by %d, %ld elements are not 0; it is %ssymmetric.</p>\n", matrix->n, matrix->n,
            matrix->nonzeros, matrix->symmetric ? "" : "not ");
    spy(out, matrix);
    fprintf(out, "<pre>");
    text(out, matrix->about);
    fprintf(out,
            "</pre>\n<h2>How long it takes</h2>\n<p>LAPACK as Debian ships it turns the matrix, stored in full, "
            "into triangular factors and solves a system with them. Its blocks go to whatever BLAS it finds. A "
            "bar's colours tell which library the program was found in, looked at a thousand times a second.</p>\n");
    bars(out, runs, count);
    fprintf(out, "<h2>How good it is</h2>\n<p>The right-hand side was made so that the solution is all ones.</p>\n");
    table(out, runs, count);
    fprintf(out, "<footer>This one: <code>");
    text(out, run->blas);
    if (count == 2) fprintf(out, "</code><br>The other: <code>"), text(out, other->blas);
    fprintf(out, "</code><br>LAPACK: <code>");
    text(out, run->lapack);
    fprintf(out, "</code></footer>");
    return close_page(out);
}
