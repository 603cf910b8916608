// An array that grows, from the C library's memory: what it is refused it says, and nothing is thrown.
#pragma once

#include <cstdlib>
#include <type_traits>

namespace orv::sparseblas {

template <class E> class Array {
    static_assert(std::is_trivially_copyable_v<E>);

public:
    constexpr Array() = default;
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() { std::free(data_); }

    // Room for n elements; false, and nothing changed, without memory.
    bool reserve(std::size_t n)
    {
        if (n <= room_) return true;
        const std::size_t room = n < 2 * room_ ? 2 * room_ : n;
        void* data = std::realloc(data_, room * sizeof(E));
        if (data == nullptr) return false;
        data_ = static_cast<E*>(data), room_ = room;
        return true;
    }
    void take(Array& other) // which is left empty
    {
        std::free(data_);
        data_ = other.data_, room_ = other.room_;
        other.data_ = nullptr, other.room_ = 0;
    }
    E* data() const { return data_; }
    E& operator[](std::size_t i) const { return data_[i]; }

private:
    E* data_ = nullptr;
    std::size_t room_ = 0;
};

} // namespace orv::sparseblas
