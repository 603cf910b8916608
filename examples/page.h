/* The frame of a page, complete in one file. */
#ifndef PAGE_H
#define PAGE_H

#include <stdio.h>

/* Its head, with rules for how it looks: those that all pages have, and more; "" is none. Null with errno set on
   failure. */
FILE* open_page(const char* path, const char* title, const char* rules, const char* more_rules);
extern const char* const figure_rules; /* for plots (class map), figures in a row (class row), pictures */
int close_page(FILE* out);             /* -1 with errno set on failure, else 0 */

/* Words as they are, < and & among them. */
void text(FILE* out, const char* words);

#endif
