// A solve: what the user has in any layout becomes what kernels take, and back.
#include "core/pde/poisson.h"
#include "core/serv/status.h"
#include "frame/serv.h"

#include <cmath>
#include <cstring>
#include <type_traits>

using namespace orv;
using namespace orv::core;
using namespace orv::core::pde;

namespace {

template <class T> using SideOf = std::conditional_t<std::is_same_v<T, double>, orv_dpoisson_side, orv_spoisson_side>;

// Work memory cut in pieces, each on a boundary of a cache line.
class Pieces {
public:
    explicit Pieces(i64 bytes) : block_(static_cast<char*>(orv_serv_allocate(bytes, alignment))), next_(block_) {}
    Pieces(const Pieces&) = delete;
    Pieces& operator=(const Pieces&) = delete;
    ~Pieces() { orv_serv_deallocate(block_); }

    bool are_there() const { return block_ != nullptr; }
    template <class T> T* take(i64 count)
    {
        T* const piece = reinterpret_cast<T*>(next_);
        next_ += bytes<T>(count);
        return piece;
    }
    template <class T> static constexpr i64 bytes(i64 count)
    {
        return round_up(count * static_cast<i64>(sizeof(T)), alignment);
    }

private:
    static constexpr i64 alignment = 128;
    char *block_, *next_;
};

template <class T> class Solve {
public:
    Solve(const orv_poisson& p, T* u, const i64* strides) : p_(p), user_(u)
    {
        i64 stride = 1;
        for (int k = 0; k < p.axes; ++k) {
            cells_[k] = p.axis[k].n, own_[k] = stride;
            stride *= cells_[k] + 1;
            strides_[k] = strides == nullptr ? own_[k] : strides[k];
            in_place_ &= strides_[k] == own_[k];
        }
    }

    i64 bytes(const SideOf<T>* sides) const
    {
        i64 all = Pieces::bytes<T>(p_.dpar_size) + (in_place_ ? 0 : Pieces::bytes<T>(p_.points()));
        for (int side = 0; side < 2 * p_.axes; ++side)
            if (is_told(sides, side)) all += Pieces::bytes<T>(points_of(side));
        return all;
    }

    orv_status run(const SideOf<T>* sides, double* misfit)
    {
        Pieces pieces(bytes(sides));
        if (!pieces.are_there()) return fail(ORV_NO_MEMORY, "no memory is left for solving a Poisson problem");
        T* const dpar = pieces.take<T>(p_.dpar_size);
        std::memcpy(dpar, p_.dpar, static_cast<std::size_t>(p_.dpar_size) * sizeof(T));
        for (int side = 0; side < 2 * p_.axes; ++side)
            if (is_told(sides, side)) values_[side] = pack(pieces.take<T>(points_of(side)), sides[side], side);
        f_ = in_place_ ? user_ : pieces.take<T>(p_.points());
        if (!in_place_) each_point([](T& own, T& user) { own = user; });

        double off = 0;
        if (p_.is_up_to_constant)
            if (const auto status = measure(off)) return status;
        if (p_.is_sphere) bring_in_sides_of_sphere();
        const orv_status status = solve_with(dpar);
        if (status != ORV_OK) return status;
        if (p_.is_sphere) write_sides_of_sphere();
        if (!in_place_) each_point([](T& own, T& user) { user = own; });
        if (misfit != nullptr) *misfit = off;
        return ORV_OK;
    }

private:
    bool is_told(const SideOf<T>* sides, int side) const
    {
        const int kind = p_.side(side);
        return sides != nullptr && sides[side].values != nullptr && (kind == ORV_DIRICHLET || kind == ORV_NEUMANN);
    }
    i64 points_of(int side) const { return p_.points() / (cells_[side / 2] + 1); }
    int inner_axis(int side) const { return side / 2 == 0 ? 1 : 0; }

    // The values of a side without gaps.
    const T* pack(T* to, const SideOf<T>& from, int side) const
    {
        const i64 inner = cells_[inner_axis(side)] + 1, outer = points_of(side) / inner;
        for (i64 k = 0; k < outer; ++k)
            for (i64 j = 0; j < inner; ++j) to[k * inner + j] = from.values[j * from.stride[0] + k * from.stride[1]];
        return to;
    }

    template <class Each> void each_point(Each each)
    {
        for (i64 k = 0; k <= cells_[2]; ++k)
            for (i64 j = 0; j <= cells_[1]; ++j)
                for (i64 i = 0; i <= cells_[0]; ++i)
                    each(f_[i + j * own_[1] + k * own_[2]], user_[i * strides_[0] + j * strides_[1] + k * strides_[2]]);
    }

    // What keeps a problem that is open by a constant from being solvable: the sum of all equations, each with the part
    // of a cell that its point stands for, over the sum of these parts.
    orv_status measure(double& off) const
    {
        double sum = 0, magnitudes = 0, parts = 0;
        const auto add = [&](double part, double value) {
            sum += part * value, magnitudes += part * std::fabs(value), parts += part;
        };
        if (p_.is_sphere) each_part_of_sphere(add);
        else each_part_of_box(add);
        off = sum / parts;
        if (!(std::fabs(sum) <= p_.tolerance * magnitudes))
            return fail(ORV_NOT_SOLVABLE,
                        "f and what flows in through the sides do not cancel: their mean is %g, and has to be 0 within "
                        "%g; take the "
                        "mean off f, or allow more by orv_poisson_set_tolerance",
                        off, p_.tolerance * magnitudes / parts);
        return ORV_OK;
    }
    template <class Add> void each_part_of_box(Add add) const
    {
        for (i64 k = 0; k <= cells_[2]; ++k)
            for (i64 j = 0; j <= cells_[1]; ++j)
                for (i64 i = 0; i <= cells_[0]; ++i) {
                    const i64 at[] = {i, j, k};
                    double part = 1, flow = 0;
                    for (int axis = 0; axis < p_.axes; ++axis) {
                        const i64 n = cells_[axis];
                        if (at[axis] != 0 && at[axis] != n) continue;
                        if (p_.axis[axis].low == ORV_PERIODIC) part *= at[axis] == 0;
                        else flow += 2 * value_at(2 * axis + (at[axis] == n), at) / p_.step(axis), part /= 2;
                    }
                    if (part > 0) add(part, static_cast<double>(f_[i + j * own_[1] + k * own_[2]]) + flow);
                }
    }
    double value_at(int side, const i64* at) const
    {
        if (values_[side] == nullptr) return 0;
        const int axis = side / 2, inner = inner_axis(side), outer = axis == 2 ? 1 : 2;
        return static_cast<double>(values_[side][at[inner] + at[outer] * (cells_[inner] + 1) * (p_.axes == 3)]);
    }
    template <class Add> void each_part_of_sphere(Add add) const
    {
        const i64 last = cells_[1];
        for (i64 j = 1; j < last; ++j)
            for (i64 i = 0; i < cells_[0]; ++i) {
                // Beside a pole a row stands for the pole's cap too.
                const double caps = (j == 1 ? 0.125 : 0) + (j == last - 1 ? 0.125 : 0);
                add(sine(j) * (1 + caps), static_cast<double>(f_[i + j * own_[1]]));
            }
    }

    double sine(i64 j) const { return std::sin(p_.axis[1].a + static_cast<double>(j) * p_.step(1)); }

    // Kernels know spheres whose sides are 0: given values go to the equations beside them.
    void bring_in_sides_of_sphere()
    {
        const i64 np = cells_[0], nt = cells_[1];
        for (const int high : {0, 1}) {
            if (const T* const theta = values_[2 + high]) {
                const i64 j = high ? nt - 1 : 1, end = high ? nt : 0;
                const double by = (sine(j) + sine(end)) / (2 * sine(j) * p_.step(1) * p_.step(1));
                for (i64 i = 0; i <= np; ++i) f_[i + j * own_[1]] += static_cast<T>(by * static_cast<double>(theta[i]));
            }
            if (const T* const phi = values_[high]) {
                const i64 i = high ? np - 1 : 1;
                for (i64 j = 1; j < nt; ++j) {
                    const double width = p_.step(0) * sine(j);
                    f_[i + j * own_[1]] += static_cast<T>(static_cast<double>(phi[j]) / (width * width));
                }
            }
        }
    }
    void write_sides_of_sphere()
    {
        const i64 np = cells_[0], nt = cells_[1];
        for (int side = 0; side < 4; ++side) {
            const T* const values = values_[side];
            if (values == nullptr) continue;
            T* const at = f_ + (side == 1 ? np : side == 3 ? nt * own_[1] : 0);
            for (i64 k = 0; k < points_of(side); ++k) at[k * own_[inner_axis(side)]] = values[k];
        }
    }

    orv_status solve_with(T* dpar)
    {
        constexpr i64 tables_are_made = 9;
        i64 ipar[ipar_size];
        std::memcpy(ipar, p_.ipar, sizeof ipar);
        Handle handles[] = {p_.handles[0], p_.handles[1]};
        ipar[ipar_status] = tables_are_made;
        ipar[ipar_threads] = available_threads();
        last_loop_status = good;
        i64 status = commit<T>(p_, f_, values_, handles, ipar, dpar);
        if (status == good) status = solve<T>(p_, f_, values_, handles, ipar, dpar);
        if (status == good || status == singular) return ORV_OK;
        if (last_loop_status == loop_resonance)
            return fail(ORV_RESONANCE, "with q = %.17g the equation has no unique solution on this grid, to rounding",
                        p_.q);
        if (last_loop_status == loop_failed)
            return fail(ORV_INTERNAL_ERROR, "a transform of a Poisson solver failed: a fault of orv itself");
        return fail(ORV_NO_MEMORY, "memory ran out while a Poisson problem was solved; what it was solved in is lost");
    }

    const orv_poisson& p_;
    T *user_, *f_ = nullptr;
    i64 cells_[3] = {0, 0, 0}, own_[3] = {0, 0, 0}, strides_[3] = {0, 0, 0};
    bool in_place_ = true;
    const T* values_[6] = {};
};

template <class T>
orv_status solve_poisson(const char* routine, const orv_poisson* p, T* u, const i64* strides, const SideOf<T>* sides,
                         double* misfit)
{
    if (p == nullptr) return bad_argument(routine, 1, "null");
    if (p->precision != precision_code<T>) return bad_argument(routine, 1, "the solver is of the other precision");
    if (u == nullptr) return bad_argument(routine, 2, "null");
    for (int k = 0; strides != nullptr && k < p->axes; ++k)
        if (strides[k] == 0) return bad_argument(routine, 3, "the stride of axis %d is 0", k);
    return Solve<T>(*p, u, strides).run(sides, misfit);
}

} // namespace

orv_status orv_dpoisson_solve(const orv_poisson* p, double* u, const int64_t* strides, const orv_dpoisson_side* sides,
                              double* misfit)
{
    return solve_poisson("orv_dpoisson_solve", p, u, strides, sides, misfit);
}
orv_status orv_spoisson_solve(const orv_poisson* p, float* u, const int64_t* strides, const orv_spoisson_side* sides,
                              double* misfit)
{
    return solve_poisson("orv_spoisson_solve", p, u, strides, sides, misfit);
}
