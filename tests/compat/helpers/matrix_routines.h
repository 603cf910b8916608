/* The routines of levels 2 and 3 by the words of their argument lists, and one way to call any of them. C and C++. */
#ifndef MATRIX_ROUTINES_H
#define MATRIX_ROUTINES_H

#include <string.h>

struct MatrixRoutine {
    const char *rest, *types; /* "gemv" for each of "sdcz" */
    const char* arguments;    /* a letter, an integer, a scalar (ralpha a real one) or an array each */
    const char* by_rows;      /* what is checked, in this order, where matrices are stored by rows */
};
static const struct MatrixRoutine matrix_routines[] = {
    {"gemv", "sdcz", "trans m n alpha a lda x incx beta y incy", "trans n m lda incx incy"},
    {"gbmv", "sdcz", "trans m n kl ku alpha a lda x incx beta y incy", "trans n m ku kl lda incx incy"},
    {"ger", "sd", "m n alpha x incx y incy a lda", "n m incy incx lda"},
    {"geru", "cz", "m n alpha x incx y incy a lda", "n m incy incx lda"},
    {"gerc", "cz", "m n alpha x incx y incy a lda", "n m incy incx lda"},
    {"symv", "sd", "uplo n alpha a lda x incx beta y incy", "uplo n lda incx incy"},
    {"hemv", "cz", "uplo n alpha a lda x incx beta y incy", "uplo n lda incx incy"},
    {"sbmv", "sd", "uplo n k alpha a lda x incx beta y incy", "uplo n k lda incx incy"},
    {"hbmv", "cz", "uplo n k alpha a lda x incx beta y incy", "uplo n k lda incx incy"},
    {"spmv", "sd", "uplo n alpha a x incx beta y incy", "uplo n incx incy"},
    {"hpmv", "cz", "uplo n alpha a x incx beta y incy", "uplo n incx incy"},
    {"syr", "sd", "uplo n ralpha x incx a lda", "uplo n incx lda"},
    {"her", "cz", "uplo n ralpha x incx a lda", "uplo n incx lda"},
    {"spr", "sd", "uplo n ralpha x incx a", "uplo n incx"},
    {"hpr", "cz", "uplo n ralpha x incx a", "uplo n incx"},
    {"syr2", "sd", "uplo n alpha x incx y incy a lda", "uplo n incx incy lda"},
    {"her2", "cz", "uplo n alpha x incx y incy a lda", "uplo n incy incx lda"},
    {"spr2", "sd", "uplo n alpha x incx y incy a", "uplo n incx incy"},
    {"hpr2", "cz", "uplo n alpha x incx y incy a", "uplo n incy incx"},
    {"trmv", "sdcz", "uplo trans diag n a lda x incx", "uplo trans diag n lda incx"},
    {"trsv", "sdcz", "uplo trans diag n a lda x incx", "uplo trans diag n lda incx"},
    {"tbmv", "sdcz", "uplo trans diag n k a lda x incx", "uplo trans diag n k lda incx"},
    {"tbsv", "sdcz", "uplo trans diag n k a lda x incx", "uplo trans diag n k lda incx"},
    {"tpmv", "sdcz", "uplo trans diag n a x incx", "uplo trans diag n incx"},
    {"tpsv", "sdcz", "uplo trans diag n a x incx", "uplo trans diag n incx"},
    {"gemm", "sdcz", "trans transb m n k alpha a lda b ldb beta c ldc", "trans transb n m k ldb lda ldc"},
    {"symm", "sdcz", "side uplo m n alpha a lda b ldb beta c ldc", "side uplo n m lda ldb ldc"},
    {"hemm", "cz", "side uplo m n alpha a lda b ldb beta c ldc", "side uplo n m lda ldb ldc"},
    {"trmm", "sdcz", "side uplo trans diag m n alpha a lda b ldb", "side uplo trans diag n m lda ldb"},
    {"trsm", "sdcz", "side uplo trans diag m n alpha a lda b ldb", "side uplo trans diag n m lda ldb"},
    {"syrk", "sdcz", "uplo trans n k alpha a lda beta c ldc", "uplo trans n k lda ldc"},
    {"syrk", "cz", "uplo transs n k alpha a lda beta c ldc", "uplo transs n k lda ldc"},
    {"herk", "cz", "uplo transh n k ralpha a lda rbeta c ldc", "uplo transh n k lda ldc"},
    {"syr2k", "sdcz", "uplo trans n k alpha a lda b ldb beta c ldc", "uplo trans n k lda ldb ldc"},
    {"syr2k", "cz", "uplo transs n k alpha a lda b ldb beta c ldc", "uplo transs n k lda ldb ldc"},
    {"her2k", "cz", "uplo transh n k alpha a lda b ldb rbeta c ldc", "uplo transh n k lda ldb ldc"},
};

