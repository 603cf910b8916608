/* bad_calls LIBRARY: opens a BLAS library and makes bad calls, each in a process of its own, since some libraries end
   the program. Prints a line a call: what was called, and what the library said. */
#include "matrix_routines.h"

#include <ctype.h>
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

typedef void Gemm(const char*, const char*, const int*, const int*, const int*, const void*, const void*, const int*,
                  const void*, const int*, const void*, void*, const int*, size_t, size_t);
typedef void CGemm(int, int, int, int, int, int, double, const double*, int, const double*, int, double, double*, int);

static void* library;
static double one[2] = {1, 0}, zero[2], a[256], b[256], c[256];

static void* find(const char* name)
{
    void* address = dlsym(library, name);
    if (address == NULL) fprintf(stderr, "no %s\n", name), exit(2);
    return address;
}

/* The names of the arguments that are not as in a good call, then what the library says, without surplus blanks. */
#define SAY(...)                                                                                                       \
    do {                                                                                                               \
        int ends[2];                                                                                                   \
        printf(__VA_ARGS__), printf(": "), fflush(stdout);                                                             \
        if (pipe(ends) != 0) exit(2);                                                                                  \
        const pid_t child = fork();                                                                                    \
        if (child == 0) {                                                                                              \
            dup2(ends[1], 1), dup2(ends[1], 2);
#define OF_CALL                                                                                                        \
    fflush(stdout);                                                                                                    \
    for (int i = 0; i < 256; ++i)                                                                                      \
        if (c[i] != 0) puts("something was written");                                                                  \
    fflush(stdout), _exit(0);                                                                                          \
    }                                                                                                                  \
    close(ends[1]);                                                                                                    \
    print_words(ends[0]);                                                                                              \
    waitpid(child, NULL, 0);                                                                                           \
    }                                                                                                                  \
    while (0)

static void print_words(int end)
{
    FILE* said = fdopen(end, "r");
    char word[256];
    while (fscanf(said, "%255s", word) == 1) printf("%s ", word);
    fclose(said);
    printf("\n");
}

static void set(int* good, int mask, const int* bad, int count)
{
    for (int i = 0; i < count; ++i)
        if (mask >> i & 1) good[i] = bad[i];
}

/* All combinations of good and bad arguments. */
static void fortran(const char* name)
{
    Gemm* gemm = (Gemm*)find(name);
    for (int mask = 0; mask < 256; ++mask) {
        int v[] = {'N', 'T', 3, 4, 5, 5, 5, 5};
        const int bad[] = {'X', '-', -1, -1, -1, 2, 3, 2};
        set(v, mask, bad, 8);
        const char ta = (char)v[0], tb = (char)v[1];
        SAY("%s %d", name, mask);
        if (mask != 0) gemm(&ta, &tb, v + 2, v + 3, v + 4, one, a, v + 5, b, v + 6, zero, c, v + 7, 1, 1);
        OF_CALL;
    }
}

static void cblas(void)
{
    CGemm* gemm = (CGemm*)find("cblas_dgemm");
    for (int layout = 101; layout <= 103; ++layout)
        for (int mask = 0; mask < 256; ++mask) {
            int v[] = {111, 112, 3, 4, 5, 5, 5, 5};
            const int bad[] = {110, 114, -1, -1, -1, 2, 3, 2};
            set(v, mask, bad, 8);
            SAY("cblas_dgemm %d %d", layout, mask);
            if (mask != 0) gemm(layout, v[0], v[1], v[2], v[3], v[4], 1, a, v[5], b, v[6], 0, c, v[7]);
            OF_CALL;
        }
}

/* Where matrices are stored by rows, the reference library copies some vectors of complex numbers without a look at
   their stride. */
static int is_compared(const struct MatrixRoutine* routine, int layout, const char* word)
{
    if (layout != 101) return 1;
    return strncmp(word, "inc", 3) != 0 || (strcmp(routine->rest, "gerc") != 0 && routine->rest[0] != 'h');
}

/* Each argument that is checked bad by itself, and together with all after it. */
static void vectors(const struct MatrixRoutine* routine, char type)
{
    char name[32], words[most_words][8];
    const int count = split(routine->arguments, words);
    for (int layout = 100; layout <= 103; ++layout) { /* 100: Fortran */
        sprintf(name, layout == 100 ? "%c%s_" : "cblas_%c%s", type, routine->rest);
        void* const function = find(name);
        for (int first = 0; first < count; ++first) {
            if (checked_index(words[first]) < 0) continue;
            for (int last = first;; last = count - 1) {
                unsigned bad = 0;
                for (int i = first; i <= last; ++i)
                    if (checked_index(words[i]) >= 0 && is_compared(routine, layout, words[i]))
                        bad |= 1u << checked_index(words[i]);
                if (bad != 0) {
                    SAY("%s %d %s to %s", name, layout, words[first], words[last]);
                    if (call_routine(routine, type, function, layout == 100 ? by_pointer : by_cblas, layout, bad) ==
                        -1000)
                        puts("something was written");
                    OF_CALL;
                }
                if (last == count - 1) break;
            }
        }
    }
}

int main(int count, char** arguments)
{
    if (count != 2) return fprintf(stderr, "usage: bad_calls LIBRARY\n"), 2;
    library = dlopen(arguments[1], RTLD_NOW | RTLD_GLOBAL);
    if (library == NULL) return fprintf(stderr, "%s\n", dlerror()), 2;
    fortran("sgemm_"), fortran("dgemm_"), fortran("cgemm_"), fortran("zgemm_");
    cblas();
    for (int i = 0; i < (int)(sizeof matrix_routines / sizeof matrix_routines[0]); ++i)
        for (const char* type = matrix_routines[i].types; *type != '\0'; ++type) vectors(&matrix_routines[i], *type);
    return 0;
}
