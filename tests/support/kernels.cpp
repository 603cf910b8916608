#include "tests/support/kernels.h"

#include <orv/branch.h>
#include <orv/status.h>

#include <stdexcept>

namespace orv::test {
namespace {

void* found(void* address)
{
    if (address == nullptr) throw std::runtime_error(orv_last_error());
    return address;
}

} // namespace

void* branch_symbol(const std::string& name) { return found(orv_branch_symbol(name.c_str())); }

void* kernel_address(const char* module, const std::string& name) { return found(orv_kernel(module, name.c_str())); }

void* table(const std::string& name)
{
    const char* const tag = orv_branch_name();
    return branch_symbol("orv_" + std::string(tag ? tag : "") + "_" + name);
}

} // namespace orv::test
