// Lines of pairs by the factors of their record, as many side by side as a register holds pairs. Lines come in from
// where they stand and go out from the last pass; between there are registers that stay in a first-level cache, so that
// no pass has a half-filled one.
//
// The radixes and the twiddles are the record's, but that the last of its factors, as many as have straight-line code
// together, are one pass: 100 points are 20 and 5, not 4, 5 and 5.
#pragma once

#include "dft/primitives/dft/plan.h"

namespace orv::dft {

template <class R> class SideBySide {
public:
    SideBySide() = default;
    SideBySide(const YmpDftSpec& spec, bool forward);
    bool applies() const { return spec_ != nullptr; }
    // So many lines, so many reals apart; both arrays may be the same.
    void run(const R* from, i64 from_step, R* to, i64 to_step, i64 count) const;

private:
    const YmpDftSpec* spec_ = nullptr; // null where it does not apply
    bool forward_ = true;
    i64 first_ = 0; // of the factors that are one pass
};

} // namespace orv::dft
