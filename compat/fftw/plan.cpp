#include "compat/fftw/plan.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace orv::compat::fftw {
namespace {

std::atomic<int> threads{1};
constexpr int most_threads = 1024; // that a transform may use

constexpr int precision = sizeof(R) == 4 ? ORV_DFT_SINGLE : ORV_DFT_DOUBLE;

// Takes the longest loop out.
Dim longest(Dims& loops)
{
    if (loops.rank == 0) return {1, 0, 0};
    int at = 0;
    for (int k = 1; k < loops.rank; ++k)
        if (loops.dim[k].n > loops.dim[at].n) at = k;
    const Dim found = loops.dim[at];
    loops.dim[at] = loops.dim[--loops.rank];
    return found;
}

struct Setting {
    int what;
    i64 value;
};

bool committed(orv_dft* dft, const Problem& p, Dim batch, const i64* signal, const i64* spectrum)
{
    const bool forth = p.is_forward();
    const Setting settings[] = {
        {ORV_DFT_PLACEMENT, p.in_place() ? ORV_DFT_IN_PLACE : ORV_DFT_OUT_OF_PLACE},
        {ORV_DFT_STORAGE, p.split ? ORV_DFT_SPLIT : ORV_DFT_INTERLEAVED},
        {ORV_DFT_FORMAT, ORV_DFT_HALF},
        {ORV_DFT_DIRECTIONS, forth ? ORV_DFT_FORWARD : ORV_DFT_BACKWARD},
        {ORV_DFT_TRANSFORMS, batch.n},
        {ORV_DFT_SIGNAL_DISTANCE, forth ? batch.is : batch.os},
        {ORV_DFT_SPECTRUM_DISTANCE, forth ? batch.os : batch.is},
        {ORV_DFT_THREADS, threads},
    };
    for (const Setting& s : settings)
        if (orv_dft_set(dft, s.what, s.value) != ORV_OK) return false;
    return orv_dft_set_strides(dft, signal, spectrum) == ORV_OK && orv_dft_commit(dft) == ORV_OK;
}

// The transform that does the dimensions and the longest loop; what it leaves of the loops stays in the problem.
orv_dft* transform_of(Problem& p)
{
    const bool real = p.form != Form::complex;
    const Dims& dims = p.dims;
    Dims loops = p.loops;
    if (dims.rank > ORV_DFT_MAX_RANK) return nullptr;
    const Dim batch = longest(loops);
    i64 lengths[ORV_DFT_MAX_RANK] = {1}, in[ORV_DFT_MAX_RANK] = {1}, out[ORV_DFT_MAX_RANK] = {1};
    for (int k = 0; k < dims.rank; ++k) { // innermost first
        const Dim& d = dims.dim[dims.rank - 1 - k];
        lengths[k] = d.n, in[k] = d.is, out[k] = d.os;
    }
    orv_dft* dft;
    const int domain = real ? ORV_DFT_REAL : ORV_DFT_COMPLEX;
    if (orv_dft_create(&dft, precision, domain, dims.rank > 0 ? dims.rank : 1, lengths) != ORV_OK) return nullptr;
    const bool forth = p.is_forward();
    if (!committed(dft, p, batch, forth ? in : out, forth ? out : in)) {
        orv_dft_free(dft);
        return nullptr;
    }
    p.loops = loops;
    return dft;
}

// A row of reals and its half spectrum, next to each other, both ways as the kinds want.
bool rows_made(Plan& plan)
{
    for (int k = 0; k < plan.problem.dims.rank; ++k) {
        const i64 n = plan.problem.dims.dim[k].n;
        orv_dft*& row = plan.rows[k];
        if (orv_dft_create(&row, precision, ORV_DFT_REAL, 1, &n) != ORV_OK) return false;
        orv_dft_set(row, ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE);
        orv_dft_set(row, ORV_DFT_FORMAT, ORV_DFT_HALF);
        orv_dft_set(row, ORV_DFT_THREADS, 1);
        if (orv_dft_commit(row) != ORV_OK) return false;
    }
    return true;
}

// Operations as the field counts them, 5 n log2 n for complex numbers, two of five being products.
void count_operations(Plan& plan)
{
    const Problem& p = plan.problem;
    double n = 1, all = 1;
    for (const Dim& d : p.dims) n *= static_cast<double>(d.n);
    for (const Dim& d : p.loops) all *= static_cast<double>(d.n);
    const double work = n * std::log2(n < 1 ? 1 : n) * all * (p.form == Form::complex ? 1 : 0.5);
    plan.additions = 3 * work, plan.products = 2 * work;
}

void* part(void* array, std::ptrdiff_t elements, bool pairs)
{
    return static_cast<R*>(array) + elements * (pairs ? 2 : 1);
}

// The interface has no way to tell; a program that goes on with what stands in its arrays is worse off.
[[noreturn]] void give_up()
{
    std::fprintf(stderr, "fftw on orv: a plan could not be run: %s\n", orv_last_error());
    std::abort();
}

} // namespace

