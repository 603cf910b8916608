/* The environment variables that orv reads, once, when the first of them is needed. `orv info` lists them. */
#ifndef ORV_SETTINGS_H
#define ORV_SETTINGS_H

#include <orv/api.h>

typedef struct {
    const char* name;
    const char* meaning;
    const char* fallback; /* what holds when the variable is not set, in words */
    const char* value;    /* as the environment gives it; null if not set */
    const char* problem;  /* why the value makes no sense and what to give; null if it does */
} orv_setting;

/* Fills in variable number index (from 0) and returns 1; returns 0 when there are no more. The texts stay valid as
   long as the library is loaded. Thread-safe. */
ORV_API int orv_get_setting(int index, orv_setting* setting);

#endif
