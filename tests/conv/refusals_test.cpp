// What kernels refuse, and in which order they look.
#include "tests/conv/problem.h"
#include "tests/support/probe.h"

#include <functional>

namespace orv::test::convolution {
namespace {

struct Call {
    Problem p;
    bool x = true, y = true, z = true; // given
};
struct Fault {
    i32 status;
    std::function<void(Call&)> make;
};

// In the order in which they are looked at; in dimension d.
std::vector<Fault> faults_of_dimension(const Problem& good, std::size_t d)
{
    const i32 below = good.least_start(d) - 1, beyond = good.last_start(d) + 1;
    return {{bad_xshape, [=](Call& c) { c.p.nx[d] = 0; }},
            {bad_yshape, [=](Call& c) { c.p.ny[d] = 0; }},
            {bad_zshape, [=](Call& c) { c.p.nz[d] = -1; }},
            {bad_zstride, [=](Call& c) { c.p.zs[d] = 0; }},
            {bad_start, [=](Call& c) { c.p.start[d] = below; }},
            {bad_start, [=](Call& c) { c.p.start[d] = beyond; }},
            {bad_decimation, [=](Call& c) { c.p.step[d] = 0; }},
            {bad_decimation, [=](Call& c) { c.p.step[d] = -1; }},
            {bad_decimation, [=](Call& c) { c.p.nz[d] += 1; }},
            {bad_decimation, [=](Call& c) { c.p.nz[d] = INT32_MAX, c.p.step[d] = INT32_MAX; }}};
}
std::vector<Fault> faults(const Member& m, const Problem& good)
{
    const Fault x{null_x, [](Call&c) { c.x = false; }}, y{null_y, [](Call&c) { c.y = false; }},
        z{null_z, [](Call&c) { c.z = false; }};
    if (m.line) {
        const auto own = faults_of_dimension(good, 0);
        std::vector<Fault> all{x, own[0], y, own[1], z};
        all.insert(all.end(), own.begin() + 2, own.end());
        return all;
    }
    std::vector<Fault> all{x, y, z};
    for (std::size_t d = 0; d < good.nx.size(); ++d)
        for (const Fault& fault : faults_of_dimension(good, d)) all.push_back(fault);
    return all;
}

TEST(ConvKernels, tell_the_first_fault_before_they_take_memory)
{
    for (const Member& m : members()) {
        if (!m.decimated) continue;
        SCOPED_TRACE(m.name);
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            const std::size_t rank = m.line ? 1 : 3;
            const Problem good = full_problem(m.correlates, Numbers(rank, 4), Numbers(rank, 3));
            const Arrays<T> a(good, 1);
            const auto all = faults(m, good);
            ProbeScope memory;
            for (std::size_t i = 0; i < all.size(); ++i)
                for (std::size_t later = i; later < all.size(); ++later) {
                    // Faults of one field hide each other, so at most one of each status.
                    Call call{good};
                    if (all[later].status != all[i].status) all[later].make(call);
                    all[i].make(call);
                    const i32 status = run<T>(m, call.p, call.x ? a.x.data() : nullptr, call.y ? a.y.data() : nullptr,
                                              call.z ? a.z.data() : nullptr);
                    ASSERT_EQ(status, all[i].status) << i << " before " << later;
                }
            EXPECT_EQ(memory->allocations, 0);
            EXPECT_TRUE(a.z_untouched());
        });
    }
}

TEST(ConvKernels, take_ranks_to_seven_and_direct_ones_none_below_two)
{
    for (const Member& m : members()) {
        if (!m.decimated || m.line) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            const Problem one = full_problem(m.correlates, Numbers(8, 1), Numbers(8, 1));
            const Arrays<T> a(one, 1);
            for (const i32 rank : {-1, 0, 1, 2, 7, 8}) {
                const i32 status = kernel<signature_all_de<T>>("conv", m.name)(
                    rank, a.x.data(), one.nx.data(), one.xs.data(), a.y.data(), one.ny.data(), one.ys.data(),
                    a.z.data(), one.nz.data(), one.zs.data(), one.start.data(), one.step.data());
                EXPECT_EQ(status, rank >= (m.direct ? 2 : 1) && rank <= 7 ? ok : bad_rank)
                    << m.name << " rank " << rank;
            }
        });
    }
}

TEST(ConvKernels, take_the_first_and_the_last_start)
{
    for (const Member& m : members()) {
        if (!m.decimated) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            const std::size_t rank = m.line ? 1 : 2;
            for (const bool last : {false, true}) {
                Problem p = full_problem(m.correlates, Numbers(rank, 4), Numbers(rank, 3));
                for (std::size_t d = 0; d < rank; ++d)
                    p.start[d] = last ? p.last_start(d) : p.least_start(d), p.nz[d] = 1;
                const Arrays<T> a(p, 1);
                ASSERT_EQ(run(m, p, a), ok) << m.name;
                expect_exact<T, I>(m, p, a);
            }
        });
    }
}

} // namespace
} // namespace orv::test::convolution
