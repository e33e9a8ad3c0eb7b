#include "bench/CKVStockSceneBench.h"

#include "bench/CKVBenchReport.h"

#include <osg/Geometry>
#include <osg/MatrixTransform>
#include <osg/Stats>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>
#include <osgUtil/PolytopeIntersector>

#include <algorithm>

namespace Kelvor {

CKVStockSceneBench::~CKVStockSceneBench()
{
    close();
}

bool CKVStockSceneBench::open(int width, int height)
{
    osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    traits->readDISPLAY();
    traits->setUndefinedScreenDetailsToDefaultScreen();
    traits->width = width;
    traits->height = height;
    traits->windowDecoration = false;
    traits->doubleBuffer = true;
    traits->depth = 24;
    traits->stencil = 8;
    traits->vsync = false;
    mContext = osg::GraphicsContext::createGraphicsContext(traits.get());
    if (!mContext.valid())
        return false;
    mViewer = new osgViewer::Viewer;
    mViewer->setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
    mViewer->setKeyEventSetsDone(0);
    mViewer->setQuitEventSetsDone(false);
    osg::Camera* camera = mViewer->getCamera();
    camera->setGraphicsContext(mContext.get());
    camera->setViewport(0, 0, width, height);
    camera->setClearColor(osg::Vec4(0.8f, 0.8f, 0.8f, 1.0f));
    GLenum const buffer = traits->doubleBuffer ? GL_BACK : GL_FRONT;
    camera->setDrawBuffer(buffer);
    camera->setReadBuffer(buffer);
    if (!camera->getStats())
        camera->setStats(new osg::Stats("Camera"));
    camera->getStats()->collectStats("rendering", true);
    mViewer->getViewerStats()->collectStats("update", true);
    mViewer->realize();
    return mViewer->isRealized();
}

bool CKVStockSceneBench::build(std::vector<CKVBenchMesh> const& meshes,
                               std::vector<CKVBenchPlacement> const& placements)
{
    std::vector<osg::ref_ptr<osg::Geometry>> shapes;
    for (CKVBenchMesh const& mesh : meshes) {
        osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array(mesh.vertexCount());
        osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array(mesh.vertexCount());
        for (unsigned int v = 0; v < mesh.vertexCount(); ++v) {
            (*vertices)[v].set(mesh.positions[3 * v], mesh.positions[3 * v + 1], mesh.positions[3 * v + 2]);
            (*normals)[v].set(mesh.normals[3 * v], mesh.normals[3 * v + 1], mesh.normals[3 * v + 2]);
        }
        geometry->setVertexArray(vertices.get());
        geometry->setNormalArray(normals.get(), osg::Array::BIND_PER_VERTEX);
        geometry->addPrimitiveSet(
            new osg::DrawElementsUInt(GL_TRIANGLES, mesh.indices.begin(), mesh.indices.end()));
        shapes.push_back(geometry);
        mVertexBytes += double(mesh.bufferBytes());
    }

    mRoot = new osg::Group;
    for (CKVBenchPlacement const& placement : placements) {
        osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(
            osg::Matrixd::rotate(placement.quarterTurns * 1.5707963267948966, osg::Vec3d(0, 0, 1)) *
            osg::Matrixd::translate(placement.x, placement.y, placement.z));
        transform->addChild(shapes[placement.mesh].get());
        if (mPickable)
            mPlacementOf[transform.get()] = static_cast<long long>(&placement - placements.data());
        mRoot->addChild(transform.get());
    }
    mTransforms = double(placements.size());
    mViewer->setSceneData(mRoot.get());
    return true;
}

void CKVStockSceneBench::setCamera(double const eye[3], double const target[3], double fovDegrees, double aspect,
                                   double zNear, double zFar)
{
    osg::Camera* camera = mViewer->getCamera();
    camera->setViewMatrixAsLookAt(osg::Vec3d(eye[0], eye[1], eye[2]), osg::Vec3d(target[0], target[1], target[2]),
                                  osg::Vec3d(0, 0, 1));
    camera->setProjectionMatrixAsPerspective(fovDegrees, aspect, zNear, zFar);
}

bool CKVStockSceneBench::frame()
{
    if (!mViewer.valid())
        return false;
    mViewer->frame();
    return true;
}

CKVSceneBench::TraversalTimes CKVStockSceneBench::lastFrameTimes() const
{
    return readTimes(mViewer->getViewerStats(), mViewer->getCamera()->getStats(),
                     mViewer->getFrameStamp()->getFrameNumber());
}

void CKVStockSceneBench::reportMemory(CKVBenchReport& report) const
{
    report.set("vertex_bytes", mVertexBytes);
    // No instance buffer: each placement is a node holding its own
    // double-precision matrix on the CPU.
    report.set("instance_bytes", 0.0);
    report.set("node_matrix_bytes", mTransforms * sizeof(osg::Matrixd));
}

void CKVStockSceneBench::close()
{
    if (!mViewer.valid())
        return;
    if (mContext.valid() && mRoot.valid() && mContext->makeCurrent()) {
        mRoot->releaseGLObjects(mContext->getState());
        osg::flushAllDeletedGLObjects(mContext->getState()->getContextID());
        mContext->releaseContext();
    }
    mViewer->setSceneData(nullptr);
    mRoot = nullptr;
    mPlacementOf.clear();
    if (mContext.valid())
        mContext->close();
    mViewer->getCamera()->setGraphicsContext(nullptr);
    mViewer = nullptr;
    mContext = nullptr;
}

long long CKVStockSceneBench::placementOnPath(osg::NodePath const& path) const
{
    for (std::size_t i = path.size(); i-- > 0;) {
        auto const found = mPlacementOf.find(path[i]);
        if (found != mPlacementOf.end())
            return found->second;
    }
    return -1;
}

long long CKVStockSceneBench::pickPlacement(double x, double y)
{
    osg::Camera* camera = mViewer->getCamera();
    osg::ref_ptr<osgUtil::LineSegmentIntersector> intersector =
        new osgUtil::LineSegmentIntersector(osgUtil::Intersector::WINDOW, x, camera->getViewport()->height() - y);
    osgUtil::IntersectionVisitor visitor(intersector.get());
    camera->accept(visitor);
    if (!intersector->containsIntersections())
        return -1;
    return placementOnPath(intersector->getFirstIntersection().nodePath);
}

void CKVStockSceneBench::selectPlacements(double x1, double y1, double x2, double y2,
                                          std::vector<long long>& placements)
{
    placements.clear();
    osg::Camera* camera = mViewer->getCamera();
    double const height = camera->getViewport()->height();
    osg::ref_ptr<osgUtil::PolytopeIntersector> intersector = new osgUtil::PolytopeIntersector(
        osgUtil::Intersector::WINDOW, std::min(x1, x2), height - std::max(y1, y2), std::max(x1, x2),
        height - std::min(y1, y2));
    osgUtil::IntersectionVisitor visitor(intersector.get());
    camera->accept(visitor);
    for (osgUtil::PolytopeIntersector::Intersection const& hit : intersector->getIntersections())
        placements.push_back(placementOnPath(hit.nodePath));
}

} // namespace Kelvor
