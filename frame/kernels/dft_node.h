// The record that describes a transform, and what hangs on it. Kernels own it; the core makes, sets and runs it through
// its table of methods. It is read and written by kernels and core alike, so its layout stands here, once.
#pragma once

#include "frame/kernels/dft_general.h"

#include <cstddef>
#include <cstdio>

namespace orv::kernels::dft {

using u8 = unsigned char;
using u32 = std::uint32_t;

// What functions of a node return.
enum NodeStatus : i32 {
    node_ok = 0,
    node_no_memory = 1,
    node_bad_length = 2,
    node_inconsistent = 3,
    node_unsupported = 6,
    node_internal_error = 7,
    node_too_long = 9,          // beyond the engine's lengths
    node_not_this_method = 100, // never reach the user as such
    node_not_in_table = 101,
    node_no_split = 102 // no two factors for one dimension via two
};

// The values of a node's settings.
enum NodeSetting : u32 {
    CFG_COMMITTED = 30,
    CFG_UNCOMMITTED = 31,
    CFG_DOMAIN_COMPLEX = 32,
    CFG_DOMAIN_REAL = 33,
    CFG_SINGLE = 35,
    CFG_DOUBLE = 36,
    CFG_STORE_COMPLEX = 39,
    CFG_STORE_PACKED = 40,
    CFG_STORE_SPLIT = 42,
    CFG_IN_PLACE = 43,
    CFG_OUT_OF_PLACE = 44,
    CFG_ORDERED = 48,
    CFG_ALLOW = 51,
    CFG_AVOID = 52,
    CFG_NONE = 53,
    CFG_CCS = 54,
    CFG_PACK = 55,
    CFG_PERM = 56,
    CFG_CCE = 57
};

struct IotensorDim {
    i64 n, is, os; // length; strides of input and output in elements
};
struct Iotensor {
    i32 rank; // of the triples in use
    IotensorDim* dims;
};

struct DftiNode;

// A way to do a transform. commit: node_ok when it has taken the node, node_not_this_method or node_not_in_table when
// it does not apply. detach: lets go of the node; none where there is nothing to let go of.
struct DftiMethod {
    i32 (*commit)(const DftiMethod* method, DftiNode* node);
    i32 (*detach)(const DftiMethod* method, DftiNode* node);
};

// What a node can be asked for: the slots of static_methods.
struct DftiMethods {
    i32 (*commit)(DftiNode*);
    i32 (*commit_child)(DftiNode*); // work_lengths and work_batch stand already
    i32 (*get_input_strides)(const DftiNode*, i64*);
    i32 (*get_output_strides)(const DftiNode*, i64*);
    i32 (*set_input_strides)(DftiNode*, const i64*);
    i32 (*set_output_strides)(DftiNode*, const i64*);
    i32 (*get_lengths)(const DftiNode*, i64*);
    i32 (*get_descriptor_name)(const DftiNode*, char*, i64 size);
    i32 (*set_descriptor_name)(DftiNode*, const char*, i64 size, i32 fill);
    i32 (*get_scale)(const DftiNode*, double*, i32 which);
    i32 (*set_scale)(DftiNode*, double, i32 which);
    i32 (*copy_node)(const DftiNode*, DftiNode**);
    i32 (*get_input_distance)(const DftiNode*, i64*);
    i32 (*get_output_distance)(const DftiNode*, i64*);
    i32 (*get_number_of_transforms)(const DftiNode*, i64*);
    i32 (*set_input_distance)(DftiNode*, i64);
    i32 (*set_output_distance)(DftiNode*, i64);
    i32 (*set_number_of_transforms)(DftiNode*, i64);
    i32 (*get_thread_limit)(const DftiNode*, i32*);
    i32 (*set_thread_limit)(DftiNode*, i32);
};
static_assert(sizeof(DftiMethods) == 20 * sizeof(void*));

// One thread's share of a work: its number among so many.
using DftTask = void(i32 thread, i32 threads, void* argument);

// Services that the core lends: the slots of static_orvapi_entries. Without them slots 2 and 3 count as 1, 6 runs the
// tasks one after another, 7 runs a single one, and a limit may be set.
struct DftiServices {
    i32 (*dynamic_threads)();
    void* slot_1;
    i32 (*max_threads)();
    i32 (*processors)();
    void* slot_4;
    i32 (*cache_bytes)();
    void (*parallel_for)(i32 threads, DftTask*, void* argument);
    void (*parallel_together)(i32 threads, DftTask*, void* argument); // all run at once and may wait for each other
    void *slot_8, *slot_9;
    i32 (*fixed_threads)(); // nonzero: a limit may not be set
    void* slot_11;
};
static_assert(sizeof(DftiServices) == 12 * sizeof(void*));

// A transform along one dimension. Split arrays come as an array of two pointers.
using DftiKernel = i32(void* input, void* output, DftiNode* node, void* work);

// Two dimensions. strides0, strides1: input_stride of the first two nodes, with output_stride behind it.
using DftiKernel2d = i32(void* data, const i64* strides0, const i64* strides1, DftiKernel* kernel0, DftiKernel* kernel1,
                         DftiNode* node, void* work);
using DftiKernel2dOut = i32(const void* input, void* output, const i64* strides0, const i64* strides1,
                            DftiKernel* kernel0, DftiKernel* kernel1, DftiNode* node, void* work);

// Of the pointers, nioargs count: data; input, output; real, imaginary; or both of the input, then of the output.
using DftiCompute = i32(DftiNode* node, void* data0, void* data1, void* data2, void* data3);
using DftiPrimitive = i32(const void* src, void* dst, const YmpDftSpec* spec, t_8u* buffer);

struct DftiNode {
    static constexpr u32 magic_word = 0x544644; // "DFT"
    enum Flag : u8 { direct_1d = 1, direct_2d = 2, via_2d_single = 4, no_decomposition = 8 };

