// A message to the user of a solver or a transform: lines out of the service layer's catalogue, put together on the stack
// and then printed, or appended to a log file.
#pragma once

#include "frame/serv.h"

#include <cstdio>
#include <cstring>

namespace orv::pde {

// capacity: characters of a whole message; what does not fit any more is left out.
template <int capacity> class Message {
public:
    static constexpr int most_of_a_line = 512;

    const char* text() const { return text_; }

    void line_break() { append("\n"); }

    // The numbered text with what goes to its places, and a line break.
    void line(int number) { append(orv_serv_get_msg(number)), line_break(); }
    template <class Value> void line(int number, Value value)
    {
        char built[2 * most_of_a_line];
        std::sprintf(built, orv_serv_get_msg(number), value);
        append(built), line_break();
    }
    // The text may come from anywhere: of a long one the beginning.
    void line(int number, const char* value)
    {
        char beginning[most_of_a_line + 1] = "", built[3 * most_of_a_line];
        std::strncat(beginning, value, most_of_a_line);
        std::sprintf(built, orv_serv_get_msg(number), beginning);
        append(built), line_break();
    }

    // Appends the message to a file of the current folder; false if that cannot be opened.
    bool log(const char* file_name) const
    {
        std::FILE* const file = std::fopen(file_name, "a+");
        if (file == nullptr) return false;
        std::fflush(file);
        std::fprintf(file, "%s", text_);
        std::fclose(file);
        return true;
    }

private:
    void append(const char* more)
    {
        const int room = capacity - length_, most = room < most_of_a_line ? room : most_of_a_line;
        std::strncat(text_ + length_, more, static_cast<std::size_t>(most));
        while (text_[length_] != 0) ++length_;
    }

    int length_ = 0;
    char text_[capacity + 1] = "";
};

} // namespace orv::pde
