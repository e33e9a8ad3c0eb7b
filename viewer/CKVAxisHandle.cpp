#include "viewer/CKVAxisHandle.h"

#include "scene/CKVSceneNodeImp.h"

#include "TarnwickGeometry/CKVCone.h"
#include "TarnwickGeometry/CKVCylinder.h"
#include "TarnwickGeometry/CKVRenderBrepFaceData.h"
#include "TarnwickGeometry/CKVShell.h"
#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVVisibilityState.h"
#include "TarnwickStream/CKVGraphicsInterfaceImp.h"

#include <vector>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVAxisHandle, CKVSharedObject)

namespace {

// The handle's own scene spans -100..100 in x and y; an arrow is a shaft of
// 75 and a head of 25, so the tips just reach the edge of the view.
constexpr int kInitialSize = 200;
constexpr int kResizedSize = 100;
constexpr double kHalfExtent = 100.0;
constexpr double kNear = 0.1;
constexpr double kFar = 200.0;
constexpr double kEyeDistance = 100.0;
constexpr double kShaftLength = 75.0;
constexpr double kShaftRadius = 5.0;
constexpr double kHeadLength = 25.0;
constexpr double kHeadRadius = 10.0;
static_assert(kShaftLength + kHeadLength <= kHalfExtent, "the arrows fit the view");
static_assert(kEyeDistance + kHalfExtent <= kFar, "no arrow reaches past the far plane");

struct Arrow
{
    CKVVector3D axis;
    unsigned char rgb[3];
};

// The shaft goes in as a shell made from the cylinder's tessellation, the
// head as a cone without texture coordinates; both carry the arrow's
// material through the graphics interface.
bool addArrow(CKVGraphicsInterfaceImp& graphics, Arrow const& arrow)
{
    kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
    material->setRGB(arrow.rgb[0], arrow.rgb[1], arrow.rgb[2]);
    graphics.setCurrentMaterial(material.get());

    CKVPoint3D const origin(0.0, 0.0, 0.0);
    CKVCylinder cylinder;
    cylinder.setPoints(origin, origin + arrow.axis * kShaftLength);
    cylinder.setRadiu(kShaftRadius);
    kv_shared_ptr<CKVRenderGeometryData> data = cylinder.getRenderData();
    if (!data || !data->isKindOf(CKVRenderBrepFaceData::desc()))
        return false;
    auto const& faces = static_cast<CKVRenderBrepFaceData const&>(*data);
    kv_shared_ptr<CKVShell> shaft(new CKVShell);
    // The normals come along: the surface shader lights with them, and a
    // shaft without them would come out black.
    unsigned int const numNormals = faces.getNormalsArray() ? faces.getNumPoints() : 0u;
    if (!shaft->setShell(faces.getPointsArray(), faces.getNumPoints(), faces.getFacelistArray(),
                         faces.getNumFacelist(), nullptr, 0, false, faces.getNormalsArray(), numNormals))
        return false;

    kv_shared_ptr<CKVCone> head(new CKVCone);
    head->setGetRenderDataUV(false);
    head->setBottomCenter(origin + arrow.axis * kShaftLength);
    head->setMajorVector(arrow.axis * kHeadLength);
    head->setRadiu(kHeadRadius);

    return graphics.addGeometry(shaft.get()) && graphics.addGeometry(head.get());
}

} // namespace

CKVAxisHandle::CKVAxisHandle() = default;

CKVAxisHandle::~CKVAxisHandle() = default;

bool CKVAxisHandle::initialize(osg::GraphicsContext* graphicsContext)
{
    if (!graphicsContext || mCamera.valid())
        return false;
    osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    camera->setName("slave_axis");
    camera->setGraphicsContext(graphicsContext);
    camera->setViewport(0, 0, kInitialSize, kInitialSize);
    camera->setAllowEventFocus(false);
    // Drawn over the finished frame, without clearing it.
    camera->setClearMask(0);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->setProjectionResizePolicy(osg::Camera::FIXED);
    camera->setProjectionMatrixAsOrtho(-kHalfExtent, kHalfExtent, -kHalfExtent, kHalfExtent, kNear, kFar);

    kv_shared_ptr<CKVSceneNodeImp> root(new CKVSceneNodeImp);
    camera->addChild(root->getOSGNode());
    mCamera = camera;
    mRootNode = root;
    if (buildArrows())
        return true;
    releaseGraphicsContext();
    mCamera = nullptr;
    mRootNode = nullptr;
    return false;
}

bool CKVAxisHandle::buildArrows()
{
    Arrow const arrows[] = {{CKVVector3D(1.0, 0.0, 0.0), {255, 0, 0}},
                            {CKVVector3D(0.0, 1.0, 0.0), {0, 255, 0}},
                            {CKVVector3D(0.0, 0.0, 1.0), {0, 0, 255}}};
    CKVGraphicsInterfaceImp graphics;
    for (Arrow const& arrow : arrows) {
        if (!addArrow(graphics, arrow))
            return false;
    }

    std::vector<kv_shared_ptr<CKVRenderObject>> objects;
    std::vector<kv_shared_ptr<CKVBasicMaterial>> materials;
    graphics.getRenderObjectArray(objects, materials);
    for (size_t i = 0; i < objects.size() && i < materials.size(); ++i) {
        kv_shared_ptr<CKVSceneNodeImp> node(new CKVSceneNodeImp);
        kv_shared_ptr<CKVMaterialState> state(new CKVMaterialState(materials[i].get()));
        node->getStateSet()->addState(state.get());
        CKVProgramParam param = node->getProgramParam();
        materials[i]->getProgramParam(param);
        node->setProgramParam(param);
        if (!node->addRenderObject(objects[i].get()) || !mRootNode->addChildNode(node.get()))
            return false;
    }
    return !objects.empty();
}

void CKVAxisHandle::update(CKVCamera const& camera)
{
    if (!mCamera.valid())
        return;
    CKVPoint3D const origin(0.0, 0.0, 0.0);
    CKVVector3D direction = camera.getPosition() - camera.getTarget();
    direction.normalize();
    CKVCamera axisCamera;
    axisCamera.setLookAt(origin + direction * kEyeDistance, origin, camera.getUp());
    mCamera->setViewMatrix(toOsgMatrix(axisCamera.getViewMatrix()));
}

void CKVAxisHandle::resize(int, int)
{
    if (mCamera.valid())
        mCamera->setViewport(0, 0, kResizedSize, kResizedSize);
}

void CKVAxisHandle::setVisible(bool visible)
{
    if (!mRootNode.valid())
        return;
    kv_shared_ptr<CKVVisibilityState> state(new CKVVisibilityState);
    if (visible)
        state->addVisibility(CKVVisibilityState::kDisplay);
    else
        state->removeVisibility(CKVVisibilityState::kDisplay);
    mRootNode->getStateSet()->addState(state.get());
}

void CKVAxisHandle::releaseGraphicsContext()
{
    if (mCamera.valid())
        mCamera->setGraphicsContext(nullptr);
}

} // namespace Kelvor
