// Tables of roots: all values but those of recombinations are copies of values of a base table, none comes from another
// by multiplication.
#include "dft/primitives/dft/tables.h"
#include "dft/primitives/dft/kernels.h"

namespace orv::dft::general {
namespace {

template <class R> t_8u* behind(R* end) { return on_boundary(reinterpret_cast<t_8u*>(end)); }

template <class R> t_8u* fill_base(i32 n, cpx<R>* table)
{
    table[0] = {1, 0};
    RootWalk roots(n);
    for (i32 k = 1; 2 * k <= n; ++k) {
        table[n - k] = rounded<R>(roots.at(k));
        table[k] = conj(table[n - k]);
    }
    return behind(table + n);
}
template <class R> cpx<R>* create_base(i32 n)
{
    auto* table = reinterpret_cast<cpx<R>*>(DFT(ympsMalloc_8u)(n * static_cast<i32>(sizeof(cpx<R>))));
    if (table != nullptr) fill_base(n, table);
    return table;
}

template <class R> t_8u* fill_radix(i32 r, const cpx<R>* base, i32 base_length, t_8u* memory)
{
    auto* angles = reinterpret_cast<cpx<R>*>(memory + RadixTable<R>::bytes_of_powers(r));
    fill_radix_table<R>(
        r, [=](i64 k) { return base[k * (base_length / r)]; }, reinterpret_cast<i32*>(memory), angles);
    return behind(angles + RadixTable<R>::angles(r) * 2 * pairs<R>::lanes);
}
template <class R> t_8u* create_radix(i32 r, const cpx<R>* base, i32 base_length)
{
    auto* table = DFT(ympsMalloc_8u)(static_cast<i32>(RadixTable<R>::bytes(r)));
    if (table != nullptr) fill_radix(r, base, base_length, table);
    return table;
}

template <class R> void fill_twiddles(const DftFactor& f, Elements elements, const cpx<R>* base, cpx<R>* to)
{
    constexpr i64 lanes = pairs<R>::lanes;
    const i64 end = end_of_turned(f.count, elements);
    for (i64 q = first_turned(elements); q < end; q += lanes)
        for (i64 j = 1; j < f.radix; ++j, to += 2 * lanes)
            for (i64 lane = 0; lane < lanes; ++lane) { // beyond the last column are twiddles of the last one
                const cpx<R> w = base[j * min(q + lane, end - 1) * f.stride];
                to[lane] = {w.re, w.re}, to[lanes + lane] = {-w.im, w.im};
            }
}

// Where the transforms of the last factor begin: its place written in digits of the other radixes, read backwards.
void fill_permutation(const DftFactor* factors, i32 last, i32* starts)
{
    const i32 number = factors[last].stride;
    for (i32 b = 0; b < number; ++b) {
        i32 start = 0, rest = b;
        for (i32 k = last; k-- > 0; rest /= factors[k].radix) start += rest % factors[k].radix * factors[k].stride;
        starts[b] = start;
    }
}

// The tables of the stages, as the factors are in the record; false if memory ran out.
template <class R> bool fill_factors(YmpDftSpec& spec, const Plan& p, const cpx<R>* base, Store& store)
{
    for (i32 k = 0; k <= p.last; ++k) {
        DftFactor& f = spec.factors[k];
        if (k < p.last) {
            auto* twiddles = store.take<cpx<R>>(bytes_of_twiddles<R>(f, p.elements));
            if ((f.twiddles = twiddles) == nullptr) return false;
            fill_twiddles(f, p.elements, base, twiddles);
        }
        if (shares_table(p, k)) f.fact_table = spec.factors[k - 1].fact_table;
        if (!owns_table(p, k)) continue;
        auto* table = store.take<t_8u>(RadixTable<R>::bytes(f.radix));
        if ((f.fact_table = table) == nullptr) return false;
        fill_radix(f.radix, base, p.points, table);
    }
    auto* starts = store.take<i32>(bytes_of_permutation(p));
    if ((spec.permutation = starts) == nullptr) return false;
    fill_permutation(spec.factors, p.last, starts);
    return true;
}

template <class R> bool lay_factors(YmpDftSpec& spec, const cpx<R>* base, Store& store)
{
    const Plan p = plan_of(spec);
    spec.prime_fact = 1;
    spec.last_factor = p.last;
    for (i32 k = 0; k <= p.last; ++k) spec.factors[k] = p.factors[k];
    return fill_factors(spec, p, base, store);
}
template <class R> t_8u* init_factors(YmpDftSpec* spec, const cpx<R>* base, t_8u* memory)
{
    Store store{memory, false};
    lay_factors(*spec, base, store);
    return store.next;
}
template <class R> i32 create_factors(YmpDftSpec* spec, const cpx<R>* base)
{
    Store store{nullptr, true};
    return lay_factors(*spec, base, store) ? ok : no_memory;
}

// Forward, X[k] = (Z[k] + conj Z[m-k])/2 - i*w^k*(Z[k] - conj Z[m-k])/2; the inverse takes it back without the halves.
// The table has -i*w^k/2 and i*conj(w^k).
template <class R> void fill_recombination(i32 points, cpx<R>* forward)
{
    RootWalk roots(2 * i64{points});
    for (i32 k = 0; 2 * k <= points; ++k) {
        const Root w = roots.at(k);
        forward[k] = rounded<R>({-w.im / 2, -w.re / 2});
    }
}
template <class R> void invert_recombination(i32 points, const cpx<R>* forward, cpx<R>* inverse)
{
    for (i32 k = 0; 2 * k <= points; ++k) inverse[k] = conj(forward[k] + forward[k]);
}
template <bool forward, class R> cpx<R>* create_recombination(i32 points)
{
    auto* table = reinterpret_cast<cpx<R>*>(DFT(ympsMalloc_8u)(static_cast<i32>(bytes_of_recombination<R>(points))));
    if (table == nullptr) return nullptr;
    fill_recombination(points, table);
    if (!forward) invert_recombination(points, table, table);
    return table;
}

} // namespace

template <class R> bool put_recombinations(YmpDftSpec& spec, i32 points, Store& store)
{
    auto* const forward = store.take<cpx<R>>(bytes_of_recombination<R>(points));
    spec.recombine_forward = forward;
    if (forward == nullptr) return false;
    fill_recombination(points, forward);
    auto* const inverse = store.take<cpx<R>>(bytes_of_recombination<R>(points));
    spec.recombine_inverse = inverse;
    if (inverse == nullptr) return false;
    invert_recombination(points, forward, inverse);
    return true;
}
template bool put_recombinations<float>(YmpDftSpec&, i32, Store&);
template bool put_recombinations<double>(YmpDftSpec&, i32, Store&);

#define TABLES(t)                                                                                                      \
    PRIMITIVE(2, ownsInitTabDftBase_##t, fill_base)                                                                    \
    PRIMITIVE(1, ownsCreateTabDftBase_##t, create_base<t_##t>)                                                         \
    PRIMITIVE(4, ownsInitTabDftDir_##t, fill_radix)                                                                    \
    PRIMITIVE(3, ownsCreateTabDftDir_##t, create_radix)                                                                \
    PRIMITIVE(3, ownsInitDftPrimeFact_##t##_##t, init_factors)                                                         \
    PRIMITIVE(2, ownsInitAllocDftPrimeFact_##t##_##t, create_factors)                                                  \
    PRIMITIVE(1, ownsCreateTabDftFwdRec_##t, create_recombination<true, t_##t>)                                        \
    PRIMITIVE(1, ownsCreateTabDftInvRec_##t, create_recombination<false, t_##t>)
ORV_DFT_REAL(TABLES)

} // namespace orv::dft::general
