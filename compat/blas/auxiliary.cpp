// What the reference library exports beside the BLAS: a comparison of letters, and the error routine for callers that
// have a name as an array.
#include "compat/blas/report.h"

using namespace orv;

namespace {

// A logical result fills the register, so that it is one in either width. Letters are those of the alphabet.
i64 same(char a, char b)
{
    const auto is_letter = [](char c) { return fold(c) >= 'A' && fold(c) <= 'Z'; };
    return a == b || (is_letter(a) && is_letter(b) && fold(a) == fold(b));
}

// The name as a string of a fixed length, filled up with blanks.
struct ArrayName {
    static constexpr i64 length = 32;
    char text[length];

    ArrayName(const char* array, i64 count)
    {
        for (i64 i = 0; i < length; ++i) text[i] = i < count ? array[i] : ' ';
    }
};

} // namespace

STANDARD i64 lsame_(const char* a, const char* b) { return same(*a, *b); }
STANDARD i64 lsame_64_(const char* a, const char* b) { return same(*a, *b); }

STANDARD void xerbla_array_(const char* array, const i32* count, const i32* position)
{
    xerbla_(ArrayName(array, *count).text, position, ArrayName::length);
}
STANDARD void xerbla_array_64_(const char* array, const i64* count, const i64* position)
{
    xerbla_64_(ArrayName(array, *count).text, position, ArrayName::length);
}
