// The way of triangular solves and products from their arguments to the smallest blocks: work memory, levels, walks.
#pragma once

#include "blas/gemm/blocks.h"
#include "blas/level3/triangular.h"
#include "frame/kernels/blas.h"

#include <utility>

namespace orv::level3 {

// What a solve and a product ask of the general product: its block sizes, and the name for want of memory. A solve
// hands its rectangles to the product in blocks, which leaves X in place and copies it strip by strip; a product hands
// them to the whole product, which chooses for itself.
struct Plan {
    i64 mb, nb, kb;
    const char* routine;
};
template <Task task>
inline constexpr Plan plan = task == Task::solve ? Plan{0x200, 1000, 0x100, "xtrsm"} : Plan{0x280, 1000, 0x80, "xtrmm"};
inline constexpr int routine_length = 5;

// Blocks of T and columns of X, level by level.
struct Cut {
    i64 block, col_block;
};

template <class T> void multiply(const gemm::Product<T>& p, Desc<T>* desc = nullptr)
{
    if (p.m <= 0 || p.n <= 0 || p.k <= 0) return;
    if (desc == nullptr)
        return multiply(p.transa, p.transb, p.m, p.n, p.k, p.alpha, p.a, p.lda, p.b, p.ldb, p.beta, p.c, p.ldc);
    Desc<T> own = *desc; // its buffers hold the triangle; the product takes others
    constexpr const Plan& sizes = plan<Task::solve>;
    own.mb = sizes.mb, own.nb = sizes.nb, own.kb = sizes.kb;
    gemm::product_in_blocks<T>(&p.transa, &p.transb, &p.m, &p.n, &p.k, &p.alpha, p.a, &p.lda, p.b, &p.ldb, &p.beta, p.c,
                               &p.ldc, own.version, &own);
}

// Calls body(sweep) for sweeps of `width` columns of X.
template <class T, class Body> void each_sweep(const Triangular<T>& x, i64 width, const Body& body)
{
    for (i64 j = 0, count; j < x.others; j += count) {
        count = sweep_of(x.others - j, width);
        body(x.sweep(j, count));
    }
}

// One level: sweeps over columns of X, in each a walk over the blocks of T.
template <Task task, class T> void walk_level(const Triangular<T>& x, const Levels<T>& levels)
{
    const Level<T>& level = levels.here();
    const bool deeper = levels.at < levels.last && levels.level[levels.last].block < x.order, lower = x.lower();
    const i64 pieces = (x.order + level.block - 1) / level.block;
    each_sweep(x, level.col_block, [&](const Triangular<T>& sweep) {
        for (i64 s = 0; s < pieces; ++s) {
            const i64 nth = task == Task::solve ? s : pieces - 1 - s;
            const Piece p = piece_of(lower, x.order, nth * level.block, level.block);
            const auto diagonal = [&] {
                const Triangular<T> block = sweep.block(p.from, p.size);
                if (deeper) walk_level<task>(block, levels.next());
                else last_level<task>(block, level.a_work, level.strip);
            };
            // What the block's rows get from those before it in the walk of a solve, or what those behind it get.
            const auto product = [&] {
                constexpr T f = factor_of_rectangles<task, T>;
                multiply(level.order == 0 ? sweep.rectangle(p.from, p.size, p.done_from, p.done, f)
                                          : sweep.rectangle(p.left_from, p.left, p.from, p.size, f),
                         levels.desc);
            };
            if ((task == Task::solve) == (level.order == 0)) product(), diagonal();
            else diagonal(), product();
        }
    });
}

// B := alpha*B, but for an alpha of 1.
template <class T> void scale(const Triangular<T>& x, T alpha)
{
    if (alpha != one<T>) gemm::mscale(x.rows(), x.columns(), alpha, x.b, x.ldb);
}

// The work block: areas of a product in full blocks, whatever the size of the operands.
template <Task task, class T> struct WorkBlock {
    using Bytes = gemm::AreaBytes;
    static constexpr const gemm::Sizes& s = gemm::sizes<T>;
    static constexpr Bytes bytes{round_up(plan<task>.mb, s.m_unit), round_up(plan<task>.nb, s.n_unit),
                                 round_up(plan<task>.kb, s.k_unit), sizeof(T), s.n_unit* s.scratch_factor};
    static constexpr i64 all = gemm::room(bytes.a, Bytes::page_shift) + gemm::room(bytes.scratch, Bytes::line_shift) +
                               gemm::room(bytes.b, Bytes::page_shift);

    i32 kernel;
    T *a, *scratch, *b;

    WorkBlock(i32 best_kernel, void* block) : kernel(best_kernel)
    {
        auto front = reinterpret_cast<std::uintptr_t>(block);
        const auto take = [&](i64 size, i64 shift) {
            front = (front + (1 << shift) - 1) >> shift << shift;
            return reinterpret_cast<T*>(std::exchange(front, front + size));
        };
        a = take(bytes.a, Bytes::page_shift);
        scratch = take(bytes.scratch, Bytes::line_shift);
        b = take(bytes.b, Bytes::page_shift);
    }
};

// What x?trsm and x?trmm return, as x?gemm_par does: the caller that has to tell its own caller need not listen to the
// service layer, which may be another's.
using kernels::blas::Done;

// Runs body(work); false, and nothing done, if there is no memory. The kernel is chosen before the memory is taken.
template <Task task, class T, class Body> bool with_work_block(const Body& body)
{
    const i32 kernel = gemm::best_kernel<T>();
    void* const block = orv_serv_allocate(WorkBlock<task, T>::all, 128);
    if (orv_serv_check_ptr(block, plan<task>.routine, routine_length) != 0) return false;
    body(WorkBlock<task, T>(kernel, block));
    orv_serv_deallocate(block);
    return true;
}

// The walk from level `first` on. One block needs no levels.
template <Task task, class T, int count>
void walk(const Triangular<T>& x, const Cut (&cuts)[count], i64 first, const WorkBlock<task, T>& work)
{
    if (x.order <= cuts[count - 1].block)
        return each_sweep(x, cuts[first].col_block,
                          [&](const Triangular<T>& sweep) { last_level<task>(sweep, work.a, work.scratch); });
    const bool gives = (x.form.op == Op::none) == x.right;
    Level<T> levels[count];
    for (int i = 0; i < count; ++i) levels[i] = {cuts[i].block, cuts[i].col_block, gives, work.a, work.b, work.scratch};
    if constexpr (task == Task::solve) {
        Desc<T> desc;
        gemm::zero_desc(&desc);
        gemm::get_kernel(work.kernel, &desc);
        desc.version = gemm::b_unpacked;
        walk_level<task>(x, Levels<T>{levels, first, count - 1, &desc});
    } else walk_level<task>(x, Levels<T>{levels, first, count - 1, nullptr});
}

// The first level whose block fits a condition, level 0 if none does.
template <int count, class Fits> i64 first_level(const Cut (&cuts)[count], const Fits& fits)
{
    for (int i = 0; i < count; ++i)
        if (fits(cuts[i].block)) return i;
    return 0;
}

// ?trsm_left and its siblings: one level; ?trsm_left_ker: the last. The sides take the same arguments.
#define TRIANGULAR_LEVEL(name, T, task, side, is_right)                                                                \
    ORV_EXPORT void BLAS(name##_##side)(TRIANGULAR_FLAGS, TRIANGULAR_OPERANDS(T), const Level<T>* levels,              \
                                        const i64* level, const i64* last, Desc<T>* desc)                              \
    {                                                                                                                  \
        walk_level<Task::task>(                                                                                        \
            Triangular<T>::of(is_right, form_of_flags<T>(upper, is_n, is_t, diag), *m, *n, a, *lda, b, *ldb),          \
            {levels, *level, *last, desc});                                                                            \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(name##_##side##_ker)(TRIANGULAR_FLAGS, TRIANGULAR_OPERANDS(T), const Level<T>* levels,        \
                                              const i64* level)                                                        \
    {                                                                                                                  \
        last_level<Task::task>(                                                                                        \
            Triangular<T>::of(is_right, form_of_flags<T>(upper, is_n, is_t, diag), *m, *n, a, *lda, b, *ldb),          \
            levels[*level].a_work, levels[*level].strip);                                                              \
    }

} // namespace orv::level3
