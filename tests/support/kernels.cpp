#include "tests/support/kernels.h"

#include <orv/branch.h>

#include <stdexcept>

namespace orv::test {

void* branch_symbol(const std::string& name)
{
    void* address = orv_branch_symbol(name.c_str());
    if (address == nullptr) throw std::runtime_error("the branch exports no " + name);
    return address;
}

} // namespace orv::test