    DftiCompute *compute_forward, *compute_backward; // null unless committed
    const DftiMethod* method;                        // in force; none for the plain engine
    void* method_data;                               // the method's own; also the plans of batches
    const DftiMethod* const* bkdown_list;            // ways to try, up to a null
    u32 nioargs;
    u8 flags;
    u32 magic;
    u32 commit_status;
    Iotensor lengths, batch; // as the user gave them
    i32 user_rank, work_rank;
    Iotensor work_lengths, work_batch; // as commit takes them
    void (*uncommit)(DftiNode*);
    void (*destroy)(DftiNode*);
    const DftiMethods* methods;
    DftiServices* api;
    char descriptor_name[10];
    u32 thread_hint;
    u32 forward_domain, precision;
    i64 number_of_transforms;
    u32 complex_storage, real_storage, conjugate_even_storage;
    u32 placement, packed_format;
    i64 input_stride, output_stride;
    u32 chain_hint;
    u32 workspace, ordering, transpose;
    i64 dimension_index, length;
    void *buffer0, *buffer1;
    double committed_forward_scale, committed_backward_scale;
    float forward_scale_s, backward_scale_s;
    double forward_scale, backward_scale;
    i64 length_order;
    i64 input_offset, output_offset;
    i64 input_distance, output_distance;
    u32 use_engine; // 0: a codelet of fixed size
    i64 total_size, total_half_size;
    DftiNode *prev, *next; // a node for each dimension
    DftiKernel *kernel_s_backward, *kernel_s_forward, *kernel_d_backward, *kernel_d_forward;
    DftiKernel *threaded_backward_s, *threaded_forward_s, *threaded_backward_d, *threaded_forward_d;
    DftiKernel *kernel_rs_backward, *kernel_rs_forward, *kernel_rd_backward, *kernel_rd_forward;
    DftiKernel2d *kernel_2d_forward, *kernel_2d_backward;
    DftiKernel2dOut *kernel_2d_forward_out, *kernel_2d_backward_out;
    DftiPrimitive *ymp_rs_backward, *ymp_rs_forward, *ymp_rd_backward, *ymp_rd_forward;
    YmpDftSpec *spec_c_32fc, *spec_c_64fc, *spec_c_32f, *spec_c_64f, *spec_r_32f, *spec_r_64f;
    YmpDftSpec *spec_outord_32fc, *spec_outord_64fc;
    i64 node_buffer_bytes, max_buffer_bytes;
    i32 number_of_user_threads, effective_threads, thread_limit;
    u32 alignment_hint;
    u32 ccs_row_split;
    void* via2d_data;
    void (*via2d_free)(DftiNode*);
    u32 dynamic_threads;
};

// One dimension as two: what a transform of n1*n2 points keeps in via2d_data. Pitches are odd multiples of 8, so that
// neighbouring rows never fall on the same lines of a cache.
struct Via2dData {
    enum Mode : i32 { work_array = 0, in_place = 1, out_of_place = -1 }; // where the transposed matrix stands

