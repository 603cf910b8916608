/* The page: the recording and where the sound is in it, the pictures, the times of both routes. */
#include "convolve.h"

#include "examples/page.h"
#include "examples/picture.h"
#include "examples/plot.h"
#include "examples/tools.h"

#include <math.h>
#include <orv/branch.h>
#include <stdlib.h>

static const char* const style =
    ".weights{width:57px;float:left;margin:0 10px 0 0}figcaption{min-height:60px;margin-bottom:.8em}"
    "td:first-child,th:first-child,td:last-child,th:last-child{text-align:left}";

static const char* route(int taken) { return taken == ORV_CONV_DIRECT ? "direct sums" : "the transform"; }

static void recording(FILE* out, const struct search* s)
{
    const double seconds = (double)recording_length / rate,
                 most = 5 * ceil(largest_of(s->recording, recording_length) / 5);
    const struct plot plot = {.x = {0, seconds, 1, "seconds", 0},
                              .y = {-most, most, 5, "sound pressure (1: the sound's, root of mean square)", 0}};
    open_plot(out, &plot);
    band(out, &plot, recording_length, 0, 1.0 / rate, s->recording, blue);
    band(out, &plot, sound_length, (double)s->hidden / rate, 1.0 / rate, s->sound, red);
    close_plot(out);
}

static void likeness(FILE* out, const struct search* s)
{
    const double seconds = (double)recording_length / rate, at = (double)s->found / rate, most = s->likeness[s->found];
    const struct plot plot = {.x = {0, seconds, 1, "lag: where the sound would begin (seconds)", 0},
                              .y = {-1, 1.5, 0.5, "likeness (1: the sound itself)", 0}};
    char words[60];
    const int early = at < seconds / 2;
    open_plot(out, &plot);
    band(out, &plot, lags, 0, 1.0 / rate, s->likeness, blue);
    dot(out, &plot, at, most, red);
    snprintf(words, sizeof words, "found at %.4f seconds", at);
    label(out, &plot, at + (early ? 0.12 : -0.12), most, early ? "start" : "end", red, words);
    close_plot(out);
}

static void image(FILE* out, const char* attributes, int width, int height, const double* value)
{
    fprintf(out, "<img alt='' %s src='", attributes);
    picture_address(out, width, height, value, GREYS);
    fprintf(out, "'>");
}

/* Middle grey is 0; roots, so that small weights show beside large ones. */
static void weights(FILE* out, const double* weight)
{
    enum { count = weights_side * weights_side };
    double shade[count], most = 0;
    for (int i = 0; i < count; ++i) most = fmax(most, fabs(weight[i]));
    for (int i = 0; i < count; ++i) shade[i] = 128 + copysign(127 * sqrt(fabs(weight[i]) / most), weight[i]);
    image(out, "class=weights", weights_side, weights_side, shade);
}

static void pictures(FILE* out, const struct filters* f)
{
    fprintf(out, "<div class=row>\n<figure>");
    image(out, "", f->width, f->height, f->picture);
    fprintf(out, "<figcaption>the picture</figcaption></figure>\n");
    for (int e = 0; e < effects; ++e) {
        fprintf(out, "<figure>");
        image(out, "", f->width, f->height, f->effect[e].result);
        fprintf(out, "<figcaption>");
        weights(out, f->effect[e].weights);
        fprintf(out, "%s, by these weights</figcaption></figure>\n", f->effect[e].name);
    }
    fprintf(out, "</div>\n");
}

/* Both routes, and around the one that automatic took a ring. */
static void times(FILE* out, const struct course* c, const char* name)
{
    double size[most_sizes], direct[most_sizes], transform[most_sizes], least = HUGE_VAL, most = 0;
    for (int i = 0; i < c->count; ++i) {
        size[i] = c->size[i], direct[i] = 1e3 * c->race[i].direct, transform[i] = 1e3 * c->race[i].transform;
        least = fmin(least, fmin(direct[i], transform[i])), most = fmax(most, fmax(direct[i], transform[i]));
    }
    const struct plot plot = {
        .x = {1, size[c->count - 1], 2, name, 1}, .y = decades(least, most, "milliseconds"), .height = 260};
    open_plot(out, &plot);
    if (c->crossing > 0 && c->crossing < c->count) {
        const double cross = sqrt(size[c->crossing - 1] * size[c->crossing]);
        dashed(out, &plot, 2, (double[]){cross, cross}, (double[]){plot.y.from, plot.y.to}, grey);
    }
    dotted(out, &plot, c->count, size, direct, blue);
    dotted(out, &plot, c->count, size, transform, red);
    for (int i = 0; i < c->count; ++i)
        ring(out, &plot, size[i], c->race[i].automatic == ORV_CONV_DIRECT ? direct[i] : transform[i], ink);
    key(out, 0, blue, "direct sums"), key(out, 1, red, "through the transform");
    key(out, 2, ink, "ringed: taken by automatic");
    close_plot(out);
}

