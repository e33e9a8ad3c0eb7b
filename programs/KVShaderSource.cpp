#include "programs/KVShaderSource.h"

#include <cstring>

namespace Kelvor {

char const* KVShaderSource::get(char const* name)
{
    if (!name)
        return nullptr;
    // A few dozen entries, looked up once per program kind: a scan will do.
    for (std::size_t i = 0; i < sEntryCount; ++i)
    {
        if (std::strcmp(sEntries[i].name, name) == 0)
            return sEntries[i].text;
    }
    return nullptr;
}

char const* KVShaderSource::nameAt(std::size_t index)
{
    return index < sEntryCount ? sEntries[index].name : nullptr;
}

} // namespace Kelvor
