// What tests open and run is named by its place in the folder of the build, and that is where they work. So the same
// programs run in a second folder, beside libraries with sanitizers in them.
#include <filesystem>

namespace {

[[gnu::constructor(101)]] void enter_the_folder_of_the_build()
{
    namespace fs = std::filesystem;
    fs::current_path(fs::canonical("/proc/self/exe").parent_path().parent_path());
}

} // namespace
