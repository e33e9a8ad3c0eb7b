#include "bench/CKVHostSceneBench.h"

#include "bench/CKVBenchReport.h"

#include "binding/CKVRenderContextX11Imp.h"
#include "picking/CKVInstanceSearch.h"
#include "picking/CKVScenePicker.h"
#include "scene/CKVBufferGeometryImp.h"
#include "viewer/CKVGraphicsWindowX11.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/CKVViewer.h"

#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVRenderOptionState.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCInsertRenderObject.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommandCache.h"
#include "TarnwickRender/CKVVertexBufferAttribute.h"
#include "TarnwickRender/CKVVertexIndex.h"

#include "TarnwickRender/CKVSelectionResult.h"

#include <osg/Stats>

#include <algorithm>
#include <limits>

namespace Kelvor {

CKVHostSceneBench::~CKVHostSceneBench()
{
    close();
}

bool CKVHostSceneBench::open(int width, int height)
{
    mWindow = std::make_unique<CKVBenchWindow>(width, height);
    if (!mWindow->valid())
        return false;
    if (isLit() || mCulling > 0) {
        CKVRenderConfig config;
        if (isLit()) {
            config.setShadowLevel(static_cast<CKVRenderConfig::RenderLevel>(std::max(mShadowLevel, 0)));
            config.setSSAOLevel(static_cast<CKVRenderConfig::RenderLevel>(std::max(mSSAOLevel, 0)));
        }
        config.setUseOcclusionCull(mCulling > 0);
        config.setUseDepthPrePass(mCulling > 1);
        mScene.setRenderConfig(config);
    }
    mGraphicsContext = CKVGraphicsContext(&mWindow->windowData(), &mScene);
    CKVRenderContext* created = CKVRenderCallback::createRenderContext(-1);
    if (!created || !created->isKindOf(CKVRenderContextX11Imp::desc()))
        return false;
    mContext = static_cast<CKVRenderContextX11Imp*>(created);
    if (!mContext->initialize(&mGraphicsContext))
        return false;
    return true;
}

void CKVHostSceneBench::startTimer()
{
    mContext->getWindow()->startTimer();
}

void CKVHostSceneBench::stopTimer()
{
    mContext->getWindow()->stopTimer();
}

bool CKVHostSceneBench::build(std::vector<CKVBenchMesh> const& meshes,
                              std::vector<CKVBenchPlacement> const& placements)
{
    // From here on the benchmark runs every tick itself. (Stopping the timer
    // straight after `initialize`, before its first tick, has been seen to
    // fail; by now the context has ticked.)
    stopTimer();
    // No frame runs while the statistics switch on.
    mContext->getViewer()->getViewerStats()->collectStats("update", true);
    if (osg::Stats* stats = mContext->getMainCamera()->getStats())
        stats->collectStats("rendering", true);
    mNode = kv_shared_ptr<CKVSceneNode>(CKVRenderCallback::createSceneNode());
    if (!mNode.valid())
        return false;
    CKVProgramParam param(CKVProgramParam::kFlatColor);
    if (isLit()) {
        // Lit and casting, whatever the level, so that the runs of a shadow
        // or occlusion series differ in that effect alone.
        mMaterial = new CKVBasicMaterial;
        mMaterial->setRGB(200, 200, 200);
        mMaterial->getProgramParam(param);
        mNode->getStateSet()->addState(new CKVMaterialState(mMaterial.get()));
        mNode->getStateSet()->addState(new CKVRenderOptionState);
    }
    param.addParam(CKVProgramParam::kUseInstanceMatrix);
    mNode->setProgramParam(param);

    std::vector<std::vector<CKVBenchPlacement const*>> byMesh(meshes.size());
    for (CKVBenchPlacement const& placement : placements)
        byMesh[placement.mesh].push_back(&placement);
    mLogicBuffers.reserve(placements.size() + meshes.size());

    for (std::size_t m = 0; m < meshes.size(); ++m) {
        if (byMesh[m].empty())
            continue;
        kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
        if (!geometry.valid())
            return false;
        kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry);
        CKVBenchMesh const& mesh = meshes[m];
        part->setVertexData(CKVVertexBufferAttribute::kVertex, mesh.positions.data(),
                            static_cast<unsigned int>(mesh.positions.size()));
        part->setVertexData(CKVVertexBufferAttribute::kNormal, mesh.normals.data(),
                            static_cast<unsigned int>(mesh.normals.size()));
        part->setIndexData(mesh.indices.data(), static_cast<unsigned int>(mesh.indices.size()));
        geometry->addLogicBuffer(part.get());
        mLogicBuffers.push_back(part);
        for (CKVBenchPlacement const* placement : byMesh[m]) {
            kv_shared_ptr<CKVLogicBufferGeometry> instance(new CKVLogicBufferGeometry);
            if (mPickable) {
                mDrawables.push_back(new CKVDrawable(static_cast<unsigned long long>(placement - placements.data())));
                instance = new CKVLogicBufferGeometry(mDrawables.back().get());
            }
            CKVMatrix3D const matrix =
                CKVMatrix3D::translation(CKVVector3D(placement->x, placement->y, placement->z)) *
                CKVMatrix3D::rotation(placement->quarterTurns * 1.5707963267948966, CKVVector3D(0, 0, 1));
            instance->setInstanceMatrix(matrix);
            geometry->addLogicBuffer(instance.get());
            mLogicBuffers.push_back(instance);
        }
        mGeometries.push_back(geometry);
    }

    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    std::vector<kv_shared_ptr<CKVRenderCommand>> commands;
    for (auto const& geometry : mGeometries)
        commands.push_back(new CKVRCInsertRenderObject(mNode.get(), geometry.get()));
    commands.push_back(new CKVRCAttachSceneData(mNode.get()));
    for (auto const& command : commands)
        cache->write(command.get());
    cache->finish();
    return true;
}

