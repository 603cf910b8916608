// The texts of numbered messages, in ascending order. A text may hold printf-like places for what the caller adds; one
// text stands for one number, here and nowhere else.
#pragma once

namespace orv::core {

struct Message {
    int number;
    const char* text;
};

inline constexpr Message catalogue[] = {
    {0, "orv:"}, // opens a printed report
    {201, "the log file of the Poisson library cannot be opened"},
    {202, "make the current folder writable, or let the messages go to standard output"},

    // Sine and cosine transforms. Where positions are told, from 410 to 448 they count from 1.
    {396, "orv: sine and cosine transforms"},
    {397, "Error:"},
    {398, "Warning:"},
    {407, "a diagnostic was asked for by a code that has no text"},
    {408, "the log file %s cannot be opened"},
    {409, "make the current folder writable, or let the messages go to standard output"},
    {410, "commit: ipar(7), the status of the last operation, is %lli instead of 0"},
    {412, "commit: ipar(1), the size n of the transform, is %lli"},
    {414, "ipar(6), the kind of the transform, is %lli"},
    {422, "ipar(7), the status of the last operation, is %lli instead of 0"},
    {426, "ipar(1) is %lli"},
    {428, "commit: dpar(1), the tolerance of what should be 0 at the ends, is %e"},
    {433, "commit: f(1) is %s, and not 0 within the tolerance of %e"},
    {436, "commit: f(n+1) is %s, and not 0 within the tolerance of %e"},
    {439, "commit: f(n+1) is %s, and not 0 within the tolerance of %e"},
    {442, "commit: ipar(10), the number of threads, is %lli; it has been replaced by %lli"},
    {445, "commit: f(1) is %s, and not 0 within the tolerance of %e"},
    {449, "commit: ipar[6], the status of the last operation, is %lli instead of 0"},
    {450, "look into what went wrong there, set the status to 0, and commit again"},
    {451, "commit: ipar[0], the size n of the transform, is %lli"},
    {452, "n has to be at least 2"},
    {453, "ipar[5], the kind of the transform, is %lli"},
    {454, "kinds are 0 sine, 1 cosine,"},
    {455, "2 staggered cosine, 3 staggered sine,"},
    {456, "4 cosine and 5 sine staggered in both spaces"},
    {457, "free: the descriptor of the Fourier transform could not be given back"},
    {458, "the handle may have been freed before, or never been committed,"},
    {459, "or something else has been written over it"},
    {460, "the transform is not ready to run:"},
    {461, "ipar[6], the status of the last operation, is %lli instead of 0"},
    {462, "a commit that only warned leaves a status above 0:"},
    {463, "set the status to 0 if the warning is of no concern, else commit again"},
    {464, "forward: the size of the transform has been lost since the commit:"},
    {465, "ipar[0] is %lli"},
    {466, "the array of integers belongs to the transform and must stay as it is"},
    {467, "commit: dpar[0], the tolerance of what should be 0 at the ends, is %e"},
    {468, "a tolerance cannot be negative;"},
    {469, "it has been replaced by the one"},
    {470, "that a fresh transform of this size has:"},
    {471, "%e"},
    {472, "commit: f[0] is %s, and not 0 within the tolerance of %e"},
    {473, "sums of sines vanish at the first point:"},
    {474, "the transform will be that of an array with 0 there"},
    {475, "commit: f[n] is %s, and not 0 within the tolerance of %e"},
    {476, "sums of sines vanish at the last point:"},
    {477, "the transform will be that of an array with 0 there"},
    {478, "commit: f[n] is %s, and not 0 within the tolerance of %e"},
    {479, "sums of staggered cosines vanish at the last point:"},
    {480, "the transform will be that of an array with 0 there"},
    {481, "commit: ipar[9], the number of threads, is %lli; it has been replaced by %lli"},
    {482, "give the number of threads that will run the transform at once,"},
    {483, "or 1 if there is only one"},
    {484, "commit: f[0] is %s, and not 0 within the tolerance of %e"},
    {485, "sums of staggered sines vanish at the first point:"},
    {486, "the transform will be that of an array with 0 there"},
    {487, "Fourier transform: %s"},
};

} // namespace orv::core
