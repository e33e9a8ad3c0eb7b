#include "environment/CKVSkyCubePass.h"

#include "environment/CBGGeode.h"
#include "environment/IBLGeometry.h"
#include "programs/CKVProgramManager.h"

#include "TarnwickRender/CKVProgramParam.h"

#include <osg/Depth>

namespace Kelvor {

osg::ref_ptr<CKVSceneGenerator::PassData> CKVSkyCubePass::create(CKVSceneGenerator& owner, CBGGeode* geode,
                                                                 IBLGeometry* geometry)
{
    geode->addDrawable(geometry);
    osg::ref_ptr<CKVSceneGenerator::PassData> pass = new CKVSceneGenerator::PassData(owner, geode);
    osg::Camera* camera = pass->getCamera();
    camera->setName("SkyCubeCamera");
    camera->setViewport(0, 0, kCubeSize, kCubeSize);
    camera->setRenderOrder(osg::Camera::PRE_RENDER, kRenderOrder);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->setClearMask(0);
    camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    camera->setCullingMode(osg::CullSettings::NO_CULLING);
    camera->setInheritanceMask(osg::CullSettings::READ_BUFFER | osg::CullSettings::DRAW_BUFFER);

    osg::StateSet* stateSet = pass->getStateSet();
    stateSet->setAttribute(new osg::Depth(osg::Depth::LESS, 0.0, 1.0, false));
    stateSet->setMode(GL_CULL_FACE, osg::StateAttribute::OFF);
    for (unsigned int i = 0; i < kClipPlanes; ++i)
        stateSet->setMode(GL_CLIP_DISTANCE0 + i, osg::StateAttribute::OFF);
    stateSet->addUniform(geometry->getViewProjection());

    CKVProgramParam param;
    param.setType(static_cast<CKVProgramParam::Type>(kProgramKind));
    if (osg::ref_ptr<osg::Program> program = CKVProgramManager::instance().getProgram(param))
        stateSet->setAttributeAndModes(program.get(), osg::StateAttribute::ON);
    return pass;
}

} // namespace Kelvor
