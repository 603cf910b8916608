#include "plot.h"

#include "style.h"

#include <math.h>

const char* const plot_style =
    ".map{width:100%;height:auto;background:#fff;border:1px solid #d8d8d2;border-radius:6px;font:13px "
    "system-ui,sans-serif;margin-bottom:1em}.row{display:flex;flex-wrap:wrap;gap:20px}figure{margin:0;width:390px}"
    "figcaption{font-size:13px;color:#5c6370;line-height:1.35;margin-top:4px}img{display:block;width:390px;"
    "image-rendering:pixelated}";
const char *const blue = "#4269d0", *const red = "#d6404e", *const teal = "#3a9e97", *const grey = "#5c6370",
                  *const ink = "#22252b";

enum { left = plot_left, right = plot_right, top = plot_top, bottom = plot_bottom, below = 306 };

FILE* open_page(const char* path, const char* title, const char* style)
{
    FILE* out = fopen(path, "w");
    if (out != NULL)
        fprintf(out,
                "<!doctype html><html lang=en><meta charset=utf-8><meta name=viewport content='width=device-width'>"
                "<title>%s</title><style>%s%s%s</style>\n<h1>%s</h1>\n",
                title, common_style, plot_style, style, title);
    return out;
}

int close_page(FILE* out)
{
    fprintf(out, "</html>\n");
    const int broken = ferror(out);
    return fclose(out) != 0 || broken ? -1 : 0;
}

/* From 0 to 1. */
static double share(const struct scale* s, double value)
{
    return s->logarithmic ? log(value / s->from) / log(s->to / s->from) : (value - s->from) / (s->to - s->from);
}
static double number(const struct scale* s, int i)
{
    return s->logarithmic ? s->from * pow(s->step, i) : s->from + i * s->step;
}

double across(const struct plot* p, double x) { return left + (right - left) * share(&p->x, x); }
double up(const struct plot* p, double y) { return bottom - (bottom - top) * share(&p->y, y); }

void open_plot(FILE* out, const struct plot* p)
{
    fprintf(out, "<svg class=map viewBox='0 0 785 %d'>\n<g fill='%s'>", below, grey);
    for (int i = 0; number(&p->y, i) <= p->y.to * 1.0001; ++i) {
        const double y = number(&p->y, i);
        fprintf(out, "<path d='M%d %.1fH%d' stroke='#e4e4de'/><text x=%d y=%.1f text-anchor=end>%g</text>\n", left,
                up(p, y), right, left - 8, up(p, y) + 4, y);
    }
    for (int i = 0; number(&p->x, i) <= p->x.to * 1.0001; ++i) {
        const double x = number(&p->x, i);
        fprintf(out, "<text x=%.1f y=%d text-anchor=middle>%g</text>\n", across(p, x), bottom + 20, x);
    }
    fprintf(out, "<text x=%d y=%d text-anchor=middle>%s</text><text x=%d y=18>%s</text></g>\n", (left + right) / 2,
            bottom + 42, p->x.name, left - 50, p->y.name);
}

void close_plot(FILE* out) { fprintf(out, "</svg>\n"); }

static void open_curve(FILE* out, const char* colour)
{
    fprintf(out, "<polyline fill=none stroke-width=1.8 stroke-linejoin=round stroke='%s' points='", colour);
}

void curve(FILE* out, const struct plot* p, int count, double first, double step, const double* value,
           const char* colour)
{
    open_curve(out, colour);
    for (int i = 0; i < count; ++i) fprintf(out, "%.1f,%.1f ", across(p, first + i * step), up(p, value[i]));
    fprintf(out, "'/>\n");
}

void dot(FILE* out, const struct plot* p, double x, double y, const char* colour)
{
    fprintf(out, "<circle cx=%.1f cy=%.1f r=4 fill='%s'/>\n", across(p, x), up(p, y), colour);
}

void ring(FILE* out, const struct plot* p, double x, double y, const char* colour)
{
    fprintf(out, "<circle cx=%.1f cy=%.1f r=7 fill=none stroke='%s'/>\n", across(p, x), up(p, y), colour);
}

void upright(FILE* out, const struct plot* p, double x, const char* colour)
{
    fprintf(out, "<path d='M%.1f %dV%d' stroke='%s' stroke-dasharray='4 4'/>\n", across(p, x), top, bottom, colour);
}

void key(FILE* out, int line, const char* colour, const char* text)
{
    fprintf(out, "<text x=%d y=%d fill='%s'>%s</text>\n", left + 12, top + 16 + 18 * line, colour, text);
}

void dotted(FILE* out, const struct plot* p, int count, const double* x, const double* y, const char* colour)
{
    open_curve(out, colour);
    for (int i = 0; i < count; ++i) fprintf(out, "%.1f,%.1f ", across(p, x[i]), up(p, y[i]));
    fprintf(out, "'/>\n");
    for (int i = 0; i < count; ++i) dot(out, p, x[i], y[i], colour);
}

void band(FILE* out, const struct plot* p, long count, double first, double step, const double* value,
          const char* colour)
{
    fprintf(out, "<path stroke='%s' d='", colour);
    for (long i = 0; i < count;) {
        const double place = floor(across(p, first + i * step));
        double least = value[i], most = value[i];
        for (; i < count && floor(across(p, first + i * step)) == place; ++i)
            least = fmin(least, value[i]), most = fmax(most, value[i]);
        fprintf(out, "M%.1f %.1fV%.1f", place + 0.5, up(p, least) + 0.5, up(p, most) - 0.5);
    }
    fprintf(out, "'/>\n");
}

void label(FILE* out, const struct plot* p, double x, double y, const char* anchor, const char* colour,
           const char* text)
{
    fprintf(out, "<text x=%.1f y=%.1f text-anchor=%s fill='%s'>%s</text>\n", across(p, x), up(p, y), anchor, colour,
            text);
}

double step_for(double span)
{
    const double power = pow(10, floor(log10(span / 6)));
    for (double step = power;; step *= 10)
        for (int i = 0; i < 3; ++i)
            if (step * (i < 2 ? i + 1 : 5) * 6 >= span) return step * (i < 2 ? i + 1 : 5);
}

double largest_of(const double* value, long count)
{
    double largest = 1e-300;
    for (long i = 0; i < count; ++i) largest = fmax(largest, value[i]);
    return largest;
}
