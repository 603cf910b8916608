// Transforms of many columns at once, and complex transforms of 2 to 64 points. The former carry no tag:
//
//   orvgDFT<direction>Batch<form><operation>_<type>   plans, in one block of memory each, and what runs by them
//   owngDFT<direction>Batch_<type>w7_env<k>_<part>    the kinds of objects in a plan, and the rules that choose them
//   orvgArena, orvgEnvList, orvgChList                what plans are made of
//
// Forms, with element j of column c of n points at
//
//   none  j + n*c, from one array to another        T   read from j*width + c, written to j + n*c
//   I     the same in place                         IT  j*width + c, in place
//
// Directions: Fwd exp(-2*pi*i/n), Inv its conjugate; nothing is divided.
#pragma once

#include "frame/kernels/dft_node.h"

namespace orv::kernels::dft {

// Memory that is given out from below. The word, at whatever address the memory has, is the next free one.
using BatchArena [[gnu::aligned(1)]] = t_8u*;

struct BatchEnv;
struct BatchEnvTable {
    i64 size; // of the object
    void (*del)(BatchEnv*);
    i32 (*plan)(BatchEnv*);     // links and sizes
    void (*precomp)(BatchEnv*); // fills tables; none where plan does
};
struct BatchEnv {
    const BatchEnvTable* table;
    BatchArena* arena;
};

struct BatchEnvList {
    BatchEnv* env;
    BatchEnvList* next;
    BatchArena* arena;
    i64 alignment;
};
struct BatchChList {
    i64* data;
    BatchArena* arena;
    i64 alignment, size;
};

// The top object of a plan, at the place where the arena began.
struct BatchPlan {
    BatchEnv env;
    BatchChList* lists[4];
    BatchEnvList* children;
    i64 apart;    // of the points of a shortest transform, negative backwards
    i64 together; // columns that are worth being taken at once
    i64 rows, length, input_width, output_width, columns;
    enum Form : i64 { from_array_to_array = 0, in_place = 1, strided = 2 };
    i64 form; // the sum of what it is
};
static_assert(offsetof(BatchPlan, rows) == 9 * 8 && offsetof(BatchPlan, columns) == 13 * 8);

// Who runs a plan: one of so many threads, each with its share of the columns and with a buffer of its own.
struct BatchThread {
    i64 threads, index;
    void* buffer;
};

// Plans of one length for batches of 2^k columns, as commit makes them for a node.
struct BatchPlans {
    static constexpr int count = 13;
    i64 thread_bytes; // of the most demanding one
    i64 widest;       // columns that are worth being taken at once
    void *forward[count], *inverse[count];
};

// rows and the last argument are 1. 3: null, or a number below 1; 7: nothing covers the length.
using BatchGetSize = i32(i64 n, i64 rows, i64 columns, i64 width, i64 one, i64* bytes);
using BatchInit = i32(void* memory, i64 n, i64 rows, i64 columns, i64 width, i64 one);
using BatchInitAlloc = i32(void** plan, i64 n, i64 rows, i64 columns, i64 width, i64 one);
using BatchFree = i32(void* plan);
template <class T> using Batch = i32(const T* in, T* out, const BatchThread* ctx, const void* plan);
template <class T> using BatchInPlace = i32(T* data, const BatchThread* ctx, const void* plan);

// All of count columns that are side by side, in place, by the plans of the node and scaled. data2 is not looked at.
template <class T> using BatchAll = i32(T* data, T* data2, DftiNode* node, const i64* count);
using BatchDetach = i32(const DftiMethod* method, DftiNode* node);

// Parts of plans.
using ArenaMalloc = void*(BatchArena* arena, i64 size);
using ArenaFree = void(BatchArena* arena, void* address, i64 size);
using EnvListInit = void(BatchEnvList* node, BatchArena* arena, i64 alignment);
using EnvListAdd = i32(BatchEnvList* head, BatchEnv* env);
using EnvListEnd = void(BatchEnvList* head);
using ChListInit = void(BatchChList* list, BatchArena* arena, i64 alignment);
using ChListSetSize = i32(BatchChList* list, i64 n);
using ChListEnd = void(BatchChList* list);
using BatchAddMem = i64(i64 count, i64 alignment); // bytes in the arena
using HasBaseCase = i32(i64 n);
using Divisors = i64(i64* out, i64 n); // returns how many: 2, or 0
using ChooseBaseRule = i64(i64 n);
using ChoosePlanRule = i64(i64 n, i64 rows, i64 columns);

} // namespace orv::kernels::dft

