// Reals to reals: a transform along each dimension, one after the other. The first one moves everything to the output.
#include "compat/fftw/plan.h"

#include <cstdlib>

namespace orv::compat::fftw {
namespace {

// ---- Halfcomplex kinds and the Hartley transform, by a half spectrum; a row goes through work memory.

bool made(orv_dft*& spectrum, i64 n)
{
    if (orv_dft_create(&spectrum, precision, ORV_DFT_REAL, 1, &n) != ORV_OK) return false;
    orv_dft_set(spectrum, ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE);
    orv_dft_set(spectrum, ORV_DFT_FORMAT, ORV_DFT_HALF);
    orv_dft_set(spectrum, ORV_DFT_THREADS, 1);
    return orv_dft_commit(spectrum) == ORV_OK;
}

// Through a row: reals, then the pairs of the half spectrum. Halfcomplex: r0 r1 ... r(n/2) i(n-1)/2 ... i1.
struct Row {
    R* reals;
    R* half;
    i64 n;

    void spectrum_to_reals(RealKind kind) const
    {
        for (i64 k = 0; k <= n / 2; ++k) {
            const R re = half[2 * k], im = half[2 * k + 1];
            const bool alone = k == 0 || 2 * k == n;
            reals[k] = kind == dht ? re - im : re;
            if (!alone) reals[n - k] = kind == dht ? re + im : im;
        }
    }
    void halfcomplex_to_spectrum() const
    {
        for (i64 k = 0; k <= n / 2; ++k) {
            const bool alone = k == 0 || 2 * k == n;
            half[2 * k] = reals[k], half[2 * k + 1] = alone ? 0 : reals[n - k];
        }
    }
};

orv_status transform_row(const orv_dft* dft, const Row& row, RealKind kind)
{
    if (kind == hc2r) {
        row.halfcomplex_to_spectrum();
        return orv_dft_backward(dft, row.half, row.reals);
    }
    const orv_status status = orv_dft_forward(dft, row.reals, row.half);
    if (status == ORV_OK) row.spectrum_to_reals(kind);
    return status;
}

void run_spectra(const orv_dft* dft, RealKind kind, const Dim& along, const Dims& others, const R* in, R* out)
{
    const i64 n = along.n;
    auto* const work = static_cast<R*>(std::malloc(sizeof(R) * static_cast<std::size_t>(2 * n + 4)));
    if (work == nullptr) give_up();
    const Row row{work, work + n + n % 2, n};
    others.each([&](std::ptrdiff_t from, std::ptrdiff_t to) {
        for (i64 i = 0; i < n; ++i) row.reals[i] = in[from + i * along.is];
        if (transform_row(dft, row, kind) != ORV_OK) give_up();
        for (i64 i = 0; i < n; ++i) out[to + i * along.os] = row.reals[i];
    });
    std::free(work);
}

// ---- Sines and cosines: the same sums, by other names.

struct Wave {
    int kind;
    bool forward;
};
constexpr Wave waves[] = {{ORV_TRIG_COSINE, true},
                          {ORV_TRIG_STAGGERED_COSINE, true},
                          {ORV_TRIG_STAGGERED_COSINE, false},
                          {ORV_TRIG_STAGGERED2_COSINE, true},
                          {ORV_TRIG_SINE, true},
                          {ORV_TRIG_STAGGERED_SINE, true},
                          {ORV_TRIG_STAGGERED_SINE, false},
                          {ORV_TRIG_STAGGERED2_SINE, true}};
static_assert(sizeof waves / sizeof waves[0] == rodft11 - redft00 + 1);

bool made(orv_trig*& wave, RealKind kind, i64 n)
{
    if (orv_trig_create_careful(&wave, precision, waves[kind - redft00].kind, n) != ORV_OK) return false;
    orv_trig_set_scales(wave, 1, 1);
    orv_trig_set_threads(wave, planner_threads());
    return true;
}

// Takes out the dimension whose neighbours are nearest to each other: its rows are transformed in one call.
Dim nearest(Dims& others)
{
    if (others.rank == 0) return {1, 0, 0};
    const auto distance = [&](int k) { return std::abs(others.dim[k].is) + std::abs(others.dim[k].os); };
    int at = 0;
    for (int k = 1; k < others.rank; ++k)
        if (distance(k) < distance(at)) at = k;
    const Dim found = others.dim[at];
    others.dim[at] = others.dim[--others.rank];
    return found;
}

void run_waves(const orv_trig* wave, RealKind kind, const Dim& along, Dims others, const R* in, R* out)
{
    const auto run = waves[kind - redft00].forward ? orv_trig_forward_rows : orv_trig_backward_rows;
    const Dim rows = nearest(others);
    others.each([&](std::ptrdiff_t from, std::ptrdiff_t to) {
        if (run(wave, rows.n, in + from, along.is, rows.is, out + to, along.os, rows.os) != ORV_OK) give_up();
    });
}

} // namespace

bool lines_made(Plan& plan)
{
    const Problem& p = plan.problem;
    for (int k = 0; k < p.dims.rank; ++k) {
        Line& line = plan.lines[k];
        const i64 n = p.dims.dim[k].n;
        if (!(is_wave(p.kinds[k]) ? made(line.wave, p.kinds[k], n) : made(line.spectrum, n))) return false;
    }
    return true;
}

void run_reals(const Plan& plan, const R* in, R* out)
{
    const Problem& p = plan.problem;
    if (p.dims.rank == 0) return p.loops.each([&](std::ptrdiff_t from, std::ptrdiff_t to) { out[to] = in[from]; });
    const auto placed = [](Dim d, bool is_first) { return is_first ? d : Dim{d.n, d.os, d.os}; };
    for (int k = 0; k < p.dims.rank; ++k) {
        Dims others; // where the rows of this dimension start
        for (const Dim& d : p.loops) others.add(placed(d, k == 0));
        for (int j = 0; j < p.dims.rank; ++j)
            if (j != k) others.add(placed(p.dims.dim[j], k == 0));
        const Dim along = placed(p.dims.dim[k], k == 0);
        const R* const from = k == 0 ? in : out;
        if (is_wave(p.kinds[k])) run_waves(plan.lines[k].wave, p.kinds[k], along, others, from, out);
        else run_spectra(plan.lines[k].spectrum, p.kinds[k], along, others, from, out);
    }
}

} // namespace orv::compat::fftw
