/* The page: a series and its spectrum as curves, a picture and what filters make of it. */
#include "examples/page.h"
#include "examples/picture.h"
#include "examples/plot.h"
#include "examples/tools.h"
#include "spectrum.h"

#include <math.h>
#include <orv/branch.h>
#include <stdlib.h>

static const char* const style =
    "td:first-child{white-space:nowrap}td:first-child,th:first-child,td:last-child,th:last-child{text-align:left}";

static void series(FILE* out, const struct results* r)
{
    const struct signal* s = r->sunspots;
    const double most = largest_of(s->value, s->width), step = step_for(most);
    const double decade = 10 * floor(s->first / 10), last = s->first + s->width - 1;
    const struct plot plot = {.x = {decade, last, 50, "year", 0},
                              .y = {0, step * ceil(most / step), step, "sunspot number", 0}};
    open_plot(out, &plot);
    curve(out, &plot, s->width, s->first, 1, s->value, blue);
    curve(out, &plot, s->width, s->first, 1, r->slow, red);
    close_plot(out);
}

static void waves(FILE* out, const struct results* r)
{
    const int n = r->sunspots->width, half = r->years->half;
    double* height = memory(half, sizeof *height);
    for (int k = 1; k < half; ++k) height[k] = amplitude(r->years, k, 0);
    const double most = height[r->peak], step = step_for(most);
    const struct plot plot = {.x = {0, 0.5, 0.05, "waves a year", 0},
                              .y = {0, step * ceil(most / step), step, "amplitude of the wave (sunspot number)", 0}};
    open_plot(out, &plot);
    curve(out, &plot, half - 1, 1.0 / n, 1.0 / n, height + 1, blue);
    char words[60];
    snprintf(words, sizeof words, "a wave of %.2f years", (double)n / r->peak);
    dot(out, &plot, (double)r->peak / n, most, red);
    label(out, &plot, (double)r->peak / n + 0.008, most - 0.45 * step, "start", red, words);
    close_plot(out);
    free(height);
}

static void figure(FILE* out, const struct signal* like, const double* value, const char* caption)
{
    fprintf(out, "<figure><img alt='' src='");
    picture_address(out, like->width, like->height, value, GREYS);
    fprintf(out, "'><figcaption>%s</figcaption></figure>\n", caption);
}

/* All of the spectrum, from its half, on a scale of logarithms of four decades below the strongest wave; the frequency
   of 0 in the middle. */
static void spectrum(FILE* out, const struct spectrum* s)
{
    const int width = s->of->width, height = s->of->height;
    double* shade = memory((long)width * height, sizeof *shade);
    double strongest = 1e-300;
    for (int l = 0; l < height; ++l)
        for (int k = l == 0; k < s->half; ++k) strongest = fmax(strongest, amplitude(s, k, l));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int fx = x - width / 2, fy = y - height / 2, mirror = fx < 0;
            const int row = ((mirror ? -fy : fy) + height) % height;
            shade[y * width + x] = 255 * (1 + log10(amplitude(s, abs(fx), row) / strongest + 1e-30) / 4);
        }
    fprintf(out, "<figure><svg viewBox='0 0 390 390' font-family='system-ui,sans-serif' font-size=12 fill='%s'>", grey);
    fprintf(out,
            "<image x=52 y=4 width=334 height=334 preserveAspectRatio=none style='image-rendering:pixelated' href='");
    picture_address(out, width, height, shade, GREYS);
    fprintf(out, "'/>\n");
    for (int i = -1; i <= 1; ++i)
        fprintf(out, "<text x=%d y=354 text-anchor=%s>%g</text><text x=46 y=%d text-anchor=end>%g</text>\n",
                219 + 167 * i,
                i < 0   ? "start"
                : i > 0 ? "end"
                        : "middle",
                0.5 * i,
                i < 0   ? 14
                : i > 0 ? 337
                        : 175,
                0.5 * i);
    fprintf(out, "<text x=219 y=376 text-anchor=middle>waves a pixel, across</text>"
                 "<text transform='translate(14 171) rotate(-90)' text-anchor=middle>waves a pixel, down</text></svg>"
                 "<figcaption>its spectrum: white is the strongest wave, black one of a ten thousandth of "
                 "it</figcaption></figure>\n");
    free(shade);
}

/* A column of shades a frame, on a scale of logarithms of three decades; the strongest is white. */
static void spectrogram(FILE* out, const struct spectrum* s)
{
    const int frames = s->of->height, high = s->half;
    const struct plot plot = {.x = {0, sweep_seconds, 0.25, "seconds", 0},
                              .y = {0, sound_rate / 2, 1000, "waves a second (Hz)", 0}};
    double* shade = memory((long)frames * high, sizeof *shade);
    double strongest = 1e-300;
    for (int f = 0; f < frames; ++f)
        for (int k = 0; k < high; ++k) strongest = fmax(strongest, amplitude(s, k, f));
    for (int f = 0; f < frames; ++f)
        for (int k = 0; k < high; ++k)
            shade[(high - 1 - k) * frames + f] = 255 * (1 + log10(amplitude(s, k, f) / strongest + 1e-30) / 3);
    open_plot(out, &plot);
    /* A shade is around the middle of its frame, and around its frequency. */
    const double begin = (frame_length - frame_step) / 2.0 / sound_rate, step = (double)frame_step / sound_rate;
    const double band = (double)sound_rate / frame_length, above = up(&plot, (high - 0.5) * band);
    fprintf(out, "<image x=%.2f y=%.2f width=%.2f height=%.2f preserveAspectRatio=none href='", across(&plot, begin),
            above, across(&plot, frames * step) - plot_left, up(&plot, -0.5 * band) - above);
    picture_address(out, frames, high, shade, GREYS);
    fprintf(out, "'/>"), close_plot(out);
    free(shade);
}

