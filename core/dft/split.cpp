#include "core/dft/split.h"

#include "frame/serv.h"

namespace orv::core::dft {
namespace {

using namespace kernels::dft;

// f(numbers, place) for each row of the spectrum: that of dimension 0, numbers that stand together in work memory
// and strides[0] apart, from `place` on, in the program's arrays.
template <class F> void each_row(const Settings& s, F&& f)
{
    const Layout l = layout(s, spectrum);
    i64 index[ORV_DFT_MAX_RANK] = {};
    i64 rows = 1;
    for (int k = 1; k < s.rank; ++k) rows *= s.lengths[k];
    for (i64 transform = 0, row = 0; transform < s.transforms; ++transform) {
        i64 place = l.offset + transform * l.distance;
        for (i64 i = 0; i < rows; ++i, ++row) {
            f(row * extent(s, spectrum, 0), place);
            for (int k = 1; k < s.rank; ++k) {
                place += l.strides[k];
                if (++index[k] < s.lengths[k]) break;
                place -= l.strides[k] * s.lengths[k];
                index[k] = 0;
            }
        }
    }
}

template <class R> void split(const Settings& s, const cpx<R>* numbers, R* re, R* im)
{
    const i64 n = extent(s, spectrum, 0), stride = layout(s, spectrum).strides[0];
    each_row(s, [=](i64 first, i64 place) {
        for (i64 j = 0; j < n; ++j) {
            re[place + j * stride] = numbers[first + j].re;
            im[place + j * stride] = numbers[first + j].im;
        }
    });
}

template <class R> void join(const Settings& s, const R* re, const R* im, cpx<R>* numbers)
{
    const i64 n = extent(s, spectrum, 0), stride = layout(s, spectrum).strides[0];
    each_row(s, [=](i64 first, i64 place) {
        for (i64 j = 0; j < n; ++j) numbers[first + j] = {re[place + j * stride], im[place + j * stride]};
    });
}

template <class R>
i32 compute_staged(const orv_dft& dft, Direction direction, DftiCompute* run, Arrays from, Arrays to, void* work)
{
    const Settings& s = dft.settings;
    auto* const numbers = static_cast<cpx<R>*>(work);
    if (direction == backward) {
        join(s, static_cast<const R*>(from.first), static_cast<const R*>(from.second), numbers);
        return run(dft.node[direction], work, to.first, nullptr, nullptr);
    }
    const i32 status = run(dft.node[direction], from.first, work, nullptr, nullptr);
    if (status == node_ok) split(s, numbers, static_cast<R*>(to.first), static_cast<R*>(to.second));
    return status;
}

} // namespace

i32 compute_staged(const orv_dft& dft, Direction direction, DftiCompute* run, Arrays from, Arrays to)
{
    void* const work = orv_serv_allocate(dft.staged_bytes, 64);
    if (work == nullptr) return node_no_memory;
    const i32 status = dft.settings.precision == ORV_DFT_DOUBLE
                           ? compute_staged<double>(dft, direction, run, from, to, work)
                           : compute_staged<float>(dft, direction, run, from, to, work);
    orv_serv_deallocate(work);
    return status;
}

} // namespace orv::core::dft
