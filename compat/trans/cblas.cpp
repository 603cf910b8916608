// cblas_domatcopy, cblas_dimatcopy and cblas_dgeadd with 32-bit integers; cblas_domatcopy_64 and cblas_domatcopy64_,
// and so on, with 64-bit ones. Complex scalars and arrays pass by pointer.
#include "compat/trans/routines.h"

using namespace orv;

namespace {

enum Layout { row_major = 101, column_major = 102 };

// Letters of the numbers; 0 for a number that is none.
constexpr char ordering(int layout) { return layout == row_major ? 'R' : layout == column_major ? 'C' : '\0'; }
constexpr char letter(int transposition)
{
    constexpr char letters[] = {'N', 'T', 'C', 'R'};
    return transposition >= 111 && transposition <= 114 ? letters[transposition - 111] : '\0';
}

template <class Int> struct Caller : compat::CblasCall<Int> {
    int layout, transposition;

    [[gnu::cold]] void report_argument(int position) const
    {
        if (ordering(layout) == '\0') this->report(1, "Illegal layout setting, %d\n", layout);
        else if (position == 2 && letter(transposition) == '\0')
            this->report(2, "Illegal Trans setting, %d\n", transposition);
        else this->report(position);
    }
};

// A scalar or an array as the native routines take it.
template <class T> T scalar(T value) { return value; }
template <class T> T scalar(const void* value) { return *static_cast<const T*>(value); }

} // namespace

#define OMATCOPY(symbol, xerbla, Int, name, T, Scalar, Array)                                                          \
    STANDARD void symbol(int layout, int trans, Int rows, Int cols, Scalar alpha, const Array* a, Int lda, Array* b,   \
                         Int ldb)                                                                                      \
    {                                                                                                                  \
        const Caller<Int> caller{{"cblas_" #name, xerbla}, layout, trans};                                             \
        compat::omatcopy(caller, ordering(layout), letter(trans), rows, cols, scalar<T>(alpha),                        \
                         static_cast<const T*>(a), lda, static_cast<T*>(b), ldb);                                      \
    }
#define IMATCOPY(symbol, xerbla, Int, name, T, Scalar, Array)                                                          \
    STANDARD void symbol(int layout, int trans, Int rows, Int cols, Scalar alpha, Array* ab, Int lda, Int ldb)         \
    {                                                                                                                  \
        const Caller<Int> caller{{"cblas_" #name, xerbla}, layout, trans};                                             \
        compat::imatcopy(caller, ordering(layout), letter(trans), rows, cols, scalar<T>(alpha), static_cast<T*>(ab),   \
                         lda, ldb);                                                                                    \
    }
#define GEADD(symbol, xerbla, Int, name, T, Scalar, Array)                                                             \
    STANDARD void symbol(int layout, Int rows, Int cols, Scalar alpha, const Array* a, Int lda, Scalar beta, Array* c, \
                         Int ldc)                                                                                      \
    {                                                                                                                  \
        const Caller<Int> caller{{"cblas_" #name, xerbla}, layout, 111};                                               \
        if (ordering(layout) == '\0') return caller.report_argument(1);                                                \
        compat::geadd(caller, ordering(layout), rows, cols, scalar<T>(alpha), static_cast<const T*>(a), lda,           \
                      scalar<T>(beta), static_cast<T*>(c), ldc);                                                       \
    }
#define WIDTHS(form, name, ...)                                                                                        \
    form(cblas_##name, cblas_xerbla, i32, name, __VA_ARGS__)                                                           \
        form(cblas_##name##_64, cblas_xerbla_64, i64, name, __VA_ARGS__)                                               \
            form(cblas_##name##64_, cblas_xerbla64_, i64, name, __VA_ARGS__)
#define TYPE(t, ...)                                                                                                   \
    WIDTHS(OMATCOPY, t##omatcopy, __VA_ARGS__)                                                                         \
    WIDTHS(IMATCOPY, t##imatcopy, __VA_ARGS__)                                                                         \
    WIDTHS(GEADD, t##geadd, __VA_ARGS__)

TYPE(s, float, float, float)
TYPE(d, double, double, double)
TYPE(c, cpx<float>, const void*, void)
TYPE(z, cpx<double>, const void*, void)
