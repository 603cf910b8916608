// Work memory: taken at the beginning of a scope, given back at its end, the last block first.
#pragma once

#include "frame/serv.h"
#include "frame/types.h"

namespace orv::conv {

template <class E> class Block {
public:
    explicit Block(i64 count, bool wanted = true)
        : data_(wanted ? static_cast<E*>(orv_serv_malloc(count * static_cast<i64>(sizeof(E)), 128)) : nullptr),
          wanted_(wanted)
    {
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block()
    {
        if (data_ != nullptr) orv_serv_free(data_);
    }
    E* data() const { return data_; } // null if there was no memory, or none was wanted
    bool refused() const { return wanted_ && data_ == nullptr; }

private:
    E* data_;
    bool wanted_;
};

template <class E> void clear(E* data, i64 count)
{
    for (i64 i = 0; i < count; ++i) data[i] = E{};
}

} // namespace orv::conv
