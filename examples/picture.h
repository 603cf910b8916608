/* Pictures inside a page. */
#ifndef PICTURE_H
#define PICTURE_H

#include <stdio.h>

/* Writes a picture as the address of an image: data that stand in the address itself. Values from 0 to 255; what is
   beyond is cut. */
void picture_address(FILE* out, int width, int height, const double* value); /* 0 is black, 255 white */

#endif
