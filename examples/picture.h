/* Pictures inside a page. */
#ifndef PICTURE_H
#define PICTURE_H

#include <stdio.h>

/* What values look like: from black to white; from dark over red and yellow to light; and from blue over white, in the
   middle, to red. */
enum palette { GREYS, HEAT, SIGNS };

/* Writes a picture as the address of an image: data that stand in the address itself. Values from 0 to 255; what is
   beyond is cut. */
void picture_address(FILE* out, int width, int height, const double* value, enum palette palette);

#endif
