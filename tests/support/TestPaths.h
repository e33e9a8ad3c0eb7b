#pragma once

#include <string>

namespace Kelvor {

// Where tests find their inputs and leave their evidence. Inputs are read from
// the source tree so that a golden updated there is seen without a rebuild.
class TestPaths
{
public:
    // tests/data in the source tree.
    static std::string dataDirectory();
    // tests/data/golden in the source tree.
    static std::string goldenDirectory();
    // $TARNWICK_TEST_OUTPUT if set, else <build>/test-output. Created on demand
    // by whoever writes there.
    static std::string outputDirectory();
};

} // namespace Kelvor
