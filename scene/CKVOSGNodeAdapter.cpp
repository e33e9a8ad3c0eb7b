#include "scene/CKVOSGNodeAdapter.h"

#include "programs/CKVProgramManager.h"
#include "scene/CKVOSGGeometry.h"
#include "scene/CKVOSGTransformNode.h"

#include "TarnwickRender/CKVProgramParam.h"

#include <osg/Geode>
#include <osg/Image>
#include <osg/Material>
#include <osg/PagedLOD>
#include <osg/Texture>
#include <osg/Uniform>

namespace Kelvor {

CKVOSGNodeAdapter::CKVOSGNodeAdapter() = default;

CKVOSGNodeAdapter::~CKVOSGNodeAdapter() = default;

void CKVOSGNodeAdapter::apply(osg::Drawable& drawable)
{
    convert(drawable);
    osgUtil::UpdateVisitor::apply(drawable);
}

void CKVOSGNodeAdapter::apply(osg::Geode& geode)
{
    convert(geode);
    osgUtil::UpdateVisitor::apply(geode);
}

void CKVOSGNodeAdapter::apply(osg::PagedLOD& node)
{
    osgUtil::UpdateVisitor::apply(static_cast<osg::LOD&>(node));
}

void CKVOSGNodeAdapter::convert(osg::Node& node)
{
    // Our own nodes carry their state from the host. CKVOSGText2D joins this
    // test once text lands.
    char const* const className = node.className();
    if (className == CKVOSGTransformNode::s_className || className == CKVOSGGeometry::s_className)
        return;

    osg::StateSet* stateSet = node.getStateSet();
    if (!stateSet)
        return;
    // The visitor runs every frame; a program means the state set was done.
    if (stateSet->getAttribute(osg::StateAttribute::PROGRAM))
        return;

    osg::StateAttribute* textureAttribute = stateSet->getTextureAttribute(0, osg::StateAttribute::TEXTURE);
    osg::Texture* texture = textureAttribute ? textureAttribute->asTexture() : nullptr;
    if (texture && texture->getTextureTarget() != GL_TEXTURE_2D)
        texture = nullptr;
    auto* material = static_cast<osg::Material*>(stateSet->getAttribute(osg::StateAttribute::MATERIAL));
    if (!texture && !material)
        return;

    CKVProgramParam param(CKVProgramParam::kSurface);
    if (texture) {
        stateSet->setTextureAttributeAndModes(0, texture, osg::StateAttribute::ON);
        stateSet->addUniform(new osg::Uniform("Albedo_Tx", 0));
        param.addParam(CKVProgramParam::kUseTexture);
        osg::Image const* image = texture->getImage(0);
        if (image && image->isImageTranslucent())
            param.addParam(CKVProgramParam::kUseAlphaTest);
    } else {
        stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", material->getDiffuse(osg::Material::FRONT_AND_BACK)));
    }

    CKVProgramManager& manager = CKVProgramManager::instance();
    osg::ref_ptr<osg::Program> program = manager.getProgram(param);
    if (program.valid())
        stateSet->setAttribute(program.get(), osg::StateAttribute::ON);
    manager.applyDefines(stateSet, param);
}

} // namespace Kelvor