void set_planner_threads(int count) { threads = static_cast<int>(min(max(count, 1), most_threads)); }
int planner_threads() { return threads; }

Plan* make_plan(const Problem& problem)
{
    auto* const plan = static_cast<Plan*>(std::calloc(1, sizeof(Plan)));
    if (plan == nullptr) return nullptr;
    plan->problem = problem;
    count_operations(*plan);
    if (problem.loops.empty()) return plan;
    const bool made =
        problem.form == Form::reals ? rows_made(*plan) : (plan->dft = transform_of(plan->problem)) != nullptr;
    if (made) return plan;
    free_plan(plan);
    return nullptr;
}

void free_plan(Plan* plan)
{
    if (plan == nullptr) return;
    orv_dft_free(plan->dft);
    for (orv_dft* row : plan->rows) orv_dft_free(row);
    std::free(plan);
}

void Plan::run(Arrays a) const
{
    if (problem.form == Form::reals) return run_reals(*this, static_cast<const R*>(a.in), static_cast<R*>(a.out));
    if (dft == nullptr) return;
    const bool forth = problem.is_forward();
    const bool pairs_in = !problem.split && problem.form != Form::to_half;
    const bool pairs_out = !problem.split && problem.form != Form::from_half;
    problem.loops.each([&](std::ptrdiff_t in, std::ptrdiff_t out) {
        void *const from = part(a.in, in, pairs_in), *const to = part(a.out, out, pairs_out);
        orv_status status;
        if (!problem.split) status = forth ? orv_dft_forward(dft, from, to) : orv_dft_backward(dft, from, to);
        else {
            void* const from_im = a.in_im ? part(a.in_im, in, false) : nullptr;
            void* const to_im = a.out_im ? part(a.out_im, out, false) : nullptr;
            status = (forth ? orv_dft_forward_split : orv_dft_backward_split)(dft, from, from_im, to, to_im);
        }
        if (status != ORV_OK) give_up();
    });
}

namespace {

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

} // namespace

void run_reals(const Plan& plan, const R* in, R* out)
{
    const Problem& p = plan.problem;
    if (p.dims.rank == 0) return p.loops.each([&](std::ptrdiff_t from, std::ptrdiff_t to) { out[to] = in[from]; });
    i64 longest_row = 0;
    for (const Dim& d : p.dims) longest_row = max(longest_row, d.n);
    auto* const work = static_cast<R*>(std::malloc(sizeof(R) * static_cast<std::size_t>(2 * longest_row + 4)));
    if (work == nullptr) give_up();
    for (int k = 0; k < p.dims.rank; ++k) {
        const Dim along = p.dims.dim[k];
        Dims others = p.loops; // where the rows of this dimension start
        for (int j = 0; j < p.dims.rank; ++j)
            if (j != k && others.rank < Dims::most) others.add(p.dims.dim[j]);
        const Row row{work, work + longest_row + longest_row % 2, along.n};
        others.each([&](std::ptrdiff_t from, std::ptrdiff_t to) {
            // The first dimension moves the rows to the output, where the others find them.
            const R* const source = k == 0 ? in + from : out + to;
            const std::ptrdiff_t step = k == 0 ? along.is : along.os;
            for (i64 i = 0; i < along.n; ++i) row.reals[i] = source[i * step];
            if (transform_row(plan.rows[k], row, p.kinds[k]) != ORV_OK) give_up();
            for (i64 i = 0; i < along.n; ++i) out[to + i * along.os] = row.reals[i];
        });
    }
    std::free(work);
}

} // namespace orv::compat::fftw
