// The way of a solve through the core's loops over the grid: forward transforms, tridiagonal systems, backward
// transforms, each on one parameter block.
#pragma once

#include "pde/poisson/state.h"

#include "frame/serv.h"

namespace orv::pdepl {

// By the number of a pair of sides; null: there is no such pair.
inline constexpr i64 pairs = pp + 1;
template <class Loop> using ByPair = Loop* const[pairs];
#define ORV_BY_PAIR(before)                                                                                            \
    {                                                                                                                  \
        before##_dd, before##_dn, before##_nd, before##_nn, nullptr, nullptr, before##_pp                              \
    }

template <class Loop> Loop* loop_of(ByPair<Loop>& loops, i64 pair)
{
    return pair >= 0 && pair < pairs ? loops[pair] : nullptr;
}

template <class T> struct Loops;
#define ORV_LOOPS(t, T)                                                                                                \
    template <> struct Loops<T> {                                                                                      \
        static constexpr ByPair<Loop<T>> forward = ORV_BY_PAIR(orv_pdepl_##t##_ft_2d),                                 \
                                         systems = ORV_BY_PAIR(orv_pdepl_##t##_lu_2d),                                 \
                                         backward = ORV_BY_PAIR(orv_pdepl_##t##_inv_ft_2d);                            \
        static constexpr ByPair<LoopOfBox<T>> forward_x = ORV_BY_PAIR(orv_pdepl_##t##_ft_3d_x),                        \
                                              forward_y = ORV_BY_PAIR(orv_pdepl_##t##_ft_3d_y),                        \
                                              systems_of_box = ORV_BY_PAIR(orv_pdepl_##t##_lu_3d),                     \
                                              backward_y = ORV_BY_PAIR(orv_pdepl_##t##_inv_ft_3d_y),                   \
                                              backward_x = ORV_BY_PAIR(orv_pdepl_##t##_inv_ft_3d_x);                   \
        static constexpr LoopOfSphere<T>*const to_poles = orv_pdepl_##t##_lu_sph_2d_pp,                                \
                                               *const between = orv_pdepl_##t##_lu_sph_2d_dd;                          \
    };
ORV_LOOPS(s, float)
ORV_LOOPS(d, double)
#undef ORV_LOOPS

// Runs one after another until one fails; false then, with the message told.
template <class T, class Block> class Way {
public:
    Way(const State<T>& state, Block* block) : state_(state), block_(block) {}
    template <class Loop> Way& then(Loop* loop, i64 diagnostic, const char* what = "")
    {
        if (!good_) return *this;
        loop(block_);
        good_ = block_->status >= 0;
        if (!good_) state_.report(diagnostic, what);
        return *this;
    }
    bool good() const { return good_; }

private:
    const State<T>& state_;
    Block* block_;
    bool good_ = true;
};

inline constexpr char of_systems[] = "solving the tridiagonal systems";

// A block with all its words 0, given back at the end; null if there is no memory.
template <class Block> class Lent {
public:
    Lent() : block_(static_cast<Block*>(orv_serv_malloc(sizeof(Block), 64)))
    {
        static_assert(sizeof(Block) % sizeof(i64) == 0);
        auto* const words = reinterpret_cast<volatile i64*>(block_);
        if (words != nullptr)
            for (std::size_t i = 0; i < sizeof(Block) / sizeof(i64); ++i) words[i] = 0;
    }
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;
    ~Lent() { orv_serv_free(block_); }

    Block* get() const { return block_; }
    Block* operator->() const { return block_; }

private:
    Block* block_;
};

} // namespace orv::pdepl
