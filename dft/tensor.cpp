// Tensors: small arrays of dimensions, each a length with the strides of input and output.
//
// A tensor's array has room for as many dimensions as its rank says, which shrinks when dimensions are taken out: what
// was taken out is not remembered. Growing and joining give 1 without memory, and leave the destination as it was.
#include "dft/node.h"

namespace orv::dft {
namespace {

constexpr i64 alignment = 16;

IotensorDim* allocate(i32 rank)
{
    const i64 dims = max(rank, 1); // a block even of no dimension: null would mean no memory
    return static_cast<IotensorDim*>(orv_serv_malloc(dims * static_cast<i64>(sizeof(IotensorDim)), alignment));
}

i32 create(Iotensor* t, i32 rank)
{
    t->rank = rank;
    t->dims = allocate(rank);
    return t->dims == nullptr;
}

void destroy(Iotensor* t)
{
    release(t->dims);
    t->dims = nullptr;
}

IotensorDim with_strides(IotensorDim d, i32 mode)
{
    switch (mode & strides_exchanged) {
    case strides_of_input:
        return {d.n, d.is, d.is};
    case strides_of_output:
        return {d.n, d.os, d.os};
    case strides_exchanged:
        return {d.n, d.os, d.is};
    default:
        return d;
    }
}

// Makes t, of whatever rank, what body writes into an array of that many dimensions.
template <class Body> i32 fill(Iotensor* t, i32 rank, Body body)
{
    IotensorDim* dims = t->dims;
    if (t->rank < rank || dims == nullptr) {
        dims = allocate(rank);
        if (dims == nullptr) return 1;
    }
    body(dims);
    if (dims != t->dims) {
        destroy(t);
        t->dims = dims;
    }
    t->rank = rank;
    return 0;
}

i32 copy(Iotensor* dst, const Iotensor* src, i32 mode)
{
    return fill(dst, src->rank, [=](IotensorDim* dims) {
        for (i32 k = 0; k < src->rank; ++k) dims[k] = with_strides(src->dims[k], mode);
    });
}

i32 join(Iotensor* dst, const Iotensor* a, const Iotensor* b)
{
    return fill(dst, a->rank + b->rank, [=](IotensorDim* dims) {
        for (i32 k = 0; k < a->rank; ++k) dims[k] = a->dims[k];
        for (i32 k = 0; k < b->rank; ++k) dims[a->rank + k] = b->dims[k];
    });
}

i32 is_inplace(const Iotensor* t)
{
    for (i32 k = 0; k < t->rank; ++k)
        if (t->dims[k].is != t->dims[k].os) return 0;
    return 1;
}

void exchange(IotensorDim& a, IotensorDim& b)
{
    const IotensorDim d = a;
    a = b;
    b = d;
}

void sort(Iotensor* t)
{
    for (i32 k = 0; k < t->rank; ++k) {
        i32 least = k;
        for (i32 j = k + 1; j < t->rank; ++j)
            if (t->dims[j].is < t->dims[least].is) least = j;
        if (least != k) exchange(t->dims[k], t->dims[least]);
    }
}

void remove(Iotensor* t, i32 k)
{
    --t->rank;
    for (; k < t->rank; ++k) t->dims[k] = t->dims[k + 1];
}

void remove_ones(Iotensor* t)
{
    for (i32 k = t->rank - 1; k >= 0 && t->rank > 1; --k)
        if (t->dims[k].n == 1) remove(t, k);
}

// Neighbours that together are one longer dimension become that one, from the last to the first: a pair that did not
// match before does not match once one of the two is longer.
void compress(Iotensor* t)
{
    for (i32 k = t->rank - 1; k > 0; --k) {
        IotensorDim& below = t->dims[k - 1];
        const IotensorDim above = t->dims[k];
        if (above.is != below.n * below.is || above.os != below.n * below.os) continue;
        below.n *= above.n;
        remove(t, k);
    }
}

void print(const Iotensor* t, std::FILE* stream)
{
    if (t == nullptr) return;
    for (i32 k = 0; k < t->rank; ++k) {
        const IotensorDim& d = t->dims[k];
        std::fprintf(stream, "%s%li:%ti:%ti", k == 0 ? "" : "x", d.n, d.is, d.os);
    }
    std::fflush(stream);
}

} // namespace

PRIMITIVE(2, Iotensor_create, create)
PRIMITIVE(1, Iotensor_destroy, destroy)
PRIMITIVE(3, Iotensor_copy, copy)
PRIMITIVE(1, Iotensor_is_inplace, is_inplace)
PRIMITIVE(1, Iotensor_sort, sort)
PRIMITIVE(1, Iotensor_remove1, remove_ones)
PRIMITIVE(1, Iotensor_compress, compress)
PRIMITIVE(3, Iotensor_join, join)
PRIMITIVE(2, Iotensor_print, print)

} // namespace orv::dft
