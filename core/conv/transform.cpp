// A piece computes z[j] = sum over k of x[k] * y[t - k] for t = first + j*step as a circular convolution: output j
// comes out in place j*step, so y[i] goes to place i - first, around the end if need be, and x[k] to place k.
#include "core/conv/transform.h"

#include "core/branch/kernel.h"
#include "core/conv/ran.h"
#include "core/conv/types.h"
#include "core/team/team.h"
#include "frame/kernels/dft_primitives.h"
#include "frame/serv.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <type_traits>

namespace orv::core::conv {
namespace {

// An array as a run walks it: element i stands at at + i*step in each dimension.
template <class T> struct Walk {
    T* at;
    i64 step[ORV_CONV_MAX_RANK];

    // A stride below 0 has the last one first.
    Walk(T* array, int rank, const i64* shape, const Strides& strides) : at(array), step{}
    {
        for (int d = 0; d < rank; ++d) {
            step[d] = strides.step[d];
            if (step[d] < 0) at -= (shape[d] - 1) * step[d];
        }
    }
    void reverse(int rank, const i64* shape)
    {
        for (int d = 0; d < rank; ++d) at += (shape[d] - 1) * step[d], step[d] = -step[d];
    }
};

// A number in the precision of another one.
template <class To, class From> To as(From v)
{
    if constexpr (is_complex<To>) return {static_cast<real_t<To>>(v.re), static_cast<real_t<To>>(v.im)};
    else return static_cast<To>(v);
}

template <class From, class To> void copy_line(const From* from, i64 from_step, To* to, i64 to_step, i64 count)
{
    if (from_step == 1 && to_step == 1)
        for (i64 i = 0; i < count; ++i) to[i] = as<To>(from[i]);
    else
        for (i64 i = 0; i < count; ++i) to[i * to_step] = as<To>(from[i * from_step]);
}

// Products of spectra, by the primitives of the branch, which count in 32 bits.
template <class R> struct Products;
#define ORV_CONV_PRODUCTS(R, t)                                                                                        \
    template <> struct Products<R> {                                                                                   \
        static inline constinit Kernel kernel{kernels::dft::ympsMul_##t##_I()};                                        \
    };
ORV_CONV_PRODUCTS(float, 32fc)
ORV_CONV_PRODUCTS(double, 64fc)
#undef ORV_CONV_PRODUCTS

// The array that a transform works in: signal or spectrum, of which reals have half; lines of reals are padded.
template <class Sum> class Field {
public:
    Field(int rank, const Cut& cut) : rank_(rank), length_(cut.length)
    {
        const i64 line = is_complex<Sum> ? length_[0] : length_[0] / 2 * 2 + 2;
        volume_[0] = 1, volume_[1] = line;
        for (int d = 1; d < rank; ++d) volume_[d + 1] = volume_[d] * length_[d];
        const i64 bytes = volume_[rank] * static_cast<i64>(sizeof(Sum));
        data_ = static_cast<Sum*>(orv_serv_allocate(bytes, 128));
    }
    Field(const Field&) = delete;
    Field& operator=(const Field&) = delete;
    ~Field()
    {
        if (data_ != nullptr) orv_serv_deallocate(data_);
    }
    Sum* data() const { return data_; }

    // Elements from first[d] up to end[d] to places that begin at place[d]; zeros elsewhere.
    template <class Data> void pack(const Walk<const Data>& from, const i64* first, const i64* end, const i64* place)
    {
        std::memset(static_cast<void*>(data_), 0, static_cast<std::size_t>(volume_[rank_]) * sizeof(Sum));
        const Data* at = from.at;
        for (int d = 0; d < rank_; ++d) at += first[d] * from.step[d];
        const auto count = [=](int d) { return end[d] - first[d]; };
        pack(rank_ - 1, from, at, count, place, data_);
    }

    // Places 0, step, ... to elements from first[d] on, count[d] of them.
    template <class Data> void unpack(const Walk<Data>& to, const i64* first, const i64* count, const i64* step) const
    {
        Data* at = to.at;
        for (int d = 0; d < rank_; ++d) at += first[d] * to.step[d];
        unpack(rank_ - 1, to, at, count, step, data_);
    }

    bool multiply_by(const Field& x)
    {
        using R = real_t<Sum>;
        constexpr i64 most = 1 << 20;
        auto* const kernel = Products<R>::kernel.get();
        if (kernel == nullptr) return false;
        const auto* const from = reinterpret_cast<const cpx<R>*>(x.data_);
        auto* const to = reinterpret_cast<cpx<R>*>(data_);
        const i64 numbers = is_complex<Sum> ? volume_[rank_] : volume_[rank_] / 2;
        for (i64 i = 0; i < numbers; i += most) kernel(from + i, to + i, static_cast<i32>(min(most, numbers - i)));
        return true;
    }

private:
    template <class Data, class Count>
    void pack(int d, const Walk<const Data>& from, const Data* at, Count count, const i64* place, Sum* to)
    {
        const i64 n = count(d), straight = min(n, length_[d] - place[d]), step = from.step[d];
        if (d == 0) {
            copy_line(at, step, to + place[0], 1, straight);
            copy_line(at + straight * step, step, to, 1, n - straight);
        } else
            for (i64 i = 0; i < n; ++i)
                pack(d - 1, from, at + i * step, count, place,
                     to + (i < straight ? place[d] + i : i - straight) * volume_[d]);
    }

    template <class Data>
    void unpack(int d, const Walk<Data>& to, Data* at, const i64* count, const i64* step, const Sum* from) const
    {
        if (d == 0) copy_line(from, step[0], at, to.step[0], count[0]);
        else
            for (i64 j = 0; j < count[d]; ++j)
                unpack(d - 1, to, at + j * to.step[d], count, step, from + j * step[d] * volume_[d]);
    }

    int rank_;
    const i64* length_;
    i64 volume_[ORV_CONV_MAX_RANK + 1];
    Sum* data_;
};

template <class Pair> class Run {
    using Data = typename Pair::Data;
    using Sum = typename Pair::Sum;

public:
    Run(const Problem& p, const Operands& operands, const Plan& plan)
        : p_(p), roles_(roles_of(p)), cut_(plan.cut), transform_(*plan.transform), x_(walk(operands.x, p.nx, p.x)),
          y_(walk(operands.y, p.ny, p.y)), z_(static_cast<Data*>(operands.z), p.rank, p.count, p.z),
          spectrum_(p.rank, plan.cut)
    {
        if (roles_.exchanged) std::swap(x_, y_);
        if (p.correlates()) x_.reverse(p.rank, roles_.nx);
    }

    orv_status all(int threads)
    {
        if (spectrum_.data() == nullptr) return ORV_NO_MEMORY;
        const Numbers from_begin = {};
        spectrum_.pack(x_, from_begin, roles_.nx, from_begin);
        if (const auto status = orv_dft_forward(&transform_, spectrum_.data(), spectrum_.data())) return status;
        std::atomic<orv_status> status{ORV_OK};
        parallel(threads, [&](int index, int count) {
            Field<Sum> field(p_.rank, cut_);
            if (field.data() == nullptr) return status.store(ORV_NO_MEMORY);
            for (i64 i = index; i < cut_.total && status.load(std::memory_order_relaxed) == ORV_OK; i += count)
                if (const auto own = piece(i, field)) status.store(own);
        });
        return status.load();
    }

private:
    Walk<const Data> walk(const void* array, const i64* shape, const Strides& strides) const
    {
        return {static_cast<const Data*>(array), p_.rank, shape, strides};
    }

    // Dimension 0 fastest.
    orv_status piece(i64 index, Field<Sum>& field) const
    {
        Numbers output, count, first, end, place;
        for (int d = 0; d < p_.rank; ++d) {
            output[d] = index % cut_.pieces[d] * cut_.outputs[d], index /= cut_.pieces[d];
            count[d] = min(cut_.outputs[d], p_.count[d] - output[d]);
            const i64 t = roles_.first[d] + output[d] * p_.step[d];
            first[d] = max(0, t - (roles_.nx[d] - 1));
            end[d] = max(first[d], min(roles_.ny[d], t + (count[d] - 1) * p_.step[d] + 1));
            const i64 behind = (first[d] - t) % cut_.length[d];
            place[d] = behind < 0 ? behind + cut_.length[d] : behind;
        }
        field.pack(y_, first, end, place);
        if (const auto status = orv_dft_forward(&transform_, field.data(), field.data())) return status;
        if (!field.multiply_by(spectrum_)) return last_status();
        if (const auto status = orv_dft_backward(&transform_, field.data(), field.data())) return status;
        field.unpack(z_, output, count, p_.step);
        return ORV_OK;
    }

    const Problem& p_;
    Roles roles_;
    const Cut& cut_;
    const orv_dft& transform_;
    Walk<const Data> x_, y_;
    Walk<Data> z_;
    Field<Sum> spectrum_;
};

// A status of orv_dft's.
orv_status make_plan(Plan& plan, const Problem& p, const Cut& cut, int threads)
{
    plan.cut = cut;
    orv_dft*& dft = plan.transform;
    auto status = orv_dft_create(&dft, p.sums_in_single() ? ORV_DFT_SINGLE : ORV_DFT_DOUBLE,
                                 p.is_complex() ? ORV_DFT_COMPLEX : ORV_DFT_REAL, p.rank, cut.length);
    if (status == ORV_OK) status = orv_dft_set_scales(dft, 1, 1 / static_cast<double>(cut.points(p.rank)));
    if (status == ORV_OK) status = orv_dft_set(dft, ORV_DFT_THREADS, threads);
    if (status == ORV_OK) status = orv_dft_commit(dft);
    if (status == ORV_OK) std::snprintf(plan.method, sizeof plan.method, "%s", orv_dft_method(dft));
    return status;
}

orv_status told(orv_status status)
{
    if (status == ORV_OK) return ORV_OK;
    if (status == ORV_NO_MEMORY) return no_memory();
    return fail(ORV_TRANSFORM_FAILED, "the Fourier transform inside a convolution was refused; ORV_CONV_DIRECT needs "
                                      "none");
}

// Nanoseconds that are worth a thread.
constexpr double grain = 2e5;

// Whether one transform takes the same steps on any number of threads: plans for columns depend on it in single
// precision and from three dimensions on; of one dimension there is nothing to share.
bool is_shared(const Problem& p, const Cut& cut) { return cut.total == 1 && p.rank == 2 && !p.sums_in_single(); }

orv_status run(const Problem& p, const Operands& operands, const Plan& plan, int pieces_at_once, int threads)
{
    remember(plan.method, threads);
    return by_pair(p, [&]<class Pair>(Pair) { return Run<Pair>(p, operands, plan).all(pieces_at_once); });
}

orv_status run_once(const Problem& p, const Operands& operands, const Cut& cut, int threads)
{
    Plan plan{};
    const int each = is_shared(p, cut) ? threads : 1;
    orv_status status = make_plan(plan, p, cut, each);
    if (status == ORV_OK) status = run(p, operands, plan, threads / each, threads);
    orv_dft_free(plan.transform);
    return status;
}

// The plan that is kept, now at the latest; null if it could not be made.
const Plan* kept(const Problem& p, Keeper& keeper, orv_status& status)
{
    const Plan* there = keeper.load(std::memory_order_acquire);
    if (there != nullptr) return there;
    void* const block = orv_serv_malloc(sizeof(Plan), alignof(Plan));
    if (block == nullptr) return status = ORV_NO_MEMORY, nullptr;
    auto* const made = new (block) Plan{};
    status = make_plan(*made, p, cut_of(p), 1);
    if (status == ORV_OK && keeper.compare_exchange_strong(there, made, std::memory_order_acq_rel)) return made;
    drop(made); // another thread was first, or there is none
    return there;
}

} // namespace

void drop(const Plan* plan)
{
    if (plan == nullptr) return;
    orv_dft_free(plan->transform);
    orv_serv_free(const_cast<Plan*>(plan));
}

// A transform for several threads is made for them: their number may be another one next time.
orv_status run_transforms(const Problem& p, const Operands& operands, Keeper* keeper)
{
    orv_status status = ORV_OK;
    const Plan* const plan = keeper == nullptr ? nullptr : kept(p, *keeper, status);
    if (status != ORV_OK) return told(status);
    const Cut cut = plan != nullptr ? plan->cut : cut_of(p);
    const int threads = threads_for(cost_of(p, cut), grain, is_shared(p, cut) ? most_threads : cut.total);
    if (plan == nullptr || (is_shared(p, cut) && threads > 1)) return told(run_once(p, operands, cut, threads));
    return told(run(p, operands, *plan, threads, threads));
}

} // namespace orv::core::conv
