// The sides of a rectangle (2 axes) or of a box (3), and what a solve does with what is told of u there.
#pragma once

#include "pde/poisson/state.h"

namespace orv::pdepl {

// The points of f, x fastest, as layers across one axis.
template <class T, int axes> class Grid {
public:
    Grid(const State<T>& state, T* f) : f_(f)
    {
        i64 stride = 1;
        for (int axis = 0; axis < axes; ++axis) {
            cells_[axis] = state.cells(axis), stride_[axis] = stride;
            stride *= cells_[axis] + 1;
        }
    }

    i64 cells(int axis) const { return cells_[axis]; }

    // each(element, value) for all points of a layer, with the values that stand in the order of the layer's points.
    template <class Each> void layer(int axis, i64 index, const T* values, Each each) const
    {
        const int inner = axis == 0 ? 1 : 0, outer = axis == 2 ? 1 : 2;
        const i64 rows = axes == 3 ? cells_[outer] + 1 : 1, row = axes == 3 ? stride_[outer] : 0;
        const i64 points = cells_[inner] + 1;
        T* at = f_ + index * stride_[axis];
        for (i64 k = 0; k < rows; ++k, at += row)
            for (i64 i = 0; i < points; ++i)
                each(at[i * stride_[inner]], values == nullptr ? T(0) : values[k * points + i]);
    }

private:
    T* f_;
    i64 cells_[3] = {0, 0, 0}, stride_[3] = {0, 0, 0};
};

// The values of all sides, in the order ax, bx, ay, by, az, bz; null stands for zeros.
template <class T, int axes> struct Sides {
    const T* values[2 * axes];
};

// Adds to the right-hand side what is known of u on the sides. The scheme along an axis of step h is
// (2u[i] - u[i-1] - u[i+1])/h^2, here times the square of the last axis' step. A value given by Dirichlet goes to the
// other side of the neighbour's equation; at a Neumann end u[-1] = u[1] + 2h*du, with du the derivative outwards.
template <class T, int axes> void bring_in_sides(const State<T>& state, T* f, const Sides<T, axes>& sides)
{
    const Grid<T, axes> grid(state, f);
    const T last = state.dpar[dpar_steps + axes - 1];
    for (int side = 0; side < 2 * axes; ++side) {
        const T* const values = sides.values[side];
        const i64 kind = state.ipar[ipar_sides + side];
        if (values == nullptr || kind == periodic) continue;
        const int axis = side / 2, high = side % 2;
        const i64 n = grid.cells(axis);
        const T step = state.dpar[dpar_steps + axis], ratio = last / step;
        if (kind == neumann) {
            const T by = 2 * last * ratio;
            grid.layer(axis, high ? n : 0, values, [=](T& element, T value) { element += by * value; });
        } else {
            // A neighbour that is itself a Neumann end meets this side from both hands.
            const bool twice = n == 1 && state.ipar[ipar_sides + (side ^ 1)] == neumann;
            const T by = ratio * ratio * (twice ? 2 : 1);
            grid.layer(axis, high ? n - 1 : 1, values, [=](T& element, T value) { element += by * value; });
        }
    }
}

// Puts the values of Dirichlet sides into the solution; a later side wins at edges and corners.
template <class T, int axes> void write_sides(const State<T>& state, T* f, const Sides<T, axes>& sides)
{
    const Grid<T, axes> grid(state, f);
    for (int side = 0; side < 2 * axes; ++side)
        if (state.ipar[ipar_sides + side] == dirichlet)
            grid.layer(side / 2, side % 2 ? grid.cells(side / 2) : 0, sides.values[side],
                       [](T& element, T value) { element = value; });
}

} // namespace orv::pdepl
