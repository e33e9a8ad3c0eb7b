#include "viewer/CKVTickTarget.h"

namespace Kelvor {

CKVTickTarget::~CKVTickTarget() = default;

} // namespace Kelvor
