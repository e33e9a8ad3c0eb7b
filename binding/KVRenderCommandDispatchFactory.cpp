#include "binding/KVRenderCommandDispatchFactory.h"

#include "binding/CKVRCDispatchAnimationResOperator.h"
#include "binding/CKVRCDispatchApplyBackGround.h"
#include "binding/CKVRCDispatchApplyCamera.h"
#include "binding/CKVRCDispatchApplyRenderConfig.h"
#include "binding/CKVRCDispatchAreaSelectObject.h"
#include "binding/CKVRCDispatchAttachSceneData.h"
#include "binding/CKVRCDispatchDetachSceneData.h"
#include "binding/CKVRCDispatchGetCapture.h"
#include "binding/CKVRCDispatchInsertRenderObject.h"
#include "binding/CKVRCDispatchInsertSceneNode.h"
#include "binding/CKVRCDispatchLineSegmentIntersection.h"
#include "binding/CKVRCDispatchPickSelectObject.h"
#include "binding/CKVRCDispatchRemoveAllChildNode.h"
#include "binding/CKVRCDispatchRemoveAllRenderObject.h"
#include "binding/CKVRCDispatchRemoveRenderObject.h"
#include "binding/CKVRCDispatchRemoveSceneNode.h"
#include "binding/CKVRCDispatchSetActiveUniforms.h"
#include "binding/CKVRCDispatchSetTerrainHeight.h"
#include "binding/CKVRCDispatchSetViewPort.h"
#include "binding/CKVRCDispatchUpdateBufferGeometry.h"
#include "binding/CKVRCDispatchUpdateClipTest.h"
#include "binding/CKVRCDispatchWaterMask.h"
#include "binding/CKVRCDispatchZoomCamera.h"

#include "TarnwickRender/CKVRenderCommand.h"

#include <new>

namespace Kelvor {

namespace {

template <class Dispatch>
CKVRenderCommandDispatch* make()
{
    return new (std::nothrow) Dispatch();
}

} // namespace

CKVRenderCommandDispatch* createRenderCommandDispatch(unsigned int id)
{
    switch (id) {
    case CKVRenderCommand::kAttachSceneData: return make<CKVRCDispatchAttachSceneData>();
    case CKVRenderCommand::kDetachSceneData: return make<CKVRCDispatchDetachSceneData>();
    case CKVRenderCommand::kInsertSceneNode: return make<CKVRCDispatchInsertSceneNode>();
    case CKVRenderCommand::kRemoveSceneNode: return make<CKVRCDispatchRemoveSceneNode>();
    case CKVRenderCommand::kRemoveAllChildNode: return make<CKVRCDispatchRemoveAllChildNode>();
    case CKVRenderCommand::kInsertRenderObject: return make<CKVRCDispatchInsertRenderObject>();
    case CKVRenderCommand::kRemoveRenderObject: return make<CKVRCDispatchRemoveRenderObject>();
    case CKVRenderCommand::kRemoveAllRenderObject: return make<CKVRCDispatchRemoveAllRenderObject>();
    case CKVRenderCommand::kApplyCamera: return make<CKVRCDispatchApplyCamera>();
    case CKVRenderCommand::kSetViewPort: return make<CKVRCDispatchSetViewPort>();
    case CKVRenderCommand::kGetCapture: return make<CKVRCDispatchGetCapture>();
    case CKVRenderCommand::kPickSelectObject: return make<CKVRCDispatchPickSelectObject>();
    case CKVRenderCommand::kAreaSelectObject: return make<CKVRCDispatchAreaSelectObject>();
    case CKVRenderCommand::kZoomCamera: return make<CKVRCDispatchZoomCamera>();
    case CKVRenderCommand::kUpdateClipTest: return make<CKVRCDispatchUpdateClipTest>();
    case CKVRenderCommand::kLineSegmentIntersection: return make<CKVRCDispatchLineSegmentIntersection>();
    case CKVRenderCommand::kApplyRenderConfig: return make<CKVRCDispatchApplyRenderConfig>();
    case CKVRenderCommand::kWaterMask: return make<CKVRCDispatchWaterMask>();
    case CKVRenderCommand::kSetActiveUniforms: return make<CKVRCDispatchSetActiveUniforms>();
    case CKVRenderCommand::kSetTerrainHeight: return make<CKVRCDispatchSetTerrainHeight>();
    case CKVRenderCommand::kUpdateBufferGeometry: return make<CKVRCDispatchUpdateBufferGeometry>();
    case CKVRenderCommand::kAnimationResOperator: return make<CKVRCDispatchAnimationResOperator>();
    default: return nullptr;
    }
}

void initRenderCommandDispatchRecords()
{
    CKVRCDispatchAttachSceneData::desc();
    CKVRCDispatchDetachSceneData::desc();
    CKVRCDispatchInsertSceneNode::desc();
    CKVRCDispatchRemoveSceneNode::desc();
    CKVRCDispatchRemoveAllChildNode::desc();
    CKVRCDispatchInsertRenderObject::desc();
    CKVRCDispatchRemoveRenderObject::desc();
    CKVRCDispatchRemoveAllRenderObject::desc();
    CKVRCDispatchApplyCamera::desc();
    CKVRCDispatchSetViewPort::desc();
    CKVRCDispatchGetCapture::desc();
    CKVRCDispatchPickSelectObject::desc();
    CKVRCDispatchAreaSelectObject::desc();
    CKVRCDispatchZoomCamera::desc();
    CKVRCDispatchUpdateClipTest::desc();
    CKVRCDispatchLineSegmentIntersection::desc();
    CKVRCDispatchApplyRenderConfig::desc();
    CKVRCDispatchWaterMask::desc();
    CKVRCDispatchSetActiveUniforms::desc();
    CKVRCDispatchSetTerrainHeight::desc();
    CKVRCDispatchUpdateBufferGeometry::desc();
    CKVRCDispatchAnimationResOperator::desc();
    CKVRCDispatchApplyBackGround::desc();
}

} // namespace Kelvor
