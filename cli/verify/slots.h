// The arguments of a call by address: arrays, and values that stand here.
#pragma once

#include "cli/verify/storage.h"

namespace orv::verify {

class Slots {
public:
    Slots(Setting& setting, const Problem& resolved, Arrays& arrays);

    void* const* data() const { return addresses_.data(); }

private:
    struct Value {
        alignas(16) std::byte bytes[16];
        template <class T> void set(T value) { new (bytes) T(value); }
    };
    static void store(Setting& setting, const Problem& resolved, const Argument& a, Value& value);

    std::vector<Value> values_;
    std::vector<void*> addresses_;
};

} // namespace orv::verify
