// The verbs of the `orv` command. Each gets what follows its name and returns the exit status.
#pragma once

#include <span>

namespace orv::cli {

using Words = std::span<const char* const>;

int info(Words words);
int sparse(Words words);
int verify(Words words);

} // namespace orv::cli