// X(n, ...) for each length with a function of its own.
#define ORV_DFT_SMALL_RADIXES(X, ...)                                                                                  \
    ORV_DFT_EIGHT(X, 2, 3, 4, 5, 6, 7, 8, 9, __VA_ARGS__)                                                              \
    ORV_DFT_EIGHT(X, 10, 11, 12, 13, 14, 15, 16, 17, __VA_ARGS__)                                                      \
    ORV_DFT_EIGHT(X, 18, 19, 20, 21, 22, 23, 24, 25, __VA_ARGS__)                                                      \
    ORV_DFT_EIGHT(X, 26, 27, 28, 29, 30, 31, 32, 33, __VA_ARGS__)                                                      \
    ORV_DFT_EIGHT(X, 34, 35, 36, 37, 38, 39, 40, 41, __VA_ARGS__)                                                      \
    ORV_DFT_EIGHT(X, 42, 43, 44, 45, 46, 47, 48, 49, __VA_ARGS__)                                                      \
    ORV_DFT_EIGHT(X, 50, 51, 52, 53, 54, 55, 56, 57, __VA_ARGS__)                                                      \
    X(58, __VA_ARGS__)                                                                                                 \
    X(59, __VA_ARGS__)                                                                                                 \
    X(60, __VA_ARGS__) X(61, __VA_ARGS__) X(62, __VA_ARGS__) X(63, __VA_ARGS__) X(64, __VA_ARGS__)
#define ORV_DFT_EIGHT(X, a, b, c, d, e, f, g, h, ...)                                                                  \
    X(a, __VA_ARGS__)                                                                                                  \
    X(b, __VA_ARGS__)                                                                                                  \
    X(c, __VA_ARGS__)                                                                                                  \
    X(d, __VA_ARGS__) X(e, __VA_ARGS__) X(f, __VA_ARGS__) X(g, __VA_ARGS__) X(h, __VA_ARGS__)

// X(direction, type, T) for each instance of the batches.
#define ORV_DFT_BATCHES(X)                                                                                             \
    X(Fwd, 32fc, t_32fc)                                                                                               \
    X(Fwd, 64fc, t_64fc)                                                                                               \
    X(Inv, 32fc, t_32fc) X(Inv, 64fc, t_64fc)

namespace orv::kernels::dft {

inline constexpr int small_radixes = 63; // kernels for 2 to 64 points, by n - 2

#if __has_include("frame/branch.h")
#define ORV_UNTAGGED(name, ...) ORV_EXPORT __VA_ARGS__ name;
#define DFT_TABLE(name) ORV_EXPORT DftiKernel* const ORV_KERNEL(dft, name)[small_radixes];
DFT_TABLE(zsmallradix_forward)
DFT_TABLE(zsmallradix_inverse)
#undef DFT_TABLE
#else
#define ORV_UNTAGGED(name, ...)                                                                                        \
    struct name {                                                                                                      \
        using signature = __VA_ARGS__;                                                                                 \
        static constexpr const char* symbol = #name;                                                                   \
    };
#endif
#define ORV_NAME(name, ...) ORV_PROTOTYPE(dft, name, name, __VA_ARGS__)
#include "frame/kernels/dft_batch.def"
#undef ORV_NAME
#undef ORV_UNTAGGED

} // namespace orv::kernels::dft
