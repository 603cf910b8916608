/* What several examples need besides their own subject. Nothing here returns a failure: the program ends with a
   sentence. */
#ifndef TOOLS_H
#define TOOLS_H

#include <orv/status.h>
#include <stddef.h>
#include <stdio.h>

_Noreturn void refuse(const char* what, const char* why);
FILE* opened(const char* path); /* to be read */
void* memory(long count, size_t size);
void check(orv_status status); /* of a call of orv */

/* A grey picture in the binary form of PGM, with 255 as white. */
void read_picture(const char* path, int* width, int* height, double** value);

#endif
