// Arrays that end at an unreadable page, or begin at one, so that a read or write one byte outside stops the test.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <sys/mman.h>

namespace orv::test {

// Bytes between two unreadable pages, filled with 0xff: as floating-point numbers, NaN.
class GuardedBytes {
public:
    explicit GuardedBytes(std::size_t bytes)
        : bytes_(bytes), span_((bytes + page - 1) / page * page),
          base_(static_cast<std::byte*>(mmap(nullptr, span_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        if (span_ == 0) return;
        mprotect(base_ + page, span_, PROT_READ | PROT_WRITE);
        std::memset(base_ + page, 0xff, span_);
    }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    ~GuardedBytes() { munmap(base_, span_ + 2 * page); }

    std::byte* at_start() const { return base_ + page; }
    std::byte* at_end() const { return base_ + page + span_ - bytes_; }

private:
    static constexpr std::size_t page = 4096;
    std::size_t bytes_, span_;
    std::byte* base_;
};

enum class Edge { start, end };

// n elements of T that touch an unreadable page at one edge. shift moves the array that many elements away from the
// edge, to try every alignment.
template <class T> class Guarded {
public:
    explicit Guarded(std::size_t n, Edge edge = Edge::end, std::size_t shift = 0)
        : bytes_((n + shift) * sizeof(T)), n_(n),
          data_(reinterpret_cast<T*>(edge == Edge::end ? bytes_.at_end() : bytes_.at_start()) +
                (edge == Edge::start ? shift : 0))
    {
    }

    T* data() const { return data_; }
    std::size_t size() const { return n_; }
    T& operator[](std::size_t i) const { return data_[i]; }
    T* begin() const { return data_; }
    T* end() const { return data_ + n_; }
    std::span<T> span() const { return {data_, n_}; }

private:
    GuardedBytes bytes_;
    std::size_t n_;
    T* data_;
};

} // namespace orv::test
