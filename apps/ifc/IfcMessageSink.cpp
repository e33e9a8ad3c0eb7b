#include "apps/ifc/IfcMessageSink.h"

#include "apps/ifc/IfcUtf8.h"

#include <algorithm>

namespace Kelvor {

void IfcMessageSink::receive(void* self, shared_ptr<StatusCallback::Message> message)
{
    IfcMessageSink* sink = static_cast<IfcMessageSink*>(self);
    if (!sink || !message)
        return;
    switch (message->m_message_type) {
    case StatusCallback::MESSAGE_TYPE_PROGRESS_VALUE:
        if (sink->progress && *sink->progress && message->m_progress_value >= 0.0) {
            double const value = std::min(1.0, message->m_progress_value);
            (*sink->progress)(sink->base + sink->share * value, sink->phase);
        }
        break;
    case StatusCallback::MESSAGE_TYPE_WARNING:
    case StatusCallback::MESSAGE_TYPE_ERROR:
        ++sink->warnings;
        if (sink->firstError.empty())
            sink->firstError = ifcToUtf8(message->m_message_text);
        break;
    default:
        break;
    }
}

} // namespace Kelvor
