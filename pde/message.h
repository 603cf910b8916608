// A message to the user of a solver or a transform: lines out of the service layer's catalogue, put together on the
// stack and then printed, or appended to a log file.
#pragma once

#include "frame/serv.h"

#include <cstdio>
#include <cstring>

namespace orv::pde {

inline constexpr int most_of_a_line = 512;

// What goes to a place of a message.
template <class Value> struct Place {
    Value value;
    explicit Place(Value v) : value(v) {}
};
template <> struct Place<const char*> {
    char value[most_of_a_line + 1] = "";
    explicit Place(const char* text) { std::strncat(value, text, most_of_a_line); }
};

// capacity: characters of a whole message; what does not fit any more is left out.
template <int capacity> class Message {
public:
    const char* text() const { return text_; }

    void line_break() { append("\n"); }

    // The numbered text with what goes to its places, and a line break. Of a long text that comes from outside the
    // beginning.
    template <class... Values> void line(int number, Values... values)
    {
        const char* const message = orv_serv_get_msg(number);
        if constexpr (sizeof...(values) == 0) append(message);
        else {
            char built[3 * most_of_a_line];
            std::sprintf(built, message, Place<Values>(values).value...);
            append(built);
        }
        line_break();
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
