/* How every public function is declared: C linkage, exported. */
#ifndef ORV_API_H
#define ORV_API_H

#ifdef __cplusplus
#define ORV_API extern "C" __attribute__((visibility("default")))
#else
#define ORV_API __attribute__((visibility("default")))
#endif

#endif
