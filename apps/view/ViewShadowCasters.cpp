#include "apps/view/ViewShadowCasters.h"

#include "TarnwickRender/CKVRenderOptionState.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"

namespace Kelvor {

unsigned int ViewShadowCasters::mark(CKVSceneNode& root)
{
    unsigned int marked = 0;
    CKVSceneNodeStateSet* states = root.getStateSet();
    if (states && !states->getState(CKVSceneNodeState::kRenderOption)) {
        states->addState(new CKVRenderOptionState);
        ++marked;
    }
    for (unsigned int i = 0; i < root.getNumChildNode(); ++i) {
        if (CKVSceneNode* child = root.getChildNode(i))
            marked += mark(*child);
    }
    return marked;
}

} // namespace Kelvor
