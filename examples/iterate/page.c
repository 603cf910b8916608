/* The page: how the residual goes down, and what an iteration takes. */
#include "examples/page.h"
#include "methods.h"

#include <math.h>
#include <orv/branch.h>
#include <stdio.h>

static const char* const style = "pre{font-size:12px;line-height:1.4;color:#5c6370;"
                                 "white-space:pre-wrap}td:first-child,th:first-child,td:last-child,th:last-child"
                                 "{text-align:left}";
static const char* const colours[] = {"#4269d0", "#3a9e97", "#d6404e"};

enum { left = 60, right = 750, top = 20, decade = 17, digits = 16, bottom = top + decade * digits };

static double down(double residual)
{
    return residual > 0 ? top - decade * fmin(fmax(log10(residual), -digits), 1) : bottom;
}

static void scales(FILE* out, int steps)
{
    for (int d = 0; d <= digits; d += 4)
        fprintf(out,
                "<path d='M%d %dH%d' stroke='#e4e4de'/><text x=%d y=%d text-anchor=end fill='#5c6370'>%s%d</text>\n",
                left, top + decade * d, right, left - 8, top + decade * d + 4, d == 0 ? "" : "1e-", d == 0 ? 1 : d);
    for (int quarter = 0; quarter <= 4; ++quarter)
        fprintf(out, "<text x=%d y=%d text-anchor=middle fill='#5c6370'>%d</text>\n",
                left + (right - left) * quarter / 4, bottom + 22, steps * quarter / 4);
    fprintf(out, "<text x=%d y=%d text-anchor=middle fill='#5c6370'>iterations</text>\n", (left + right) / 2,
            bottom + 44);
}

/* Later ones are thinner, so that equal ones all show. At most 400 points. */
static void curve(FILE* out, const struct run* run, int steps, int order)
{
    const int stride = run->iterations / 400 + 1;
    fprintf(out, "<polyline fill=none stroke-width=%.1f stroke='%s' points='", 5 - 1.6 * order, colours[order]);
    for (int i = 0; i <= run->iterations; i += stride)
        fprintf(out, "%.1f,%.1f ", left + (double)(right - left) * i / steps, down(run->residual[i]));
    fprintf(out, "'/><text x=%d y=%d text-anchor=end fill='%s'>%s</text>\n", right - 8, top + 14 + 18 * order,
            colours[order], run->name);
}

int write_page(const char* path, const char* name, const struct system* system, const char* method,
               const struct run* run, int runs)
{
    FILE* out = open_page(path, "A sparse system, solved by iterations", figure_rules, style);
    int steps = 1;
    if (out == NULL) return -1;
    for (int i = 0; i < runs; ++i) steps = run[i].iterations > steps ? run[i].iterations : steps;
    fprintf(out, "<p><code>");
    text(out, name);
    fprintf(out,
            "</code>: %d by %d, %ld elements are not 0; %s symmetric. Solved by %s, preconditioned by the diagonal. "
            "The right-hand side was made so that the solution is all ones.</p>\n<pre>",
            system->n, system->n, system->nonzeros, system->symmetric ? "it is" : "it is not said to be", method);
    text(out, system->about);
    fprintf(out,
            "</pre>\n<h2>What is left of the right-hand side</h2>\n<p>The size of the residual, by the method's own "
            "account, after each iteration. Products differ in their last bits, so curves part where rounding "
            "decides.</p>\n<svg class=map viewBox='0 0 770 %d'>\n",
            bottom + 56);
    scales(out, steps);
    for (int i = 0; i < runs; ++i) curve(out, &run[i], steps, i);
    fprintf(out, "</svg>\n<h2>What an iteration takes</h2>\n<p>The fastest of up to five runs. Of a symmetric matrix "
                 "its triangle is enough, which is half of what has to be read.</p>\n"
                 "<table><tr><th>product by<th>iterations<th>&micro;s each<th>of it the product<th>last residual<th>"
                 "max |x &minus; 1|<th>kernel</tr>\n");
    for (int i = 0; i < runs; ++i)
        fprintf(out, "<tr><td>%s<td>%d<td>%.2f<td>%.2f<td>%.1e<td>%.1e<td><code>%s</code></tr>\n", run[i].name,
                run[i].iterations, 1e6 * run[i].seconds, 1e6 * run[i].product_seconds,
                run[i].residual[run[i].iterations], run[i].error, run[i].kernel ? run[i].kernel : "");
    fprintf(out, "</table>\n<footer>Computed by <code>%s</code> with <code>orv/sparse.h</code>.</footer>", orv_path());
    return close_page(out);
}
