#pragma once

#include "TarnwickCommon/CKVAString.h"

namespace Kelvor {
namespace Common {

// Paths handed to these functions may use '\\' or '/' as separators; results
// use '/' and carry no trailing separator, so callers append "/name".

// Directory of the shared library that contains TarnwickCommon, found from
// the address of our own code. False when the system cannot tell.
bool getModuleDirectory(CKVAString& directory);

// Directory that holds the resource files loaded by relative name.
// Unless the application has set one, it is the first existing of
//   <module dir>/../resources              (build tree: <build>/lib beside <build>/resources)
//   <module dir>/../share/tarnwick/resources (installed: <prefix>/lib beside <prefix>/share;
//                                            the build may name another folder)
// and, when neither exists, the first of them, so that a missing file shows
// up as a path a person can recognise. The result is normalised (no "..").
bool getResourceDirectory(CKVAString& directory);

// Overrides the resource directory for the whole process. Null or an empty
// string returns to the default. Safe to call from any thread.
void setResourceDirectory(char const* directory);

// True when `path` names an existing file that is not a directory.
bool checkFile(char const* path);

// True when `path` names an existing directory.
bool checkDirectory(char const* path);

// `path` with '\\' turned into '/', repeated separators collapsed, "." and
// ".." segments resolved where possible and any trailing separator removed.
CKVAString normalizePath(char const* path);

} // namespace Common
} // namespace Kelvor
