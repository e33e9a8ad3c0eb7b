#pragma once

#include "bench/CKVSceneBench.h"

#include <osg/GraphicsContext>
#include <osg/Group>
#include <osg/ref_ptr>
#include <osgViewer/Viewer>

#include <unordered_map>

namespace Kelvor {

// The graph a plain OpenSceneGraph user builds for the same model: one
// osg::Geometry per unique mesh, shared, and one osg::MatrixTransform per
// placement above it, under a stock single-threaded osgViewer::Viewer with
// its default culling and lighting.
class CKVStockSceneBench : public CKVSceneBench
{
public:
    ~CKVStockSceneBench() override;

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
    // Before `build`: remember which transform is which placement.
    void setPickable(bool pickable) { mPickable = pickable; }

private:
    osg::ref_ptr<osg::GraphicsContext> mContext;
    osg::ref_ptr<osgViewer::Viewer> mViewer;
    osg::ref_ptr<osg::Group> mRoot;
    double mVertexBytes = 0.0;
    double mTransforms = 0.0;
    bool mPickable = false;
    std::unordered_map<osg::Node const*, long long> mPlacementOf;

    long long placementOnPath(osg::NodePath const& path) const;
};

} // namespace Kelvor
