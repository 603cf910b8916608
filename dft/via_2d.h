// A long transform of one dimension as two short ones: the matrix x[j1][j2] of n1 rows of n2 points is transformed
// along its columns, twisted by exp(-2*pi*i*k1*j2/(n1*n2)), then along its rows, and leaves transposed, X[k2][k1].
#pragma once

#include "dft/node.h"
#include "frame/kernels/dft_compute.h"
#include "frame/kernels/trans.h"

namespace orv::dft {

// What belongs to an element type.
template <class R> struct Via2d;
#define ORV_DFT_VIA_2D(R, d, z, dz, zd, t, tc)                                                                         \
    template <> struct Via2d<R> {                                                                                      \
        static constexpr auto& create = DFT(dfti_create_##d##c1d);                                                     \
        static constexpr auto& transpose_in_place = kernels::trans::TRANS(z##imatcopy);                                \
        static constexpr auto& transpose = kernels::trans::TRANS(z##omatcopy);                                         \
        static constexpr auto& gather = DFT(gather_##z##_##z);                                                         \
        static constexpr auto& scatter = DFT(scatter_##z##_##z);                                                       \
        static constexpr auto& scale = DFT(dft_##z##d##scal);                                                          \
        static constexpr auto& steps_1_2 = DFT(x##z##_4step_1_2);                                                      \
        static constexpr auto& step_3 = DFT(x##z##_4step_3);                                                           \
    };
ORV_DFT_PRECISIONS(ORV_DFT_VIA_2D)
#undef ORV_DFT_VIA_2D

inline constexpr i64 block_rows = 16;      // are staged and transformed while they are in cache
inline constexpr i64 work_alignment = 64;  // of blocks, tables and work arrays
inline constexpr i64 mirrored_entries = 8; // of the table, so that a register may reach below its begin

// A block of memory for the time of a call.
template <class T> class Scratch {
public:
    explicit Scratch(i64 count)
        : begin_(count > 0 ? static_cast<T*>(orv_serv_allocate(count * static_cast<i64>(sizeof(T)), work_alignment))
                           : nullptr),
          missing_(count > 0 && begin_ == nullptr)
    {
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch()
    {
        if (begin_ != nullptr) orv_serv_deallocate(begin_);
    }
    bool missing() const { return missing_; }
    T* begin() const { return begin_; }

private:
    T* begin_;
    bool missing_;
};

} // namespace orv::dft
