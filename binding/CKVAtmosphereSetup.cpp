#include "binding/CKVAtmosphereSetup.h"

#include "binding/CKVRenderConfigApplier.h"
#include "effects/CKVPostProcessNode.h"
#include "environment/CKVAtmosphereSky.h"
#include "viewer/CKVOSGCamera.h"

namespace Kelvor {

CKVAtmosphereSetup::CKVAtmosphereSetup() = default;
CKVAtmosphereSetup::~CKVAtmosphereSetup() = default;

void CKVAtmosphereSetup::create(CKVPostProcessNode* root, osg::UniformBufferBinding* lightBinding,
                                CKVOSGCamera*, CKVRenderConfigApplier& applier)
{
    if (mNode.valid() || !root)
        return;
    osg::ref_ptr<CKVAtmosphereSky> sky = new CKVAtmosphereSky(lightBinding, root, CKVAtmosphereSky::Tables());
    mNode = sky.get();
    root->addChild(mNode.get());
    applier.setAtmosphere(sky.get());
}

CKVAtmosphereSky* CKVAtmosphereSetup::getSky() const
{
    return static_cast<CKVAtmosphereSky*>(mNode.get());
}

void CKVAtmosphereSetup::setTerrainHeight(float height)
{
    if (CKVAtmosphereSky* sky = getSky())
        sky->setTerrainHeight(height);
}

} // namespace Kelvor
