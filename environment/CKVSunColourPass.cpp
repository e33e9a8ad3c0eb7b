#include "environment/CKVSunColourPass.h"

#include "environment/CBGGeode.h"
#include "environment/CFullScreenTriangleGeometry.h"
#include "programs/CKVProgramManager.h"

#include "TarnwickRender/CKVProgramParam.h"

namespace Kelvor {

osg::ref_ptr<osg::Texture2D> CKVSunColourPass::createTarget()
{
    osg::ref_ptr<osg::Texture2D> target = new osg::Texture2D;
    target->setTextureSize(1, 1);
    target->setInternalFormat(GL_RGB);
    target->setSourceFormat(GL_RGB);
    target->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    target->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    target->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    target->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    return target;
}

osg::ref_ptr<CBGGeode> CKVSunColourPass::createGeode()
{
    osg::ref_ptr<CBGGeode> geode = new CBGGeode;
    geode->addDrawable(new CFullScreenTriangleGeometry);
    return geode;
}

osg::ref_ptr<CKVSceneGenerator::PassData> CKVSunColourPass::create(CKVSceneGenerator& owner, CBGGeode* geode,
                                                                   osg::Texture2D* target)
{
    osg::ref_ptr<CKVSceneGenerator::PassData> pass = new CKVSceneGenerator::PassData(owner, geode);
    osg::Camera* camera = pass->getCamera();
    camera->setName("SunColourCamera");
    camera->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    camera->attach(osg::Camera::COLOR_BUFFER0, target);
    camera->setViewport(0, 0, 1, 1);
    camera->setClearMask(GL_DEPTH_BUFFER_BIT);
    camera->setRenderOrder(osg::Camera::PRE_RENDER, kRenderOrder);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    camera->setCullingMode(osg::CullSettings::NO_CULLING);
    camera->setInheritanceMask(osg::CullSettings::READ_BUFFER | osg::CullSettings::DRAW_BUFFER);

    CKVProgramParam param;
    param.setType(static_cast<CKVProgramParam::Type>(kProgramKind));
    if (osg::ref_ptr<osg::Program> program = CKVProgramManager::instance().getProgram(param))
        pass->getStateSet()->setAttributeAndModes(program.get(), osg::StateAttribute::ON);
    return pass;
}

} // namespace Kelvor
