// The public creators, and the ways that each kind of node tries at commit, in their order.
#include "dft/node.h"
#include "frame/kernels/dft_methods.h"

namespace orv::dft {

namespace {

// The general path: a chain of nodes, one for each dimension, which the core builds.
template <CommitCore& commit_node> i32 commit_chain(const DftiMethod*, DftiNode* node) { return commit_node(node); }
template <CommitCore& commit_node> constexpr DftiMethod legacy{commit_chain<commit_node>, nullptr};

using List = const DftiMethod* const[];

constexpr List complex_double_1d = {&DFT(bkd_as2s_n_m),
                                    &DFT(bkd_as2s_1_m),
                                    &DFT(bkd_ds2s_1_1),
                                    &DFT(bkd3_z),
                                    &DFT(bkd2_z),
                                    &DFT(bkd1_z),
                                    &legacy<orv_dft_commit_node_d_c2c_1d_omp>,
                                    &DFT(bluestein_z),
                                    nullptr};
constexpr List complex_double_md = {&DFT(bkd_as2s_n_m),
                                    &DFT(bkd_as2s_1_m),
                                    &DFT(bkd_ds2s_1_1),
                                    &DFT(tiny_3d_z2z),
                                    &legacy<orv_dft_commit_node_d_c2c_md_omp>,
                                    nullptr};
constexpr List real_double_1d = {&DFT(par_1d_r2c_d), &legacy<orv_dft_commit_node_d_r2c_1d_omp>, &DFT(bluestein_d),
                                 nullptr};
constexpr List real_double_md = {&DFT(tiny_3d_z2d), &legacy<orv_dft_commit_node_d_r2c_md_omp>, nullptr};
constexpr List complex_single_1d = {&DFT(bkd_as2s_n_m),
                                    &DFT(bkd_as2s_1_m),
                                    &DFT(bkd_ss2s_1_1),
                                    &DFT(bkd3_c),
                                    &DFT(bkd2_c),
                                    &DFT(bkd1_c),
                                    &legacy<orv_dft_commit_node_s_c2c_1d_omp>,
                                    &DFT(bluestein_c),
                                    nullptr};
constexpr List complex_single_md = {&DFT(bkd_as2s_n_m),
                                    &DFT(bkd_as2s_1_m),
                                    &DFT(bkd_ss2s_1_1),
                                    &DFT(tiny_3d_c2c),
                                    &legacy<orv_dft_commit_node_s_c2c_md_omp>,
                                    nullptr};
constexpr List real_single_1d = {&DFT(par_1d_r2c_s), &legacy<orv_dft_commit_node_s_r2c_1d_omp>, &DFT(bluestein_s),
                                 nullptr};
constexpr List real_single_md = {&DFT(tiny_3d_c2s), &legacy<orv_dft_commit_node_s_r2c_md_omp>, nullptr};

template <u32 precision, u32 domain, const auto& list> i32 create_md(DftiNode** out, i32 rank, const i64* lengths)
{
    if (out == nullptr) return node_inconsistent;
    DftiNode* node = nullptr;
    if (const i32 status = DFT(dfti_create_node)(&node, precision, domain, rank, lengths)) return status;
    node->bkdown_list = list;
    *out = node;
    return node_ok;
}
template <u32 precision, u32 domain, const auto& list> i32 create_1d(DftiNode** out, i64 length)
{
    return create_md<precision, domain, list>(out, 1, &length);
}

} // namespace

PRIMITIVE(2, dfti_create_dc1d, create_1d<CFG_DOUBLE, CFG_DOMAIN_COMPLEX, complex_double_1d>)
PRIMITIVE(3, dfti_create_dcmd, create_md<CFG_DOUBLE, CFG_DOMAIN_COMPLEX, complex_double_md>)
PRIMITIVE(2, dfti_create_dr1d, create_1d<CFG_DOUBLE, CFG_DOMAIN_REAL, real_double_1d>)
PRIMITIVE(3, dfti_create_drmd, create_md<CFG_DOUBLE, CFG_DOMAIN_REAL, real_double_md>)
PRIMITIVE(2, dfti_create_sc1d, create_1d<CFG_SINGLE, CFG_DOMAIN_COMPLEX, complex_single_1d>)
PRIMITIVE(3, dfti_create_scmd, create_md<CFG_SINGLE, CFG_DOMAIN_COMPLEX, complex_single_md>)
PRIMITIVE(2, dfti_create_sr1d, create_1d<CFG_SINGLE, CFG_DOMAIN_REAL, real_single_1d>)
PRIMITIVE(3, dfti_create_srmd, create_md<CFG_SINGLE, CFG_DOMAIN_REAL, real_single_md>)

} // namespace orv::dft
