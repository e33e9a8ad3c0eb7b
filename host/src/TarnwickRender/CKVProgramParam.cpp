#include "TarnwickRender/CKVProgramParam.h"

#include <type_traits>

namespace Kelvor {

// The parameter is a map key in the backend's program cache and is copied
// into every command that carries a node; it must stay a small plain value.
static_assert(std::is_trivially_copyable<CKVProgramParam>::value, "CKVProgramParam must stay a plain value");
static_assert(sizeof(CKVProgramParam) == 2 * sizeof(unsigned int), "CKVProgramParam grew");

} // namespace Kelvor
