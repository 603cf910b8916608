/* The two files: years with numbers, and a picture in grey. */
#include "spectrum.h"

#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void refuse(const char* path, const char* why)
{
    fprintf(stderr, "spectrum: %s: %s\n", path, why);
    exit(1);
}

static FILE* opened(const char* path)
{
    FILE* in = fopen(path, "rb");
    if (in == NULL) refuse(path, strerror(errno));
    return in;
}

void* memory(long count, size_t size)
{
    void* block = calloc((size_t)count, size);
    if (block == NULL) refuse("memory", "there is not enough");
    return block;
}

enum { most_years = 100000, most_pixels = 4096 };

void read_series(const char* path, struct signal* series)
{
    FILE* in = opened(path);
    char line[200];
    int n = 0;
    *series = (struct signal){.height = 1, .value = memory(most_years, sizeof(double))};
    if (fgets(line, sizeof line, in) == NULL) refuse(path, "the file is empty"); /* names of the columns */
    while (fgets(line, sizeof line, in) != NULL) {
        double year, value;
        if (n == most_years) refuse(path, "too many lines");
        if (sscanf(line, "%lf,%lf", &year, &value) != 2 || !isfinite(value)) refuse(path, "a line is not YEAR,NUMBER");
        if (n == 0) series->first = year;
        if (year != series->first + n) refuse(path, "the years do not follow one another");
        series->value[n++] = value;
    }
    if (n < 2) refuse(path, "no spectrum without two years");
    series->width = n;
    fclose(in);
}

void read_picture(const char* path, struct signal* picture)
{
    FILE* in = opened(path);
    int width, height;
    if (fscanf(in, "P5 %d %d 255", &width, &height) != 2 || fgetc(in) == EOF) refuse(path, "no PGM file of 8 bits");
    if (width < 2 || height < 2 || width > most_pixels || height > most_pixels)
        refuse(path, "the sides are not from 2 to 4096");
    *picture = (struct signal){width, height, memory((long)width * height, sizeof(double)), 0, 0};
    for (int i = 0; i < width * height; ++i) {
        const int pixel = fgetc(in);
        if (pixel == EOF) refuse(path, "the file ends before the last pixel");
        picture->value[i] = pixel;
    }
    fclose(in);
}
