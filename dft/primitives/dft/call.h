// What every public transform does around the work.
#pragma once

#include "dft/primitives/dft/plan.h"

namespace orv::dft::general {

inline const YmpDftSpec& record_of(const YmpDftSpec* spec) { return *on_boundary(spec); }

// The work area of a call: the caller's, or one for the time of the call.
class WorkArea {
public:
    WorkArea(i32 bytes, t_8u* buffer)
        : taken_(bytes > 0 && buffer == nullptr ? DFT(ympsMalloc_8u)(bytes) : nullptr),
          missing_(bytes > 0 && buffer == nullptr && taken_ == nullptr),
          begin_(on_boundary(taken_ != nullptr ? taken_ : buffer))
    {
    }
    WorkArea(const WorkArea&) = delete;
    WorkArea& operator=(const WorkArea&) = delete;
    ~WorkArea()
    {
        if (taken_ != nullptr) DFT(ympsFree)(taken_);
    }
    bool missing() const { return missing_; }
    t_8u* begin() const { return begin_; }

private:
    t_8u* taken_;
    bool missing_;
    t_8u* begin_;
};

} // namespace orv::dft::general
