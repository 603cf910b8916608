// A Fourier transform of the core's, by its public names; what a program puts in their place is what is called.
#pragma once

#include "conv/view.h"
#include "frame/imports.h"
#include "frame/kernels/dft_node.h"

namespace orv::conv {

// One for both directions: of reals out of place to half spectra, or of complex numbers in place. Lengths are those of
// an array whose first index is the innermost one. It may refuse at each step, and then no further one is asked.
template <class R> class Transform {
public:
    Transform(bool of_reals, i32 rank, const i64* lengths, i64 points)
    {
        i64 outermost_first[most_dimensions];
        for (i32 d = 0; d < rank; ++d) outermost_first[d] = lengths[rank - 1 - d];
        constexpr bool is_double = sizeof(R) == 8;
        auto* const of_line = is_double ? orv_dft_dfticreatedescriptor_d_1d : orv_dft_dfticreatedescriptor_s_1d;
        auto* const of_many = is_double ? orv_dft_dfticreatedescriptor_d_md : orv_dft_dfticreatedescriptor_s_md;
        const i32 domain = of_reals ? kernels::dft::CFG_DOMAIN_REAL : kernels::dft::CFG_DOMAIN_COMPLEX;
        agree(rank == 1 ? of_line(&handle_, domain, lengths[0]) : of_many(&handle_, domain, rank, outermost_first));
        if (of_reals) {
            set(imports::dfti_placement, i32{kernels::dft::CFG_OUT_OF_PLACE});
            set(imports::dfti_packed_format, i32{kernels::dft::CFG_CCE});
            set(imports::dfti_conjugate_even_storage, i32{kernels::dft::CFG_STORE_COMPLEX});
        }
        set(imports::dfti_backward_scale, 1 / static_cast<double>(points));
        if (works_) agree(orv_dft_dfticommitdescriptor(handle_));
    }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;
    ~Transform()
    {
        if (handle_ != nullptr) orv_dft_dftifreedescriptor(&handle_);
    }

    void forward(void* from, void* to)
    {
        if (works_) agree(orv_dft_dfticomputeforward(handle_, from, to));
    }
    void backward(void* from, void* to)
    {
        if (works_) agree(orv_dft_dfticomputebackward(handle_, from, to));
    }
    bool works() const { return works_; }

private:
    void set(imports::DftiParameter parameter, auto value)
    {
        if (works_) agree(orv_dft_dftisetvalue(handle_, parameter, value));
    }
    void agree(i64 status) { works_ = works_ && orv_dft_dftierrorclass(status, 0) != 0; }

    imports::Handle handle_ = nullptr;
    bool works_ = true;
};

} // namespace orv::conv
