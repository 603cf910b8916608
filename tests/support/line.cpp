#include "tests/support/line.h"

#include "tests/support/process.h"

namespace orv::test {

testing::AssertionResult repeats(const std::string& line)
{
    const Outcome o = run(std::string(ORV_COMMAND) + " verify '" + line + "'");
    if (o.status == 0 && o.text.ends_with("\nright\n")) return testing::AssertionSuccess();
    return testing::AssertionFailure() << line << '\n' << o.text;
}

} // namespace orv::test
