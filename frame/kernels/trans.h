// The kernels of matrix copy and transposition. Their symbols carry a second orv_ behind the tag; here names are
// without.
#pragma once

#include "frame/kernels/prototype.h"

#define TRANS(name) ORV_KERNEL(trans, orv_##name)

namespace orv::kernels::trans {

template <class T>
using Omatcopy = void(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, T* b, u64 ldb);
template <class T>
using Omatcopy2 = void(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b,
                       u64 ldb, u64 strideb);
template <class T> // row-major, of the form that the name tells
using Omatcopy2OfForm = void(u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb, u64 strideb);
template <class T>
using Omatadd = void(char ordering, char transa, char transb, u64 rows, u64 cols, T alpha, const T* a, u64 lda, T beta,
                     const T* b, u64 ldb, T* c, u64 ldc);
template <class T>
using OmataddOfForm = void(u64 rows, u64 cols, T alpha, const T* a, u64 lda, T beta, const T* b, u64 ldb, T* c,
                           u64 ldc);
template <class T>
using Imatcopy = void(char ordering, char trans, u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb);
template <class T> using ImatcopyMipt = void(u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb);
template <class T> using ScaleSquare = void(u64 n, T alpha, T* ab);
template <class T> using TurnSquare = void(u64 n, T alpha, T* ab, u64 lda);
template <class T> using TurnSquareTeam = void(u64 n, T* ab, u64 lda, u64 member, u64 members);
template <class T> using TurnTiles = void(T* a, T* b, u64 lda, u64 count);
template <class T> using Sqtrans = i64(T* ab, u64 n, u64 lda);
template <class T> using SqtransTeam = void(u64 n, T* ab, u64 lda, u64 member, u64 members, i64* status);
using Empty = void();

#define ORV_NAME(name, ...) ORV_PROTOTYPE(trans, name, orv_##name, __VA_ARGS__)
#include "frame/kernels/trans.def"
#undef ORV_NAME

} // namespace orv::kernels::trans
