// A problem run on arrays that end at unreadable pages, and what came out of it.
#pragma once

#include "tests/dft/compute/problem.h"

namespace orv::test {

template <class R> class Trial {
public:
    Trial(const Problem& problem, std::uint64_t stream)
        : p(problem), signal_(signal_extent(p)), spectrum_(spectrum_extent(p))
    {
        Random random(stream);
        for (i64 t = 0; t < p.count; ++t) {
            std::vector<QuadPair> x(static_cast<std::size_t>(p.points()));
            for (QuadPair& value : x) value = {random.value<R>(), p.real ? R(0) : random.value<R>()};
            signals_.push_back(x);
            transform_by_definition(x, p.lengths, -1);
            spectra_.push_back(x);
        }
        make_node();
    }

    const Node& node() const { return node_; }

    // Commits for so many threads. The other direction's scale is another one.
    i32 commit_for(i32 threads)
    {
        node_->methods->set_thread_limit(node_.get(), threads);
        node_->methods->set_scale(node_.get(), 2 * p.scale, p.forward ? scale_of_backward : scale_of_forward);
        return commit(node_);
    }

    i32 run(i32 threads)
    {
        if (const i32 status = commit_for(threads); status != node_ok) return status;
        fill();
        return compute();
    }

    // From what a call reads to what it writes, without offsets.
    std::array<void*, 4> pointers() const
    {
        std::array<void*, 4> all{};
        const int parts = is_split() ? 2 : 1;
        for (int part = 0; part < parts; ++part) {
            all[part] = array(p.forward || p.in_place ? 0 : 1, part);
            if (!p.in_place) all[parts + part] = array(p.forward ? 1 : 0, part);
        }
        return all;
    }

    i32 compute()
    {
        const auto pointers = this->pointers();
        return (p.forward ? node_->compute_forward : node_->compute_backward)(node_.get(), pointers[0], pointers[1],
                                                                              pointers[2], pointers[3]);
    }

    // New arrays with the input of the problem; gaps and results are NaN.
    void fill()
    {
        arrays_.clear();
        for (int side = 0; side < 2; ++side)
            for (int part = 0; part < 2; ++part)
                arrays_.push_back(std::make_unique<Guarded<R>>(static_cast<std::size_t>(reals(side))));
        if (!p.forward && p.storage == Storage::CCS) // its zeros
            for (i64 i = 0; i < spectrum_.reals; ++i)
                if (spectrum_.used[i]) array(side_of(false), 0)[i] = 0;
        each_number(p.forward, [&](i64 t, i64 number, const Place& at) {
            const QuadPair value = p.forward ? signals_[t][number] : spectra_[t][number];
            const int side = side_of(p.forward);
            if (at.re >= 0) array(side, 0)[at.re] = static_cast<R>(value.re);
            if (at.im >= 0) array(side, is_split())[at.im] = static_cast<R>(value.im);
        });
        if (!p.in_place) {
            const int side = side_of(p.forward);
            for (int part = 0; part < 2; ++part)
                inputs_[part].assign(array(side, part), array(side, part) + reals(side));
        }
    }

    // Error by the definition, and what had to stay.
    void expect_right() const
    {
        quad error = 0, size = 0;
        each_number(!p.forward, [&](i64 t, i64 number, const Place& at) {
            const QuadPair exact = p.forward ? spectra_[t][number] : signals_[t][number];
            const quad factor = quad(p.scale) * (p.forward ? 1 : static_cast<quad>(p.points()));
            for (const bool imaginary : {false, true}) {
                const quad value = factor * (imaginary ? exact.im : exact.re);
                const i64 place = imaginary ? at.im : at.re;
                if (place < 0) continue;
                const quad difference = quad(array(side_of(!p.forward), imaginary && is_split())[place]) - value;
                error += difference * difference, size += value * value;
            }
        });
        const quad bound = allowed_error<R>(p.lengths);
        EXPECT_TRUE(error <= bound * bound * size)
            << p.line() << ": relative error " << static_cast<double>(root(error / size)) << ", allowed "
            << static_cast<double>(bound);
        expect_untouched();
    }

    // All bytes that a call may write.
    std::vector<R> result() const
    {
        std::vector<R> all;
        for (int part = 0; part < (is_split() ? 2 : 1); ++part) {
            const int side = side_of(!p.forward);
            all.insert(all.end(), array(side, part), array(side, part) + reals(side));
        }
        return all;
    }

    Problem p;

private:
    bool is_split() const { return p.storage == Storage::split; }
    // Arrays: 0 has the signal, and all in place; 1 the spectrum.
    int side_of(bool signal) const { return signal || p.in_place ? 0 : 1; }
    i64 reals(int side) const
    {
        if (p.in_place) return std::max(signal_.reals, spectrum_.reals);
        return side == 0 ? signal_.reals : spectrum_.reals;
    }
    R* array(int side, int part) const { return arrays_[2 * side + part]->data(); }

    // f(transform, number of the index, place) of every number that is stored.
    template <class F> void each_number(bool signal, F f) const
    {
        for (i64 t = 0; t < p.count; ++t) {
            i64 number = 0;
            each_index(p.lengths, [&](const std::vector<i64>& index) {
                Place at{-1, -1};
                if (signal) at = signal_place(p, index, t);
                else if (!spectrum_place(p, index, t, at)) at = {-1, -1};
                f(t, number++, at);
            });
        }
    }

    void make_node()
    {
        const char domain = p.real ? 'r' : 'c';
        node_ = p.rank() == 1 ? create_1d(precision_letter<R>, domain, p.lengths[0])
                              : create_md(precision_letter<R>, domain, p.lengths);
        node_->flags |= DftiNode::no_decomposition; // so that ways for special cases stand back
        node_->placement = p.in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
        if (is_split()) node_->complex_storage = CFG_STORE_SPLIT;
        if (p.storage == Storage::half) node_->conjugate_even_storage = CFG_STORE_COMPLEX;
        if (p.packed())
            node_->packed_format = p.storage == Storage::CCS    ? CFG_CCS
                                   : p.storage == Storage::PACK ? CFG_PACK
                                                                : CFG_PERM;
        const auto strides = [](const Layout& layout) {
            std::vector<i64> all{layout.offset};
            all.insert(all.end(), layout.strides.begin(), layout.strides.end());
            return all;
        };
        node_->methods->set_input_strides(node_.get(), strides(p.input()).data());
        Layout output = p.output();
        if (!p.real && p.in_place) // is not looked at
            output.distance += 3, output.offset += 5, output.strides[0] += 7;
        node_->methods->set_output_strides(node_.get(), strides(output).data());
        set_batch(node_, p.count, p.input().distance, output.distance);
        set_scales(node_, p.scale, p.scale);
    }

    // Gaps of what is written, and all of what is only read.
    void expect_untouched() const
    {
        const int written = side_of(!p.forward);
        const auto belongs = [&](const Extent& e, i64 i) { return i < e.reals && e.used[i]; };
        for (int part = 0; part < (is_split() ? 2 : 1); ++part) {
            const unsigned char* const bytes = reinterpret_cast<const unsigned char*>(array(written, part));
            for (i64 i = 0; i < reals(written); ++i) {
                if (p.in_place ? belongs(signal_, i) || belongs(spectrum_, i)
                               : belongs(p.forward ? spectrum_ : signal_, i))
                    continue;
                for (std::size_t b = 0; b < sizeof(R); ++b)
                    ASSERT_EQ(bytes[i * sizeof(R) + b], 0xff) << p.line() << ": gap at " << i << " was written";
            }
            if (p.in_place) continue;
            const int read = side_of(p.forward);
            ASSERT_TRUE(same_bits<R>(array(read, part), inputs_[part].data(), reals(read)))
                << p.line() << ": the input was written";
        }
    }

    Extent signal_, spectrum_;
    std::vector<std::vector<QuadPair>> signals_, spectra_;
    std::vector<std::unique_ptr<Guarded<R>>> arrays_;
    std::vector<R> inputs_[2];
    Node node_;
};

} // namespace orv::test
