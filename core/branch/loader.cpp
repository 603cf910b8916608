#include "orv/branch.h"

#include <dlfcn.h>
#include <string>

namespace {

// The branch lies beside the core.
void* open_branch()
{
    Dl_info self;
    if (dladdr(reinterpret_cast<void*>(orv_branch_symbol), &self) == 0) return nullptr;
    const std::string core = self.dli_fname;
    return dlopen((core.substr(0, core.rfind('/') + 1) + "liborv_mc3.so").c_str(), RTLD_NOW | RTLD_LOCAL);
}

} // namespace

__attribute__((visibility("default"))) void* orv_branch_symbol(const char* name)
{
    static void* const branch = open_branch();
    return branch ? dlsym(branch, name) : nullptr;
}
