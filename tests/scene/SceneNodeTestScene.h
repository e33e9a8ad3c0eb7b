#pragma once

#include "scene/CKVSceneNodeImp.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"

#include <osg/Drawable>
#include <osg/Geometry>
#include <osg/Viewport>
#include <osgUtil/CullVisitor>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>
#include <osgUtil/RenderStage>
#include <osgUtil/StateGraph>

#include <set>
#include <string>

namespace Kelvor {
namespace SceneNodeTestScene {

inline kv_shared_ptr<CKVSceneNodeImp> makeNode()
{
    return kv_shared_ptr<CKVSceneNodeImp>(new CKVSceneNodeImp());
}

// The node's state set keeps the new state alive.
template <class State>
State* addState(CKVSceneNodeImp& node)
{
    auto* state = new State();
    node.getStateSet()->addState(state);
    return state;
}

// A named flat-coloured square of side 2 * half in the plane z = `z`.
inline osg::ref_ptr<osg::Geometry> makeQuad(char const* name, float half, float z = 0.0f,
                                            osg::Vec4 const& colour = osg::Vec4(1.0f, 1.0f, 1.0f, 1.0f))
{
    osg::ref_ptr<osg::Geometry> quad = new osg::Geometry;
    quad->setName(name);
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    vertices->push_back(osg::Vec3(-half, -half, z));
    vertices->push_back(osg::Vec3(half, -half, z));
    vertices->push_back(osg::Vec3(half, half, z));
    vertices->push_back(osg::Vec3(-half, half, z));
    quad->setVertexArray(vertices.get());
    osg::ref_ptr<osg::Vec4Array> colours = new osg::Vec4Array;
    colours->push_back(colour);
    quad->setColorArray(colours.get(), osg::Array::BIND_OVERALL);
    quad->addPrimitiveSet(new osg::DrawArrays(GL_QUADS, 0, 4));
    return quad;
}

// Records the drawables that a cull reaches and keeps them out of the render
// bins, so that a cull needs no GL context.
class CullRecorder : public osg::DrawableCullCallback
{
public:
    explicit CullRecorder(std::set<std::string>& names) : mNames(names) {}
    bool cull(osg::NodeVisitor*, osg::Drawable* drawable, osg::RenderInfo*) const override
    {
        mNames.insert(drawable->getName());
        return true;
    }

private:
    std::set<std::string>& mNames;
};

// The names of the drawables that one cull reaches, seen from `eye` towards
// the origin. Frustum and small-feature culling are off: only our nodes decide.
inline std::set<std::string> cullNames(osg::Node* scene, osg::Vec3d const& eye, float lodScale = 1.0f)
{
    std::set<std::string> names;
    osg::ref_ptr<CullRecorder> recorder = new CullRecorder(names);
    struct Install : osg::NodeVisitor
    {
        explicit Install(CullRecorder* r) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), recorder(r) {}
        void apply(osg::Drawable& drawable) override { drawable.setCullCallback(recorder); }
        CullRecorder* recorder;
    } install(recorder.get());
    scene->accept(install);

    osg::ref_ptr<osgUtil::CullVisitor> cull = new osgUtil::CullVisitor;
    osg::ref_ptr<osgUtil::StateGraph> graph = new osgUtil::StateGraph;
    osg::ref_ptr<osgUtil::RenderStage> stage = new osgUtil::RenderStage;
    osg::ref_ptr<osg::Viewport> viewport = new osg::Viewport(0, 0, 256, 256);
    cull->setCullingMode(osg::CullSettings::NO_CULLING);
    cull->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    cull->setLODScale(lodScale);
    cull->setStateGraph(graph.get());
    cull->setRenderStage(stage.get());
    stage->setViewport(viewport.get());
    cull->pushViewport(viewport.get());
    cull->pushProjectionMatrix(new osg::RefMatrix(osg::Matrixd::perspective(45.0, 1.0, 0.1, 10000.0)));
    cull->pushModelViewMatrix(new osg::RefMatrix(osg::Matrixd::lookAt(eye, osg::Vec3d(), osg::Vec3d(0.0, 1.0, 0.0))),
                              osg::Transform::ABSOLUTE_RF);
    scene->accept(*cull);
    cull->popModelViewMatrix();
    cull->popProjectionMatrix();
    cull->popViewport();
    return names;
}

inline std::set<std::string> pickNames(osg::Node* scene, osg::Vec3d const& start, osg::Vec3d const& end)
{
    osg::ref_ptr<osgUtil::LineSegmentIntersector> line = new osgUtil::LineSegmentIntersector(start, end);
    osgUtil::IntersectionVisitor visitor(line.get());
    scene->accept(visitor);
    std::set<std::string> names;
    for (osgUtil::LineSegmentIntersector::Intersection const& hit : line->getIntersections())
        names.insert(hit.drawable->getName());
    return names;
}

} // namespace SceneNodeTestScene
} // namespace Kelvor
