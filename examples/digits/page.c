/* The page: what the digits look like, where they lie on the first two components, and what the components are. */
#include "examples/page.h"
#include "digits.h"

#include <math.h>
#include <stdio.h>

static const char* const colour[classes] = {"#4269d0", "#e8871e", "#d6404e", "#3a9e97", "#3f8f3f",
                                            "#b8930b", "#8d5fb4", "#e0719a", "#8c6247", "#5c6370"};

static const char* const style =
    "body{max-width:980px}.row{display:flex;flex-wrap:wrap;gap:14px}figure{margin:0;text-align:center}"
    "figcaption{font-size:13px;color:#5c6370;line-height:1.35;margin-top:4px}"
    ".picture{border:1px solid #d8d8d2;border-radius:3px}.map{width:100%;height:auto;background:#fff;"
    "border:1px solid #d8d8d2;border-radius:6px}td:last-child,th:last-child{text-align:left}.bar{height:12px;"
    "border-radius:2px;background:#4269d0;float:left}.sum{background:#c9d3f2}";

static int channel(double full, double strength) { return (int)(255 - (255 - full) * fmin(strength, 1) + 0.5); }

/* An image of 8 by 8: zero is white, positive values go to blue black, negative ones to red; scale is full colour. */
static void picture(FILE* out, const double* pixel, double scale, int size)
{
    fprintf(out, "<svg class=picture width=%d height=%d viewBox='0 0 %d %d' shape-rendering=crispEdges>", size, size,
            side, side);
    fprintf(out, "<rect width=%d height=%d fill='#fff'/>", side, side);
    for (int i = 0; i < pixels; ++i) {
        const double strength = fabs(pixel[i]) / scale;
        const int red = channel(pixel[i] < 0 ? 196 : 24, strength), green = channel(pixel[i] < 0 ? 40 : 34, strength),
                  blue = channel(pixel[i] < 0 ? 40 : 74, strength);
        fprintf(out, "<rect x=%d y=%d width=1 height=1 fill='#%02x%02x%02x'/>", i % side, i / side, red, green, blue);
    }
    fprintf(out, "</svg>");
}

/* The first image of each class. */
static void samples(FILE* out, const struct digits* data)
{
    fprintf(out, "<div class=row>");
    for (int digit = 0; digit < classes; ++digit) {
        int i = 0;
        while (i < images - 1 && data->label[i] != digit) ++i;
        fprintf(out, "<figure>");
        picture(out, data->pixel[i], 16, 78);
        fprintf(out, "<figcaption>%d</figcaption></figure>", digit);
    }
    fprintf(out, "</div>\n");
}

/* Every image as its digit, at its coordinates on the first two components; a large one at the centre of each class. */
static void map(FILE* out, const struct digits* data, const struct analysis* result)
{
    const int width = 940, height = 640, margin = 46;
    double low[2] = {0, 0}, high[2] = {0, 0};
    for (int i = 0; i < images; ++i)
        for (int axis = 0; axis < 2; ++axis) {
            low[axis] = fmin(low[axis], result->coordinate[i][axis]);
            high[axis] = fmax(high[axis], result->coordinate[i][axis]);
        }
    const double x_scale = (width - 2 * margin) / (high[0] - low[0]), x_zero = margin - low[0] * x_scale;
    const double y_scale = (height - 2 * margin) / (high[1] - low[1]), y_zero = height - margin + low[1] * y_scale;

    fprintf(out, "<svg class=map viewBox='0 0 %d %d' font-family='system-ui,sans-serif' text-anchor=middle>\n", width,
            height);
    fprintf(out, "<path d='M%d %.1fH%dM%.1f %dV%d' stroke='#deded8'/>", margin / 2, y_zero, width - margin / 2, x_zero,
            margin / 2, height - margin / 2);
    fprintf(out, "<g font-size=12 fill='#5c6370'><text x=%d y=%.1f text-anchor=end>component 1 &#8594;</text>",
            width - margin / 2, height - margin / 2.0 + 8);
    fprintf(out, "<text x=%.1f y=%d text-anchor=start>&#8593; component 2</text></g>\n", x_zero + 7, margin / 2 + 8);
    for (int digit = 0; digit < classes; ++digit) {
        double x = 0, y = 0;
        int count = 0;
        fprintf(out, "<g fill='%s' font-size=10 opacity=.75>", colour[digit]);
        for (int i = 0; i < images; ++i)
            if (data->label[i] == digit) {
                const double px = x_zero + x_scale * result->coordinate[i][0],
                             py = y_zero - y_scale * result->coordinate[i][1];
                fprintf(out, "<text x=%.1f y=%.1f>%d</text>", px, py + 3.5, digit);
                x += px, y += py, ++count;
            }
        fprintf(out, "</g>\n");
        if (count == 0) continue;
        fprintf(out,
                "<text id=centre%d x=%.1f y=%.1f fill='%s' font-size=40 font-weight=700 stroke='#fff' stroke-width=6 "
                "paint-order=stroke>%d</text>\n",
                digit, x / count, y / count + 14, colour[digit], digit);
    }
    /* Centres over everything: later elements cover earlier ones. */
    for (int digit = 0; digit < classes; ++digit) fprintf(out, "<use href='#centre%d'/>", digit);
    fprintf(out, "</svg>\n");
}

