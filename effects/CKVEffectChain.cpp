#include "effects/CKVEffectChain.h"

#include "effects/CKVFullScreenGenerator.h"

namespace Kelvor {

osg::Texture2D* CKVEffectChain::link(Stage const (&stages)[kStageCount], osg::Texture2D* sceneColor)
{
    osg::Texture2D* current = sceneColor;
    for (Stage const& stage : stages)
    {
        if (!stage.generator)
            continue;
        if (!stage.enabled)
        {
            stage.generator->setInput(sceneColor);
            continue;
        }
        stage.generator->setInput(current);
        if (osg::Texture2D* output = stage.generator->getOutput())
            current = output;
    }
    return current;
}

} // namespace Kelvor
