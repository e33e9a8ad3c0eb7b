#pragma once

#include "apps/ifc/IfcProgressCallback.h"

#include <ifcpp/model/StatusCallback.h>

#include <string>

namespace Kelvor {

// Receives IFC++'s messages during one reading or conversion step. IFC++
// drops messages sent to a callback whose object pointer is null, so the
// sink itself is the object: `setMessageCallBack(&sink, &IfcMessageSink::receive)`.
// Progress is mapped into [base, base + share] of the whole import and
// reported under `phase`; warnings and errors are counted, the first kept.
// Entities of types IFC++ does not know (2D annotation of older schemas)
// are left out of every file that has them: not counted as damage.
struct IfcMessageSink
{
    IfcProgressCallback const* progress = nullptr;
    char const* phase = "";
    double base = 0.0;
    double share = 1.0;
    unsigned int warnings = 0;
    // Entities named in the warnings ("#<id>=..."), each message counting
    // at least one; messages about unknown types are not among them.
    unsigned int damagedEntities = 0;
    std::string firstError;

    static void receive(void* self, shared_ptr<StatusCallback::Message> message);
};

} // namespace Kelvor
