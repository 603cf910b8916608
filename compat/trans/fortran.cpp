// domatcopy_, dimatcopy_ and dgeadd_ with 32-bit integers, domatcopy_64_ and so on with 64-bit ones; every argument
// passes by pointer.
#include "compat/trans/routines.h"

#include <cstring>

using namespace orv;

namespace {

// The error routine of the width of Int; before_first arguments of the checked list are not in the caller's.
template <class Int, int before_first = 0> struct Report {
    const char* routine;
    [[gnu::cold]] void operator()(int position) const
    {
        const Int number = position - before_first;
        if constexpr (sizeof number == 4) xerbla_(routine, &number, std::strlen(routine));
        else xerbla_64_(routine, &number, std::strlen(routine));
    }
};

} // namespace

#define OMATCOPY(symbol, Int, T, NAME)                                                                                 \
    STANDARD void symbol(const char* ordering, const char* trans, const Int* rows, const Int* cols, const T* alpha,    \
                         const T* a, const Int* lda, T* b, const Int* ldb)                                             \
    {                                                                                                                  \
        compat::omatcopy(Report<Int>{NAME}, *ordering, *trans, *rows, *cols, *alpha, a, *lda, b, *ldb);                \
    }
#define IMATCOPY(symbol, Int, T, NAME)                                                                                 \
    STANDARD void symbol(const char* ordering, const char* trans, const Int* rows, const Int* cols, const T* alpha,    \
                         T* ab, const Int* lda, const Int* ldb)                                                        \
    {                                                                                                                  \
        compat::imatcopy(Report<Int>{NAME}, *ordering, *trans, *rows, *cols, *alpha, ab, *lda, *ldb);                  \
    }
#define GEADD(symbol, Int, T, NAME)                                                                                    \
    STANDARD void symbol(const Int* rows, const Int* cols, const T* alpha, const T* a, const Int* lda, const T* beta,  \
                         T* c, const Int* ldc)                                                                         \
    {                                                                                                                  \
        compat::geadd(Report<Int, 1>{NAME}, 'C', *rows, *cols, *alpha, a, *lda, *beta, c, *ldc);                       \
    }
#define WIDTHS(form, t, name, T, NAME) form(t##name##_, i32, T, NAME) form(t##name##_64_, i64, T, NAME)
#define TYPE(t, L, T)                                                                                                  \
    WIDTHS(OMATCOPY, t, omatcopy, T, L "OMATCOPY")                                                                     \
    WIDTHS(IMATCOPY, t, imatcopy, T, L "IMATCOPY") WIDTHS(GEADD, t, geadd, T, L "GEADD")

TYPE(s, "S", float)
TYPE(d, "D", double)
TYPE(c, "C", cpx<float>)
TYPE(z, "Z", cpx<double>)
