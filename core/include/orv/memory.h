/* Work memory. A routine that needs a large block takes it from the C library's allocator; when the routine returns,
   the block stays with the thread for the next call. A thread's end gives its blocks back. */
#ifndef ORV_MEMORY_H
#define ORV_MEMORY_H

#include <orv/api.h>
#include <stddef.h>

/* Bytes of work memory that all threads together may keep. A block that is returned while orv holds more than that, in
   use or kept, goes back to the C library at once; 0 keeps nothing. Never limits what a computation can take. At first
   ORV_MEMORY_LIMIT, by default 64 MiB for each processor. Thread-safe. */
ORV_API void orv_set_memory_limit(size_t bytes);
ORV_API size_t orv_get_memory_limit(void);

/* Bytes of work memory that orv holds now, in use or kept, all threads together. */
ORV_API size_t orv_memory_held(void);

/* Gives all kept blocks of all threads back to the C library. Blocks in use stay. May be called at any time, also
   while other threads compute. */
ORV_API void orv_free_memory(void);

#endif
