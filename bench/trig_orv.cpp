// Sums of sines and cosines by <orv/trig.h>.
#include "bench/trig_plans.h"
#include "orv/trig.h"

#include <stdexcept>

namespace orv::bench {

template <bool single> struct Wave {
    explicit Wave(const WaveKey& key)
    {
        constexpr struct {
            int kind;
            decltype(orv_trig_forward)* run;
        } ways[] = {{ORV_TRIG_COSINE, orv_trig_forward},
                    {ORV_TRIG_STAGGERED_COSINE, orv_trig_forward},
                    {ORV_TRIG_STAGGERED_COSINE, orv_trig_backward},
                    {ORV_TRIG_STAGGERED2_COSINE, orv_trig_forward},
                    {ORV_TRIG_SINE, orv_trig_forward},
                    {ORV_TRIG_STAGGERED_SINE, orv_trig_forward},
                    {ORV_TRIG_STAGGERED_SINE, orv_trig_backward},
                    {ORV_TRIG_STAGGERED2_SINE, orv_trig_forward}};
        way = ways[key.kind].run;
        if (orv_trig_create(&trig, single ? ORV_DFT_SINGLE : ORV_DFT_DOUBLE, ways[key.kind].kind, key.points) != ORV_OK)
            throw std::runtime_error(orv_last_error());
        orv_trig_set_scales(trig, 1, 1);
    }
    void run(const void* x, void* y) const { way(trig, x, y); }

private:
    orv_trig* trig = nullptr; // to the end of the program
    decltype(orv_trig_forward)* way = nullptr;
};

} // namespace orv::bench

ORV_BENCH_WAVES
