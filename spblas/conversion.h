// What the conversions share: what their job says.
//
// A job has six integers. The other side is the format that is not compressed rows.
//
//   job[0]  0 compressed rows into the other format, else back (dnscsr: 0 from the other format)
//   job[1]  base of indices in compressed rows, 0 or 1
//   job[2]  the same on the other side
//   job[3]  a detail of the other format
//   job[4]  how many entries the result has room for, where its number is not known before
//   job[5]  what is asked for
//
// info: 0 good, -1 no memory, 1 no room or a bad size. Rows follow each other without gaps, from
// pointer ia[0] on, whatever that is. Indices are not checked. Several entries of one place add up where the other
// format has one element for them.
#pragma once

#include "spblas/counting.h"
#include "spblas/vectors.h"

namespace orv::ORV_SPBLAS {

struct Job {
    bool back;
    Int csr, other; // bases
    Int detail, room, asks;
    explicit Job(const Int* job)
        : back(job[0] != 0), csr(job[1]), other(job[2]), detail(job[3]), room(job[4]), asks(job[5])
    {
    }
};

} // namespace orv::ORV_SPBLAS
