// assimp, as Debian builds it, checks its own invariants with ai_assert and
// aborts the process when one fails. A damaged FBX file reaches such checks
// (found by fuzzing: FBXConverter's node conversion asserts on a mangled
// model), and an abort would end the host's whole process for one bad
// resource. This definition takes the place of assimp's own (the backend
// is loaded before assimp, so the dynamic linker binds assimp's calls here;
// for that it must be visible outside the backend, which hides everything
// else) and throws instead: assimp's importer catches exceptions of the file
// reader, gives up on the file, and our reader reports a read error.
#include "binding/KVBackendExport.h"

#include <assimp/ai_assert.h>

#include <stdexcept>
#include <string>

namespace Assimp {

KV_BACKEND_EXPORT void aiAssertViolation(char const* failedExpression, char const* file, int line)
{
    throw std::runtime_error(std::string("assimp check failed: ") + failedExpression + " (" + file + ":" +
                             std::to_string(line) + ")");
}

} // namespace Assimp
