/* Which body of kernels runs, and direct access to it. */
#ifndef ORV_BRANCH_H
#define ORV_BRANCH_H

#ifdef __cplusplus
extern "C" {
#endif

/* Address of an exported kernel of the branch, by its full symbol name, or null if the branch exports no such name
   or cannot be opened. The address stays valid as long as the library is loaded. Thread-safe. */
void* orv_branch_symbol(const char* name);

#ifdef __cplusplus
}
#endif
#endif
