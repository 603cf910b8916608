/* Principal components of handwritten digits: an ordinary program against <cblas.h>.

   usage: digits DATA.csv [PAGE.html]

   Each image is a point in 64 dimensions. The directions along which the 1797 points vary most are the leading
   eigenvectors of their covariance matrix, found here by block power iteration. Prints a table of the explained
   variance, and writes a page with pictures. Any library with the standard interface can compute it; the first line
   says which one did. */
#define _GNU_SOURCE
#include "digits.h"

#include <cblas.h>
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const double tolerance = 1e-12; /* residual at which an eigenvector is good */
static const int max_steps = 2000;

/* Where the running process has its matrix product from: by link, LD_LIBRARY_PATH or LD_PRELOAD. */
static const char* library_of_gemm(void)
{
    static char path[4096];
    Dl_info info;
    void* gemm = dlsym(RTLD_DEFAULT, "cblas_dgemm");
    if (gemm == NULL || dladdr(gemm, &info) == 0) return "the program itself";
    return realpath(info.dli_fname, path) ? path : info.dli_fname;
}

/* One line of the file: 64 pixels from 0 to 16 and the digit, separated by commas. Returns what is wrong, or NULL. */
static const char* parse(const char* line, double* pixel, int* label)
{
    static char problem[80];
    for (int i = 0; i <= pixels; ++i) {
        char* end;
        const long value = strtol(line, &end, 10), limit = i < pixels ? 16 : 9;
        if (end == line || value < 0 || value > limit) {
            snprintf(problem, sizeof problem, "number %d of %d is missing or not a number from 0 to %ld", i + 1,
                     pixels + 1, limit);
            return problem;
        }
        if (*end != (i < pixels ? ',' : '\n')) {
            snprintf(problem, sizeof problem, "the line should go on with a %s after number %d",
                     i < pixels ? "comma" : "new line", i + 1);
            return problem;
        }
        if (i < pixels) pixel[i] = (double)value;
        else *label = (int)value;
        line = end + 1;
    }
    return NULL;
}

/* Reads the whole file, or says what is wrong with it, in which line, and ends the program. */
static void read_digits(const char* path, struct digits* data)
{
    char line[512];
    const char* problem = NULL;
    int number = 0;
    FILE* file = fopen(path, "r");
    if (file == NULL) {
        fprintf(stderr, "digits: %s: %s\n", path, strerror(errno));
        exit(1);
    }
    while (problem == NULL && fgets(line, sizeof line, file) != NULL) {
        if (++number > images) problem = "the file has more lines than there are images";
        else problem = parse(line, data->pixel[number - 1], &data->label[number - 1]);
    }
    if (problem == NULL && number < images) {
        ++number;
        problem = ferror(file) ? strerror(errno) : "the file ends before this line";
    }
    fclose(file);
    if (problem != NULL) {
        fprintf(stderr, "digits: %s:%d: %s (expected %d lines of %d numbers)\n", path, number, problem, images,
                pixels + 1);
        exit(1);
    }
}

/* Moves the average of the points to the origin. */
static void centre(double (*x)[pixels], double* mean)
{
    memset(mean, 0, pixels * sizeof *mean);
    for (int i = 0; i < images; ++i) cblas_daxpy(pixels, 1.0 / images, x[i], 1, mean, 1);
    for (int i = 0; i < images; ++i) cblas_daxpy(pixels, -1, mean, 1, x[i], 1);
}

/* Gram-Schmidt. The second sweep removes what rounding left of the first. */
static void orthonormalise(double (*v)[pixels])
{
    for (int i = 0; i < components; ++i) {
        for (int sweep = 0; sweep < 2; ++sweep)
            for (int j = 0; j < i; ++j) cblas_daxpy(pixels, -cblas_ddot(pixels, v[j], 1, v[i], 1), v[j], 1, v[i], 1);
        cblas_dscal(pixels, 1 / cblas_dnrm2(pixels, v[i], 1), v[i], 1);
    }
}

/* Multiplies a block of vectors by C until each is an eigenvector: vector i gains on its successor by the ratio of
   their eigenvalues a step. Starts from the block that it finds in result->vector. Returns the number of steps. */
static int leading_eigenvectors(double (*c)[pixels], struct analysis* result)
{
    static double product[components][pixels], difference[pixels];
    for (int step = 1; step <= max_steps; ++step) {
        double worst = 0;
        orthonormalise(result->vector);
        cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, components, pixels, pixels, 1, result->vector[0], pixels,
                    c[0], pixels, 0, product[0], pixels); /* C is symmetric, so rows serve as columns */
        for (int i = 0; i < components; ++i) {
            const double lambda = cblas_ddot(pixels, result->vector[i], 1, product[i], 1);
            cblas_dcopy(pixels, product[i], 1, difference, 1);
            cblas_daxpy(pixels, -lambda, result->vector[i], 1, difference, 1);
            result->variance[i] = lambda;
            result->residual[i] = cblas_dnrm2(pixels, difference, 1) / lambda;
            if (!(result->residual[i] <= worst)) worst = result->residual[i];
        }
        if (worst <= tolerance) return step;
        cblas_dcopy(components * pixels, product[0], 1, result->vector[0], 1);
    }
    fprintf(stderr, "digits: no eigenvectors after %d steps\n", max_steps);
    exit(1);
}

/* An eigenvector is determined but for its sign: make the largest entry positive, so that runs can be compared. */
static void fix_signs(double (*v)[pixels])
{
    for (int i = 0; i < components; ++i)
        if (v[i][cblas_idamax(pixels, v[i], 1)] < 0) cblas_dscal(pixels, -1, v[i], 1);
}

int main(int argc, char** argv)
{
    static struct digits data;
    static struct analysis result;
    static double x[images][pixels], c[pixels][pixels];
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: digits DATA.csv [PAGE.html]\n");
        return 1;
    }
    read_digits(argv[1], &data);
    result.library = library_of_gemm();
    printf("computed by %s\n", result.library);

    memcpy(x, data.pixel, sizeof x);
    centre(x, result.mean);
    cblas_dgemm(CblasRowMajor, CblasTrans, CblasNoTrans, pixels, pixels, images, 1.0 / (images - 1), x[0], pixels, x[0],
                pixels, 0, c[0], pixels);
    for (int i = 0; i < pixels; ++i) result.total_variance += c[i][i];

    memcpy(result.vector, x, sizeof result.vector); /* the first images: a 0, a 1, ... a 9 */
    const int steps = leading_eigenvectors(c, &result);
    fix_signs(result.vector);
    cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasTrans, images, components, pixels, 1, x[0], pixels, result.vector[0],
                pixels, 0, result.coordinate[0], components);

    printf("%d images of %d pixels, %d steps of block power iteration\n\n", images, pixels, steps);
    printf("component      variance    share    total   |Cv - lv| / l\n");
    double total = 0;
    for (int i = 0; i < components; ++i) {
        const double share = 100 * result.variance[i] / result.total_variance;
        total += share;
        printf("%9d %13.8f %7.2f%% %7.2f%% %15.1e\n", i + 1, result.variance[i], share, total, result.residual[i]);
    }
    if (argc == 3) {
        if (write_page(argv[2], &data, &result) != 0) {
            fprintf(stderr, "digits: %s: %s\n", argv[2], strerror(errno));
            return 1;
        }
        printf("\npage written to %s\n", argv[2]);
    }
    return 0;
}
