#include "TarnwickRender/CKVBufferDataSegment.h"

#include <type_traits>

namespace Kelvor {

// Segments are copied by the thousand when a geometry is packed.
static_assert(std::is_trivially_copyable<CKVBufferDataSegment>::value, "CKVBufferDataSegment must stay a plain value");

} // namespace Kelvor
