#include "plot.h"

#include <math.h>
#include <string.h>

const char *const blue = "#4269d0", *const red = "#d6404e", *const teal = "#3a9e97", *const grey = "#5c6370",
                  *const ink = "#22252b";

enum { left = plot_left, right = plot_right, top = plot_top };

/* From 0 to 1. */
static double share(const struct scale* s, double value)
{
    return s->logarithmic ? log(value / s->from) / log(s->to / s->from) : (value - s->from) / (s->to - s->from);
}
static double number(const struct scale* s, int i)
{
    return s->logarithmic ? s->from * pow(s->step, i) : s->from + i * s->step;
}

static double bottom(const struct plot* p) { return top + (p->height > 0 ? p->height : 220); }

double across(const struct plot* p, double x) { return left + (right - left) * share(&p->x, x); }
double up(const struct plot* p, double y) { return bottom(p) - (bottom(p) - top) * share(&p->y, y); }

/* Of an exponent only the sign and the digits that count: 1e-5. */
static const char* words_of(double value, char words[32])
{
    snprintf(words, 32, "%g", value);
    char* to = strchr(words, 'e');
    if (to == NULL) return words;
    const char* from = ++to;
    if (*from == '-') ++to;
    for (++from; *from == '0'; ++from) {
    }
    memmove(to, from, strlen(from) + 1);
    return words;
}

void open_plot(FILE* out, const struct plot* p)
{
    char words[32];
    fprintf(out, "<svg class=map viewBox='0 0 785 %.0f'>\n<g fill='%s'>", bottom(p) + 52, grey);
    for (int i = 0; p->y.step > 0 && number(&p->y, i) <= p->y.to * 1.0001; ++i) {
        const double y = number(&p->y, i);
        fprintf(out, "<path d='M%d %.1fH%d' stroke='#e4e4de'/><text x=%d y=%.1f text-anchor=end>%s</text>\n", left,
                up(p, y), right, left - 8, up(p, y) + 4, words_of(y, words));
    }
    for (int i = 0; p->x.step > 0 && number(&p->x, i) <= p->x.to * 1.0001; ++i) {
        const double x = number(&p->x, i);
        fprintf(out, "<text x=%.1f y=%.0f text-anchor=middle>%s</text>\n", across(p, x), bottom(p) + 20,
                words_of(x, words));
    }
    fprintf(out, "<text x=%d y=%.0f text-anchor=middle>%s</text><text x=%d y=18>%s</text></g>\n", (left + right) / 2,
            bottom(p) + 42, p->x.name, left - 50, p->y.name);
}

void close_plot(FILE* out) { fprintf(out, "</svg>\n"); }

static void open_curve(FILE* out, const char* colour, const char* dashes)
{
    fprintf(out, "<polyline fill=none stroke-width=1.8 stroke-linejoin=round stroke='%s'%s points='", colour, dashes);
}

void curve(FILE* out, const struct plot* p, int count, double first, double step, const double* value,
           const char* colour)
{
    open_curve(out, colour, "");
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

void key(FILE* out, int line, const char* colour, const char* text)
{
    fprintf(out, "<text x=%d y=%d fill='%s'>%s</text>\n", left + 12, top + 16 + 18 * line, colour, text);
}

static void through(FILE* out, const struct plot* p, int count, const double* x, const double* y, const char* colour,
                    const char* dashes)
{
    open_curve(out, colour, dashes);
    for (int i = 0; i < count; ++i) fprintf(out, "%.1f,%.1f ", across(p, x[i]), up(p, y[i]));
    fprintf(out, "'/>\n");
}

void dashed(FILE* out, const struct plot* p, int count, const double* x, const double* y, const char* colour)
{
    through(out, p, count, x, y, colour, " stroke-dasharray='4 4'");
}

void dotted(FILE* out, const struct plot* p, int count, const double* x, const double* y, const char* colour)
{
    through(out, p, count, x, y, colour, "");
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

struct scale decades(double least, double most, const char* name)
{
    return (struct scale){pow(10, floor(log10(least))), pow(10, ceil(log10(most))), 10, name, 1};
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
