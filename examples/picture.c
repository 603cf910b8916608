/* A picture as a bitmap file, which needs no compression, in base 64. */
#include "picture.h"

#include "tools.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

enum { head = 54, shades = 4 * 256 };

/* Blue, green and red of colours at equal distances, between which the others are. */
enum { stops = 5 };
static const unsigned char colour[][stops][3] = {
    [GREYS] = {{0, 0, 0}, {64, 64, 64}, {128, 128, 128}, {191, 191, 191}, {255, 255, 255}},
    [HEAT] = {{52, 18, 32}, {92, 32, 128}, {62, 82, 214}, {70, 166, 250}, {200, 246, 252}},
    [SIGNS] = {{140, 70, 30}, {214, 166, 110}, {247, 247, 247}, {120, 140, 230}, {40, 24, 160}}};

static double shade(enum palette palette, int value, int part)
{
    const double at = value / 255.0 * (stops - 1);
    const int below = at < stops - 1 ? (int)at : stops - 2;
    return colour[palette][below][part] +
           (at - below) * (colour[palette][below + 1][part] - colour[palette][below][part]);
}

static void put(unsigned char* to, int bytes, unsigned long value)
{
    for (int i = 0; i < bytes; ++i) to[i] = (unsigned char)(value >> 8 * i);
}

static void base64(FILE* out, const unsigned char* byte, long count)
{
    static const char digit[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (long i = 0; i < count; i += 3) {
        unsigned long three = 0;
        for (int j = 0; j < 3; ++j) three = three << 8 | (i + j < count ? byte[i + j] : 0);
        for (int j = 0; j < 4; ++j) fputc(i + j > count ? '=' : digit[three >> (18 - 6 * j) & 63], out);
    }
}

void picture_address(FILE* out, int width, int height, const double* value, enum palette palette)
{
    const long row = (width + 3L) / 4 * 4, size = head + shades + row * height;
    unsigned char* file = memory(size, 1);
    memcpy(file, "BM", 2);
    put(file + 2, 4, (unsigned long)size);
    put(file + 10, 4, head + shades); /* where the pixels are */
    put(file + 14, 4, 40);            /* what is left of the head */
    put(file + 18, 4, (unsigned long)width);
    put(file + 22, 4, (unsigned long)height);
    put(file + 26, 2, 1); /* planes */
    put(file + 28, 2, 8); /* bits a pixel */
    for (int i = 0; i < 256; ++i)
        for (int part = 0; part < 3; ++part) file[head + 4 * i + part] = (unsigned char)(shade(palette, i, part) + 0.5);
    for (int y = 0; y < height; ++y) /* the last row is the first */
        for (int x = 0; x < width; ++x)
            file[head + shades + row * (height - 1 - y) + x] =
                (unsigned char)(fmin(fmax(value[y * width + x], 0), 255) + 0.5);
    fprintf(out, "data:image/bmp;base64,");
    base64(out, file, size);
    free(file);
}
