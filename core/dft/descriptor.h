// A transform as a program describes it. Its nodes, which kernels work by, are made of that when it is committed.
#pragma once

#include "core/serv/status.h"
#include "frame/kernels/dft_node.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/dft.h"

namespace orv::core::dft {

using kernels::dft::DftiNode;

enum Direction { forward, backward, both_directions };
enum SideName { signal, spectrum, both_sides };

// A number that a program may leave to the core.
struct Choice {
    bool made;
    i64 value;
};

struct Side {
    bool has_strides;
    i64 strides[ORV_DFT_MAX_RANK];
    Choice distance, offset;
};

struct Settings {
    int precision, domain, rank;
    i64 lengths[ORV_DFT_MAX_RANK];
    int placement, storage, format, ordering, workspace, directions;
    i64 transforms;
    int threads;
    double scales[both_directions];
    Side side[both_sides];

    bool is_real() const { return domain == ORV_DFT_REAL; }
    bool in_place() const { return placement == ORV_DFT_IN_PLACE; }
    bool is_split() const { return storage == ORV_DFT_SPLIT; }
    bool is_half() const { return is_real() && format == ORV_DFT_HALF; }
    i64 real_bytes() const { return precision == ORV_DFT_DOUBLE ? 8 : 4; }
};

// One transform, in place, without gaps, unscaled.
Settings defaults(int precision, int domain, int rank, const i64* lengths);

// The status, recorded for the routine and its argument, of lengths that are none.
orv_status check_lengths(const char* routine, int argument, int rank, const i64* lengths);

// Where the elements of a side stand, all of it decided.
struct Layout {
    i64 strides[ORV_DFT_MAX_RANK];
    i64 distance, offset;
};

// Elements of a dimension on that side: fewer than its length in a half spectrum, more in a CCS one.
i64 extent(const Settings& s, SideName side, int dimension);
Layout layout(const Settings& s, SideName side);

// Bytes of an element of one array of that side.
i64 element_bytes(const Settings& s, SideName side);

// The status of settings that contradict each other or that no kernel serves, with a sentence; ORV_OK else.
orv_status check(const Settings& s);

} // namespace orv::core::dft

struct orv_dft {
    orv::core::dft::Settings settings;
    bool committed;
    // One or two; those of both directions may be the same.
    orv::core::dft::DftiNode* node[orv::core::dft::both_directions];
    // Bytes of work memory for interleaved spectra, where the program's are split and no kernel has that.
    orv::i64 staged_bytes;
    // Of a single line that the core shares; 1 if the node does it all.
    int line_threads = 1;
};