static void crossing(FILE* out, const struct course* c)
{
    char before[40], from[40];
    fprintf(out, "<p>");
    if (c->crossing == 0) fprintf(out, "The transform is faster at all sizes. ");
    else if (c->crossing == c->count) fprintf(out, "Direct sums are faster at the largest size, too. ");
    else
        fprintf(out, "The lines cross between %s weights and %s: from there on the transform is faster. ",
                shape_words(c, c->crossing - 1, "&times;", before), shape_words(c, c->crossing, "&times;", from));
    if (c->changes == 0) fprintf(out, "Automatic took the transform everywhere");
    else if (c->changes == c->count) fprintf(out, "Automatic took direct sums everywhere");
    else
        fprintf(out, "Automatic, which goes by the shapes alone, took it from %s on",
                shape_words(c, c->changes, "&times;", from));
    if (c->dearest > 1)
        fprintf(out, ", which cost at most %.2f times the time of the faster route, at %s.</p>\n", c->dearest,
                shape_words(c, c->dearest_at, "&times;", from));
    else fprintf(out, ", and was always right.</p>\n");
}

static void row(FILE* out, const char* what, const struct race* r)
{
    fprintf(out, "<tr><td>%s<td>%.2f<td>%.2f<td>%.1e<td>%s<td><code>%s</code></tr>\n", what, 1e3 * r->direct,
            1e3 * r->transform, r->difference, route(r->automatic), r->kernel);
}

int write_page(const char* path, const struct results* r)
{
    const struct search* s = r->search;
    FILE* out = open_page(path, "A sound in noise, a picture out of focus", figure_rules, style);
    if (out == NULL) return -1;
    fprintf(out,
            "<p>A convolution makes of each value a weighted sum of its neighbours. With the weights in the opposite "
            "order it is a correlation, which tells how much a signal is like the weights, at each place of it.</p>\n"
            "<h2>A sound in noise</h2>\n<p>A tone that rises from %d to %d Hz in half a second is hidden somewhere in "
            "ten seconds of noise, which is %d times as loud. Here is the recording in blue, and the sound "
            "by itself, where it was hidden, in red. In the sum of both nothing is to be seen or heard of it.</p>\n",
            sweep_from, sweep_to, loudness);
    recording(out, s);
    fprintf(out,
            "<p>But laid beside the recording at all %d places, it fits at one: %.4f seconds after the start, value "
            "%d, and it was hidden at value %d. There the likeness is %.2f, everywhere else at most %.2f. "
            "This is how sonar and radar hear their echo, whose lag tells how far away something is: "
            "%.0f m in sea water, with 1500 m a second there and back.</p>\n",
            lags, (double)s->found / rate, s->found, s->hidden, s->likeness[s->found], s->elsewhere,
            750.0 * s->found / rate);
    likeness(out, s);
    fprintf(
        out,
        "<h2>A picture</h2>\n<p>%d by %d pixels. Each becomes the sum of %d by %d pixels around it, with the weights "
        "of the small pictures: middle grey is 0, lighter is added, darker is taken away. Beyond its edges the "
        "picture goes on as it ends.</p>\n",
        r->filters->width, r->filters->height, weights_side, weights_side);
    pictures(out, r->filters);
    fprintf(
        out,
        "<h2>Two ways to the same result</h2>\n<p>Direct sums take a product for every weight and value. "
        "Transforms of both, multiplied and transformed back, take as long for a few weights as for many; along one "
        "dimension they go over the signal in pieces, with short cuts for short filters. A program may choose, or "
        "leave it to orv. The recording's %d values, convolved with more and more weights, on one thread, the "
        "fastest of at least 3 runs, in processor time:</p>\n",
        recording_length);
    times(out, r->along, "weights");
    crossing(out, r->along);
    fprintf(out, "<p>The picture, with squares of weights:</p>\n");
    times(out, r->across, "weights along each side of the square");
    crossing(out, r->across);
    fprintf(out, "<h2>How it was computed</h2>\n<p>The difference of both results is relative to the largest "
                 "value.</p>\n<table><tr><th><th>direct, ms<th>transform, ms<th>difference<th>automatic took<th>"
                 "done by</tr>\n");
    row(out, "the sound", &s->race), row(out, "the picture", &r->filters->race);
    fprintf(out,
            "</table>\n<footer>Computed by <code>%s</code> with <code>orv/conv.h</code>.<br>Data: a picture of "
            "public-domain-image.com, in the public domain; the sound and the noise are made by the program.</footer>",
            orv_path());
    return close_page(out);
}
