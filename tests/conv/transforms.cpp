#include "tests/conv/transforms.h"

#include "core/branch/branches.h"
#include "frame/export.h"
#include "frame/imports.h"
#include "frame/kernels/dft_node.h"
#include "tests/support/kernels.h"

#include <cstdarg>
#include <dlfcn.h>

namespace orv::test::convolution {

Asked& asked()
{
    static Asked instance;
    return instance;
}

namespace {

using namespace orv::imports;

// The core's own behind this one.
template <class F> F* next(const char* name) { return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name)); }

bool refused(const std::string& call)
{
    asked().calls.push_back(call);
    return asked().refuse_at == static_cast<int>(asked().calls.size()) - 1;
}
constexpr i64 refusal = kernels::dft::node_no_memory;

i64 create(const char* name, Handle* handle, i32 domain, i32 rank, const i64* lengths, bool many)
{
    std::string call = "create " + std::to_string(domain);
    for (i32 d = 0; d < rank; ++d) call += " " + std::to_string(lengths[d]);
    if (refused(call)) return refusal;
    ++asked().transforms;
    return many ? next<CreateDftiMd>(name)(handle, domain, rank, lengths)
                : next<CreateDfti1d>(name)(handle, domain, *lengths);
}

template <class T> i32 convolve_line(const char* name, const T* x, i32 nx, const T* y, i32 ny, T* z)
{
    asked().lines.push_back({x, y, z, nx, ny, sizeof(T)});
    if (asked().refuse_lines) return kernels::dft::no_memory;
    return kernel<kernels::dft::Convolution<T>>("dft", name)(x, nx, y, ny, z);
}

} // namespace
} // namespace orv::test::convolution

using namespace orv;
using namespace orv::imports;
using namespace orv::test::convolution;

#define CREATE(p)                                                                                                      \
    ORV_EXPORT i64 orv_dft_dfticreatedescriptor_##p##_1d(Handle* handle, i32 domain, i64 length)                       \
    {                                                                                                                  \
        return create("orv_dft_dfticreatedescriptor_" #p "_1d", handle, domain, 1, &length, false);                    \
    }                                                                                                                  \
    ORV_EXPORT i64 orv_dft_dfticreatedescriptor_##p##_md(Handle* handle, i32 domain, i32 rank, const i64* lengths)     \
    {                                                                                                                  \
        return create("orv_dft_dfticreatedescriptor_" #p "_md", handle, domain, rank, lengths, true);                  \
    }
CREATE(s)
CREATE(d)

ORV_EXPORT i64 orv_dft_dftisetvalue(Handle handle, i32 parameter, ...)
{
    va_list value;
    va_start(value, parameter);
    const bool is_scale = parameter == dfti_backward_scale || parameter == dfti_forward_scale;
    const double scale = is_scale ? va_arg(value, double) : 0;
    const i32 number = is_scale ? 0 : va_arg(value, i32);
    va_end(value);
    if (is_scale) asked().scales.push_back(scale);
    if (refused("set " + std::to_string(parameter) + (is_scale ? "" : " " + std::to_string(number)))) return refusal;
    auto* const set = next<SetDfti>("orv_dft_dftisetvalue");
    return is_scale ? set(handle, parameter, scale) : set(handle, parameter, number);
}
ORV_EXPORT i64 orv_dft_dfticommitdescriptor(Handle handle)
{
    return refused("commit") ? refusal : next<CommitDfti>("orv_dft_dfticommitdescriptor")(handle);
}
ORV_EXPORT i64 orv_dft_dfticomputeforward(Handle handle, void* in, void* out)
{
    return refused("forward") ? refusal : next<ComputeDfti>("orv_dft_dfticomputeforward")(handle, in, out);
}
ORV_EXPORT i64 orv_dft_dfticomputebackward(Handle handle, void* in, void* out)
{
    return refused("backward") ? refusal : next<ComputeDfti>("orv_dft_dfticomputebackward")(handle, in, out);
}
ORV_EXPORT i64 orv_dft_dftifreedescriptor(Handle* handle)
{
    asked().calls.push_back("free");
    --asked().transforms;
    return next<FreeDfti>("orv_dft_dftifreedescriptor")(handle);
}

#define LINES(tag, code, needs)                                                                                        \
    ORV_EXPORT i32 orv_dft_##tag##_ympsConv_32f(const float* x, i32 nx, const float* y, i32 ny, float* z)              \
    {                                                                                                                  \
        return convolve_line("ympsConv_32f", x, nx, y, ny, z);                                                         \
    }                                                                                                                  \
    ORV_EXPORT i32 orv_dft_##tag##_ympsConv_64f(const double* x, i32 nx, const double* y, i32 ny, double* z)           \
    {                                                                                                                  \
        return convolve_line("ympsConv_64f", x, nx, y, ny, z);                                                         \
    }
ORV_EACH_BRANCH(LINES)
