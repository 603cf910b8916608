// Bytes of records, of work memory for their making, and of buffers.
#include "dft/primitives/dft/family.h"

namespace orv::dft::general {
namespace {

template <class R> constexpr const Family& family_of_convolution = family_C_64fc;
template <> constexpr const Family& family_of_convolution<float> = family_C_32fc;

template <class R> void add_factors(const Plan& p, Sizes& s)
{
    s.spec += whole_boundaries(bytes_of_permutation(p));
    i64 work = 0;
    for (i32 k = 0; k <= p.last; ++k) {
        const DftFactor& f = p.factors[k];
        if (k < p.last) s.spec += whole_boundaries(bytes_of_twiddles<R>(f, p.elements));
        if (!owns_table(p, k)) continue;
        s.spec += whole_boundaries(RadixTable<R>::bytes(f.radix));
        work = max(work, work_of_radix(f.radix));
    }
    s.init += bytes_of_base<R>(p.points);
    s.buffer += area_of_result<R>(p.points) + work;
}

template <class R> void add_direct(const Plan& p, Sizes& s)
{
    s.spec += whole_boundaries(RadixTable<R>::bytes(p.points));
    s.init += bytes_of_base<R>(p.points);
    s.buffer += work_of_radix(p.points);
}

// The chirp's base table is not needed any more when the inner record is made, and that not when the chirp is
// transformed.
template <class R> i32 add_convolution(const Plan& p, Sizes& s)
{
    Sizes inner{};
    if (const i32 status = sizes<R>(family_of_convolution<R>, p.convolution, scale_none, 0, inner)) return status;
    const i64 area = area_of_convolution<R>(p.convolution);
    s.spec += whole_boundaries(bytes_of_base<R>(p.points)) + area + inner.spec;
    s.init += max(bytes_of_base<R>(2 * p.points), max(inner.init, inner.buffer));
    s.buffer += area + inner.buffer;
    return ok;
}

i32 add_power_of_two(const Family& family, i32 n, i32 flag, i32 hint, Sizes& s)
{
    i32 spec = 0, init = 0, buffer = 0;
    const i32 status = family.get_size(order_of(n), flag, hint, &spec, &init, &buffer);
    s.spec += spec, s.init += init, s.buffer += buffer;
    return status;
}

} // namespace

template <class R> i32 sizes(const Family& family, i32 n, i32 flag, i32 hint, Sizes& total)
{
    const Plan p = plan(n, family.elements(), is_out_of_order(family.id));
    Sizes s{sizeof(YmpDftSpec), 0, 0};
    i32 status = ok;
    if (p.method == Method::factors) add_factors<R>(p, s);
    else if (p.method == Method::direct) add_direct<R>(p, s);
    else if (p.method == Method::convolution) status = add_convolution<R>(p, s);
    else if (p.method == Method::power_of_two) status = add_power_of_two(family, n, flag, hint, s);
    else if (p.method == Method::refused) status = bad_size;
    if (status != ok) return status;
    if (p.halved) {
        s.spec += 2 * whole_boundaries(bytes_of_recombination<R>(p.points));
        s.buffer += area_of_half<R>(p.points);
    }
    for (i64* bytes : {&s.spec, &s.init, &s.buffer}) {
        if (*bytes > 0) *bytes += boundary; // to reach the first one
        if (*bytes > INT32_MAX) return bad_size;
    }
    total = s;
    return ok;
}
template i32 sizes<float>(const Family&, i32, i32, i32, Sizes&);
template i32 sizes<double>(const Family&, i32, i32, i32, Sizes&);

} // namespace orv::dft::general