void CKVHostSceneBench::setCamera(double const eye[3], double const target[3], double fovDegrees, double aspect,
                                  double zNear, double zFar)
{
    CKVCamera camera;
    camera.setProjectMode(CKVCamera::kPerspective);
    camera.setFieldOfView(fovDegrees);
    camera.setAspect(aspect);
    camera.setNearFar(zNear, zFar);
    camera.setLookAt(CKVPoint3D(eye[0], eye[1], eye[2]), CKVPoint3D(target[0], target[1], target[2]),
                     CKVVector3D(0, 0, 1));
    kv_shared_ptr<CKVRenderCommand> command = new CKVRCApplyCamera(camera);
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    cache->write(command.get());
    cache->finish();
}

bool CKVHostSceneBench::frame()
{
    if (!mContext)
        return false;
    mContext->onTick(mTickMs += 20);
    return true;
}

CKVSceneBench::TraversalTimes CKVHostSceneBench::lastFrameTimes() const
{
    CKVViewer* viewer = mContext->getViewer();
    return readTimes(viewer->getViewerStats(), mContext->getMainCamera()->getStats(),
                     viewer->getFrameStamp()->getFrameNumber());
}

void CKVHostSceneBench::reportMemory(CKVBenchReport& report) const
{
    double vertexBytes = 0.0, instanceBytes = 0.0, indexBytes = 0.0, commandBytes = 0.0;
    for (auto const& geometry : mGeometries) {
        for (unsigned int name = 0; name < CKVVertexBufferAttribute::kNameCount; ++name) {
            CKVVertexBufferAttribute* attribute =
                geometry->getVertexBufferAttribute(static_cast<CKVVertexBufferAttribute::Name>(name));
            if (!attribute)
                continue;
            double const bytes = double(attribute->getDataSize()) * sizeof(float);
            bool const instanceRow = name >= 3 && name <= 6;
            (instanceRow ? instanceBytes : vertexBytes) += bytes;
        }
        if (CKVVertexIndex* index = geometry->getVertexIndex()) {
            indexBytes += double(index->getDataSize()) * sizeof(unsigned int);
            // One 20-byte indirect command per segment.
            commandBytes += 20.0 * index->getSegments().size();
        }
    }
    report.set("vertex_bytes", vertexBytes + indexBytes);
    report.set("instance_bytes", instanceBytes);
    report.set("indirect_bytes", commandBytes);
    report.set("geometries", double(mGeometries.size()));
}

void CKVHostSceneBench::close()
{
    if (mContext) {
        mContext->destroy();
        CKVRenderContext* context = mContext;
        CKVRenderCallback::destroyRenderContext(context);
        mContext = nullptr;
    }
    mGeometries.clear();
    mLogicBuffers.clear();
    mDrawables.clear();
    mNode = nullptr;
    mWindow.reset();
}

long long CKVHostSceneBench::pickPlacement(double x, double y)
{
    CKVScenePicker picker(mContext->getMainCamera());
    picker.setUseInstanceSearch(!mExhaustivePicking);
    CKVSelectionResult result;
    if (!picker.pick(CKVPoint3D(x, y, 0.0), result) || !result.getDrawable())
        return -1;
    return static_cast<long long>(result.getDrawable()->getId());
}

void CKVHostSceneBench::selectPlacements(double x1, double y1, double x2, double y2,
                                         std::vector<long long>& placements)
{
    placements.clear();
    CKVScenePicker picker(mContext->getMainCamera());
    picker.setUseInstanceSearch(!mExhaustivePicking);
    std::vector<CKVSelectionResult> results;
    picker.select(CKVPoint3D(x1, y1, 0.0), CKVPoint3D(x2, y2, 0.0), std::numeric_limits<unsigned int>::max(), results);
    for (CKVSelectionResult const& result : results) {
        if (result.getDrawable())
            placements.push_back(static_cast<long long>(result.getDrawable()->getId()));
    }
}

void CKVHostSceneBench::reportPickIndex(CKVBenchReport& report) const
{
    double boxesMs = 0.0, treeMs = 0.0;
    for (auto const& geometry : mGeometries) {
        if (!geometry->isKindOf(CKVBufferGeometryImp::desc()))
            continue;
        CKVInstanceSearch::Timing const timing =
            static_cast<CKVBufferGeometryImp*>(geometry.get())->instanceSearch().lastTiming();
        boxesMs += timing.boxesMs;
        treeMs += timing.treeMs;
    }
    report.set("index_boxes_ms", boxesMs);
    report.set("index_tree_ms", treeMs);
}

} // namespace Kelvor
