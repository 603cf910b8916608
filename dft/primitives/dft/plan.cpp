// The choice among the ways for a length: a fixed transform, the engine for powers of two, factors, the sums of the
// definition, or a convolution with a chirp.
#include "dft/primitives/dft/plan.h"

namespace orv::dft::general {
namespace {

constexpr i32 longest_convolution = (1 << 25) - 1;
constexpr i32 longest_direct = 90;
constexpr i32 largest_divisor = 90;
constexpr i32 largest_rest(i32 n) { return n % 2 == 0 ? 150 : 90; }

// Lengths that factors of 2 to 5 are enough for.
constexpr i32 tbl_len_conv[] = {128,  144,  160,  192,  200,  256,  288,  320,  384,  400,  512,
                                576,  640,  768,  800,  1024, 1152, 1280, 1536, 1600, 2048, 2304,
                                2560, 3072, 3200, 4096, 4608, 5120, 6144, 6400, 8192, 0};
constexpr i32 longest_listed = 8192;

// At least 2n-1: then no product of the chirp comes round to another's place.
i32 convolution_length(i32 n)
{
    const i32 least = 2 * n - 1;
    if (least > longest_listed) {
        i32 power = longest_listed;
        while (power < least) power *= 2;
        return power;
    }
    const i32* l = tbl_len_conv;
    while (*l < least) ++l;
    return *l;
}

struct Radixes {
    i32 list[YmpDftSpec::most_factors], number = 0;
    void append(i32 radix)
    {
        if (radix == 3 && number > 0 && list[0] == 2) list[0] = 6;
        else list[number++] = radix;
    }
    void exchange(i32 i, i32 j)
    {
        const i32 kept = list[i];
        list[i] = list[j], list[j] = kept;
    }
};

// The radixes of n, whatever their order; false if what is left of n is too large for one, or is all of it.
bool factored(i32 n, Radixes& found)
{
    i32 rest = n;
    for (; rest % 4 == 0; rest /= 4) found.append(4);
    if (rest % 2 == 0) {
        found.append(2), found.exchange(0, found.number - 1);
        rest /= 2;
    }
    for (i32 d = 3; d * d <= rest; d += 2) {
        if (d > largest_divisor) return false;
        for (; rest % d == 0 && d * d <= rest; rest /= d) found.append(d);
    }
    if (found.number == 0 || rest > largest_rest(n)) return false;
    found.append(rest);
    return true;
}

// Even lengths: one of the few even radixes comes last, for it runs first, on the input as it is.
void order_for_speed(Radixes& r)
{
    if (r.number > 1 && r.list[1] == 4 && r.list[0] != 6) {
        r.list[0] *= 4;
        --r.number;
        for (i32 i = 1; i < r.number; ++i) r.list[i] = r.list[i + 1];
    }
    if (r.list[0] % 2 == 0) r.exchange(0, r.number - 1);
}

void lay_out(const Radixes& r, Plan& p)
{
    p.last = r.number - 1;
    i32 stride = 1, set_stride = 0; // set_stride: of the first stage that has all its elements in the working set
    for (i32 k = 0; k < r.number; ++k) {
        const i32 together = p.points / stride;
        if (set_stride == 0 && together <= working_set) set_stride = stride;
        p.factors[k] = {stride, r.list[k], together / r.list[k], set_stride == 0 ? 1 : stride / set_stride, {}, {}};
        stride *= r.list[k];
    }
}

} // namespace

Plan plan(i32 n, Elements elements, bool out_of_order)
{
    Plan p{};
    p.points = n, p.elements = elements;
    if (n <= longest_fixed) return p.method = Method::fixed, p;
    if ((n & (n - 1)) == 0) return p.method = Method::power_of_two, p;
    if (n > longest_length) return p.method = Method::refused, p;
    p.halved = elements == Elements::real && n % 2 == 0;
    if (p.halved) p.points = n / 2, p.elements = Elements::complex;
    if (p.points <= longest_fixed) return p.method = Method::fixed, p;

    Radixes radixes;
    if (factored(p.points, radixes)) {
        if (!out_of_order) order_for_speed(radixes);
        lay_out(radixes, p);
        p.method = Method::factors;
    } else if (p.points <= longest_direct) p.method = Method::direct;
    else if (p.points <= longest_convolution) {
        p.convolution = convolution_length(p.points);
        p.method = Method::convolution;
    } else p.method = Method::refused;
    return p;
}

} // namespace orv::dft::general
