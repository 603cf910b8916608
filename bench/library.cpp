#include "bench/library.h"

#include "bench/call.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>

#include <dlfcn.h>
#include <sched.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

namespace orv::bench {
namespace {

const std::string debian = ORV_SYSTEM_LIBRARIES "/"; // where Debian keeps libraries for this architecture
constexpr unsigned everywhere = held | unrestricted;

using Greeting = std::array<char, 64>; // what a worker says when its library is open: the processor it computes for

void* open(const Library& l)
{
    for (const std::string& setting : l.environment) {
        const std::size_t equals = setting.find('=');
        setenv(setting.substr(0, equals).c_str(), setting.substr(equals + 1).c_str(), 1);
    }
    if (!l.below.empty() && dlopen(l.below.c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr)
        throw std::runtime_error(dlerror());
    void* handle = dlopen(l.file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    return handle;
}

template <class F> F* function(void* handle, const char* name) { return reinterpret_cast<F*>(dlsym(handle, name)); }

std::string openblas_core(void* handle) { return function<const char*()>(handle, "openblas_get_corename")(); }
std::string blis_core(void* handle)
{
    function<void()>(handle, "bli_init")();
    const int id = function<int()>(handle, "bli_arch_query_id")();
    return function<const char*(int)>(handle, "bli_arch_string")(id);
}

void bind_to(int processor)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    sched_setaffinity(0, sizeof set, &set);
}

double now(clockid_t clock)
{
    timespec t;
    clock_gettime(clock, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

Worker::Sample timed(const Repeat& run, long calls)
{
    const double start = now(CLOCK_MONOTONIC), start_of_work = now(CLOCK_THREAD_CPUTIME_ID);
    run(calls);
    const double work = now(CLOCK_THREAD_CPUTIME_ID) - start_of_work, seconds = now(CLOCK_MONOTONIC) - start;
    return {seconds / static_cast<double>(calls), work / seconds};
}

} // namespace

std::vector<Library> libraries(const Places& p)
{
    const std::string openblas = debian + "openblas-serial/libopenblas.so.0",
                      blis = debian + "blis-serial/libblis.so.4";
    std::vector<Library> all{
        {"limit", "", everywhere | threaded, false, {}},
        {"orv", p.orv + "/libblas.so.3", everywhere, false, {"ORV_NUM_THREADS=1"}},
        {"orv", // the routines of LAPACK, on the same BLAS
         p.orv + "/liborv_lapack.so",
         held,
         false,
         {"ORV_NUM_THREADS=1"},
         nullptr,
         "",
         p.orv + "/libblas.so.3"},
        {"orv-kernel", p.orv + "/liborv.so", held, true, {"ORV_NUM_THREADS=1"}},
        {"against", p.against + "/libblas.so.3", held, false, {"ORV_NUM_THREADS=1"}},
        {"openblas", openblas, held, false, {"OPENBLAS_CORETYPE=Nehalem"}, openblas_core, "Nehalem"},
        {"blis", blis, held, false, {"BLIS_ARCH_TYPE=5"}, blis_core, "penryn"},
        {"eigen", p.eigen + "/libbench_eigen_sse.so", held, false, {}},
        {"orv", p.orv + "/libbench_orv.so", everywhere, false, {}},
        {"fftw", p.eigen + "/libbench_fftw_sse.so", held, false, {}},
        {"fftw patient", p.eigen + "/libbench_fftw_sse.so", held, false, {"BENCH_FFTW=patient"}},
        {"orv", p.orv + "/libbench_conv_orv.so", everywhere, false, {"ORV_NUM_THREADS=1"}},
        {"orv direct", p.orv + "/libbench_conv_orv.so", held, false, {"ORV_NUM_THREADS=1", "BENCH_CONV=direct"}},
        {"orv transform", p.orv + "/libbench_conv_orv.so", held, false, {"ORV_NUM_THREADS=1", "BENCH_CONV=transform"}},
        {"loops", p.eigen + "/libbench_conv_loops.so", held, false, {}},
        {"std::sort", p.eigen + "/libbench_std.so", held, false, {}},
        {"orv", p.orv + "/libbench_sparse_orv.so", everywhere, false, {"ORV_NUM_THREADS=1"}},
        {"eigen", p.eigen + "/libbench_sparse_eigen_sse.so", held, false, {}},
        {"loops", p.eigen + "/libbench_sparse_loops.so", held, false, {}},
        {"librsb", p.eigen + "/libbench_sparse_rsb.so", everywhere, false, {"OMP_NUM_THREADS=1"}},
        {"eigen", p.eigen + "/libbench_sparse_eigen_native.so", unrestricted, false, {}},
        {"loops", p.eigen + "/libbench_sparse_loops_native.so", unrestricted, false, {}},
        {"orv 1", p.orv + "/libbench_orv.so", threaded, false, {"ORV_NUM_THREADS=1"}},
        {"orv 2", p.orv + "/libbench_orv.so", threaded, false, {"ORV_NUM_THREADS=2"}},
        {"orv 1", p.orv + "/libbench_sparse_orv.so", threaded, false, {"ORV_NUM_THREADS=1"}},
        {"orv 2", p.orv + "/libbench_sparse_orv.so", threaded, false, {"ORV_NUM_THREADS=2"}},
        {"reference", debian + "blas/libblas.so.3", held, false, {}},
        {"lapack", // the reference LAPACK, on the same BLAS
         debian + "lapack/liblapack.so.3",
         held,
         false,
         {"ORV_NUM_THREADS=1"},
         nullptr,
         "",
         p.orv + "/libblas.so.3"},
        {"loops", p.eigen + "/libbench_loops.so", held, false, {}},
        {"quad", p.eigen + "/libbench_quad.so", held, false, {}},
        {"qd", p.eigen + "/libbench_qd.so", held, false, {}},
        {"openblas", openblas, unrestricted, false, {}, openblas_core, ""},
        {"blis", blis, unrestricted, false, {}, blis_core, ""},
        {"eigen", p.eigen + "/libbench_eigen_native.so", unrestricted, false, {}},
        {"fftw", p.eigen + "/libbench_fftw_native.so", unrestricted, false, {}},
        {"orv 1", p.orv + "/libblas.so.3", threaded, false, {"ORV_NUM_THREADS=1"}},
        {"orv 2", p.orv + "/libblas.so.3", threaded, false, {"ORV_NUM_THREADS=2"}},
        {"openblas 1", openblas, threaded, false, {"OPENBLAS_CORETYPE=Nehalem"}, openblas_core, "Nehalem"},
        {"openblas 2",
         debian + "openblas-pthread/libopenblas.so.0",
         threaded,
         false,
         {"OPENBLAS_CORETYPE=Nehalem", "OPENBLAS_NUM_THREADS=2"},
         openblas_core,
         "Nehalem"},
    };
    return all;
}

Arena::Arena(std::size_t bytes)
{
    void* p = mmap(nullptr, operands_begin + bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE,
                   -1, 0);
    if (p == MAP_FAILED) throw std::runtime_error("no memory for the operands");
    base = static_cast<std::byte*>(p);
}

Worker::Worker(const Library& library, const std::vector<Case>& cases, const Arena& arena, int processor)
    : lib(&library)
{
    int down[2], up[2];
    if (pipe(down) != 0 || pipe(up) != 0) throw std::runtime_error("no pipes");
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process");
    orders = child ? down[1] : down[0];
    answers = child ? up[0] : up[1];
    close(child ? down[0] : down[1]);
    close(child ? up[1] : up[0]);
    if (child == 0) serve(cases, arena, processor);
    Greeting greeting;
    if (read(answers, &greeting, sizeof greeting) != sizeof greeting)
        throw std::runtime_error(library.name + " failed");
    computes_for = greeting.data();
}

void Worker::serve(const std::vector<Case>& cases, const Arena& arena, int processor)
{
    try {
        const Library& l = library();
        if (l.passes != threaded) bind_to(processor);
        void* handle = l.file.empty() ? nullptr : open(l);
        Greeting greeting{};
        const std::string core = l.core ? l.core(handle) : "";
        if (core.find(l.expected_core) != 0)
            throw std::runtime_error("computes for " + core + ", not for " + l.expected_core);
        core.copy(greeting.data(), greeting.size() - 1);
        bool heard = write(answers, &greeting, sizeof greeting) == sizeof greeting;

        std::map<std::size_t, Repeat> bound;
        for (Order order; heard && read(orders, &order, sizeof order) == sizeof order;) {
            const Case& c = cases[order.index];
            auto [found, is_new] = bound.try_emplace(order.index);
            if (is_new) found->second = handle ? bind(c, handle, l.direct, arena) : bind_limit(c, arena);
            const Repeat& run = found->second;
            if (order.warm_up) run(1);
            Sample sample{run ? 0.0 : -1.0, 1};
            if (order.calls > 0) sample = timed(run, order.calls);
            heard = write(answers, &sample, sizeof sample) == sizeof sample;
        }
        _exit(0);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", library().name.c_str(), e.what());
        _exit(1);
    }
}

Worker::Sample Worker::ask(Order order) const
{
    Sample sample;
    if (write(orders, &order, sizeof order) != sizeof order || read(answers, &sample, sizeof sample) != sizeof sample)
        throw std::runtime_error(library().name + " failed");
    return sample;
}

bool Worker::offers(std::size_t index) const { return ask({index, 0, false}).seconds >= 0; }
Worker::Sample Worker::sample(std::size_t index, long calls, bool warm_up) const
{
    return ask({index, calls, warm_up});
}

} // namespace orv::bench
