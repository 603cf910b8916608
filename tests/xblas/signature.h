// The arguments of every family by name, and a call that asks for them by name.
#pragma once

#include "tests/xblas/member.h"

#include <functional>
#include <map>
#include <sstream>

namespace orv::test::extended {

// In the form for C without prec. Arrays are a b x tail y w r.
inline const std::map<std::string, std::string> signatures{
    {"dot", "conj n alpha x incx beta y incy r"},
    {"sum", "n x incx r"},
    {"axpby", "n alpha x incx beta y incy"},
    {"waxpby", "n alpha x incx beta y incy w incw"},
    {"gemv", "order trans m n alpha a lda x incx beta y incy"},
    {"gemv2", "order trans m n alpha a lda x tail incx beta y incy"},
    {"gbmv", "order trans m n kl ku alpha a lda x incx beta y incy"},
    {"gbmv2", "order trans m n kl ku alpha a lda x tail incx beta y incy"},
    {"symv", "order uplo n alpha a lda x incx beta y incy"},
    {"hemv", "order uplo n alpha a lda x incx beta y incy"},
    {"symv2", "order uplo n alpha a lda x tail incx beta y incy"},
    {"hemv2", "order uplo n alpha a lda x tail incx beta y incy"},
    {"sbmv", "order uplo n k alpha a lda x incx beta y incy"},
    {"hbmv", "order uplo n k alpha a lda x incx beta y incy"},
    {"spmv", "order uplo n alpha a x incx beta y incy"},
    {"hpmv", "order uplo n alpha a x incx beta y incy"},
    {"ge_sum_mv", "order m n alpha a lda x incx beta b ldb y incy"},
    {"trmv", "order uplo trans diag n alpha a ldt y incx"},
    {"tpmv", "order uplo trans diag n alpha a y incx"},
    {"trsv", "order uplo trans diag n alpha a ldt y incx"},
    {"tbsv", "order uplo trans diag n k alpha a ldt y incx"},
    {"gemm", "order transa transb m n k alpha a lda b ldb beta y ldc"},
    {"symm", "order side uplo m n alpha a lda b ldb beta y ldc"},
    {"hemm", "order side uplo m n alpha a lda b ldb beta y ldc"},
};

inline void call_by_name(const Member& m, i64 prec, const std::function<i64(const std::string&)>& number,
                         const std::function<const Array&(const std::string&)>& array)
{
    static const std::set<std::string> arrays{"a", "b", "x", "tail", "y", "w", "r"};
    Call call(m);
    std::istringstream words(signatures.at(m.op));
    for (std::string word; words >> word;) {
        if (word == "order") call.order(number(word));
        else if (word == "alpha" || word == "beta") call.scalar(array(word));
        else if (arrays.contains(word)) call.array(array(word));
        else call.integer(number(word));
    }
    call(prec);
}

} // namespace orv::test::extended
