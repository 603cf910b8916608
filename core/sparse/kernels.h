// The sparse kernels that the core calls. Those of the grid are found by the letters of their names, which follow from
// the matrix and the call; the routines beside it by type and width of integers: Kernels<double, i64>::zeros.
#pragma once

#include "core/branch/kernel.h"
#include "frame/kernels/spblas.h"

namespace orv::core::sparse {

enum class Storage : unsigned char { csr, coo, dia, bsr };
enum class Form : unsigned char { mv, mm, sv, sm };

// dcsr0nslnc__mvout_par
struct Letters {
    Storage storage;
    Form form;
    bool narrow; // integers of 32 bits: the module spblas_lp64
    bool seq;
    char type;
    char base; // 0 or 1
    char op, kind, triangle = '_', diagonal = '_';
};

// The address of a kernel of the grid by one load once it is known; null with the reason recorded if there is none.
void* grid_kernel(const Letters& letters);

// What the calling thread runs, for orv_sparse_kernel().
void remember(const Letters& letters);
void remember(KernelName name);
void remember_threads(int threads);

template <class T> inline constexpr char type_letter = 's';
template <> inline constexpr char type_letter<double> = 'd';
template <> inline constexpr char type_letter<cpx<float>> = 'c';
template <> inline constexpr char type_letter<cpx<double>> = 'z';

template <class T, class Int> struct Kernels;

#define ORV_SPARSE_KERNEL(module, name, symbol) static inline constinit Kernel name{kernels::module::symbol()};
#define ORV_SPARSE_KERNELS(module, Int, t, T)                                                                          \
    template <> struct Kernels<T, Int> {                                                                               \
        ORV_SPARSE_KERNEL(module, split_par, t##split_par)                                                             \
        ORV_SPARSE_KERNEL(module, find_lower, find_diag_par_ln)                                                        \
        ORV_SPARSE_KERNEL(module, find_lower_unit, find_diag_par_lu)                                                   \
        ORV_SPARSE_KERNEL(module, find_upper, find_diag_par_un)                                                        \
        ORV_SPARSE_KERNEL(module, find_upper_unit, find_diag_par_uu)                                                   \
        ORV_SPARSE_BLOCKS(module, t, , bsr_, by_columns)                                                               \
        ORV_SPARSE_BLOCKS(module, t, cspblas_, bsr_cspblas_, by_rows)                                                  \
        ORV_SPARSE_KERNEL(module, skymmgk, t##skymmgk)                                                                 \
        ORV_SPARSE_KERNEL(module, skymmsk, t##skymmsk)                                                                 \
        ORV_SPARSE_KERNEL(module, skymmkk, t##skymmkk)                                                                 \
        ORV_SPARSE_KERNEL(module, skysvk, t##skysvk)                                                                   \
        ORV_SPARSE_KERNEL(module, csrcoo, orv_##t##csrcoo)                                                             \
        ORV_SPARSE_KERNEL(module, csrcsc, orv_##t##csrcsc)                                                             \
        ORV_SPARSE_KERNEL(module, csrsky, orv_##t##csrsky)                                                             \
        ORV_SPARSE_KERNEL(module, sort_rows, t##sortrow)                                                               \
        ORV_SPARSE_KERNEL(module, sum, t##mcsradd_notr)                                                                \
        ORV_SPARSE_KERNEL(module, product, t##mcsr_notr)                                                               \
        ORV_SPARSE_KERNEL(module, product_by_rows, t##csrmultd_ker)                                                    \
        ORV_SPARSE_KERNEL(module, product_by_columns, t##csrmultd_ker_t)                                               \
    };
#define ORV_SPARSE_BLOCKS(module, t, before, solve, layout)                                                            \
    struct layout {                                                                                                    \
        ORV_SPARSE_KERNEL(module, general, before##t##bsrmmgen)                                                        \
        ORV_SPARSE_KERNEL(module, symmetric, before##t##bsrmmsym)                                                      \
        ORV_SPARSE_KERNEL(module, triangular, before##t##bsrmmtr)                                                      \
        ORV_SPARSE_KERNEL(module, anti_symmetric, before##t##bsrmmskew)                                                \
        ORV_SPARSE_KERNEL(module, diagonal, before##t##bsrmmdiag)                                                      \
        ORV_SPARSE_KERNEL(module, gauss, t##solve##gauss)                                                              \
        ORV_SPARSE_KERNEL(module, invdiag, t##solve##invdiag)                                                          \
    };
#define ORV_SPARSE_MODULE(module, Int)                                                                                 \
    ORV_SPARSE_KERNELS(module, Int, s, float)                                                                          \
    ORV_SPARSE_KERNELS(module, Int, d, double)                                                                         \
    ORV_SPARSE_KERNELS(module, Int, c, cpx<float>)                                                                     \
    ORV_SPARSE_KERNELS(module, Int, z, cpx<double>)

ORV_SPARSE_MODULE(spblas, i64)
ORV_SPARSE_MODULE(spblas_lp64, i32)

} // namespace orv::core::sparse
