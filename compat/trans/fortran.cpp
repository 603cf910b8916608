// domatcopy_, dimatcopy_ and dgeadd_ with 32-bit integers, domatcopy_64_ and so on with 64-bit ones; every argument
// passes by pointer.
#include "compat/trans/routines.h"

using namespace orv;

namespace {

// before_first arguments of the checked list are not in the caller's.
template <class Int, int before_first = 0> struct Caller : compat::FortranCall<Int> {
    [[gnu::cold]] void report_argument(int position) const { this->report(position - before_first); }
};

} // namespace

#define OMATCOPY(symbol, Int, T, name)                                                                                 \
    STANDARD void symbol(const char* ordering, const char* trans, const Int* rows, const Int* cols, const T* alpha,    \
                         const T* a, const Int* lda, T* b, const Int* ldb)                                             \
    {                                                                                                                  \
        compat::omatcopy(Caller<Int>{{name}}, *ordering, *trans, *rows, *cols, *alpha, a, *lda, b, *ldb);              \
    }
#define IMATCOPY(symbol, Int, T, name)                                                                                 \
    STANDARD void symbol(const char* ordering, const char* trans, const Int* rows, const Int* cols, const T* alpha,    \
                         T* ab, const Int* lda, const Int* ldb)                                                        \
    {                                                                                                                  \
        compat::imatcopy(Caller<Int>{{name}}, *ordering, *trans, *rows, *cols, *alpha, ab, *lda, *ldb);                \
    }
#define GEADD(symbol, Int, T, name)                                                                                    \
    STANDARD void symbol(const Int* rows, const Int* cols, const T* alpha, const T* a, const Int* lda, const T* beta,  \
                         T* c, const Int* ldc)                                                                         \
    {                                                                                                                  \
        compat::geadd(Caller<Int, 1>{{name}}, 'C', *rows, *cols, *alpha, a, *lda, *beta, c, *ldc);                     \
    }
#define WIDTHS(form, name, T) form(name##_, i32, T, #name) form(name##_64_, i64, T, #name)
#define TYPE(t, T) WIDTHS(OMATCOPY, t##omatcopy, T) WIDTHS(IMATCOPY, t##imatcopy, T) WIDTHS(GEADD, t##geadd, T)

TYPE(s, float)
TYPE(d, double)
TYPE(c, cpx<float>)
TYPE(z, cpx<double>)
