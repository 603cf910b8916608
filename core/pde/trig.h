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
    orv::imports::Handle handle; // of n reals, packed, in place

    // By a kernel: its arrays; dpar is of the element type.
    orv::i64 ipar[orv::kernels::pdett::ipar_size];
    void* dpar;

    // The careful way, if it is gone: a table of the element type, or the transforms of half the size that make up one
    // between whole points; without those the handle is of 2n reals. work: elements that a run needs beside the row.
    bool careful;
    void* turns;
    orv_trig *evens, *odds;
    orv::i64 work;
};

namespace orv::core::pde {

// Fills what a commit would, each entry rounded from its own angle: kernels add up steps of pi/n, which in single
// precision leaves the angles of a long row far off.
void fill_tables(float* dpar, i64 kind, i64 n);
void fill_tables(double* dpar, i64 kind, i64 n);

// Whether no kernel runs: between half points kernels are as careful as can be, and a single cell needs none.
bool is_careful(const orv_trig& trig);

// What the careful way needs; the status recorded.
orv_status prepare_careful(orv_trig& trig);

// A committed descriptor of n reals, whose method does not depend on threads; a status of the layer of transforms.
i64 make_handle(imports::Handle& handle, int precision, i64 n);
orv_status explain(i64 status, i64 points);

// One row in place, unscaled, the careful way; false if there is no memory.
bool run_careful(const orv_trig& trig, bool is_forward, float* row, float* work);
bool run_careful(const orv_trig& trig, bool is_forward, double* row, double* work);

} // namespace orv::core::pde
