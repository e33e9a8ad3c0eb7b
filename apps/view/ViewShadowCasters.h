#pragma once

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

// The viewer shows whole buildings: every node of a model casts shadows.
// Nodes that already carry render options keep them.
class ViewShadowCasters
{
public:
    // Gives `root` and every node below it the render options (all on)
    // unless it has its own; answers how many nodes it marked.
    static unsigned int mark(CKVSceneNode& root);
};

} // namespace Kelvor
