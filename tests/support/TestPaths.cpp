#include "support/TestPaths.h"

#include <cstdlib>

namespace Kelvor {

std::string TestPaths::dataDirectory()
{
    return std::string(TARNWICK_TEST_SOURCE_DIR) + "/data";
}

std::string TestPaths::goldenDirectory()
{
    return dataDirectory() + "/golden";
}

std::string TestPaths::outputDirectory()
{
    char const* configured = std::getenv("TARNWICK_TEST_OUTPUT");
    if (configured != nullptr && configured[0] != '\0')
        return configured;
    return std::string(TARNWICK_TEST_BINARY_DIR) + "/test-output";
}

} // namespace Kelvor
