#define _GNU_SOURCE
#include "tools.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

void refuse(const char* what, const char* why)
{
    fprintf(stderr, "%s: %s: %s\n", program_invocation_short_name, what, why);
    exit(1);
}

FILE* opened(const char* path)
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

void check(orv_status status)
{
    if (status == ORV_OK) return;
    fprintf(stderr, "%s: %s\n", program_invocation_short_name, orv_last_error());
    exit(1);
}

void read_picture(const char* path, int* width, int* height, double** value)
{
    enum { most_pixels = 4096 };
    FILE* in = opened(path);
    if (fscanf(in, "P5 %d %d 255", width, height) != 2 || fgetc(in) == EOF) refuse(path, "no PGM file of 8 bits");
    if (*width < 2 || *height < 2 || *width > most_pixels || *height > most_pixels)
        refuse(path, "the sides are not from 2 to 4096");
    *value = memory((long)*width * *height, sizeof **value);
    for (int i = 0; i < *width * *height; ++i) {
        const int pixel = fgetc(in);
        if (pixel == EOF) refuse(path, "the file ends before the last pixel");
        (*value)[i] = pixel;
    }
    fclose(in);
}
