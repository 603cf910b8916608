// Linear convolution of integers: the sums in double, where they are whole numbers, then the law of scale factors.
// Direct sums are exact; transforms are as long as their error stays below a half.
#include "dft/primitives/convolution/linear.h"
#include "dft/primitives/operations.h"

namespace orv::dft {
namespace {

void widen(const t_16s* src, t_64f* dst, i64 n)
{
    for (i64 i = 0; i < n; ++i) dst[i] = src[i];
}
void narrow(const t_64f* sums, t_16s* dst, i64 n, i32 factor)
{
    for (i64 i = 0; i < n; ++i) dst[i] = scaled_number<t_16s>(_mm_cvtsd_si64(_mm_set_sd(sums[i])), factor);
}

// Slices of the first input on the stack. What a slice has in common with the next one, m - 1 sums, goes to the front.
void convolve_slices(const t_16s* a, i64 n, const t_16s* b, i64 m, t_16s* dst, i32 factor)
{
    constexpr i64 most = 512, shorter = 256; // the shorter input of direct sums: 2*m - 1 < 512
    t_64f x[most], y[shorter], sums[most + shorter - 1];
    widen(b, y, m);
    clear(sums, m - 1);
    for (i64 i = 0; i < n; i += most) {
        const i64 length = min(most, n - i);
        const bool last = i + length == n;
        widen(a + i, x, length);
        clear(sums + m - 1, length);
        add_convolution(x, length, y, m, sums);
        narrow(sums, dst + i, last ? length + m - 1 : length, factor);
        for (i64 k = 0; k < m - 1; ++k) sums[k] = sums[length + k];
    }
}

i32 convolve_all(const t_16s* a, i32 n, const t_16s* b, i32 m, t_16s* dst, i32 factor)
{
    if (!a || !b || !dst) return null_pointer;
    if (n < 1 || m < 1) return bad_size;
    if (n < m) return convolve_all(b, m, a, n, dst, factor);
    const ConvolutionPlan plan = plan_convolution(n, m);
    if (plan.route == Route::direct) return convolve_slices(a, n, b, m, dst, factor), ok;

    WorkArea<t_64f> area;
    i64 bytes;
    if (const i32 status = size_work_area(plan, area, bytes)) return status;
    const i64 results = i64{n} + m - 1;
    const Block work(bytes + (i64{n} + m + results) * static_cast<i64>(sizeof(t_64f)));
    if (!work.memory) return no_memory;
    auto* x = reinterpret_cast<t_64f*>(work.memory);
    t_64f *y = x + n, *sums = y + m;
    widen(a, x, n), widen(b, y, m);
    const i32 status =
        convolve_by_transforms(plan, area, x, i64{n}, y, i64{m}, sums, reinterpret_cast<t_8u*>(sums + results));
    if (status == ok) narrow(sums, dst, results, factor);
    return status;
}

} // namespace

PRIMITIVE(6, ympsConv_16s_Sfs, convolve_all)

} // namespace orv::dft
