// Work memory of a call: taken at the beginning of a scope, given back at its end.
#pragma once

#include "frame/serv.h"
#include "spblas/options.h"

namespace orv::ORV_SPBLAS {

template <class E> class Block {
public:
    explicit Block(i64 count)
        : data_(static_cast<E*>(orv_serv_allocate(max(1, count) * static_cast<i64>(sizeof(E)), 128)))
    {
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block()
    {
        if (data_ != nullptr) orv_serv_deallocate(data_);
    }
    E* data() const { return data_; } // null if there was no memory
    E& operator[](Int i) const { return data_[i]; }

private:
    E* data_;
};

} // namespace orv::ORV_SPBLAS
