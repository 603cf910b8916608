/* A picture as a bitmap file, which needs no compression, in base 64. */
#include "picture.h"

#include "tools.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

enum { head = 54, palette = 4 * 256 };

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

void picture_address(FILE* out, int width, int height, const double* value)
{
    const long row = (width + 3L) / 4 * 4, size = head + palette + row * height;
    unsigned char* file = memory(size, 1);
    memcpy(file, "BM", 2);
    put(file + 2, 4, (unsigned long)size);
    put(file + 10, 4, head + palette); /* where the pixels are */
    put(file + 14, 4, 40);             /* what is left of the head */
    put(file + 18, 4, (unsigned long)width);
    put(file + 22, 4, (unsigned long)height);
    put(file + 26, 2, 1); /* planes */
    put(file + 28, 2, 8); /* bits a pixel */
    for (int grey = 0; grey < 256; ++grey) memset(file + head + 4 * grey, grey, 3);
    for (int y = 0; y < height; ++y) /* the last row is the first */
        for (int x = 0; x < width; ++x)
            file[head + palette + row * (height - 1 - y) + x] =
                (unsigned char)(fmin(fmax(value[y * width + x], 0), 255) + 0.5);
    fprintf(out, "data:image/bmp;base64,");
    base64(out, file, size);
    free(file);
}
