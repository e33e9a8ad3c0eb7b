#pragma once

namespace Kelvor {

class CKVRenderCommandDispatch;

// The dispatch factory registered with CKVRenderCallback: a new dispatch
// object for a command id, or null for the unused ids 15 and 20 and for ids
// above 23. The background dispatch has no id: a background travels inside
// a render configuration.
CKVRenderCommandDispatch* createRenderCommandDispatch(unsigned int id);

// Builds the class records of every dispatch class, so that they exist, and
// can be created by name, before anything else of the library is registered.
void initRenderCommandDispatchRecords();

} // namespace Kelvor
