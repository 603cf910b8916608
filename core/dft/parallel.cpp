// Transforms by a team: what kernels ask for when a transform is shared among threads. Transforms of a batch go whole
// to members; of fewer transforms than members each is shared, a pass at a time. Every line is computed as on one
// thread.
#include "core/branch/kernel.h"
#include "core/serv/settings.h"
#include "core/team/team.h"
#include "frame/export.h"
#include "frame/kernels/dft_compute.h"
#include "frame/serv.h"

using namespace orv;
using namespace orv::core;
using namespace orv::kernels::dft;

namespace {

// The bodies of members for a type: whole transforms or planes, lines of higher dimensions, the passes of a plane.
using Body = Kernel<DftTask>;
struct Bodies {
    Body &planes, &lines, &first_pass, &second_pass;
};

class Team {
public:
    Team(const Bodies& bodies, bool forward, DftiNode* head, const void* input, void* output)
        : bodies_(bodies), share_{head, input, output, nullptr, 0, forward, 0, status_}
    {
    }

    i32 run()
    {
        DftiNode& head = *share_.node;
        const i64 count = head.number_of_transforms;
        if (head.work_rank == 1 || count >= head.effective_threads) {
            share_.count = count;
            return pass(bodies_.planes);
        }
        void* middle = nullptr;
        if (needs_middle(head, share_.forward != 0, share_.input, share_.output)) {
            middle = orv_serv_allocate(half_spectrum_pairs(head) * 2 * real_bytes(), 4096);
            if (middle == nullptr) return node_no_memory;
        }
        share_.middle = middle;
        i32 status = node_ok;
        for (i64 t = 0; t < count && status == node_ok; ++t) {
            status = head.work_rank == 2 ? plane() : box();
            share_.input = static_cast<const char*>(share_.input) + input_step();
            share_.output = static_cast<char*>(share_.output) + output_step();
        }
        if (middle != nullptr) orv_serv_deallocate(middle);
        return status;
    }

private:
    // Every member does its share; the first failure is told.
    i32 pass(Body& body)
    {
        DftTask* const task = body.get();
        if (task == nullptr) return node_internal_error;
        const int members = static_cast<int>(min(share_.node->effective_threads, most_threads));
        for (int t = 0; t < members; ++t) status_[t] = node_ok;
        parallel(members, [&](int index, int present) { task(index, present, &share_); });
        i32 status = node_ok;
        for (int t = 0; t < members && status == node_ok; ++t) status = status_[t];
        return status;
    }

    i32 plane()
    {
        const i32 status = pass(bodies_.first_pass);
        return status != node_ok ? status : pass(bodies_.second_pass);
    }

    // Back to reals the first dimension is the last one to go.
    i32 box()
    {
        const i32 rank = share_.node->work_rank;
        const bool falling = is_real() && share_.forward == 0;
        i32 status = falling ? node_ok : pass(bodies_.planes);
        for (i32 k = 2; k < rank && status == node_ok; ++k) {
            share_.dimension = falling ? rank + 1 - k : k;
            status = pass(bodies_.lines);
        }
        return falling && status == node_ok ? pass(bodies_.planes) : status;
    }

    bool is_real() const { return share_.node->forward_domain == CFG_DOMAIN_REAL; }
    i64 real_bytes() const { return share_.node->precision == CFG_DOUBLE ? 8 : 4; }
    // Of one transform, on either side.
    i64 element_bytes(bool of_spectrum) const
    {
        const bool pairs = !is_real() || (of_spectrum && share_.node->conjugate_even_storage == CFG_STORE_COMPLEX);
        return real_bytes() * (pairs ? 2 : 1);
    }
    i64 input_step() const { return share_.node->input_distance * element_bytes(share_.forward == 0); }
    i64 output_step() const
    {
        const bool as_input = !is_real() && share_.node->placement == CFG_IN_PLACE;
        return as_input ? input_step() : share_.node->output_distance * element_bytes(share_.forward != 0);
    }

    Bodies bodies_;
    DftShare share_;
    i32 status_[most_threads];
};

} // namespace

#define BODIES(name, planes, lines, first, second)                                                                     \
    constinit Body name##_planes{kernels::dft::planes()}, name##_lines{kernels::dft::lines()},                         \
        name##_first{kernels::dft::first()}, name##_second{kernels::dft::second()};                                    \
    constexpr Bodies name{name##_planes, name##_lines, name##_first, name##_second};
#define PAR(name, bodies, forward)                                                                                     \
    ORV_EXPORT i32 orv_dft_compute_##name##_par(DftiNode** node, void* data, void*)                                    \
    {                                                                                                                  \
        return Team(bodies, forward, *node, data, data).run();                                                         \
    }
#define PAR_OUT(name, bodies, forward)                                                                                 \
    ORV_EXPORT i32 orv_dft_compute_##name##_par(DftiNode** node, const void* input, void* output, void*)               \
    {                                                                                                                  \
        return Team(bodies, forward, *node, input, output).run();                                                      \
    }
#define ALL(R, d, z, dz, zd, f, fc)                                                                                    \
    namespace {                                                                                                        \
    BODIES(z##_in_place, z##1_nd_par, z##2_nd_par, z##2_c_dft, z##2_r_dft)                                             \
    BODIES(z##_apart, z##1_nd_out_par, z##2_nd_out_par, z##2_c_out_dft, z##2_r_dft)                                    \
    BODIES(d##_forward, d##dz##1_nd_out_par, d##dz##2_nd_out_par, dz##2_c_dft, dz##2_r_dft)                            \
    BODIES(d##_backward, z##zd##1_nd_out_par, z##zd##2_nd_out_par, zd##2_c_dft, zd##2_r_dft)                           \
    BODIES(d##_backward_apart, z##zd##1_nd_out_par, z##zd##2_nd_out_par, zd##2_c_dft, zd##2_r_out_dft)                 \
    BODIES(dz##_all, d##dz##1_nd_out_par, d##dz##2_nd_out_par, d##dz##2_c_out_dft, dz##2_r_dft)                        \
    BODIES(zd##_all, z##zd##1_nd_out_par, z##zd##2_nd_out_par, z##zd##2_c_dft, z##zd##2_r_out_dft)                     \
    }                                                                                                                  \
    PAR(forward_##z, z##_in_place, true)                                                                               \
    PAR(backward_##z, z##_in_place, false)                                                                             \
    PAR_OUT(forward_##z##_out, z##_apart, true)                                                                        \
    PAR_OUT(backward_##z##_out, z##_apart, false)                                                                      \
    PAR(forward_##d, d##_forward, true)                                                                                \
    PAR(backward_##d, d##_backward, false)                                                                             \
    PAR_OUT(forward_##d##_out, d##_forward, true)                                                                      \
    PAR_OUT(backward_##d##_out, d##_backward_apart, false)                                                             \
    PAR_OUT(forward_##dz, dz##_all, true)                                                                              \
    PAR_OUT(forward_##dz##_out, dz##_all, true)                                                                        \
    PAR_OUT(backward_##zd, zd##_all, false)                                                                            \
    PAR_OUT(backward_##zd##_out, zd##_all, false)
ORV_DFT_PRECISIONS(ALL)
