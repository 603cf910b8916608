// A routine by its name, read by a parser of its own; operands of any type; and one way to call every routine.
#pragma once

#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"
#include "tests/xblas/arithmetic.h"

#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace orv::test::extended {

constexpr i64 row_major = 101, column_major = 102, no_trans = 111, trans = 112, conj_trans = 113, upper = 121,
              lower = 122, non_unit = 131, unit = 132, left = 141, right = 142, conj = 191, no_conj = 192, single = 211,
              double_ = 212, indigenous = 213, extra = 214;

// BLAS_zgemv_d_z_x: for_c, type z, op gemv, first d, second z, has_prec.
struct Member {
    std::string name, op;
    bool for_c, has_prec = false;
    char type = '?', first = '?', second = '?';

    bool is_complex() const { return type == 'c' || type == 'z'; }
    bool is_narrow() const { return type == 's' || type == 'c'; }

    explicit Member(const std::string& name) : name(name), for_c(name.starts_with("BLAS_"))
    {
        if (!for_c && !name.starts_with("blas_")) throw std::runtime_error(name);
        std::string rest = name.substr(5);
        if (rest.ends_with("_x")) has_prec = true, rest.resize(rest.size() - 2);
        type = first = second = rest[0];
        rest.erase(0, 1);
        std::vector<char> suffix;
        while (rest.size() > 2 && rest[rest.size() - 2] == '_' && std::string("sdcz").find(rest.back()) < 4) {
            suffix.insert(suffix.begin(), rest.back());
            rest.resize(rest.size() - 2);
        }
        if (!suffix.empty()) first = suffix.front();
        if (suffix.size() == 2) second = suffix.back();
        op = rest;
    }

    // The name under which it reports: that for C, in four families without the closing _x.
    std::string reported() const
    {
        std::string n = "BLAS_" + name.substr(5);
        for (const char* family : {"ge_sum_mv", "hbmv", "hemv", "trsv"})
            if (op == family && has_prec) n.resize(n.size() - 2);
        return n;
    }
    // The arithmetic for a prec.
    Arithmetic arithmetic(i64 prec) const
    {
        if (!has_prec) prec = single;
        if (prec == extra) return Arithmetic::extra;
        return prec == single && is_narrow() ? Arithmetic::single : Arithmetic::double_;
    }
    std::vector<i64> precisions() const
    {
        return has_prec ? std::vector<i64>{single, double_, indigenous, extra} : std::vector<i64>{0};
    }
};

// All operations of the list of names; one family with `op` given.
inline std::vector<Member> members(const std::string& op = "")
{
    static const std::set<std::string> service{"BLAS_error", "blas_malloc", "blas_free", "BLAS_fpinfo_x",
                                               "blas_fpinfo_x"};
    const std::string prefix = "orv_xblas_mc3_"; // the lists are those of this branch; all have the same names
    std::vector<Member> all;
    std::ifstream list(ORV_XBLAS_NAMES);
    for (std::string line; std::getline(list, line);) {
        if (!line.starts_with(prefix) || service.contains(line.substr(prefix.size()))) continue;
        Member m(line.substr(prefix.size()));
        if (op.empty() || m.op == op) all.push_back(m);
    }
    return all;
}

// n elements of a type given by its letter, against an unreadable page.
class Array {
public:
    Array(char type, i64 n, Edge edge = Edge::end)
        : type_(type), n_(n), bytes_(std::make_unique<Guarded<std::byte>>(static_cast<std::size_t>(n) * size(), edge))
    {
    }
    std::size_t size() const { return (is_complex() ? 2 : 1) * (is_narrow() ? sizeof(float) : sizeof(double)); }
    bool is_complex() const { return type_ == 'c' || type_ == 'z'; }
    bool is_narrow() const { return type_ == 's' || type_ == 'c'; }
    i64 length() const { return n_; }
    void* data() const { return bytes_->data(); }

