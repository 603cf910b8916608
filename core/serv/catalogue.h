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
    {408, "the log file %s cannot be opened"},
    {409, "make the current folder writable, or let the messages go to standard output"},
};

} // namespace orv::core
