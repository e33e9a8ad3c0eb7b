#pragma once

#include <cstddef>
#include <string>

namespace Kelvor {

// The DATA section of a STEP file seen as statements, without parsing them:
// enough to tell how many entity instances the file declares, so that those
// the parser could not read can be counted.
class IfcDataSection
{
public:
    // Statements of the form "#<id>= ..." between "DATA;" and its "ENDSEC;",
    // with quoted strings and comments skipped. 0 without a DATA section.
    static std::size_t countInstances(std::string const& content);
};

} // namespace Kelvor
