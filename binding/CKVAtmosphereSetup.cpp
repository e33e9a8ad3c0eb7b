#include "binding/CKVAtmosphereSetup.h"

#include "binding/CKVRenderConfigApplier.h"
#include "effects/CKVPostProcessNode.h"
#include "environment/CKVAtmosphereSky.h"
#include "environment/CKVAtmosphericScatttering.h"
#include "viewer/CKVOSGCamera.h"

namespace Kelvor {

CKVAtmosphereSetup::CKVAtmosphereSetup() = default;
CKVAtmosphereSetup::~CKVAtmosphereSetup() = default;

void CKVAtmosphereSetup::create(CKVPostProcessNode* root, osg::UniformBufferBinding* lightBinding,
                                CKVOSGCamera* mainCamera, CKVRenderConfigApplier& applier)
{
    if (mNode.valid() || !root)
        return;
    mNode = new CKVAtmosphericScatttering(lightBinding, root, mainCamera);
    root->setAtmosphere(mNode.get());
    root->addChild(mNode.get());
    applier.setAtmosphere(mNode->getSky());
}

CKVAtmosphereSky* CKVAtmosphereSetup::getSky() const
{
    return mNode.valid() ? mNode->getSky() : nullptr;
}

void CKVAtmosphereSetup::setTerrainHeight(float height)
{
    if (CKVAtmosphereSky* sky = getSky())
        sky->setTerrainHeight(height);
}

} // namespace Kelvor