    i64 n1, n2;                // n1 <= n2
    i64 ld1, ld2;              // of rows of n1 and of n2 elements
    DftiNode *child1, *child2; // transforms of n1 and of n2 points; one node if the two are equal
    void* twist;               // W[-8] to W[n1+n2-1]: exp(-2*pi*i*j*j/(4*n1*n2)) at W[j]
    i32 mode;
};
static_assert(sizeof(Via2dData) == 64);

// ---- What functions look like

using TensorCreate = i32(Iotensor* t, i32 rank);
using TensorDestroy = void(Iotensor* t);
using TensorCopy = i32(Iotensor* dst, const Iotensor* src, i32 mode); // mode: a TensorMode
using TensorTest = i32(const Iotensor* t);
using TensorChange = void(Iotensor* t);
using TensorJoin = i32(Iotensor* dst, const Iotensor* a, const Iotensor* b);
using TensorPrint = void(const Iotensor* t, std::FILE* stream);

// The strides that both sides of a copied tensor get.
enum TensorMode : i32 { strides_kept = 0, strides_of_input = 1, strides_of_output = 2, strides_exchanged = 3 };

using CreateNode = i32(DftiNode** out, u32 precision, u32 domain, i32 rank, const i64* lengths);
using Create1d = i32(DftiNode** out, i64 length);
using CreateMd = i32(DftiNode** out, i32 rank, const i64* lengths);
using CopyNode = i32(const DftiNode* node, DftiNode** out);
using NodeTest = i32(const DftiNode* node);
using NodeStep = i32(DftiNode* node);
using GetVersionString = i32(char* buffer, i64 size);

// The settings of a node; scale_forward and scale_backward are those of setScale.
enum ScaleOf : i32 { scale_of_forward = 4, scale_of_backward = 5 };
using GetInt64s = i32(const DftiNode* node, i64* out);
using SetInt64s = i32(DftiNode* node, const i64* values);
using SetInt64 = i32(DftiNode* node, i64 value);
using GetInt32 = i32(const DftiNode* node, i32* out);
using SetInt32 = i32(DftiNode* node, i32 value);
using GetName = i32(const DftiNode* node, char* out, i64 size);
using SetName = i32(DftiNode* node, const char* text, i64 size, i32 fill);
using GetScale = i32(const DftiNode* node, double* out, i32 which);
using SetScale = i32(DftiNode* node, double value, i32 which);

// Parts of commit. head is the first node of a chain, node any of it.
using CommitCore = i32(DftiNode* head);
using ThreadedModeDefinition = i32(DftiNode* node, u32 dynamic);
using YmpInit = i32(DftiNode* node, DftiNode* head);
using ComplexForReal = i32(DftiNode** node, DftiNode* head);
using SetCodelet = void(DftiNode* node);
using CanScale = i32(const DftiNode* node, i32* flag); // flag may be null; a ScaleFlag of frame/kernels/dft_fft.h
using TransferError = i32(i32 primitive_status);
template <class R> using PackInverse = i32(const R* src, R* dst, const YmpDftSpec* spec, t_8u* buffer);

// The steps of one dimension as two, on a matrix of n1 rows of n2 elements that stand stride apart. Steps 1 and 2
// transform its columns and twist them, the first one as number `column` of the whole; they leave them in target, as
// columns at pitch ld2 if the mode has a work array, else as rows behind each other. Without a target the matrix has
// been transposed, and so they do on its rows in place. Step 3 transforms the columns of n2 elements of a matrix of n1
// columns in place. Kernels are of the first and of the second child.
template <class T>
using FourStep12 = i32(DftiNode* node, i64 n1, i64 n2, T* data, T* target, DftiKernel* kernel, i64 stride, t_8u* buffer,
                       const Via2dData* via, i64 column, i32 sign);
template <class T>
using FourStep3 = i32(real_t<T> scale, T* data, i64 n1, i64 n2, i64 ld, DftiKernel* kernel, i64 stride, DftiNode* child,
                      t_8u* buffer);

#define ORV_NAME(name, ...) ORV_PROTOTYPE(dft, name, name, __VA_ARGS__)
#include "frame/kernels/dft_node.def"
#undef ORV_NAME

} // namespace orv::kernels::dft

// What the core adds to the commit of a node that no other method has taken: it builds the chain of nodes, one for each
// dimension, and goes on with commit_descriptor_core_* of the same letters.
extern "C" {
#define ORV_DFT_DECLARE(p, d)                                                                                          \
    orv::kernels::dft::CommitCore orv_dft_commit_node_##p##_##d##_1d_omp, orv_dft_commit_node_##p##_##d##_md_omp;
ORV_DFT_DECLARE(d, c2c)
ORV_DFT_DECLARE(d, r2c)
ORV_DFT_DECLARE(s, c2c)
ORV_DFT_DECLARE(s, r2c)
#undef ORV_DFT_DECLARE
}