    Element operator[](i64 i) const
    {
        Element e{part(i, 0), 0, is_complex(), is_narrow()};
        if (is_complex()) e.im = part(i, 1);
        return e;
    }
    void set(i64 i, double re, double im)
    {
        set_part(i, 0, re);
        if (is_complex()) set_part(i, 1, im);
    }
    void set_part(i64 i, int k, double value)
    {
        const i64 at = is_complex() ? 2 * i + k : i;
        if (is_narrow()) reinterpret_cast<float*>(data())[at] = static_cast<float>(value);
        else reinterpret_cast<double*>(data())[at] = value;
    }
    void fill(Random& random, i64 i) { set(i, value(random), value(random)); }
    void fill(Random& random)
    {
        for (i64 i = 0; i < n_; ++i) fill(random, i);
    }
    std::string bits() const { return {static_cast<const char*>(data()), static_cast<std::size_t>(n_) * size()}; }
    void restore(const std::string& bits) { std::memcpy(data(), bits.data(), bits.size()); }

private:
    // Sizes differ, so that sums cancel in some places and lose digits in others; zeros occur, too.
    static double value(Random& random)
    {
        const i64 kind = random.integer(0, 15);
        if (kind == 0) return 0;
        if (kind == 1) return static_cast<double>(random.integer(-2, 2));
        return std::ldexp(random.value<double>(), static_cast<int>(random.integer(-12, 12)));
    }
    double part(i64 i, int k) const
    {
        const i64 at = is_complex() ? 2 * i + k : i;
        return is_narrow() ? reinterpret_cast<const float*>(data())[at] : reinterpret_cast<const double*>(data())[at];
    }

    char type_;
    i64 n_;
    std::unique_ptr<Guarded<std::byte>> bytes_;
};

// The arguments of a call, in the order of the form for C without prec; that is added where the routine has one.
// On this platform whole numbers and pointers travel apart from floating-point numbers, each in their own order, so one
// signature calls every routine.
class Call {
public:
    explicit Call(const Member& m) : m_(m) {}

    Call& order(i64 value)
    {
        if (m_.for_c) integer(value);
        else if (value != column_major) throw std::logic_error("Fortran has one order");
        return *this;
    }
    Call& integer(i64 value) { return add(value, false); }
    Call& option(i64 value) { return add(value, false); }
    Call& scalar(const Array& value)
    {
        if (m_.for_c && !m_.is_complex()) {
            scalars_.push_back(value[0].re);
            return *this;
        }
        return pointer(value.data());
    }
    Call& array(const Array& a) { return pointer(a.data()); }
    Call& pointer(void* p) { return add(reinterpret_cast<i64>(p), true); }

    void operator()(i64 prec) const
    {
        std::vector<i64> values;
        std::vector<Word> words = words_;
        if (m_.has_prec) words.push_back({prec, false});
        for (const Word& w : words)
            values.push_back(m_.for_c || w.is_pointer ? w.value : reinterpret_cast<i64>(&w.value));
        values.resize(16);
        const std::vector<i64>& v = values;
        double alpha = scalars_.empty() ? 0 : scalars_[0], beta = scalars_.size() < 2 ? 0 : scalars_[1];
        const auto with = [&]<class R>(R a, R b) {
            using F = void(R, R, i64, i64, i64, i64, i64, i64, i64, i64, i64, i64, i64, i64, i64, i64, i64, i64);
            kernel<F>("xblas", m_.name)(a, b, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11],
                                        v[12], v[13], v[14], v[15]);
        };
        if (m_.type == 's') with(static_cast<float>(alpha), static_cast<float>(beta));
        else with(alpha, beta);
    }

private:
    struct Word {
        i64 value;
        bool is_pointer;
    };
    Call& add(i64 value, bool is_pointer) { return words_.push_back({value, is_pointer}), *this; }

    Member m_;
    std::vector<Word> words_;
    std::vector<double> scalars_;
};

} // namespace orv::test::extended