static void filters(FILE* out)
{
    enum { points = 101 };
    const struct plot plot = {.x = {0, 0.5, 0.1, "waves a pixel, in any direction", 0},
                              .y = {0, 2, 0.5, "factor of the wave", 0}};
    double soft[points], sharp[points];
    for (int i = 0; i < points; ++i) soft[i] = blur(0.005 * i), sharp[i] = sharpen(0.005 * i);
    open_plot(out, &plot);
    curve(out, &plot, points, 0, 0.005, soft, blue);
    curve(out, &plot, points, 0, 0.005, sharp, red);
    label(out, &plot, 0.49, 0.08, "end", blue, "blurred");
    label(out, &plot, 0.49, 1.86, "end", red, "sharpened");
    close_plot(out);
}

static void row(FILE* out, const struct spectrum* s)
{
    fprintf(out, "<tr><td>%d", s->of->width);
    if (s->of->alone) fprintf(out, ", %d times", s->of->height);
    else if (s->of->height > 1) fprintf(out, " &times; %d", s->of->height);
    fprintf(out, "<td>%.2f<td>%.1f<td>%.1e<td>%.1e<td>%s</tr>\n", 1e6 * s->seconds, 1e6 * s->plain_seconds,
            s->difference, s->there_and_back, orv_dft_method(s->dft));
}

int write_page(const char* path, const struct results* r)
{
    FILE* out = open_page(path, "Waves in the sun, in a sound, and in a picture", figure_rules, style);
    if (out == NULL) return -1;
    fprintf(out,
            "<p>A Fourier transform takes a signal apart into waves, and puts it together again. Between the two, "
            "waves can be found, weakened and strengthened.</p>\n"
            "<h2>Sunspots</h2>\n<p>How many spots the sun had in each of %d years. In red what is left when only waves "
            "of more than %d years go into the transform back.</p>\n",
            r->sunspots->width, slow_years);
    series(out, r);
    fprintf(out,
            "<p>The spectrum knows how often they come: the strongest wave takes %.2f years, around a mean of "
            "%.1f. Its neighbours are strong, too, because cycles are not all of one length.</p>\n",
            (double)r->sunspots->width / r->peak, r->mean);
    waves(out, r);
    fprintf(out,
            "<h2>A sound</h2>\n<p>A tone rises from %d to %d Hz in %d seconds, and a softer one of %d Hz comes and "
            "goes. The sound is cut into %d overlapping frames of %d values, which one call transforms; each is a "
            "column below. White is the strongest wave, black one of a thousandth of it.</p>\n",
            sweep_from, sweep_to, sweep_seconds, beep, r->frames->of->height, frame_length);
    spectrogram(out, r->frames);
    fprintf(out,
            "<h2>A picture</h2>\n<p>%d by %d pixels, transformed along both sides. Each wave is multiplied by a "
            "factor that depends on its frequency, and the transform back shows the result. Opposite edges of a "
            "picture meet for a transform, so that a little of each shines through at the other.</p>\n",
            r->picture->width, r->picture->height);
    fprintf(out, "<div class=row>\n");
    figure(out, r->picture, r->picture->value, "the picture");
    spectrum(out, r->pixels);
    figure(out, r->picture, r->blurred, "blurred: fast waves weakened");
    figure(out, r->picture, r->sharpened, "sharpened: fast waves strengthened");
    fprintf(out, "</div>\n<h2>The two filters</h2>\n<p>Blurring makes a bell of each pixel, and the factors are the "
                 "bell's own spectrum. Sharpening adds what blurring takes away.</p>\n");
    filters(out);
    fprintf(out, "<h2>How it was computed</h2>\n<p>On one thread, the fastest of at least 50 transforms forward, "
                 "beside sums by the definition "
                 "with a table of roots (of the picture: of rows, then of columns). The difference of both is relative "
                 "to the strongest wave, what forward and back leave to the largest value.</p>\n"
                 "<table><tr><th>reals<th>&micro;s<th>sums, &micro;s<th>difference<th>there and back<th>method</tr>\n");
    row(out, r->years);
    row(out, r->frames);
    row(out, r->pixels);
    fprintf(out,
            "</table>\n<footer>Computed by <code>%s</code> with <code>orv/dft.h</code>.<br>Data: yearly sunspot "
            "numbers of the National Geophysical Data Center; a picture of public-domain-image.com. Both are in the "
            "public domain.</footer>",
            orv_path());
    return close_page(out);
}