static void component_pictures(FILE* out, const struct analysis* result)
{
    fprintf(out, "<div class=row><figure>");
    picture(out, result->mean, 16, 110);
    fprintf(out, "<figcaption>average image</figcaption></figure>");
    for (int i = 0; i < components; ++i) {
        fprintf(out, "<figure>");
        picture(out, result->vector[i], 0.4, 110);
        fprintf(out, "<figcaption>component %d<br>%.1f %%</figcaption></figure>", i + 1,
                100 * result->variance[i] / result->total_variance);
    }
    fprintf(out, "</div>\n");
}

static void variance_table(FILE* out, const struct analysis* result)
{
    double before = 0;
    fprintf(out,
            "<table><tr><th>component<th>variance &lambda;<th>share<th>together<th>&Vert;Cv &minus; &lambda;v&Vert; "
            "/ &lambda;<th></tr>\n");
    for (int i = 0; i < components; ++i) {
        const double share = 100 * result->variance[i] / result->total_variance;
        fprintf(out, "<tr><td>%d<td>%.4f<td>%.2f %%<td>%.2f %%<td>%.1e<td>", i + 1, result->variance[i], share,
                before + share, result->residual[i]);
        fprintf(out,
                "<div class='bar sum' style='width:%.0fpx'></div><div class=bar style='width:%.0fpx'></div></tr>\n",
                4 * before, 4 * share);
        before += share;
    }
    fprintf(out, "</table>\n");
}

int write_page(const char* path, const struct digits* data, const struct analysis* result)
{
    FILE* out = open_page(path, "Handwritten digits in two dimensions", "", style);
    if (out == NULL) return -1;
    const double two = 100 * (result->variance[0] + result->variance[1]) / result->total_variance;
    fprintf(out,
            "<p>13 people wrote %d digits, which were scanned and shrunk to %d &times; %d pixels. Here is the "
            "first of each kind.</p>\n",
            images, side, side);
    samples(out, data);
    fprintf(out,
            "<h2>Where they lie</h2>\n<p>With %d pixels each, the images are points in %d dimensions. This is the "
            "view from the side that shows most: along the two directions in which the points vary most, which "
            "hold %.1f&nbsp;%% of all variance. Nobody told the computation which digit is which, and still the "
            "same digits gather. Large digits mark the centre of each kind.</p>\n",
            pixels, pixels, two);
    map(out, data, result);
    fprintf(out,
            "<h2>What the directions are</h2>\n<p>Each direction is an image itself: going along it adds ink where "
            "the picture is blue and takes it away where it is red. They are the leading eigenvectors of the "
            "covariance matrix; below each, its share of the variance.</p>\n");
    component_pictures(out, result);
    fprintf(out,
            "<h2>How much they explain</h2>\n<p>Ten directions of %d hold almost three quarters of the variance."
            " The last number tells how far each is from an exact eigenvector.</p>\n",
            pixels);
    variance_table(out, result);
    fprintf(out,
            "<footer>Computed by <code>%s</code> with matrix products and vector operations of the standard "
            "interface <code>cblas.h</code>.<br>Data: E. Alpaydin, C. Kaynak, <em>Optical Recognition of "
            "Handwritten Digits</em>, UCI Machine Learning Repository, CC&nbsp;BY&nbsp;4.0.</footer>",
            result->library);
    return close_page(out);
}
