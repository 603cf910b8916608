// Sparse vectors: each routine is its kernel, on index arrays of either width.
#include "core/blas/routine.h"

using namespace orv;
using namespace orv::core;

namespace {

// The body of a routine with an index array. packed, index, dense: positions of the sparse vector's values, of its
// indices, and of the operand that these count in. Kernels know 64-bit indices, so narrow ones are widened piece by
// piece; a sum is then that of the pieces' sums, in order.
template <auto& F, int packed, int index, int dense_position> class Indexed : Direct<F> {
public:
    static constexpr int dense = dense_position;

    using Direct<F>::Direct;

    template <class... P> result_of<F> operator()(const i64* n, P... arguments)
    {
        const std::tuple all{n, arguments...};
        const auto indices = std::get<index>(all);
        if constexpr (std::is_same_v<decltype(indices), const i64* const>) {
            return Direct<F>::operator()(n, arguments...);
        } else {
            using R = result_of<F>;
            constexpr i64 piece = 1024;
            i64 wide[piece];
            R result{};
            i64 start = 0;
            do { // once at least: without a kernel no call succeeds
                const i64 length = min(piece, *n - start);
                for (i64 i = 0; i < length; ++i) wide[i] = indices[start + i];
                const R part = on_piece(start, length, wide, std::make_integer_sequence<int, arity<F> - 1>(), all);
                if constexpr (std::is_same_v<R, orv_status>) result = part;
                else result += part;
                start += piece;
            } while (start < *n);
            return result;
        }
    }

private:
    template <int... i, class All>
    result_of<F> on_piece(i64 start, const i64& length, const i64* wide, std::integer_sequence<int, i...>,
                          const All& all)
    {
        const auto argument = [&]<int position>(std::integral_constant<int, position>) {
            if constexpr (position == packed) return std::get<position>(all) + start;
            else if constexpr (position == index) return wide;
            else return std::get<position>(all);
        };
        return Direct<F>::operator()(&length, argument(std::integral_constant<int, i + 1>())...);
    }
};

template <auto& F> using IndexedAxpy = Indexed<F, 2, 3, 4>; // n, alpha, x, indx, y
template <auto& F> using Scatter = Indexed<F, 1, 2, 3>;     // n, x, indx, y, ...
template <auto& F> using Gather = Indexed<F, 2, 3, 1>;      // n, y, x, indx

} // namespace

ORV_BLAS(5, saxpyi, IndexedAxpy, saxpyi)
ORV_BLAS(5, daxpyi, IndexedAxpy, daxpyi)
ORV_BLAS(5, caxpyi, IndexedAxpy, caxpyi)
ORV_BLAS(5, zaxpyi, IndexedAxpy, zaxpyi)

ORV_BLAS(4, sdoti, Scatter, sdoti)
ORV_BLAS(4, ddoti, Scatter, ddoti)
ORV_BLAS_COMPLEX(4, cdotui, Scatter, cdotui)
ORV_BLAS_COMPLEX(4, cdotci, Scatter, cdotci)
ORV_BLAS_COMPLEX(4, zdotui, Scatter, zdotui)
ORV_BLAS_COMPLEX(4, zdotci, Scatter, zdotci)

ORV_BLAS(4, sgthr, Gather, sgthr)
ORV_BLAS(4, dgthr, Gather, dgthr)
ORV_BLAS(4, cgthr, Gather, cgthr)
ORV_BLAS(4, zgthr, Gather, zgthr)
ORV_BLAS(4, sgthrz, Gather, sgthrz)
ORV_BLAS(4, dgthrz, Gather, dgthrz)
ORV_BLAS(4, cgthrz, Gather, cgthrz)
ORV_BLAS(4, zgthrz, Gather, zgthrz)

ORV_BLAS(4, ssctr, Scatter, ssctr)
ORV_BLAS(4, dsctr, Scatter, dsctr)
ORV_BLAS(4, csctr, Scatter, csctr)
ORV_BLAS(4, zsctr, Scatter, zsctr)

ORV_BLAS(6, sroti, Scatter, sroti)
ORV_BLAS(6, droti, Scatter, droti)
