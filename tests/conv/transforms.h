// The transforms that the branch imports, and its own linear convolution, as a program may replace them: this one
// passes everything on, notes what was asked, and refuses when it is told to.
#pragma once

#include "frame/types.h"

#include <string>
#include <vector>

namespace orv::test::convolution {

struct Asked {
    std::vector<std::string> calls; // "create 33 8 4", "set 11 44", "commit", "forward", "backward", "free"
    int refuse_at = -1;             // the number of the call that is refused
    int transforms = 0;             // made and not freed
    std::vector<double> scales;     // of backward transforms
    struct Line {
        const void *x, *y;
        void* z;
        i32 nx, ny;
        std::size_t bytes; // of an element
    };
    std::vector<Line> lines; // linear convolutions
    bool refuse_lines = false;
};
Asked& asked();

struct AskedScope {
    AskedScope() { asked() = {}; }
    ~AskedScope() { asked() = {}; }
    Asked* operator->() { return &asked(); }
};

} // namespace orv::test::convolution
