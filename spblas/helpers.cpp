// What a caller of the kernels asks between them. Every argument is an address.
//
//   zerocheck(value, flag)       flag := 1 unless value is zero; NaN, denormal numbers and imaginary parts are not
//   ones(value) neones(value)    value := 1, value := -value
//   zeros(array, n)              array[0 .. n-1] := 0, not read
//   split_par(first, last, parts, stride, work, y)
//                                y[i] += work[i] + work[stride + i] + ..., parts - 1 slices in their order, for i from
//                                first to last, counted from 1
//   split_syml_par, split_symu_par(length, n, first, m, offsets, y)
//                                the same for slices that do not reach all rows. n of them stand behind the m elements
//                                of y, slice k from y[offsets[k]] to y[offsets[k + 1] - 1]: of a lower triangle, whose
//                                parts touch rows from 1 on (syml), of an upper one, rows up to m (symu). They are
//                                added to length rows from row first, counted from 1. Below 100 slices go in their
//                                order, else in eight partial sums.
//   spmalloc(bytes) spfree(block)
//                                memory of the service layer, for what outlives a call; the bytes come by value, and
//                                none are null
#include "frame/serv.h"
#include "spblas/vectors.h"

namespace orv::ORV_SPBLAS {
namespace {

template <class T> void zerocheck(const T* value, Int* flag) { *flag = *value != zero<T> ? 1 : 0; }
template <class T> void ones(T* value) { *value = one<T>; }
template <class T> void neones(T* value) { *value = -*value; }
template <class T> void zeros(T* array, const Int* n) { clear(array, *n); }

template <class T>
void split_par(const Int* first, const Int* last, const Int* parts, const Int* stride, const T* work, T* y)
{
    for (Int part = 1; part < *parts; ++part, work += *stride)
        for (auto [i, end] = Part(first, last); i < end; ++i) y[i] += work[i];
}

constexpr Int many_slices = 100;

template <bool upper, class T>
void split_sym(const Int* length, const Int* n, const Int* first, const Int* m, const Int* offsets, T* y)
{
    const auto share = [=](Int slice, Int i) { // of row i
        const Int from = offsets[slice], rows = offsets[slice + 1] - from, row = upper ? i - (*m - rows) : i;
        return row >= 0 && row < rows ? y[from + row] : zero<T>;
    };
    for (Int i = *first - 1; i < *first - 1 + *length; ++i) {
        Int slice = 0;
        T sums[8]{};
        if (*n >= many_slices)
            for (; slice + 8 <= *n; slice += 8)
                for (Int k = 0; k < 8; ++k) sums[k] += share(slice + k, i);
        T sum = y[i];
        for (; slice < *n; ++slice) sum += share(slice, i);
        y[i] = sum;
        if (*n >= many_slices)
            y[i] += ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
    }
}
template <class T> constexpr auto& split_lower = split_sym<false, T>;
template <class T> constexpr auto& split_upper = split_sym<true, T>;

} // namespace

SPBLAS_SDCZ(2, , zerocheck, zerocheck)
SPBLAS_SDCZ(1, , ones, ones)
SPBLAS_SDCZ(1, , neones, neones)
SPBLAS_SDCZ(2, , zeros, zeros)
SPBLAS_SDCZ(6, , split_par, split_par)
SPBLAS_SDCZ(6, , split_syml_par, split_lower)
SPBLAS_SDCZ(6, , split_symu_par, split_upper)

ORV_EXPORT void* SPBLAS(spmalloc)(i64 bytes) { return bytes == 0 ? nullptr : orv_serv_malloc(bytes, 128); }
ORV_EXPORT void SPBLAS(spfree)(void* block) { orv_serv_free(block); }

} // namespace orv::ORV_SPBLAS
