// Thread bodies by name, run one after another in place of a team: whatever the number of threads and their order, the
// shares together are the serial transform, bit for bit.
#include "tests/dft/compute/trial.h"

#include <numeric>

namespace orv::test {
namespace {

// Names of the bodies of a way: whole transforms or planes, lines of higher dimensions, the two passes of a plane.
struct Names {
    std::string planes, lines, first, second;
};
template <class R> Names names_of(const Problem& p)
{
    const bool single = sizeof(R) == 4;
    const std::string z = single ? "c" : "z", d = single ? "s" : "d";
    const std::string dz = d + z, zd = z + d, apart = p.in_place ? "" : "_out";
    if (!p.real)
        return {z + "1_nd" + apart + "_par", z + "2_nd" + apart + "_par", z + "2_c" + apart + "_dft", z + "2_r_dft"};
    const std::string way = p.forward ? d + dz : z + zd;
    Names names{way + "1_nd_out_par", way + "2_nd_out_par", "", ""};
    if (p.forward) names.first = p.packed() ? dz + "2_c_dft" : d + dz + "2_c_out_dft", names.second = dz + "2_r_dft";
    else if (p.packed()) names.first = zd + "2_c_dft", names.second = zd + "2_r" + apart + "_dft";
    else names.first = z + zd + "2_c_dft", names.second = z + zd + "2_r_out_dft";
    return names;
}

// What the core's team does, on one thread.
class Team {
public:
    Team(const Node& node, const Problem& p, void* input, void* output, i32 threads, bool reversed)
        : threads_(threads), reversed_(reversed), statuses_(static_cast<std::size_t>(threads), -1)
    {
        share_ = {node.get(), input, output, nullptr, 0, p.forward, 0, statuses_.data()};
        if (needs_middle(*node, p.forward, input, output)) {
            middle_.resize(static_cast<std::size_t>(half_spectrum_pairs(*node)));
            share_.middle = middle_.data();
        }
    }
    DftShare& share() { return share_; }
    const std::vector<i32>& statuses() const { return statuses_; }
    void pass(const std::string& name)
    {
        auto* const body = primitive<DftTask>(name);
        std::vector<i32> order(static_cast<std::size_t>(threads_));
        std::iota(order.begin(), order.end(), 0);
        if (reversed_) std::reverse(order.begin(), order.end());
        for (const i32 t : order) body(t, threads_, &share_);
    }
    void expect_ok(const Problem& p) const
    {
        for (const i32 status : statuses_) EXPECT_EQ(status, node_ok) << p.line();
    }

private:
    i32 threads_;
    bool reversed_;
    std::vector<i32> statuses_;
    std::vector<cpx<double>> middle_;
    DftShare share_;
};

// Element 0 of what is read and of what is written.
template <class R> std::array<void*, 2> arrays_of(const Trial<R>& trial)
{
    const auto pointers = trial.pointers();
    const auto at = [](void* data, const Layout& layout, bool pairs) -> void* {
        return static_cast<R*>(data) + layout.offset * (pairs ? 2 : 1);
    };
    const Problem& p = trial.p;
    const bool half = p.storage == Storage::half;
    return {at(pointers[0], p.input(), !p.real || (half && !p.forward)),
            at(pointers[p.in_place ? 0 : 1], p.output(), !p.real || (half && p.forward))};
}

template <class R> void expect_shares_to_be_the_whole(const Problem& p)
{
    Trial<R> trial(p, 11);
    ASSERT_EQ(trial.run(1), node_ok) << p.line();
    const std::vector<R> alone = trial.result();
    const Names names = names_of<R>(p);
    for (const i32 threads : {1, 2, 3, 4, 5})
        for (const bool reversed : {false, true})
            for (const bool whole : {true, false}) {
                if (!whole && (p.rank() == 1 || p.count > 1)) continue;
                trial.fill();
                const auto [input, output] = arrays_of(trial);
                Team team(trial.node(), p, input, output, threads, reversed);
                if (whole) {
                    team.share().count = p.count;
                    team.pass(names.planes);
                } else if (p.rank() == 2) {
                    team.pass(names.first), team.expect_ok(p);
                    team.pass(names.second);
                } else {
                    const bool falling = p.real && !p.forward;
                    if (!falling) team.pass(names.planes), team.expect_ok(p);
                    for (int k = 2; k < p.rank(); ++k) {
                        team.share().dimension = falling ? p.rank() + 1 - k : k;
                        team.pass(names.lines), team.expect_ok(p);
                    }
                    if (falling) team.pass(names.planes);
                }
                team.expect_ok(p);
                const std::vector<R> shared = trial.result();
                ASSERT_TRUE(same_bits(shared.data(), alone.data(), static_cast<i64>(alone.size())))
                    << p.line() << " threads=" << threads << (reversed ? " reversed" : "") << (whole ? " whole" : "");
            }
}

Layout dense(const std::vector<i64>& shape)
{
    Layout layout;
    i64 step = 1;
    for (const i64 n : shape) layout.strides.push_back(step), step *= n;
    layout.distance = step, layout.offset = 2;
    return layout;
}
Problem problem(Storage storage, bool forward, bool in_place, std::vector<i64> lengths, i64 count)
{
    Problem p;
    p.real = storage != Storage::pairs;
    p.storage = storage, p.forward = forward, p.in_place = in_place, p.lengths = lengths, p.count = count;
    std::vector<i64> shape = lengths;
    if (storage == Storage::half) shape[0] = lengths[0] / 2 + 1;
    else if (p.real)
        for (i64& n : shape) n = packed_row(storage, n);
    p.spectrum = dense(shape);
    p.signal = in_place ? p.spectrum : dense(lengths);
    if (in_place && storage == Storage::half) {
        for (i64& stride : p.signal.strides) stride *= 2;
        p.signal.strides[0] = 1, p.signal.distance *= 2, p.signal.offset *= 2;
    }
    return p;
}

template <class R> class ThreadBodies : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(ThreadBodies, Reals);

TYPED_TEST(ThreadBodies, do_together_what_the_serial_transform_does)
{
    for (const bool forward : {true, false})
        for (const bool in_place : {true, false}) {
            for (const Storage storage : {Storage::pairs, Storage::half, Storage::CCS, Storage::PACK, Storage::PERM})
                for (const auto& [lengths, count] :
                     {std::pair<std::vector<i64>, i64>{{12}, 7}, {{9, 11}, 1}, {{8, 5}, 3}})
                    expect_shares_to_be_the_whole<TypeParam>(problem(storage, forward, in_place, lengths, count));
            for (const Storage storage : {Storage::pairs, Storage::half})
                for (const std::vector<i64>& lengths : {std::vector<i64>{5, 4, 7}, {4, 3, 2, 5}})
                    expect_shares_to_be_the_whole<TypeParam>(problem(storage, forward, in_place, lengths, 1));
        }
}

TYPED_TEST(ThreadBodies, tell_of_missing_memory_in_the_word_of_their_thread)
{
    const Problem p = problem(Storage::pairs, true, true, {9, 11}, 1);
    Trial<TypeParam> trial(p, 12);
    ASSERT_EQ(trial.run(1), node_ok);
    trial.fill();
    const auto [input, output] = arrays_of(trial);
    Team team(trial.node(), p, input, output, 3, false);
    ProbeScope probe;
    probe->fail_at = trial.node()->max_buffer_bytes > 0 ? 2 : 1; // of the second thread
    team.pass(names_of<TypeParam>(p).first);
    EXPECT_EQ(team.statuses(), (std::vector<i32>{node_ok, node_no_memory, node_ok}));
    EXPECT_EQ(probe->live, 0);
}

TYPED_TEST(ThreadBodies, beyond_the_items_do_nothing)
{
    const Problem p = problem(Storage::pairs, true, true, {4, 3}, 1);
    Trial<TypeParam> trial(p, 13);
    ASSERT_EQ(trial.run(1), node_ok);
    trial.fill();
    const auto [input, output] = arrays_of(trial);
    Team team(trial.node(), p, input, output, 9, false); // three rows
    ProbeScope probe;
    team.pass(names_of<TypeParam>(p).first);
    team.expect_ok(p);
    EXPECT_EQ(probe->allocations, trial.node()->max_buffer_bytes > 0 ? 6 : 3);
}

} // namespace
} // namespace orv::test
