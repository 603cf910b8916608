// FFTW's transpositions (transforms of rank 0) as a library with the interface of the others, planned with
// measurements. It has no factors, so one that is not 1 is multiplied by in a second pass, as a user of it would have
// to.
#include <complex>
#include <cstdlib>
#include <fftw3.h>
#include <map>
#include <tuple>

namespace {

// A plan's key: two loops of a length, a step to read by and a step to write by each.
struct Loop {
    int n, read, write;
    auto operator<=>(const Loop&) const = default;
};

template <class T> struct Interface;
#define REAL(T, prefix)                                                                                                \
    template <> struct Interface<T> {                                                                                  \
        using Plan = prefix##_plan;                                                                                    \
        static Plan plan(const prefix##_iodim* loops, T* a, T* b)                                                      \
        {                                                                                                              \
            return prefix##_plan_guru_r2r(0, nullptr, 2, loops, a, b, nullptr, FFTW_MEASURE);                          \
        }                                                                                                              \
        static void run(Plan plan, T* a, T* b) { prefix##_execute_r2r(plan, a, b); }                                   \
    };
#define COMPLEX(T, prefix)                                                                                             \
    template <> struct Interface<T> {                                                                                  \
        using Plan = prefix##_plan;                                                                                    \
        static auto native(T* a) { return reinterpret_cast<prefix##_complex*>(a); }                                    \
        static Plan plan(const prefix##_iodim* loops, T* a, T* b)                                                      \
        {                                                                                                              \
            return prefix##_plan_guru_dft(0, nullptr, 2, loops, native(a), native(b), FFTW_FORWARD, FFTW_MEASURE);     \
        }                                                                                                              \
        static void run(Plan plan, T* a, T* b) { prefix##_execute_dft(plan, native(a), native(b)); }                   \
    };
REAL(float, fftwf)
REAL(double, fftw)
COMPLEX(std::complex<float>, fftwf)
COMPLEX(std::complex<double>, fftw)

// Planning writes to its operands, so it gets others of the same alignment.
template <class T> void move(Loop columns, Loop rows, T* a, T* b, long read, long written)
{
    static std::map<std::tuple<Loop, Loop, bool>, typename Interface<T>::Plan> plans;
    auto& plan = plans[{columns, rows, a == b}];
    if (plan == nullptr) {
        const auto block = [](long elements) {
            constexpr std::size_t page = 4096;
            const std::size_t bytes = static_cast<std::size_t>(elements) * sizeof(T);
            return static_cast<T*>(std::aligned_alloc(page, (bytes + page - 1) / page * page));
        };
        T* const from = block(read > written ? read : written);
        T* const to = a == b ? from : block(written);
        const fftw_iodim loops[] = {{columns.n, columns.read, columns.write}, {rows.n, rows.read, rows.write}};
        plan = Interface<T>::plan(loops, from, to);
        if (from != to) std::free(to);
        std::free(from);
    }
    Interface<T>::run(plan, a, b);
}

template <class T> void scale(T alpha, T* b, int ld, int rows, int columns)
{
    if (alpha == T(1)) return;
    for (long j = 0; j < columns; ++j)
        for (long i = 0; i < rows; ++i) b[i + j * ld] *= alpha;
}

template <class T> void copy(bool turned, int rows, int cols, T alpha, T* a, int lda, T* b, int ldb)
{
    const Loop along_columns{cols, lda, turned ? 1 : ldb}, along_rows{rows, 1, turned ? ldb : 1};
    move(along_columns, along_rows, a, b, static_cast<long>(lda) * cols,
         static_cast<long>(ldb) * (turned ? rows : cols));
    scale(alpha, b, ldb, turned ? cols : rows, turned ? rows : cols);
}

} // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))
#define TRANSPOSE(t, T)                                                                                                \
    EXPORT void t##omatcopy_(char*, char* trans, int* rows, int* cols, T* alpha, T* a, int* lda, T* b, int* ldb)       \
    {                                                                                                                  \
        copy(*trans == 'T', *rows, *cols, *alpha, a, *lda, b, *ldb);                                                   \
    }                                                                                                                  \
    EXPORT void t##imatcopy_(char*, char*, int* rows, int* cols, T* alpha, T* ab, int* lda, int* ldb)                  \
    {                                                                                                                  \
        copy(true, *rows, *cols, *alpha, ab, *lda, ab, *ldb);                                                          \
    }

TRANSPOSE(s, float)
TRANSPOSE(d, double)
TRANSPOSE(c, std::complex<float>)
TRANSPOSE(z, std::complex<double>)
