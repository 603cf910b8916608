// In place: the methods that ?imatcopy chooses from.
#pragma once

#include "frame/types.h"

namespace orv::trans {

// AB := alpha*AB or alpha*conj(AB), n by n elements without gaps.
template <class T> void scale_square(bool conjugated, u64 n, T alpha, T* ab, u64 ld);

// AB := alpha*AB^T or alpha*AB^H, n by n elements, rows ld apart, by exchanges of mirror images; any alpha multiplies.
template <class T> void turn_square(bool conjugated, u64 n, T alpha, T* ab, u64 ld);

// AB := AB^T, moved by whole tiles. Returns 0 if done; 6, with nothing done, if neither n nor ld is a multiple of the
// tile, so that tiles and cache lines do not meet.
template <class T> i64 turn_tiles(T* ab, u64 n, u64 ld);

// A of rows by cols elements becomes alpha*A^T or alpha*A^H in the same memory, its rows lda apart before and ldb apart
// after. No work space; the time is quadratic at worst.
template <class T> void follow_cycles(bool conjugated, u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb);

// The same without transposition: only the distance of rows changes.
template <class T> void move_rows(bool conjugated, u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb);

} // namespace orv::trans
