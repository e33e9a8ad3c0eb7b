#include "effects/CKVSceneGenerator.h"

#include "scene/CKVOSGTransformNode.h"
#include "viewer/CKVMatrixCullVisitor.h"

#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"
#include "TarnwickRender/CKVTransformState.h"
#include "TarnwickRender/CKVVisibilityState.h"

#include <osgUtil/CullVisitor>

#include <algorithm>
#include <cstring>

namespace Kelvor {

namespace {

template <class State>
State const* stateOf(CKVSceneNode const& node, CKVSceneNodeState::Type type)
{
    return static_cast<State const*>(node.getStateSet()->getState(type));
}

} // namespace

CKVSceneGenerator::CameraCullCallback::CameraCullCallback(CKVSceneGenerator& generator, PassData& pass)
    : mGenerator(&generator)
    , mPass(&pass)
{
}

void CKVSceneGenerator::CameraCullCallback::operator()(osg::Node*, osg::NodeVisitor* visitor)
{
    osgUtil::CullVisitor* cullVisitor = visitor ? visitor->asCullVisitor() : nullptr;
    osg::Node* subject = mPass->getSubject();
    if (!cullVisitor || !subject)
        return;
    if (std::strcmp(subject->className(), "CBGGeode") == 0)
    {
        subject->accept(*cullVisitor);
        return;
    }
    osg::Group* group = subject->asGroup();
    if (!group)
        return;
    for (unsigned int i = 0; i < group->getNumChildren(); ++i)
        mGenerator->cullChild(*cullVisitor, *group->getChild(i), *mPass);
}

CKVSceneGenerator::PassData::PassData(CKVSceneGenerator& generator, osg::Node* subject, unsigned int variantCount)
    : mCamera(new osg::Camera)
    , mStateSet(new osg::StateSet)
    , mSubject(subject)
{
    for (unsigned int i = 0; i < variantCount; ++i)
        mVariants.push_back(new osg::StateSet);
    mCamera->setCullCallback(new CameraCullCallback(generator, *this));
}

CKVSceneGenerator::PassData::~PassData() = default;

osg::StateSet* CKVSceneGenerator::PassData::getVariant(unsigned int index) const
{
    return index < mVariants.size() ? mVariants[index].get() : nullptr;
}

CKVSceneGenerator::CKVSceneGenerator() = default;

CKVSceneGenerator::~CKVSceneGenerator() = default;

void CKVSceneGenerator::addPass(PassData* pass)
{
    if (pass)
        mPasses.push_back(pass);
}

void CKVSceneGenerator::removePass(PassData* pass)
{
    mPasses.erase(std::remove(mPasses.begin(), mPasses.end(), pass), mPasses.end());
}

CKVSceneGenerator::PassData* CKVSceneGenerator::getPass(unsigned int index) const
{
    return index < mPasses.size() ? mPasses[index].get() : nullptr;
}

void CKVSceneGenerator::traverse(osg::NodeVisitor& visitor)
{
    osgUtil::CullVisitor* cullVisitor = visitor.asCullVisitor();
    if (!cullVisitor || !isEffectEnabled())
        return;
    updateFrame(*cullVisitor);
    for (osg::ref_ptr<PassData> const& pass : mPasses)
    {
        cullVisitor->pushStateSet(pass->getStateSet());
        pass->getCamera()->accept(*cullVisitor);
        cullVisitor->popStateSet();
    }
}

void CKVSceneGenerator::releaseGLObjects(osg::State* state) const
{
    CBGGroup::releaseGLObjects(state);
    for (osg::ref_ptr<PassData> const& pass : mPasses)
    {
        pass->getCamera()->releaseGLObjects(state);
        for (auto const& entry : pass->getCamera()->getBufferAttachmentMap())
        {
            if (entry.second._texture.valid())
                entry.second._texture->releaseGLObjects(state);
        }
        pass->getStateSet()->releaseGLObjects(state);
        for (unsigned int i = 0; i < pass->getNumVariants(); ++i)
            pass->getVariant(i)->releaseGLObjects(state);
    }
}

bool CKVSceneGenerator::acceptsSceneNode(CKVSceneNode const&, PassData const&) const
{
    return true;
}

osg::StateSet* CKVSceneGenerator::variantFor(CKVSceneNode const&, PassData&) const
{
    return nullptr;
}

void CKVSceneGenerator::cullChild(osgUtil::CullVisitor& visitor, osg::Node& child, PassData& pass)
{
    if (std::strcmp(child.className(), CKVOSGTransformNode::s_className) != 0)
        return;
    cullTransformNode(visitor, static_cast<CKVOSGTransformNode&>(child), pass);
}

void CKVSceneGenerator::cullTransformNode(osgUtil::CullVisitor& visitor, CKVOSGTransformNode& node, PassData& pass)
{
    CKVSceneNode const* sceneNode = node.tryGetSceneNode();
    if (!sceneNode)
        return;
    CKVVisibilityState const* visibility = stateOf<CKVVisibilityState>(*sceneNode, CKVSceneNodeState::kVisibility);
    if (visibility && !visibility->getVisibility(CKVVisibilityState::kDisplay))
        return;
    if (!acceptsSceneNode(*sceneNode, pass))
        return;

    osg::StateSet* variant = variantFor(*sceneNode, pass);
    if (variant)
        visitor.pushStateSet(variant);
    if (visitor.isCulled(node))
    {
        if (variant)
            visitor.popStateSet();
        return;
    }
    visitor.pushCurrentMask();
    osg::StateSet* own = node.getStateSet();
    if (own)
        visitor.pushStateSet(own);

    // Our cull visitor keeps the model matrix apart from the view, which
    // passes that place geometry in world space themselves (shadow cascades)
    // need; a stock visitor only has the model view.
    CKVTransformState const* transform = stateOf<CKVTransformState>(*sceneNode, CKVSceneNodeState::kTransform);
    bool const pushTransform = transform && transform->getTransformMode() != CKVTransformState::kNone;
    CKVMatrixCullVisitor* matrixVisitor = dynamic_cast<CKVMatrixCullVisitor*>(&visitor);
    if (pushTransform && matrixVisitor)
    {
        matrixVisitor->pushTransform(node);
    }
    else if (pushTransform)
    {
        osg::ref_ptr<osg::RefMatrix> matrix = new osg::RefMatrix(*visitor.getModelViewMatrix());
        node.computeLocalToWorldMatrix(*matrix, &visitor);
        visitor.pushModelViewMatrix(matrix.get(), node.getReferenceFrame());
    }

    for (unsigned int i = 0; i < node.getNumChildren(); ++i)
    {
        osg::Node* child = node.getChild(i);
        if (std::strcmp(child->className(), "CKVOSGGeometry") == 0)
            child->accept(visitor);
        else
            cullChild(visitor, *child, pass);
    }

    if (pushTransform && matrixVisitor)
        matrixVisitor->popTransform();
    else if (pushTransform)
        visitor.popModelViewMatrix();
    if (own)
        visitor.popStateSet();
    visitor.popCurrentMask();
    if (variant)
        visitor.popStateSet();
}

} // namespace Kelvor
