// Grids of names: families of hundreds of functions that follow from one list.
//
// A list is a macro that hands every member to a macro M as tokens: the letters of its name, each also an option of its
// body. Who reads the list defines M, and makes of each member a kernel, a declaration or a public routine. The list
// has the parameters of each operation, too, as text: the compiler counts them, nobody else.
//
//   ORV_EXPORT void symbol(ORV_PARAMETERS(ORV_COUNT(text), value_argument, body)) { body(ORV_NAMES(ORV_COUNT(text))); }
#pragma once

#include "frame/interface.h"

// The number of parameters in a text, 1 to 16.
#define ORV_COUNT(...) ORV_COUNTED(__VA_ARGS__, 16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define ORV_COUNTED(_1, _2, _3, _4, _5, _6, _7, _8, _9, _10, _11, _12, _13, _14, _15, _16, n, ...) n

#define ORV_COUNT_REST(...) ORV_COUNT_BEHIND_FIRST(__VA_ARGS__) // without the first
#define ORV_COUNT_BEHIND_FIRST(first, ...) ORV_COUNT(__VA_ARGS__)

// Some parameters a0, a1, ... with the types type<F, 0>, type<F, 1>, ..., and their names.
#define ORV_PARAMETERS(count, type, F) ORV_JOIN(ORV_PARAMETERS_, count)(type, F)
#define ORV_NAMES(count) ORV_JOIN(ORV_NAMES_, count)

#define ORV_JOIN(a, b) ORV_JOINED(a, b)
#define ORV_JOINED(a, b) a##b
