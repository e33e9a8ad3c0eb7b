#pragma once

#include "bench/CKVBenchWindow.h"
#include "bench/CKVSceneBench.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVDrawable.h"
#include "TarnwickRender/CKVGraphicsContext.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVScene.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <memory>
#include <vector>

namespace Kelvor {

class CKVRenderContextX11Imp;

// The model as a host hands it to the backend: one instanced buffer
// geometry per unique mesh (the mesh as its one part, every placement as an
// instance), all under one scene node, sent as render commands into a
// render context on the host's own X window. `build` only writes the
// commands: the next tick drains them, packs the buffers and draws. The
// benchmark stops the context's timer and runs each tick itself, so that a
// frame is measured from drain to swap.
class CKVHostSceneBench : public CKVSceneBench
{
public:
    ~CKVHostSceneBench() override;

    bool open(int width, int height) override;
    bool build(std::vector<CKVBenchMesh> const& meshes, std::vector<CKVBenchPlacement> const& placements) override;
    void setCamera(double const eye[3], double const target[3], double fovDegrees, double aspect, double zNear,
                   double zFar) override;
    bool frame() override;
    TraversalTimes lastFrameTimes() const override;
    void reportMemory(CKVBenchReport& report) const override;
    void close() override;
    long long pickPlacement(double x, double y) override;
    void selectPlacements(double x1, double y1, double x2, double y2, std::vector<long long>& placements) override;
    void setExhaustivePicking(bool exhaustive) override { mExhaustivePicking = exhaustive; }
    void reportPickIndex(CKVBenchReport& report) const override;

    // For the command figures: the running context and its timer.
    CKVRenderContextX11Imp* context() const { return mContext; }
    void startTimer();
    void stopTimer();
    unsigned int geometryCount() const { return static_cast<unsigned int>(mGeometries.size()); }
    // Before `open`: see CKVBenchOptions::shadows.
    void setShadowLevel(int level) { mShadowLevel = level; }
    // Before `open`: see CKVBenchOptions::ssao.
    void setSSAOLevel(int level) { mSSAOLevel = level; }
    // Before `build`: every placement gets a host drawable whose id is its
    // index, so that picks name it.
    void setPickable(bool pickable) { mPickable = pickable; }
    // Before `open`: see CKVBenchOptions::culling.
    void setCulling(int culling) { mCulling = culling; }
    std::vector<kv_shared_ptr<CKVBufferGeometry>> const& geometries() const { return mGeometries; }


private:
    std::unique_ptr<CKVBenchWindow> mWindow;
    CKVScene mScene;
    CKVGraphicsContext mGraphicsContext;
    CKVRenderContextX11Imp* mContext = nullptr;
    kv_shared_ptr<CKVSceneNode> mNode;
    std::vector<kv_shared_ptr<CKVBufferGeometry>> mGeometries;
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> mLogicBuffers;
    unsigned int mTickMs = 0;
    int mShadowLevel = -1;
    int mSSAOLevel = -1;
    // Lit with a material, and in the shadow and occlusion passes.
    bool isLit() const { return mShadowLevel >= 0 || mSSAOLevel >= 0; }
    int mCulling = 0;
    kv_shared_ptr<CKVBasicMaterial> mMaterial;
    bool mPickable = false;
    bool mExhaustivePicking = false;
    std::vector<kv_shared_ptr<CKVDrawable>> mDrawables;
};

} // namespace Kelvor
