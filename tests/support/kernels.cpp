#include "tests/support/kernels.h"

#include <map>
#include <orv/branch.h>
#include <orv/status.h>
#include <stdexcept>

namespace orv::test {
namespace {

using Name = std::pair<std::string, std::string>; // module and stem

const auto& signatures()
{
    static const auto all = [] {
        std::map<Name, const void*> signatures;
        for (const Prototype& p : prototypes()) signatures[{p.module, p.stem}] = p.signature;
        return signatures;
    }();
    return all;
}

void* found(void* address)
{
    if (address == nullptr) throw std::runtime_error(orv_last_error());
    return address;
}

} // namespace

void* branch_symbol(const std::string& name) { return found(orv_branch_symbol(name.c_str())); }

void* kernel_address(const char* module, const std::string& name) { return found(orv_kernel(module, name.c_str())); }

void* kernel_address(const char* module, const std::string& name, const void* signature)
{
    const auto prototype = signatures().find({module, name});
    if (prototype != signatures().end() && prototype->second != signature)
        throw std::runtime_error("the prototype of " + name + " has another signature");
    return kernel_address(module, name);
}

void* table(const std::string& name)
{
    const char* const tag = orv_branch_name();
    return branch_symbol("orv_" + std::string(tag ? tag : "") + "_" + name);
}

} // namespace orv::test
