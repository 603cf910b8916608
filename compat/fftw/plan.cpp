#include "compat/fftw/plan.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace orv::compat::fftw {
namespace {

std::atomic<int> threads{1};
constexpr int most_threads = 1024; // that a transform may use

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

} // namespace

// The interface has no way to tell; a program that goes on with what stands in its arrays is worse off.
[[noreturn]] void give_up()
{
    std::fprintf(stderr, "fftw on orv: a plan could not be run: %s\n", orv_last_error());
    std::abort();
}

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
        problem.form == Form::reals ? lines_made(*plan) : (plan->dft = transform_of(plan->problem)) != nullptr;
    if (made) return plan;
    free_plan(plan);
    return nullptr;
}

void free_plan(Plan* plan)
{
    if (plan == nullptr) return;
    orv_dft_free(plan->dft);
    for (const Line& line : plan->lines) orv_dft_free(line.spectrum), orv_trig_free(line.wave);
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

} // namespace orv::compat::fftw
