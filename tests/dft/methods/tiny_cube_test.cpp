// Dense cubes of at most 10 points a side.
#include "tests/dft/methods/node.h"

namespace orv::test {
namespace {

template <class T> std::string name()
{
    const std::string pairs(1, letter<cpx<real_t<T>>>);
    return "tiny_3d_" + pairs + '2' + letter<T>;
}

// All points of the transform of a cube with the first index the fastest, in quadruple precision.
std::vector<QuadPair> definition(std::vector<QuadPair> x, i64 n, bool forward)
{
    const auto roots = quad_roots(n);
    for (i64 step = 1; step < n * n * n; step *= n) {
        const auto y = x;
        for (i64 i = 0; i < n * n * n; ++i) {
            const i64 k = i / step % n, from = i - k * step;
            x[i] = {0, 0};
            for (i64 j = 0; j < n; ++j) x[i] = x[i] + y[from + j * step] * roots[(forward ? n - j * k % n : j * k) % n];
        }
        if (n == 1) break;
    }
    return x;
}
double bound(i64 n) { return 1.2 * std::sqrt(1 + 3 * std::log2(static_cast<double>(n))); }

template <class T> class Cube : public Node {
public:
    Cube(i64 n, bool in_place) : Node(precision_of<T>, domain, {n, n, n}, {name<T>()})
    {
        get()->placement = in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
        get()->conjugate_even_storage = CFG_STORE_COMPLEX;
    }
    static constexpr u32 domain = is_complex<T> ? CFG_DOMAIN_COMPLEX : CFG_DOMAIN_REAL;
};

template <class R> class TinyCube : public testing::Test {
};
using Types = testing::Types<float, double>;
TYPED_TEST_SUITE(TinyCube, Types);

TYPED_TEST(TinyCube, of_pairs_gives_the_sums_of_the_definition)
{
    using T = cpx<TypeParam>;
    for (i64 n = 2; n <= 10; ++n) {
        const i64 points = n * n * n, in = 2, out = 5;
        const auto x = random_array<T>(points, static_cast<std::uint64_t>(n));
        std::vector<QuadPair> wide;
        for (const T& e : x) wide.push_back(widened(e));
        for (const bool in_place : {true, false})
            for (const bool forward : {true, false}) {
                Cube<T> node(n, in_place);
                node->input_offset = in, node->output_offset = out;
                ASSERT_EQ(node.commit(), node_ok) << n;
                EXPECT_EQ(node->nioargs, in_place ? 1u : 2u);
                Guarded<T> src(in + points), other(out + points);
                std::copy(x.begin(), x.end(), src.begin() + in);
                ProbeScope probe;
                ASSERT_EQ(node.run(forward, src.data(), in_place ? nullptr : other.data()), node_ok);
                EXPECT_EQ(probe->allocations, 0);
                const T* const y = in_place ? src.data() + in : other.data() + out;
                const auto exact = definition(wide, n, forward);
                Errors errors;
                for (i64 i = 0; i < points; ++i) errors.add(y[i], exact[i]);
                EXPECT_LE(errors.rms(), bound(n)) << n << forward;
                if (!in_place) {
                    EXPECT_TRUE(same_bits(src.data() + in, x.data(), points)) << "the input changed";
                }
            }
    }
}

TYPED_TEST(TinyCube, of_reals_gives_the_half_spectrum_and_leaves_the_rest_of_its_rows_alone)
{
    using R = TypeParam;
    using T = cpx<R>;
    for (i64 n = 1; n <= 10; ++n) {
        const i64 points = n * n * n, last = points - n + n / 2 + 1; // pairs up to the last one that is written
        const auto x = random_array<R>(points, static_cast<std::uint64_t>(n));
        std::vector<QuadPair> wide;
        for (const R e : x) wide.push_back(widened(e));
        const auto exact = definition(wide, n, true);
        for (const bool in_place : {true, false}) {
            Cube<R> node(n, in_place);
            ASSERT_EQ(node.commit(), node_ok) << n;
            Guarded<R> src(in_place ? 2 * last : points), back(points);
            Guarded<T> other(last);
            std::copy(x.begin(), x.end(), src.begin());
            ASSERT_EQ(node.run(true, src.data(), in_place ? nullptr : other.data()), node_ok);
            T* const y = in_place ? reinterpret_cast<T*>(src.data()) : other.data();
            Errors errors;
            const Guarded<T> fresh(1);
            for (i64 i = 0; i < last; ++i)
                if (i % n <= n / 2) errors.add(y[i], exact[i]);
                else if (!in_place) {
                    EXPECT_TRUE(same_bits(y + i, fresh.data(), 1)) << n << ' ' << i;
                }
            EXPECT_LE(errors.rms(), bound(n)) << n;

            const std::vector<T> spectrum(y, y + last);
            ASSERT_EQ(node.run(false, y, in_place ? nullptr : back.data()), node_ok);
            const R* const z = in_place ? src.data() : back.data();
            Errors round_trip;
            for (i64 i = 0; i < points; ++i)
                round_trip.add(cpx<R>{z[i], 0}, {wide[i].re * static_cast<quad>(points), 0});
            EXPECT_LE(round_trip.rms(), 1.5 * bound(n)) << n;
            if (!in_place) {
                EXPECT_TRUE(same_bits(y, spectrum.data(), last)) << "the input changed";
            }
        }
    }
}

TYPED_TEST(TinyCube, of_reals_begins_at_the_offset_of_each_side)
{
    using R = TypeParam;
    const i64 n = 4, points = 64;
    for (const bool forward : {true, false})
        for (const bool in_place : {true, false}) {
            Cube<R> plain(n, false), moved(n, in_place);
            moved->input_offset = 3, moved->output_offset = 5;
            ASSERT_EQ(plain.commit(), node_ok);
            ASSERT_EQ(moved.commit(), node_ok);
            const auto x = random_array<R>(2 * points, 1);
            std::vector<R> expected(2 * points), a(2 * points + 20), b(2 * points + 20);
            std::copy(x.begin(), x.end(), a.begin() + (forward ? 3 : 6));
            ASSERT_EQ(plain.run(forward, const_cast<R*>(x.data()), expected.data()), node_ok);
            ASSERT_EQ(moved.run(forward, a.data(), in_place ? nullptr : b.data()), node_ok);
            const R* const y = (in_place ? a : b).data() + (forward ? 10 : 5);
            for (i64 i = 0; i < (forward ? 2 : 1) * points; ++i)
                if (!forward || i / 2 % n <= n / 2) {
                    EXPECT_EQ(y[i], expected[i]) << i;
                }
        }
}

TYPED_TEST(TinyCube, is_a_dense_cube_of_less_than_eleven_points_and_nothing_else)
{
    using R = TypeParam;
    using T = cpx<R>;
    const auto commit = [](auto element, const std::vector<i64>& lengths) {
        using E = decltype(element);
        Node node(precision_of<E>, Cube<E>::domain, lengths, {name<E>()});
        node->conjugate_even_storage = CFG_STORE_COMPLEX;
        return node.commit();
    };
    for (const std::vector<i64>& other :
         {std::vector<i64>{11, 11, 11}, {4, 4}, {4}, {4, 4, 4, 4}, {4, 4, 5}, {5, 4, 4}, {4, 5, 4}}) {
        EXPECT_EQ(commit(T(), other), node_inconsistent);
        EXPECT_EQ(commit(R(), other), node_inconsistent);
    }
    EXPECT_EQ(commit(T(), {10, 10, 10}), node_ok);
    EXPECT_EQ(commit(R(), {10, 10, 10}), node_ok);

    const u32 other = sizeof(R) == 4 ? CFG_DOUBLE : CFG_SINGLE;
    Cube<T> pairs(4, false);
    Cube<R> reals(4, false);
    expect_refused(pairs, change("two arrays", &DftiNode::complex_storage, CFG_STORE_SPLIT, CFG_STORE_COMPLEX));
    expect_refused(reals, change("packed", &DftiNode::conjugate_even_storage, CFG_STORE_PACKED, CFG_STORE_COMPLEX));
    expect_refused(pairs, change("reals", &DftiNode::forward_domain, CFG_DOMAIN_REAL, CFG_DOMAIN_COMPLEX));
    expect_refused(reals, change("pairs", &DftiNode::forward_domain, CFG_DOMAIN_COMPLEX, CFG_DOMAIN_REAL));
    for (Node* node : {static_cast<Node*>(&pairs), static_cast<Node*>(&reals)}) {
        expect_refused(*node, change("precision", &DftiNode::precision, other, precision_of<R>));
        for (const Change& c : {transforms(2), scale("forward", &DftiNode::forward_scale, 0.5),
                                scale("backward", &DftiNode::backward_scale, 0.5)})
            expect_refused(*node, c);
        for (const auto side : {&IotensorDim::is, &IotensorDim::os})
            for (i32 k = 0; k < 3; ++k) expect_refused(*node, stride("stride", k, side, 24));
    }
    expect_refused(reals, {"the pitch of half spectra",
                           [](Node& n) { n->lengths.dims[1].os = 3, n->lengths.dims[2].os = 12; }, [](Node&) {}});
    pairs->placement = CFG_IN_PLACE; // where the output's strides do not count
    pairs->lengths.dims[1].os = 17;
    EXPECT_EQ(pairs.commit(), node_ok);
}

TYPED_TEST(TinyCube, keeps_its_side_for_the_next_commit_and_lets_go)
{
    using T = cpx<TypeParam>;
    Cube<T> node(5, true);
    expect_state_to_be_kept_and_let_go(method(name<T>()), node, [&] { node->placement = CFG_OUT_OF_PLACE; });
}

TYPED_TEST(TinyCube, is_left_as_it_was_without_memory)
{
    using R = TypeParam;
    Cube<R> node(6, true);
    expect_commit_to_survive_without_memory(node);
    const auto x = random_array<R>(2 * 216, 1);
    auto y = x;
    each_allocation_fails(
        [&] {
            y = x;
            const i32 status = node.run(true, y.data());
            EXPECT_EQ(status, probe().failed == 0 ? node_ok : node_no_memory);
            EXPECT_EQ(same_bits(x.data(), y.data(), 2 * 216), probe().failed != 0);
        },
        [] {});
}

} // namespace
} // namespace orv::test
