// A sine or cosine transform as the core holds it, and its tables.
#pragma once

#include "core/serv/status.h"
#include "frame/kernels/pdett.h"
#include "orv/trig.h"

struct orv_trig {
    int precision, kind;
    orv::i64 points, n;
    double scales[2]; // forward, backward
    int threads;
    orv::i64 ipar[orv::kernels::pdett::ipar_size];
    void* dpar; // of the element type
    orv::imports::Handle handle;
};

namespace orv::core::pde {

// Fills what a commit would, each entry rounded from its own angle: kernels add up steps of pi/n, which in single
// precision leaves the angles of a long row far off.
void fill_tables(float* dpar, i64 kind, i64 n);
void fill_tables(double* dpar, i64 kind, i64 n);

} // namespace orv::core::pde
