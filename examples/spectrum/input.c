/* The file of a series: years with numbers. */
#include "examples/tools.h"
#include "spectrum.h"

#include <math.h>
#include <stdio.h>

enum { most_years = 100000 };

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
