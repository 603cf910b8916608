// A library of the standard interface, its routines called with arguments by address: one call for all signatures.
#pragma once

#include "cli/verify/setting.h"
#include "tests/random/draw.h"

#include <string>

namespace orv::test {

class Library {
public:
    explicit Library(const char* path); // opened apart from all others; none if it cannot be

    explicit operator bool() const { return handle_ != nullptr; }
    bool has(const std::string& symbol) const;

    struct Call {
        std::string symbol; // without what the interface adds: dgemm
        Way way;
        std::span<const verify::Argument> arguments; // their kinds
        void* const* addresses;
        bool layout; // CBLAS wants one
        char result; // kind of what is returned
    };
    // What is returned goes to *result, a position as 32 bits.
    void run(const Call& call, void* result) const;

private:
    void* find(const std::string& symbol) const;
    void* handle_;
};

// What the standard calls a routine; a name that no library has, where that is not to be compared.
std::string standard_name(const std::string& family, const std::string& type);
// Its symbol, that of Fortran or of CBLAS.
std::string symbol_of(const std::string& name, Way way, char result);

} // namespace orv::test
