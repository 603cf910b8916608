// What the family exports beside its operations: the report of bad arguments, memory, and what each precision is.
#include "frame/serv.h"
#include "xblas/options.h"

namespace orv::xblas {
namespace {

// A number of an arithmetic is digit.digits * base^exponent with `digits` digits.
struct Arithmetic {
    i64 digits, rounds, is_ieee, least_exponent, greatest_exponent;
};
constexpr Arithmetic single{24, 1, 1, -126, 127}, double_{53, 1, 1, -1022, 1023}, extra{105, 0, 0, -1022, 1023};

const Arithmetic* arithmetic(Prec prec)
{
    switch (prec) {
    case Prec::single:
        return &single;
    case Prec::double_:
    case Prec::indigenous:
        return &double_;
    case Prec::extra:
        return &extra;
    }
    return nullptr;
}

// By the numbers of base, t, rnd, ieee, emin, emax; 0 for any other.
i64 fpinfo(i32 cmach, Prec prec)
{
    const Arithmetic* a = arithmetic(prec);
    if (a == nullptr) return 0;
    switch (cmach) {
    case 151:
        return 2;
    case 152:
        return a->digits;
    case 153:
        return a->rounds;
    case 154:
        return a->is_ieee;
    case 155:
        return a->least_exponent;
    case 156:
        return a->greatest_exponent;
    default:
        return 0;
    }
}

} // namespace
} // namespace orv::xblas

using namespace orv;

ORV_EXPORT void XBLAS(BLAS_error)(const char*, i64, i64, const char*, ...) {}

// Memory on a boundary of 128 bytes, or null.
ORV_EXPORT void* XBLAS(blas_malloc)(i64 bytes) { return orv_serv_allocate(bytes, 128); }
ORV_EXPORT void XBLAS(blas_free)(void* block) { orv_serv_deallocate(block); }

ORV_EXPORT i64 XBLAS(BLAS_fpinfo_x)(i32 cmach, xblas::Prec prec) { return xblas::fpinfo(cmach, prec); }
ORV_EXPORT i64 XBLAS(blas_fpinfo_x)(const i32* cmach, const xblas::Prec* prec) { return xblas::fpinfo(*cmach, *prec); }
