#pragma once

#include <osg/BufferIndexBinding>
#include <osg/Node>
#include <osg/ref_ptr>

namespace Kelvor {

class CKVAtmosphereSky;
class CKVAtmosphericScatttering;
class CKVOSGCamera;
class CKVPostProcessNode;
class CKVRenderConfigApplier;

// The render context's atmosphere: made once with the context, a child of
// the root (which also holds it for the materials that sample its sky),
// and handed to the render configuration, which switches it and
// tells it of light changes and of the atmosphere background.
class CKVAtmosphereSetup
{
public:
    CKVAtmosphereSetup();
    ~CKVAtmosphereSetup();

    // Makes the atmosphere over the root's state, adds it to the root and to
    // `applier`. A second call does nothing.
    void create(CKVPostProcessNode* root, osg::UniformBufferBinding* lightBinding, CKVOSGCamera* mainCamera,
                CKVRenderConfigApplier& applier);

    // Null before `create`.
    CKVAtmosphericScatttering* getNode() const { return mNode.get(); }
    CKVAtmosphereSky* getSky() const;

    // The sky terrain's ground height; nothing without an atmosphere.
    void setTerrainHeight(float height);

private:
    osg::ref_ptr<CKVAtmosphericScatttering> mNode;
};

} // namespace Kelvor
