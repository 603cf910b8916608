// Work memory for the time of a call.
#pragma once

#include "frame/serv.h"

namespace orv::core {

// So many elements, which may be none, on a boundary of two cache lines.
template <class T> class Block {
public:
    explicit Block(i64 count)
        : at_(count > 0 ? static_cast<T*>(orv_serv_allocate(count * static_cast<i64>(sizeof(T)), 128)) : nullptr),
          missing_(count > 0 && at_ == nullptr)
    {
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block()
    {
        if (at_ != nullptr) orv_serv_deallocate(at_);
    }
    bool missing() const { return missing_; }
    T* get() const { return at_; }

private:
    T* at_;
    bool missing_;
};

} // namespace orv::core
