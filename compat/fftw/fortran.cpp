// The legacy names for Fortran: everything by reference, a plan in an integer of 8 bytes, arrays by columns, so that
// dimensions come the other way round. Compilers put one underscore behind a name or two.
#include "compat/fftw/plan.h"

#include <cstdio>

namespace orv::compat::fftw {
namespace {

template <class D> struct Reversed {
    D d[Dims::most];
    Reversed(int rank, const D* from)
    {
        for (int k = 0; k < rank && k < Dims::most; ++k) d[k] = from[rank - 1 - k];
    }
    operator const D*() const { return d; }
};
// Lengths that the caller need not give.
struct Embed {
    Reversed<int> reversed;
    bool given;
    Embed(int rank, const int* from) : reversed(from ? rank : 0, from), given(from != nullptr) {}
    operator const int*() const { return given ? reversed.d : nullptr; }
};
// Three arrays to dimensions.
struct Triples {
    ShortDim d[Dims::most];
    Triples(int rank, const int* n, const int* is, const int* os)
    {
        for (int k = 0; k < rank && k < Dims::most; ++k) d[k] = {n[k], is[k], os[k]};
    }
    operator const ShortDim*() const { return d; }
};

} // namespace

// The C names that are called here.
extern "C" {
using Kinds = const int*;
#define PLANNER(name, ...) Plan* X(plan_##name)(__VA_ARGS__, unsigned);
PLANNER(dft, int, const int*, C*, C*, int)
PLANNER(dft_r2c, int, const int*, R*, C*)
PLANNER(dft_c2r, int, const int*, C*, R*)
PLANNER(r2r, int, const int*, R*, R*, Kinds)
PLANNER(many_dft, int, const int*, int, C*, const int*, int, int, C*, const int*, int, int, int)
PLANNER(many_dft_r2c, int, const int*, int, R*, const int*, int, int, C*, const int*, int, int)
PLANNER(many_dft_c2r, int, const int*, int, C*, const int*, int, int, R*, const int*, int, int)
PLANNER(many_r2r, int, const int*, int, R*, const int*, int, int, R*, const int*, int, int, Kinds)
PLANNER(guru_dft, int, const ShortDim*, int, const ShortDim*, C*, C*, int)
PLANNER(guru_split_dft, int, const ShortDim*, int, const ShortDim*, R*, R*, R*, R*)
PLANNER(guru_dft_r2c, int, const ShortDim*, int, const ShortDim*, R*, C*)
PLANNER(guru_dft_c2r, int, const ShortDim*, int, const ShortDim*, C*, R*)
PLANNER(guru_split_dft_r2c, int, const ShortDim*, int, const ShortDim*, R*, R*, R*)
PLANNER(guru_split_dft_c2r, int, const ShortDim*, int, const ShortDim*, R*, R*, R*)
PLANNER(guru_r2r, int, const ShortDim*, int, const ShortDim*, R*, R*, Kinds)
#undef PLANNER
void X(cleanup)();
void X(cleanup_threads)();
void X(forget_wisdom)();
void X(export_wisdom)(void (*)(char, void*), void*);
int X(import_wisdom)(int (*)(void*), void*);
}

#ifdef ORV_FFTW_SINGLE
#define F(name, underscores) sfftw_##name##underscores
#else
#define F(name, underscores) dfftw_##name##underscores
#endif
#define FORTRAN(type, name, parameters, ...)                                                                           \
    EXPORT type F(name, _)                                                                                             \
    parameters __VA_ARGS__ EXPORT type F(name, __)                                                                     \
    parameters __VA_ARGS__

#define ROWS(name, From, To)                                                                                           \
    FORTRAN(void, plan_##name, (Plan * *p, int* rank, int* n, From in, To out, int* flags),                            \
            { *p = X(plan_##name)(*rank, Reversed<int>(*rank, n), in, out, *flags); })                                 \
    FORTRAN(void, plan_##name##_1d, (Plan * *p, int* n, From in, To out, int* flags),                                  \
            { *p = X(plan_##name)(1, n, in, out, *flags); })                                                           \
    FORTRAN(void, plan_##name##_2d, (Plan * *p, int* nx, int* ny, From in, To out, int* flags), {                      \
        const int n[] = {*ny, *nx};                                                                                    \
        *p = X(plan_##name)(2, n, in, out, *flags);                                                                    \
    })                                                                                                                 \
    FORTRAN(void, plan_##name##_3d, (Plan * *p, int* nx, int* ny, int* nz, From in, To out, int* flags), {             \
        const int n[] = {*nz, *ny, *nx};                                                                               \
        *p = X(plan_##name)(3, n, in, out, *flags);                                                                    \
    })
ROWS(dft_r2c, R*, C*)
ROWS(dft_c2r, C*, R*)

FORTRAN(void, plan_dft, (Plan * *p, int* rank, int* n, C* in, C* out, int* sign, int* flags),
        { *p = X(plan_dft)(*rank, Reversed<int>(*rank, n), in, out, *sign, *flags); })
FORTRAN(void, plan_dft_1d, (Plan * *p, int* n, C* in, C* out, int* sign, int* flags),
        { *p = X(plan_dft)(1, n, in, out, *sign, *flags); })
FORTRAN(void, plan_dft_2d, (Plan * *p, int* nx, int* ny, C* in, C* out, int* sign, int* flags), {
    const int n[] = {*ny, *nx};
    *p = X(plan_dft)(2, n, in, out, *sign, *flags);
})
FORTRAN(void, plan_dft_3d, (Plan * *p, int* nx, int* ny, int* nz, C* in, C* out, int* sign, int* flags), {
    const int n[] = {*nz, *ny, *nx};
    *p = X(plan_dft)(3, n, in, out, *sign, *flags);
})
FORTRAN(void, plan_r2r, (Plan * *p, int* rank, int* n, R* in, R* out, int* kinds, int* flags),
        { *p = X(plan_r2r)(*rank, Reversed<int>(*rank, n), in, out, Reversed<int>(*rank, kinds), *flags); })
FORTRAN(void, plan_r2r_1d, (Plan * *p, int* n, R* in, R* out, int* kind, int* flags),
        { *p = X(plan_r2r)(1, n, in, out, kind, *flags); })
FORTRAN(void, plan_r2r_2d, (Plan * *p, int* nx, int* ny, R* in, R* out, int* kindx, int* kindy, int* flags), {
    const int n[] = {*ny, *nx}, kinds[] = {*kindy, *kindx};
    *p = X(plan_r2r)(2, n, in, out, kinds, *flags);
})
FORTRAN(void, plan_r2r_3d,
        (Plan * *p, int* nx, int* ny, int* nz, R* in, R* out, int* kindx, int* kindy, int* kindz, int* flags), {
            const int n[] = {*nz, *ny, *nx}, kinds[] = {*kindz, *kindy, *kindx};
            *p = X(plan_r2r)(3, n, in, out, kinds, *flags);
        })

// Batches.
#define MANY(name, From, To, last_parameter, last_argument)                                                            \
    FORTRAN(void, plan_many_##name,                                                                                    \
            (Plan * *p, int* rank, int* n, int* count, From in, int* in_embed, int* is, int* id, To out,               \
             int* out_embed, int* os, int* od last_parameter, int* flags),                                             \
            {                                                                                                          \
                *p = X(plan_many_##name)(*rank, Reversed<int>(*rank, n), *count, in, Embed(*rank, in_embed), *is, *id, \
                                         out, Embed(*rank, out_embed), *os, *od last_argument, *flags);                \
            })
#define COMMA ,
MANY(dft, C*, C*, COMMA int* sign, COMMA* sign)
MANY(dft_r2c, R*, C*, , )
MANY(dft_c2r, C*, R*, , )
MANY(r2r, R*, R*, COMMA int* kinds, COMMA Reversed<int>(*rank COMMA kinds))

// Any strides: these are not reversed, for they come with strides of their own. Kinds are, to which programs are used.
#define DIMENSIONS int *rank, int *n, int *is, int *os, int *loops, int *hn, int *his, int *hos
#define DIMENSIONS_GIVEN *rank, Triples(*rank, n, is, os), *loops, Triples(*loops, hn, his, hos)
FORTRAN(void, plan_guru_dft, (Plan * *p, DIMENSIONS, C* in, C* out, int* sign, int* flags),
        { *p = X(plan_guru_dft)(DIMENSIONS_GIVEN, in, out, *sign, *flags); })
FORTRAN(void, plan_guru_split_dft, (Plan * *p, DIMENSIONS, R* ri, R* ii, R* ro, R* io, int* flags),
        { *p = X(plan_guru_split_dft)(DIMENSIONS_GIVEN, ri, ii, ro, io, *flags); })
FORTRAN(void, plan_guru_dft_r2c, (Plan * *p, DIMENSIONS, R* in, C* out, int* flags),
        { *p = X(plan_guru_dft_r2c)(DIMENSIONS_GIVEN, in, out, *flags); })
FORTRAN(void, plan_guru_dft_c2r, (Plan * *p, DIMENSIONS, C* in, R* out, int* flags),
        { *p = X(plan_guru_dft_c2r)(DIMENSIONS_GIVEN, in, out, *flags); })
FORTRAN(void, plan_guru_split_dft_r2c, (Plan * *p, DIMENSIONS, R* in, R* ro, R* io, int* flags),
        { *p = X(plan_guru_split_dft_r2c)(DIMENSIONS_GIVEN, in, ro, io, *flags); })
FORTRAN(void, plan_guru_split_dft_c2r, (Plan * *p, DIMENSIONS, R* ri, R* ii, R* out, int* flags),
        { *p = X(plan_guru_split_dft_c2r)(DIMENSIONS_GIVEN, ri, ii, out, *flags); })
FORTRAN(void, plan_guru_r2r, (Plan * *p, DIMENSIONS, R* in, R* out, int* kinds, int* flags),
        { *p = X(plan_guru_r2r)(DIMENSIONS_GIVEN, in, out, Reversed<int>(*rank, kinds), *flags); })

// Plans run.
#define EXECUTE(name, parameters, ...) FORTRAN(void, name, parameters, { (*p)->run({__VA_ARGS__}); })
FORTRAN(void, execute, (Plan* const* p), { (*p)->run((*p)->problem.arrays); })
EXECUTE(execute_dft, (Plan* const* p, C* in, C* out), in, nullptr, out, nullptr)
EXECUTE(execute_dft_r2c, (Plan* const* p, R* in, C* out), in, nullptr, out, nullptr)
EXECUTE(execute_dft_c2r, (Plan* const* p, C* in, R* out), in, nullptr, out, nullptr)
EXECUTE(execute_r2r, (Plan* const* p, R* in, R* out), in, nullptr, out, nullptr)
EXECUTE(execute_split_dft, (Plan* const* p, R* ri, R* ii, R* ro, R* io), ri, ii, ro, io)
EXECUTE(execute_split_dft_r2c, (Plan* const* p, R* in, R* ro, R* io), in, nullptr, ro, io)
EXECUTE(execute_split_dft_c2r, (Plan* const* p, R* ri, R* ii, R* out), ri, ii, out, nullptr)
FORTRAN(void, destroy_plan, (Plan * *p), { free_plan(*p); })

FORTRAN(void, flops, (Plan* const* p, double* add, double* mul, double* fma),
        { *add = (*p)->additions, *mul = (*p)->products, *fma = 0; })
FORTRAN(void, cost, (double* cost, Plan* const* p), { *cost = (*p)->additions + (*p)->products; })
FORTRAN(void, estimate_cost, (double* cost, Plan* const* p), { *cost = (*p)->additions + (*p)->products; })
extern "C" void X(print_plan)(const Plan*);
FORTRAN(void, print_plan, (Plan* const* p), {
    X(print_plan)(*p);
    std::fflush(stdout);
})

FORTRAN(void, cleanup, (), { X(cleanup)(); })
FORTRAN(void, forget_wisdom, (), { X(forget_wisdom)(); })
FORTRAN(void, import_system_wisdom, (int* success), { *success = 0; })
FORTRAN(void, set_timelimit, (double*), {})
FORTRAN(void, init_threads, (int* success), { *success = 1; })
FORTRAN(void, cleanup_threads, (), { X(cleanup_threads)(); })
FORTRAN(void, plan_with_nthreads, (int* count), { set_planner_threads(*count); })
FORTRAN(void, planner_nthreads, (int* count), { *count = planner_threads(); })

namespace {

// The program's own routines get and give a letter by reference.
struct Letters {
    void (*routine)(char*, void*);
    void* data;
};
void write_letter(char c, void* letters)
{
    const auto& to = *static_cast<Letters*>(letters);
    to.routine(&c, to.data);
}
struct Numbers {
    void (*routine)(int*, void*);
    void* data;
};
int read_letter(void* numbers)
{
    const auto& from = *static_cast<Numbers*>(numbers);
    int c = -1;
    from.routine(&c, from.data);
    return c;
}

} // namespace

FORTRAN(void, export_wisdom, (void (*write)(char*, void*), void* data), {
    Letters letters{write, data};
    X(export_wisdom)(write_letter, &letters);
})
FORTRAN(void, import_wisdom, (int* success, void (*read)(int*, void*), void* data), {
    Numbers numbers{read, data};
    *success = X(import_wisdom)(read_letter, &numbers);
})

} // namespace orv::compat::fftw
