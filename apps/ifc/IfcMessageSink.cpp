#include "apps/ifc/IfcMessageSink.h"

#include "apps/ifc/IfcUtf8.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace Kelvor {

namespace {

char const* const kUnknownEntity = "unknown entity";

} // namespace

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
    case StatusCallback::MESSAGE_TYPE_ERROR: {
        std::string const text = ifcToUtf8(message->m_message_text);
        if (text.find(kUnknownEntity) != std::string::npos)
            break;
        ++sink->warnings;
        // IFC++ gathers the problems of many entities into one message, a
        // line each, starting with the entity's "#<id>=".
        std::istringstream lines(text);
        std::string line;
        unsigned int entities = 0;
        while (std::getline(lines, line)) {
            while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())))
                line.pop_back();
            if (line.empty())
                continue;
            if (sink->firstError.empty())
                sink->firstError = line;
            if (line.size() > 1 && line[0] == '#' && std::isdigit(static_cast<unsigned char>(line[1])))
                ++entities;
        }
        sink->damagedEntities += std::max(entities, 1u);
        break;
    }
    default:
        break;
    }
}

} // namespace Kelvor
