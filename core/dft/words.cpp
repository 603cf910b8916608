// How a transform is done, in words.
#include "core/dft/long_line.h"
#include "core/dft/nodes.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>

using namespace orv;
using namespace orv::core::dft;
using namespace orv::kernels::dft;

namespace {

// By the end of the symbol of a method, behind the tag of its branch.
struct Phrase {
    const char *stem, *words;
    bool shares; // among threads
};
constexpr Phrase phrases[] = {
    {"_bkd_as2s_n_m", "split arrays, dimension by dimension (as2s_n_m)", true},
    {"_bkd_as2s_1_m", "split arrays, one batch after the other (as2s_1_m)", true},
    {"_bkd_ds2s_1_1", "split arrays in rows (ds2s_1_1)", true},
    {"_bkd_ss2s_1_1", "split arrays in rows (ss2s_1_1)", true},
    {"_bkd3_c", "straight code for the length (bkd3_c)", false},
    {"_bkd3_z", "straight code for the length (bkd3_z)", false},
    {"_bkd2_c", "straight code for the length (bkd2_c)", false},
    {"_bkd2_z", "straight code for the length (bkd2_z)", false},
    {"_bkd1_c", "the engine, with its work area on the stack (bkd1_c)", false},
    {"_bkd1_z", "the engine, with its work area on the stack (bkd1_z)", false},
    {"_tiny_3d_c2c", "a small cube (tiny_3d_c2c)", false},
    {"_tiny_3d_z2z", "a small cube (tiny_3d_z2z)", false},
    {"_tiny_3d_c2s", "a small cube (tiny_3d_c2s)", false},
    {"_tiny_3d_z2d", "a small cube (tiny_3d_z2d)", false},
    {"_par_1d_r2c_d", "a long real signal shared by threads (par_1d_r2c_d)", true},
    {"_par_1d_r2c_s", "a long real signal shared by threads (par_1d_r2c_s)", true},
    {"_bluestein_c", "a convolution with a chirp (bluestein_c)", true},
    {"_bluestein_z", "a convolution with a chirp (bluestein_z)", true},
    {"_bluestein_s", "a convolution with a chirp (bluestein_s)", true},
    {"_bluestein_d", "a convolution with a chirp (bluestein_d)", true},
};

bool ends_in(const char* text, const char* end)
{
    const std::size_t length = std::strlen(text), tail = std::strlen(end);
    return length >= tail && std::strcmp(text + length - tail, end) == 0;
}

// Null for methods without a symbol: those of a node for itself.
const Phrase* phrase_for(const DftiMethod* method)
{
    Dl_info found;
    if (dladdr(method, &found) == 0 || found.dli_saddr != method) return nullptr;
    for (const Phrase& phrase : phrases)
        if (ends_in(found.dli_sname, phrase.stem)) return &phrase;
    return nullptr;
}

const char* words_for(const DftiNode* node)
{
    if (node->method)
        if (const Phrase* phrase = phrase_for(node->method)) return phrase->words;
    if (node->via2d_data) return "one dimension as two (via_2d)";
    for (const DftiNode* n = node; n; n = n->next)
        if (n->method) return "columns in batches (batch)";
    switch (node->work_rank) {
    case 1:
        return "the engine (legacy)";
    case 2:
        return "rows and columns (legacy)";
    default:
        return "dimension by dimension (legacy)";
    }
}

i32 threads_used(const DftiNode* node)
{
    const Phrase* const phrase = node->method ? phrase_for(node->method) : nullptr;
    return phrase && !phrase->shares ? 1 : node->effective_threads;
}

} // namespace

int orv::core::dft::threads_used(const orv_dft& dft)
{
    if (!dft.committed) return 0;
    i64 threads = dft.line_threads;
    for (const DftiNode* node : dft.node)
        if (node) threads = max(threads, ::threads_used(node));
    return static_cast<int>(threads);
}

const char* orv_dft_method(const orv_dft* dft)
{
    static thread_local char line[400];
    if (dft == nullptr) return "no transform";
    if (!dft->committed) return "not committed";
    const DftiNode* const one = dft->node[forward] ? dft->node[forward] : dft->node[backward];
    if (one == nullptr) return "nothing to do";
    const DftiNode* const other = dft->node[backward] ? dft->node[backward] : one;
    const char *const words = words_for(one), *const words_back = words_for(other);
    const int threads = threads_used(*dft);
    const i64 bytes = dft->line_threads > 1 ? line_bytes(*dft)
                                            : dft->staged_bytes + max(one->max_buffer_bytes, other->max_buffer_bytes);
    std::snprintf(line, sizeof line, "%s%s%s; %d thread%s; at least %" PRId64 " bytes of work memory a call", words,
                  words == words_back ? "" : ", and back: ", words == words_back ? "" : words_back, threads,
                  threads == 1 ? "" : "s", bytes);
    return line;
}
