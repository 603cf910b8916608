// Products of packed spectra: one or two reals by themselves, all between as an array of complex numbers. PackConj
// conjugates the second operand, which in place is the one that is overwritten.
#include "dft/primitives/packed.h"
#include "dft/primitives/scaled.h"

namespace orv::dft {
namespace {

template <Layout layout, class Op, class R> i32 multiply(const R* a, const R* b, R* dst, i32 n, i32 factor = 0)
{
    if (const Status s = refusal(n, a, b, dst)) return s;
    const auto [shift, half] = places(layout, n);
    const i64 at = 2 + shift, pairs = (i64{n} - 1) / 2; // the first of the pairs, and how many
    const auto reals = [=](i64 from, i64 count) {
        scaled<Product>(Array<R>{a + from}, Array<R>{b + from}, dst + from, count, factor);
    };
    if (n % 2 == 0 && half >= at) reals(half, 1);
    reals(0, at);
    const auto complex = [=](const R* p) { return Array<cpx<R>>{reinterpret_cast<const cpx<R>*>(p + at)}; };
    if (pairs > 0) scaled<Op>(complex(a), complex(b), reinterpret_cast<cpx<R>*>(dst + at), pairs, factor);
    return ok;
}
template <Layout layout, class Op, class R> i32 multiply_in_place(const R* a, R* dst, i32 n, i32 factor = 0)
{
    return multiply<layout, Op>(a, static_cast<const R*>(dst), dst, n, factor);
}

} // namespace

#define MULTIPLY(format, ...)                                                                                          \
    PRIMITIVE(4, ympsMul##format##_32f, multiply<__VA_ARGS__>)                                                         \
    PRIMITIVE(4, ympsMul##format##_64f, multiply<__VA_ARGS__>)                                                         \
    PRIMITIVE(3, ympsMul##format##_32f_I, multiply_in_place<__VA_ARGS__>)                                              \
    PRIMITIVE(3, ympsMul##format##_64f_I, multiply_in_place<__VA_ARGS__>)                                              \
    PRIMITIVE(5, ympsMul##format##_16s_Sfs, multiply<__VA_ARGS__>)                                                     \
    PRIMITIVE(4, ympsMul##format##_16s_ISfs, multiply_in_place<__VA_ARGS__>)
MULTIPLY(Perm, Layout::perm, Product)
MULTIPLY(Pack, Layout::pack, Product)
MULTIPLY(PackConj, Layout::pack, ConjugateProduct)

} // namespace orv::dft
