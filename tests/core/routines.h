// Public routines by element type: gemm<T>, and those of complex matrices only: herk<T>.
#pragma once

#include "frame/types.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <orv/orv.h>

namespace orv::test {

#define FOR_TYPE(name, s, d, c, z)                                                                                     \
    template <class T> constexpr auto* name = s;                                                                       \
    template <> constexpr auto* name<double> = d;                                                                      \
    template <> constexpr auto* name<cpx<float>> = c;                                                                  \
    template <> constexpr auto* name<cpx<double>> = z;
#define FOR_COMPLEX(name, c, z)                                                                                        \
    template <class T> constexpr auto* name = c;                                                                       \
    template <> constexpr auto* name<cpx<double>> = z;

FOR_TYPE(gemm, orv_sgemm, orv_dgemm, orv_cgemm, orv_zgemm)
FOR_COMPLEX(gemm3m, orv_cgemm3m, orv_zgemm3m)
FOR_COMPLEX(mixed, orv_scgemm, orv_dzgemm)
FOR_TYPE(symm, orv_ssymm, orv_dsymm, orv_csymm, orv_zsymm)
FOR_COMPLEX(hemm, orv_chemm, orv_zhemm)
FOR_TYPE(syrk, orv_ssyrk, orv_dsyrk, orv_csyrk, orv_zsyrk)
FOR_COMPLEX(herk, orv_cherk, orv_zherk)
FOR_TYPE(syr2k, orv_ssyr2k, orv_dsyr2k, orv_csyr2k, orv_zsyr2k)
FOR_COMPLEX(her2k, orv_cher2k, orv_zher2k)
FOR_TYPE(trmm, orv_strmm, orv_dtrmm, orv_ctrmm, orv_ztrmm)
FOR_TYPE(trsm, orv_strsm, orv_dtrsm, orv_ctrsm, orv_ztrsm)
FOR_TYPE(gemv, orv_sgemv, orv_dgemv, orv_cgemv, orv_zgemv)
FOR_TYPE(gerc, orv_sger, orv_dger, orv_cgerc, orv_zgerc)
FOR_TYPE(geru, orv_sger, orv_dger, orv_cgeru, orv_zgeru)
FOR_TYPE(hemv, orv_ssymv, orv_dsymv, orv_chemv, orv_zhemv)
FOR_TYPE(her, orv_ssyr, orv_dsyr, orv_cher, orv_zher)
FOR_TYPE(her2, orv_ssyr2, orv_dsyr2, orv_cher2, orv_zher2)
FOR_TYPE(omatcopy, orv_somatcopy, orv_domatcopy, orv_comatcopy, orv_zomatcopy)
FOR_TYPE(imatcopy, orv_simatcopy, orv_dimatcopy, orv_cimatcopy, orv_zimatcopy)

#undef FOR_TYPE
#undef FOR_COMPLEX

} // namespace orv::test
