#pragma once

#include "TarnwickGeometry/CKVBndBox.h"

namespace Kelvor {

class CKVSceneNode;

// The extent of a host scene tree from its logic buffers. The buffer
// geometries' own boxes come from their packed buffers, which the backend
// fills only on the render thread; the viewer needs the extent before the
// first frame, to frame the model.
class ViewContentBounds
{
public:
    static CKVBndBox compute(CKVSceneNode const& root);
};

} // namespace Kelvor
