// The service layer that kernels may ask for: provided by the core library, resolved by name, and
// replaceable by any program that exports the same names first. Lengths, sizes and selectors pass by value.
#pragma once

#include "frame/types.h"

extern "C" {

// Aligned work memory, null on exhaustion; alignment is a power of two. Dense kernels ask for 128.
void* orv_serv_allocate(orv::i64 bytes, orv::i64 alignment);
void orv_serv_deallocate(void* block);

// The same contract for objects that outlive a call; calloc clears the block.
void* orv_serv_malloc(orv::i64 bytes, orv::i64 alignment);
void* orv_serv_calloc(orv::i64 count, orv::i64 element_size, orv::i64 alignment);
void orv_serv_free(void* block);

// Nonzero if the pointer is null, in which case it may report the routine's name.
int orv_serv_check_ptr(const void* block, const char* routine, int name_length);

// Nonzero if the two letters agree but for case.
int orv_serv_lsame(const char* a, const char* b, int a_length, int b_length);

// Reports a bad argument by its number, as it is or negated.
void orv_serv_xerbla(const char* routine, const orv::i64* position, int name_length);

// The reproducibility state; the selector is always 1. 1: free choice, anything else: fixed-order twins.
int orv_serv_cbwr_get(int selector);

// entry 0 positive if the rest is valid, 1: first-level data cache, 3: last cache, in bytes.
constexpr int orv_serv_cache_entries = 16;
void orv_serv_cache_info(orv::i32* entries);
orv::i32 orv_serv_get_cache_size(int selector);

int orv_serv_get_microarchitecture(void);
int orv_serv_cpu_detect(void);
int orv_serv_cpuisbulldozer(void);

double orv_serv_d_sign(const double* magnitude, const double* sign);
float orv_serv_s_sign(const float* magnitude, const float* sign);

void orv_serv_libm_sincos(double angle, double* sine, double* cosine);
void orv_serv_libm_sincosf(float angle, float* sine, float* cosine);

const char* orv_serv_get_msg(int number, ...);
void orv_serv_print(int channel, int number, int flag, ...);
void orv_serv_format_print(int channel, const char* format, int count, ...);
void orv_serv_get_version_string_c(char* buffer, int size);
}
