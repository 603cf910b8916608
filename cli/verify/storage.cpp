#include "cli/verify/storage.h"

#include "cli/verify/random.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace orv::verify {
namespace {

constexpr std::size_t margin = 256; // bytes of NaN on either side
constexpr i64 most_elements = i64(1) << 26;

std::size_t real_width(char kind) { return kind == 's' || kind == 'c' ? 4 : 8; }

void fill(Array& a, const View& v, std::vector<bool>& filled, Random& random)
{
    // Rows that sum to less than the diagonal: a solution is as large as what it is solved for.
    const double scale = v.dominant ? 1 / static_cast<double>(std::max<i64>(v.rows, 1)) : 1;
    for (i64 j = 0; j < v.columns; ++j)
        for (i64 i = 0; i < v.rows; ++i) {
            const i64 p = v.at(i, j);
            if (p < 0 || filled[static_cast<std::size_t>(p)]) continue;
            filled[static_cast<std::size_t>(p)] = true;
            Number e{scale * random(), scale * random()};
            if (v.dominant && i == j) e.re += e.re < 0 ? -1 : 1;
            a.set(p, e);
        }
}

// Elements from the first to the last that any operand sees or that is preset; -1: the plan does not know the array.
i64 extent(const Plan& plan, const std::string& name)
{
    i64 end = -1;
    for (const Plan::Preset& p : plan.presets)
        if (p.array == name) end = std::max(end, p.position + 1);
    for_each_operand(plan, [&](const Operand& o) {
        const View& v = o.view;
        if (v.array != name) return;
        if (static_cast<double>(v.rows) * static_cast<double>(v.columns) > static_cast<double>(most_elements))
            throw Mistake(name + " would have more than 2^26 elements");
        end = std::max<i64>(end, 0);
        for (i64 j = 0; j < v.columns; ++j)
            for (i64 i = 0; i < v.rows; ++i) end = std::max(end, v.at(i, j) + 1);
    });
    if (end > most_elements) throw Mistake(name + " would take more than 2^26 elements, with the gaps in it");
    return end;
}

} // namespace

Array::Array(char kind, i64 n, i64 shift)
    : kind_(kind), n_(n), width_(real_width(kind) * (is_complex() ? 2 : 1)),
      now_(static_cast<std::size_t>(n) * width_ + 2 * margin + 128, std::byte(0xff))
{
    const auto base = reinterpret_cast<std::uintptr_t>(now_.data()) + margin;
    start_ = margin + (64 - base % 64) % 64 + static_cast<std::size_t>(shift) * real_width(kind);
}

Number Array::operator()(i64 i, bool after) const
{
    const std::byte* at = (after ? now_ : before_).data() + start_ + static_cast<std::size_t>(i) * width_;
    const auto pair = [&]<class R>(R) -> Number {
        R parts[2] = {};
        std::memcpy(parts, at, width_);
        return {parts[0], parts[1]};
    };
    return real_width(kind_) == 4 ? pair(0.0f) : pair(0.0);
}

void Array::set(i64 i, Number value)
{
    const auto pair = [&]<class R>(R) {
        const R parts[2] = {static_cast<R>(value.re), static_cast<R>(value.im)};
        std::memcpy(now_.data() + start_ + static_cast<std::size_t>(i) * width_, parts, width_);
    };
    if (real_width(kind_) == 4) pair(0.0f);
    else pair(0.0);
}

void Array::set_whole(i64 i, i64 value)
{
    std::memcpy(now_.data() + start_ + static_cast<std::size_t>(i) * width_, &value, sizeof value);
}

i64 Array::touched(const std::vector<bool>& may_change) const
{
    const auto same = [&](std::size_t from, std::size_t size) {
        return std::memcmp(now_.data() + from, before_.data() + from, size) == 0;
    };
    const std::size_t end = start_ + static_cast<std::size_t>(n_) * width_;
    if (same(0, now_.size())) return -2;
    if (!same(0, start_)) return -1;
    for (i64 i = 0; i < n_; ++i)
        if (!may_change[static_cast<std::size_t>(i)] && !same(start_ + static_cast<std::size_t>(i) * width_, width_))
            return i;
    return same(end, now_.size() - end) ? -2 : n_;
}

