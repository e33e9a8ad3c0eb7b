#include "scene/CKVOSGTransformNode.h"

#include "programs/CKVProgramManager.h"
#include "scene/CKVMaterialBinder.h"
#include "scene/CKVTerrainMaterialBinder.h"
#include "scene/CKVTextureLoader.h"
#include "scene/CKVWaterMaterialBinder.h"

#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVCullingState.h"
#include "TarnwickRender/CKVLineMaterial.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVPhysicalMaterial.h"
#include "TarnwickRender/CKVPhysicalWaterMaterial.h"
#include "TarnwickRender/CKVTerrainMaterial.h"
#include "TarnwickRender/CKVWaterMaterial.h"
#include "TarnwickRender/CKVScelectAbilityState.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVTransformState.h"

#include <osg/Callback>
#include <osg/CullStack>
#include <osgUtil/CullVisitor>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/UpdateVisitor>

namespace Kelvor {

char const* const CKVOSGTransformNode::s_className = "CKVOSGTransformNode";

namespace {

// One callback for every bridged node. It only passes the traversal on; its
// presence makes each bridged node count as needing the update traversal,
// without a callback object per node.
osg::Callback* passThroughUpdateCallback()
{
    static osg::ref_ptr<osg::Callback> const callback = new osg::Callback;
    return callback.get();
}

template <class State>
State* stateOf(CKVSceneNode* node, CKVSceneNodeState::Type type)
{
    CKVSceneNodeState* state = node ? node->getStateSet()->getState(type) : nullptr;
    return state && state->isKindOf(State::desc()) ? static_cast<State*>(state) : nullptr;
}

template <class State>
State const* stateOf(CKVSceneNode const* node, CKVSceneNodeState::Type type)
{
    CKVSceneNodeState const* state = node ? node->getStateSet()->getState(type) : nullptr;
    return state && state->isKindOf(State::desc()) ? static_cast<State const*>(state) : nullptr;
}

// Closed below and open above, so that adjacent levels sharing a boundary
// never both draw.
bool inRange(float value, CKVCullingState const& state)
{
    return value >= state.getMinDistance() && state.getMaxDistance() > value;
}

// Debian's GCC 12 drops the float round trip of adjacent coordinates when it
// vectorises them at -O2; a volatile keeps each rounding.
double throughFloat(double value)
{
    volatile float const narrowedValue = static_cast<float>(value);
    return narrowedValue;
}

osg::Vec3d narrowed(CKVPoint3D const& point)
{
    return osg::Vec3d(throughFloat(point.x), throughFloat(point.y), throughFloat(point.z));
}

osg::Vec3f narrowed(CKVVector3D const& vector)
{
    return osg::Vec3f(static_cast<float>(vector.x), static_cast<float>(vector.y), static_cast<float>(vector.z));
}

} // namespace

CKVOSGTransformNode::CKVOSGTransformNode(CKVSceneNode* sceneNode)
    : mSceneNode(sceneNode)
{
    if (mSceneNode)
        setUpdateCallback(passThroughUpdateCallback());
}

// A copy is not the host node's: two OpenSceneGraph nodes answering to one
// host node would apply its changes twice.
CKVOSGTransformNode::CKVOSGTransformNode(CKVOSGTransformNode const& other, osg::CopyOp const& copyop)
    : osg::AutoTransform(other, copyop)
    , mSceneNode(nullptr)
{
}

CKVOSGTransformNode::~CKVOSGTransformNode() = default;

osg::Object* CKVOSGTransformNode::cloneType() const
{
    return new CKVOSGTransformNode();
}

osg::Object* CKVOSGTransformNode::clone(osg::CopyOp const& copyop) const
{
    return new CKVOSGTransformNode(*this, copyop);
}

bool CKVOSGTransformNode::isSameKindAs(osg::Object const* object) const
{
    return object && object->className() == s_className;
}

char const* CKVOSGTransformNode::libraryName() const
{
    return "kvosg";
}

char const* CKVOSGTransformNode::className() const
{
    return s_className;
}

void CKVOSGTransformNode::accept(osg::NodeVisitor& visitor)
{
    if (!visitor.validNodeMask(*this))
        return;
    visitor.pushOntoNodePath(this);
    // Without a transform the node is a plain group to every visitor, so no
    // matrix is pushed for it.
    CKVTransformState const* transform = stateOf<CKVTransformState>(mSceneNode, CKVSceneNodeState::kTransform);
    if (transform && transform->getTransformMode() != CKVTransformState::kNone)
        visitor.apply(static_cast<osg::AutoTransform&>(*this));
    else
        visitor.apply(static_cast<osg::Group&>(*this));
    visitor.popFromNodePath();
}

void CKVOSGTransformNode::traverse(osg::NodeVisitor& visitor)
{
    if (!mSceneNode) {
        osg::Group::traverse(visitor);
        return;
    }
    if (osgUtil::UpdateVisitor* update = visitor.asUpdateVisitor())
        updateTraverse(*update);
    else if (osgUtil::CullVisitor* cull = visitor.asCullVisitor())
        cullTraverse(*cull);
    else if (osgUtil::IntersectionVisitor* intersection = visitor.asIntersectionVisitor())
        intersectionTraverse(*intersection);
    else
        osg::Group::traverse(visitor);
}

void CKVOSGTransformNode::updateTraverse(osgUtil::UpdateVisitor& visitor)
{
    if (mSceneNode->getUpdateMode(CKVSceneNode::kProgramParamChanged)) {
        osg::StateSet* stateSet = getOrCreateStateSet();
        CKVProgramParam const param = mSceneNode->getProgramParam();
        CKVProgramManager& manager = CKVProgramManager::instance();
        osg::ref_ptr<osg::Program> program = manager.getProgram(param);
        if (program.valid())
            stateSet->setAttribute(program.get(), osg::StateAttribute::ON);
        else
            stateSet->removeAttribute(osg::StateAttribute::PROGRAM);
        manager.applyDefines(stateSet, param);
        mSceneNode->removeUpdateMode(CKVSceneNode::kProgramParamChanged);
    }
    if (mSceneNode->getUpdateMode(CKVSceneNode::kStatesChanged)) {
        updateMaterial(stateOf<CKVMaterialState>(mSceneNode, CKVSceneNodeState::kMaterial), visitor);
        updateTransform(stateOf<CKVTransformState>(mSceneNode, CKVSceneNodeState::kTransform));
        mSceneNode->removeUpdateMode(CKVSceneNode::kStatesChanged);
    }
    osg::Group::traverse(visitor);
}

void CKVOSGTransformNode::updateMaterial(CKVMaterialState* state, osgUtil::UpdateVisitor& visitor)
{
    if (!state || !state->getMaterial() || !state->isDirty())
        return;
    CKVBasicMaterial const* material = state->getMaterial();
    osg::StateSet* stateSet = getOrCreateStateSet();
    // Water and terrain are whole materials of their own; the others build
    // up from the basic part.
    if (material->isKindOf(CKVWaterMaterial::desc())) {
        applyWaterMaterial(static_cast<CKVWaterMaterial const*>(material), stateSet, visitor);
    } else if (material->isKindOf(CKVPhysicalWaterMaterial::desc())) {
        applyPhysicalWaterMaterial(static_cast<CKVPhysicalWaterMaterial const*>(material), stateSet, visitor);
    } else if (material->isKindOf(CKVTerrainMaterial::desc())) {
        applyTerrainMaterial(static_cast<CKVTerrainMaterial const*>(material), stateSet, visitor);
    } else {
        unsigned mask = 0;
        applyBasicMaterial(material, stateSet, mask);
        if (material->isKindOf(CKVPhysicalMaterial::desc()))
            applyPhycisalMaterial(static_cast<CKVPhysicalMaterial const*>(material), stateSet, mask);
        if (material->isKindOf(CKVLineMaterial::desc()))
            applyLineMaterial(static_cast<CKVLineMaterial const*>(material), stateSet);
    }
    state->dirty(false);
}

void CKVOSGTransformNode::applyBasicMaterial(CKVBasicMaterial const* material, osg::StateSet* stateSet, unsigned& mask)
{
    CKVMaterialBinder::applyBasicMaterial(material, stateSet, mask);
}

void CKVOSGTransformNode::applyLineMaterial(CKVLineMaterial const* material, osg::StateSet* stateSet)
{
    CKVMaterialBinder::applyLineMaterial(material, stateSet);
}

void CKVOSGTransformNode::applyPhycisalMaterial(CKVPhysicalMaterial const* material, osg::StateSet* stateSet,
                                                unsigned& mask)
{
    CKVMaterialBinder::applyPhysicalMaterial(material, stateSet, mask);
}

void CKVOSGTransformNode::applyPhysicalWaterMaterial(CKVPhysicalWaterMaterial const* material,
                                                     osg::StateSet* stateSet, osgUtil::UpdateVisitor&)
{
    CKVWaterMaterialBinder::applyPhysicalWaterMaterial(material, stateSet, mSceneNode);
}

void CKVOSGTransformNode::applyTerrainMaterial(CKVTerrainMaterial const* material, osg::StateSet* stateSet,
                                               osgUtil::UpdateVisitor&)
{
    CKVTerrainMaterialBinder::applyTerrainMaterial(material, stateSet);
}

void CKVOSGTransformNode::applyWaterMaterial(CKVWaterMaterial const* material, osg::StateSet* stateSet,
                                             osgUtil::UpdateVisitor&)
{
    CKVWaterMaterialBinder::applyWaterMaterial(material, stateSet, mSceneNode);
}

osg::ref_ptr<osg::Image> CKVOSGTransformNode::getErrorFormatImage() const
{
    return CKVTextureLoader::getErrorFormatImage();
}

osg::ref_ptr<osg::Image> CKVOSGTransformNode::getErrorPathImage() const
{
    return CKVTextureLoader::getErrorPathImage();
}

osg::ref_ptr<osg::Image> CKVOSGTransformNode::getResourceImage(char const* relativePath) const
{
    return CKVTextureLoader::getResourceImage(relativePath);
}

void CKVOSGTransformNode::setTextureFilter(osg::Texture* texture)
{
    CKVTextureLoader::setTextureFilter(texture);
}

void CKVOSGTransformNode::makeRenderBinDetails(osg::StateSet* stateSet, CKVBasicMaterial const* material)
{
    CKVMaterialBinder::makeRenderBinDetails(stateSet, material);
}

void CKVOSGTransformNode::updateTransform(CKVTransformState* state)
{
    if (!state) {
        setAutoScaleToScreen(false);
        setAutoRotateMode(NO_ROTATION);
        return;
    }
    if (!state->isDirty())
        return;
    switch (state->getTransformMode()) {
    case CKVTransformState::kNone:
    case CKVTransformState::kMatrix:
        setAutoScaleToScreen(false);
        setAutoRotateMode(NO_ROTATION);
        dirtyBound();
        break;
    case CKVTransformState::kAutoTransform: {
        setAutoScaleToScreen(state->getAutoScale());
        // Written directly and through single precision: the drawn position
        // must be exactly the one the GPU-side paths (instances, shadows)
        // compute from the same float values.
        _position = narrowed(state->getBasePosition());
        dirtyBound();
        switch (state->getRotationMode()) {
        case CKVTransformState::kNoRotation:
            setAutoRotateMode(NO_ROTATION);
            break;
        case CKVTransformState::kRotateToScreen:
            setAutoRotateMode(ROTATE_TO_SCREEN);
            break;
        case CKVTransformState::kRotateToAxis: {
            CKVVector3D axis;
            CKVVector3D normal;
            state->getRotationAxis(axis, normal);
            setAxis(narrowed(axis));
            setNormal(narrowed(normal));
            setAutoRotateMode(ROTATE_TO_AXIS);
            break;
        }
        default:
            break;
        }
        dirtyBound();
        break;
    }
    default:
        break;
    }
    state->dirty(false);
}

bool CKVOSGTransformNode::computeLocalMatrix(osg::Matrixd& local, osg::NodeVisitor* visitor, bool writeBack) const
{
    CKVTransformState* state = stateOf<CKVTransformState>(mSceneNode, CKVSceneNodeState::kTransform);
    if (!state)
        return false;
    local.makeIdentity();
    switch (state->getTransformMode()) {
    case CKVTransformState::kMatrix:
        local = toOsgMatrix(state->getMatrix());
        break;
    case CKVTransformState::kAutoTransform:
        local = computeMatrix(visitor);
        if (writeBack)
            state->setMatrix(fromOsgMatrix(local));
        break;
    default:
        break;
    }
    return true;
}

bool CKVOSGTransformNode::computeLocalToWorldMatrix(osg::Matrixd& matrix, osg::NodeVisitor* visitor) const
{
    osg::Matrixd local;
    if (!computeLocalMatrix(local, visitor, true))
        return true;
    if (_referenceFrame == RELATIVE_RF)
        matrix.preMult(local);
    else
        matrix = local;
    return true;
}

bool CKVOSGTransformNode::computeWorldToLocalMatrix(osg::Matrixd& matrix, osg::NodeVisitor* visitor) const
{
    osg::Matrixd local;
    if (!computeLocalMatrix(local, visitor, false))
        return true;
    osg::Matrixd const inverse = osg::Matrixd::inverse(local);
    if (_referenceFrame == RELATIVE_RF)
        matrix.postMult(inverse);
    else
        matrix = inverse;
    return true;
}

void CKVOSGTransformNode::cullTraverse(osgUtil::CullVisitor& visitor)
{
    if (!isVisible(mSceneNode, CKVVisibilityState::kDisplay))
        return;
    culling(mSceneNode, visitor);
}

void CKVOSGTransformNode::intersectionTraverse(osgUtil::IntersectionVisitor& visitor)
{
    CKVScelectAbilityState const* selectAbility =
        stateOf<CKVScelectAbilityState>(mSceneNode, CKVSceneNodeState::kSelectAbility);
    if (selectAbility && !selectAbility->getSelectAbility(CKVVisibilityState::kDisplay))
        return;
    if (!isVisible(mSceneNode, CKVVisibilityState::kDisplay))
        return;
    culling(mSceneNode, visitor);
}

bool CKVOSGTransformNode::isVisible(CKVSceneNode const* node, CKVVisibilityState::Mode mode) const
{
    CKVVisibilityState const* visibility = stateOf<CKVVisibilityState>(node, CKVSceneNodeState::kVisibility);
    return !visibility || visibility->getVisibility(mode);
}

void CKVOSGTransformNode::culling(CKVSceneNode const* node, osg::NodeVisitor& visitor)
{
    CKVCullingState const* state = stateOf<CKVCullingState>(node, CKVSceneNodeState::kCulling);
    if (!state || state->getCullingMode() == CKVRenderLOD::kNone) {
        osg::Group::traverse(visitor);
        return;
    }

    float value = 0.0f;
    osg::BoundingSphere const& bound = getBound();
    switch (state->getCullingMode()) {
    case CKVRenderLOD::kEyeDistance:
        value = (visitor.getEyePoint() - bound.center()).length();
        break;
    case CKVRenderLOD::kRadiusDistance:
        if (bound.radius() > 0.0f)
            value = (visitor.getEyePoint() - bound.center()).length() / bound.radius();
        break;
    case CKVRenderLOD::kPixelSize:
        // Only a cull has a screen; an intersection sees size 0.
        if (osg::CullStack const* cullStack = visitor.asCullStack()) {
            value = cullStack->clampedPixelSize(bound);
            if (cullStack->getLODScale() != 0.0f)
                value /= cullStack->getLODScale();
        }
        break;
    default:
        break;
    }

    if (!state->getCullingChild()) {
        if (inRange(value, *state))
            osg::Group::traverse(visitor);
        return;
    }

    // A level group: this node's value picks among the children by their own
    // ranges. Children that are not bridged, or carry no range, always go.
    for (osg::ref_ptr<osg::Node> const& child : _children) {
        if (child->className() == s_className) {
            CKVSceneNode const* level = static_cast<CKVOSGTransformNode const*>(child.get())->tryGetSceneNode();
            CKVCullingState const* range = stateOf<CKVCullingState>(level, CKVSceneNodeState::kCulling);
            if (range && !inRange(value, *range))
                continue;
        }
        child->accept(visitor);
    }
}

} // namespace Kelvor
