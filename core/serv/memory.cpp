#include "frame/serv.h"
#include "frame/symbol.h"

#include <cstdlib>

ORV_EXPORT void* orv_serv_allocate(orv::i64 bytes, orv::i64 alignment)
{
    void* block = nullptr;
    return posix_memalign(&block, alignment < 16 ? 16 : alignment, bytes) == 0 ? block : nullptr;
}
ORV_EXPORT void orv_serv_deallocate(void* block) { free(block); }
ORV_EXPORT void* orv_serv_malloc(orv::i64 bytes, orv::i64 alignment) { return orv_serv_allocate(bytes, alignment); }
ORV_EXPORT void orv_serv_free(void* block) { free(block); }
ORV_EXPORT int orv_serv_check_ptr(const void* block, const char*, int) { return block == nullptr; }
ORV_EXPORT int orv_serv_cbwr_get(int) { return 1; }
ORV_EXPORT void orv_serv_cache_info(orv::i32* entries) { entries[0] = 0; }
ORV_EXPORT int orv_serv_get_microarchitecture() { return 0; }
ORV_EXPORT int orv_serv_lsame(const char* a, const char* b, int, int) { return ((*a ^ *b) & 0xdf) == 0; }
