/* Loaded before liborv.so: its kernels get no work memory while `no_memory` is set. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stddef.h>
#include <stdint.h>

int no_memory;

void* orv_serv_allocate(int64_t bytes, int64_t alignment)
{
    typedef void* allocate(int64_t, int64_t);
    return no_memory ? NULL : ((allocate*)dlsym(RTLD_NEXT, "orv_serv_allocate"))(bytes, alignment);
}
