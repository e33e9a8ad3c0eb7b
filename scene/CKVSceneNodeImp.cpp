#include "scene/CKVSceneNodeImp.h"

#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGGeometry.h"
#include "scene/CKVTextGeometryImp.h"
#include "scene/CKVUniformImp.h"

#include "TarnwickRender/CKVGroupObject.h"

#include <osg/StateSet>
#include <osg/Uniform>

#include <new>

namespace Kelvor {

CKVObject* createCKVSceneNodeImpObject()
{
    return new (std::nothrow) CKVSceneNodeImp();
}

CKVSceneNode* createSceneNodeImp()
{
    return new (std::nothrow) CKVSceneNodeImp();
}

KV_IMPLEMENT_RUNTIME_CLASS_FN(CKVSceneNodeImp, CKVSceneNode, &createCKVSceneNodeImpObject)

CKVSceneNodeImp::CKVSceneNodeImp()
    : mTransformNode(new CKVOSGTransformNode(this))
{
}

CKVSceneNodeImp::CKVSceneNodeImp(CKVSceneNodeImp const& other)
    : CKVSceneNode(other)
    , mTransformNode(other.mTransformNode)
{
}

CKVSceneNodeImp& CKVSceneNodeImp::operator=(CKVSceneNodeImp const& other)
{
    CKVSceneNode::operator=(other);
    mTransformNode = other.mTransformNode;
    return *this;
}

// The back pointer stays: the host removes a node from its parent before
// the node dies, and a parent group may still hold the transform node.
CKVSceneNodeImp::~CKVSceneNodeImp() = default;

namespace {

CKVOSGTransformNode* transformNodeOf(CKVSceneNode* node)
{
    return node && node->isKindOf(CKVSceneNodeImp::desc()) ? static_cast<CKVSceneNodeImp*>(node)->getOSGNode()
                                                           : nullptr;
}

} // namespace

bool CKVSceneNodeImp::insertChildNodeImp(CKVSceneNode* child)
{
    if (!mTransformNode.valid() || !child || !child->isKindOf(CKVSceneNodeImp::desc()))
        return false;
    CKVOSGTransformNode* childNode = transformNodeOf(child);
    if (!childNode)
        return false;
    mTransformNode->addChild(childNode);
    return true;
}

bool CKVSceneNodeImp::removeChildNodeImp(CKVSceneNode* child)
{
    if (!mTransformNode.valid() || !child || !child->isKindOf(CKVSceneNodeImp::desc()))
        return false;
    CKVOSGTransformNode* childNode = transformNodeOf(child);
    if (!childNode)
        return true;
    mTransformNode->removeChild(childNode);
    return true;
}

osg::Node* CKVSceneNodeImp::getRenderObjectOSGNode(CKVRenderObject* object) const
{
    if (!object)
        return nullptr;
    if (object->isKindOf(CKVBufferGeometryImp::desc()))
        return static_cast<CKVBufferGeometryImp*>(object)->getOSGGeometry();
    if (object->isKindOf(CKVTextGeometryImp::desc()))
        return static_cast<CKVTextGeometryImp*>(object)->getOSGText();
    if (object->isKindOf(CKVGroupObject::desc()))
        return transformNodeOf(static_cast<CKVGroupObject*>(object)->getNodeObject());
    return nullptr;
}

bool CKVSceneNodeImp::insertRenderObjectImp(CKVRenderObject* object)
{
    if (!mTransformNode.valid() || !object)
        return false;
    osg::Node* node = getRenderObjectOSGNode(object);
    if (!node)
        return false;
    if (object->isKindOf(CKVBufferGeometryImp::desc())) {
        auto* geometry = static_cast<CKVBufferGeometryImp*>(object);
        if (geometry->updatePhysicalBuffer())
            geometry->getOSGGeometry()->rebuild();
    }
    mTransformNode->addChild(node);
    return true;
}

bool CKVSceneNodeImp::removeRenderObjectImp(CKVRenderObject* object)
{
    if (!mTransformNode.valid() || !object)
        return false;
    osg::Node* node = getRenderObjectOSGNode(object);
    if (!node)
        return false;
    mTransformNode->removeChild(node);
    return true;
}

osg::Uniform* CKVSceneNodeImp::getUniformOSGObject(CKVUniform* uniform)
{
    // The one place that knows our uniform class; a uniform of any other
    // class, or one without a valid type, has nothing to add.
    if (!uniform || !uniform->isKindOf(CKVUniformImp::desc()))
        return nullptr;
    return static_cast<CKVUniformImp*>(uniform)->getOSGUniform();
}

bool CKVSceneNodeImp::addUniformImp(CKVUniform* uniform)
{
    if (!mTransformNode.valid() || !uniform)
        return false;
    osg::Uniform* osgUniform = getUniformOSGObject(uniform);
    if (!osgUniform)
        return false;
    mTransformNode->getOrCreateStateSet()->addUniform(osgUniform, osg::StateAttribute::ON);
    return true;
}

bool CKVSceneNodeImp::removeUniformImp(CKVUniform* uniform)
{
    if (!mTransformNode.valid() || !uniform)
        return false;
    osg::Uniform* osgUniform = getUniformOSGObject(uniform);
    if (!osgUniform)
        return false;
    mTransformNode->getOrCreateStateSet()->removeUniform(osgUniform);
    return true;
}

} // namespace Kelvor
