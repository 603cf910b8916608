// The loops over a grid that the kernels of Helmholtz solvers ask for. All rows of a grid are transformed, those on
// sides too: what stands there is no unknown and meets none, and a solve writes it anew.
#include "core/pde/rows.h"
#include "core/pde/systems.h"
#include "frame/export.h"

namespace orv::core::pde {

constinit thread_local i64 last_loop_status = good;

namespace {

template <class T> void rows(Block<T>* block, i64 pair, Direction direction)
{
    finish(block, transform_rows(block->ipar, block->dpar, block->handle, pair, direction, block->f, block->nx,
                                 block->ny + 1));
}
template <class T> void rows_of_box(BlockOfBox<T>* block, i64 pair, Direction direction)
{
    finish(block, transform_rows(block->ipar, block->dpar, block->handle, pair, direction, block->f, block->nx,
                                 (block->ny + 1) * (block->nz + 1)));
}
template <class T> void columns_of_box(BlockOfBox<T>* block, i64 pair, Direction direction)
{
    finish(block, transform_columns(block->ipar, block->dpar, block->y_handle, pair, direction, block->f, block->nx,
                                    block->ny, block->nz + 1));
}

i64 pair_at(const i64* ipar, int axis) { return pair_of(ipar[ipar_sides + 2 * axis], ipar[ipar_sides + 2 * axis + 1]); }

// Systems along an axis of n cells whose points are `stride` elements apart, for waves in a layer of `layers` rows of
// x. added(layer): what a layer adds to the spectrum of x, and where it begins.
template <class T, class Layer>
i64 solve_layers(const i64* ipar, const T* spectrum, i64 nx, i64 layers, i64 n, i64 stride, i64 pair,
                 double gain_of_all, bool has_singular, Layer layer)
{
    const Waves x = waves(pair_at(ipar, 0), nx);
    const i64 strips = (x.end - x.first + strip<T> - 1) / strip<T>;
    if (strips < 1) return good;
    const Systems<T> systems(pair, n, stride, static_cast<T>(1 / gain_of_all));
    FirstFailure failure;
    share(ipar, layers * strips, 8. * static_cast<double>(n * strip<T>), [&](i64 begin, i64 end) {
        auto* const work = static_cast<T*>(orv_serv_allocate(Systems<T>::work(n) * static_cast<i64>(sizeof(T)), 128));
        if (work == nullptr) return failure.note(loop_no_memory);
        T d[strip<T>];
        for (i64 part = begin; part < end; ++part) {
            const auto [at, added] = layer(part / strips);
            const i64 first = x.first + part % strips * strip<T>, width = min(strip<T>, x.end - first);
            for (i64 i = 0; i < width; ++i) d[i] = spectrum[x.entry(first + i)] + added;
            failure.note(systems.solve(at + first, d, width, has_singular && part == 0, work));
        }
        orv_serv_deallocate(work);
    });
    return failure.status();
}

template <class T> struct LayerOf {
    T *at, added;
};

template <class T> void systems(Block<T>* block, i64 pair)
{
    const double gain_of_all = gain(pair_at(block->ipar, 0), block->nx);
    finish(block, solve_layers(block->ipar, block->spectrum, block->nx, 1, block->ny, block->nx + 1, pair, gain_of_all,
                               block->singular != 0, [=](i64) {
                                   return LayerOf<T>{block->f, 0};
                               }));
}

template <class T> void systems_of_box(BlockOfBox<T>* block, i64 pair)
{
    const i64 y_pair = pair_at(block->ipar, 1), row = block->nx + 1, plane = row * (block->ny + 1);
    const Waves y = waves(y_pair, block->ny);
    const T* const y_spectrum = dpar_at(block->ipar, block->dpar, ipar_spectrum_y);
    const double gain_of_all = gain(pair_at(block->ipar, 0), block->nx) * gain(y_pair, block->ny);
    finish(block, solve_layers(block->ipar, block->spectrum, block->nx, y.end - y.first, block->nz, plane, pair,
                               gain_of_all, block->singular != 0, [=](i64 layer) {
                                   const i64 place = y.first + layer;
                                   return LayerOf<T>{block->f + place * row, y_spectrum[y.entry(place)]};
                               }));
}

} // namespace
} // namespace orv::core::pde

using namespace orv;
using namespace orv::core::pde;

#define LOOPS(t, T, pair)                                                                                              \
    ORV_EXPORT void orv_pdepl_##t##_ft_2d_##pair(Block<T>* block) { rows(block, pair, Direction::forward); }           \
    ORV_EXPORT void orv_pdepl_##t##_inv_ft_2d_##pair(Block<T>* block) { rows(block, pair, Direction::backward); }      \
    ORV_EXPORT void orv_pdepl_##t##_lu_2d_##pair(Block<T>* block) { systems(block, pair); }                            \
    ORV_EXPORT void orv_pdepl_##t##_ft_3d_x_##pair(BlockOfBox<T>* block)                                               \
    {                                                                                                                  \
        rows_of_box(block, pair, Direction::forward);                                                                  \
    }                                                                                                                  \
    ORV_EXPORT void orv_pdepl_##t##_ft_3d_y_##pair(BlockOfBox<T>* block)                                               \
    {                                                                                                                  \
        columns_of_box(block, pair, Direction::forward);                                                               \
    }                                                                                                                  \
    ORV_EXPORT void orv_pdepl_##t##_lu_3d_##pair(BlockOfBox<T>* block) { systems_of_box(block, pair); }                \
    ORV_EXPORT void orv_pdepl_##t##_inv_ft_3d_y_##pair(BlockOfBox<T>* block)                                           \
    {                                                                                                                  \
        columns_of_box(block, pair, Direction::backward);                                                              \
    }                                                                                                                  \
    ORV_EXPORT void orv_pdepl_##t##_inv_ft_3d_x_##pair(BlockOfBox<T>* block)                                           \
    {                                                                                                                  \
        rows_of_box(block, pair, Direction::backward);                                                                 \
    }
#define ALL_LOOPS(t, T) LOOPS(t, T, dd) LOOPS(t, T, dn) LOOPS(t, T, nd) LOOPS(t, T, nn) LOOPS(t, T, pp)
ALL_LOOPS(s, float)
ALL_LOOPS(d, double)

ORV_EXPORT i64 orv_pdepl_pl_get_max_thread() { return core::available_threads(); }
