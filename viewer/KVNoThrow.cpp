#include "viewer/KVNoThrow.h"

#include <osg/Notify>

#include <exception>

namespace Kelvor {

bool KVNoThrow::call(char const* what, std::function<bool()> const& step)
{
    try {
        return step();
    } catch (std::exception const& e) {
        OSG_WARN << what << ": " << e.what() << std::endl;
    } catch (...) {
        OSG_WARN << what << ": unknown exception" << std::endl;
    }
    return false;
}

} // namespace Kelvor