Arrays::Arrays(const Setting& setting, const Plan& plan, i64 seed, i64 shift)
{
    u64 stream = static_cast<u64>(seed);
    const auto add = [&](const std::string& name, char kind) {
        const i64 n = extent(plan, name);
        if (n < 0) return;
        Array& a = arrays_.emplace_back(name, Array(kind, n, shift)).second;
        Random random(stream += 0x632be59bd9b4e019u);
        std::vector<bool> filled(static_cast<std::size_t>(n));
        for_each_operand(plan, [&](const Operand& o) {
            if (o.view.array == name && !o.after) fill(a, o.view, filled, random);
        });
        for (const Plan::Preset& p : plan.presets)
            if (p.array == name) a.set(p.position, p.value);
    };
    for (const Argument& a : setting.arguments())
        if (a.name == "indx") {
            const i64 n = extent(plan, "x");
            Array& positions = arrays_.emplace_back(a.name, Array('i', n)).second;
            for (i64 i = 0; i < n; ++i) positions.set_whole(i, sparse_position(i));
        } else add(a.name, a.kind);
    if (setting.routine().result) add("result", setting.routine().result);
}

Array* Arrays::find(const std::string& name)
{
    for (auto& [known, array] : arrays_)
        if (known == name) return &array;
    return nullptr;
}

const Array& Arrays::at(const std::string& name) const { return *const_cast<Arrays*>(this)->find(name); }

void Arrays::remember()
{
    for (auto& [name, array] : arrays_) array.remember();
}

void Arrays::restore()
{
    for (auto& [name, array] : arrays_) array.restore();
}

Elements::Elements(const Operand& operand, const Arrays& arrays)
    : operand_(operand), array_(operand.view.array.empty() ? nullptr : &arrays.at(operand.view.array)),
      turned_(operand.op == 't' || operand.op == 'c')
{
    const View& v = operand.view;
    for (i64 k = 0; k < v.points; ++k) {
        const long double angle =
            2 * std::numbers::pi_v<long double> * static_cast<long double>(k) / static_cast<long double>(v.points);
        roots_.push_back({static_cast<double>(std::cos(angle)), static_cast<double>(v.turns * std::sin(angle))});
    }
}

Number Elements::root(i64 i, i64 j) const
{
    const View& v = operand_.view;
    const double weight = j == 0 ? v.first_weight : j == v.columns - 1 ? v.last_weight : 1;
    const Number e = roots_[static_cast<std::size_t>(v.by_rows.at(i) * v.by_columns.at(j) % v.points)];
    if (v.part != View::Part::whole) return {weight * (v.part == View::Part::real ? e.re : e.im), 0};
    return {weight * e.re, operand_.op == 'r' ? -weight * e.im : weight * e.im};
}

Number Elements::operator()(i64 i, i64 j) const
{
    const View& v = operand_.view;
    if (array_ == nullptr) return v.turns == 0 ? Number{1, 0} : root(i, j);
    const bool after = operand_.after;
    if (turned_) std::swap(i, j);
    Number e{i == j && v.unit ? 1.0 : 0.0, 0};
    if (const i64 p = v.at(i, j); p >= 0) {
        e = (*array_)(p, after);
        if (v.rest == View::Rest::hermitian && i == j && !after) e.im = 0;
    } else if (v.rest != View::Rest::zero)
        if (const i64 mirror = v.at(j, i); mirror >= 0) {
            e = (*array_)(mirror, after);
            if (v.rest == View::Rest::hermitian) e.im = -e.im;
        }
    if (operand_.op == 'a') return {std::fabs(e.re) + std::fabs(e.im), 0};
    return operand_.op == 'c' || operand_.op == 'r' ? conj(e) : e;
}

std::string Arrays::touched(const Plan& plan) const
{
    for (const auto& [name, array] : arrays_) {
        std::vector<bool> may_change(static_cast<std::size_t>(array.size()));
        for_each_operand(plan, [&](const Operand& o) {
            if (o.view.array != name || !o.after) return;
            for (i64 j = 0; j < o.view.columns; ++j)
                for (i64 i = 0; i < o.view.rows; ++i)
                    if (const i64 p = o.view.at(i, j); p >= 0) may_change[static_cast<std::size_t>(p)] = true;
        });
        const i64 at = array.touched(may_change);
        if (at == -2) continue;
        if (at < 0 || at >= array.size()) return "wrote outside of " + name;
        return "wrote to " + name + '[' + std::to_string(at) + "], which is no part of the result";
    }
    return "";
}

} // namespace orv::verify