/* What may be bad of an argument: good and bad as a Fortran letter or number, good and bad as CBLAS has them. */
struct Checked {
    const char* word;
    long good, bad, good_value, bad_value;
};
static const struct Checked checked[] = {
    {"side", 'L', 'l' + 1, 141, 143},
    {"transb", 'T', 'U', 112, 114},
    {"transs", 'T', 'C', 112, 113},
    {"transh", 'C', 'T', 113, 112},
    {"ldb", 5, 1, 5, 1},
    {"ldc", 5, 1, 5, 1},
    {"uplo", 'U', '/', 121, 123},
    {"trans", 'T', 'U', 112, 110},
    {"diag", 'N', 'T', 131, 133},
    {"m", 3, -1, 3, -1},
    {"n", 4, -1, 4, -1},
    {"kl", 1, -1, 1, -1},
    {"ku", 2, -1, 2, -1},
    {"k", 2, -1, 2, -1},
    {"lda", 5, 1, 5, 1},
    {"incx", 1, 0, 1, 0},
    {"incy", 1, 0, 1, 0},
};
enum { checked_words = sizeof checked / sizeof checked[0], most_words = 16 };

static int checked_index(const char* word)
{
    for (int i = 0; i < checked_words; ++i)
        if (strcmp(word, checked[i].word) == 0) return i;
    return -1;
}

/* The words of a list; returns how many. */
static int split(const char* list, char words[most_words][8])
{
    int count = 0;
    while (*list != '\0') {
        const size_t length = strcspn(list, " ");
        memcpy(words[count], list, length);
        words[count++][length] = '\0';
        list += length + (list[length] == ' ');
    }
    return count;
}

enum Passing { by_pointer, by_value, by_cblas };

/* Calls a routine of the type s, d, c or z whose arguments with the indices of the mask are bad. Operands are ones.
   This processor's calling convention passes integers and pointers apart from floating-point numbers, and lets a caller
   pass more of both than are taken: so one type of function serves for all. Returns what a function with a status does,
   or -1000 if an operand changed. */
static int call_routine(const struct MatrixRoutine* routine, char type, void* function, enum Passing passing,
                        int layout, unsigned bad)
{
    typedef int Any(long, long, long, long, long, long, long, long, long, long, long, long, long, long, double, double,
                    double, double);
    enum { elements = 64 };
    const int is_single = type == 's' || type == 'c', is_complex = type == 'c' || type == 'z';
    double operands[3][2 * elements], one[2] = {1, 1}, before[2 * elements], numbers[4] = {0, 0, 0, 0};
    const float single_ones[2] = {1, 1};
    long integers[14] = {0}, held[most_words];
    char words[most_words][8];
    const int count = split(routine->arguments, words);
    int next = 0, next_number = 0;
    if (is_single) memcpy(one, single_ones, sizeof single_ones);
    for (int i = 0; i < 2 * elements; ++i) {
        before[i] = one[0];
        for (int k = 0; k < 3; ++k) operands[k][i] = one[0];
    }
    if (passing == by_cblas) integers[next++] = layout;
    for (int i = 0; i < count; ++i) {
        const char* const word = words[i];
        const int index = checked_index(word);
        if (index >= 0) {
            const struct Checked* c = &checked[index];
            const int is_bad = bad >> index & 1;
            held[i] = passing == by_cblas ? (is_bad ? c->bad_value : c->good_value) : is_bad ? c->bad : c->good;
            integers[next++] = passing == by_pointer ? (long)&held[i] : held[i];
        } else if (word[1] == '\0') /* a and x, y or b, c */
            integers[next++] = (long)operands[word[0] >= 'x' ? word[0] - 'w' : word[0] - 'a'];
        else {
            const int is_pair = is_complex && word[0] != 'r';
            if (passing == by_pointer || (passing == by_cblas && is_pair)) integers[next++] = (long)one;
            else {
                numbers[next_number++] = one[0];
                if (is_pair && !is_single) numbers[next_number++] = one[1];
            }
        }
    }
    const int status = ((Any*)function)(integers[0], integers[1], integers[2], integers[3], integers[4], integers[5],
                                        integers[6], integers[7], integers[8], integers[9], integers[10], integers[11],
                                        integers[12], integers[13], numbers[0], numbers[1], numbers[2], numbers[3]);
    for (int k = 0; k < 3; ++k)
        if (memcmp(operands[k], before, sizeof before) != 0) return -1000;
    return status;
}

#endif
