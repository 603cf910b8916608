// Batches of transforms as the tests call them: by direction, form and type, with memory of exactly the sizes told.
#pragma once

#include "frame/kernels/dft_batch.h"
#include "tests/dft/dft/general.h"

namespace orv::test {

template <class F> F* untagged(const std::string& name) { return reinterpret_cast<F*>(branch_symbol(name)); }

template <class Body> void both_types(Body body)
{
    body.template operator()<float>(), body.template operator()<double>();
}
template <class Body> void every_instance(Body body)
{
    for (const bool forward : {true, false}) both_types([&]<class R>() { body.template operator()<R>(forward); });
}

inline constexpr const char* batch_forms[] = {"", "I", "T", "IT"};

template <class R> struct BatchName {
    bool forward;
    std::string form;

    template <class F> F* entry(const std::string& operation) const
    {
        return untagged<F>(std::string("orvgDFT") + (forward ? "Fwd" : "Inv") + "Batch" + form + operation + "_" +
                           token<cpx<R>>());
    }
    bool in_place() const { return form == "I" || form == "IT"; }
    bool strided() const { return form == "T" || form == "IT"; }
    i64 size(const char* operation, i64 n, i64 columns, i64 width, i32 expected = 0) const
    {
        i64 bytes = -1;
        EXPECT_EQ(entry<BatchGetSize>(operation)(n, 1, columns, width, 1, &bytes), expected) << n << " " << columns;
        return bytes;
    }
};

// Nothing else is: products of primes up to 13.
inline bool is_covered(i64 n)
{
    if (n < 2) return false;
    for (const i64 p : {2, 3, 5, 7, 11, 13})
        while (n % p == 0) n /= p;
    return n == 1;
}

template <class R> struct BatchPlanOf {
    BatchName<R> name;
    i64 n, columns, width;
    i64 bytes, thread_bytes;
    Memory memory;

    // Off a boundary by so many bytes, with as many to spare behind.
    BatchPlanOf(BatchName<R> name, i64 n, i64 columns, i64 width, i64 off = 0)
        : name(name), n(n), columns(columns), width(width), bytes(name.size("GetSize", n, columns, width)),
          thread_bytes(name.size("GetThreadSize", n, columns, width)), memory(bytes + off)
    {
        EXPECT_EQ(name.template entry<BatchInit>("Init")(memory.get(), n, 1, columns, width, 1), 0);
    }

    // The columns that a team of so many transforms, member by member; in place src and dst are the same.
    i32 run(const cpx<R>* src, cpx<R>* dst, i64 threads = 1, i64 off = 0) const
    {
        for (i64 index = 0; index < threads; ++index) {
            const Memory buffer(thread_bytes + off);
            const BatchThread ctx{threads, index, buffer.get()};
            const i32 status = name.in_place() ? name.template entry<BatchInPlace<cpx<R>>>("")(dst, &ctx, memory.get())
                                               : name.template entry<Batch<cpx<R>>>("")(src, dst, &ctx, memory.get());
            if (status != 0) return status;
        }
        return 0;
    }

    i64 read_from(i64 j, i64 c) const { return name.strided() ? j * width + c : j + n * c; }
    i64 written_to(i64 j, i64 c) const { return name.in_place() ? read_from(j, c) : j + n * c; }

    // Of columns of n elements behind one another the transforms, the same way; whatever lies between them in the
    // arrays has to stay. The arrays begin so many numbers off a page's end.
    std::vector<cpx<R>> transformed(const std::vector<cpx<R>>& x, i64 threads = 1) const
    {
        using T = cpx<R>;
        const i64 size = read_from(n - 1, columns - 1) + 1;
        Guarded<T> src(static_cast<std::size_t>(size)), other(static_cast<std::size_t>(n * columns));
        for (i64 c = 0; c < columns; ++c)
            for (i64 j = 0; j < n; ++j) src[read_from(j, c)] = x[j + n * c];
        std::vector<T> before(src.begin(), src.end());
        const auto& dst = name.in_place() ? src : other;
        EXPECT_EQ(run(src.data(), dst.data(), threads), 0);
        std::vector<T> result;
        for (i64 c = 0; c < columns; ++c)
            for (i64 j = 0; j < n; ++j) result.push_back(dst[written_to(j, c)]);
        if (name.in_place()) // so that only what lies between is left to compare
            for (i64 c = 0; c < columns; ++c)
                for (i64 j = 0; j < n; ++j) src[read_from(j, c)] = x[j + n * c];
        EXPECT_TRUE(same_bits(src.data(), before.data(), size)) << n << " " << columns << " " << name.form;
        return result;
    }
};

} // namespace orv::test
