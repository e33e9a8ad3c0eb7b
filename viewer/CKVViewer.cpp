#include "viewer/CKVViewer.h"

#include "viewer/CKVRenderer.h"

#include <osg/Stats>
#include <osgDB/DatabasePager>
#include <osgDB/ImagePager>
#include <osgUtil/Statistics>
#include <osgViewer/Renderer>

namespace Kelvor {

namespace {

unsigned int sumPrimitives(osgUtil::Statistics& statistics)
{
    unsigned int sum = 0;
    for (auto it = statistics.GetPrimitivesBegin(); it != statistics.GetPrimitivesEnd(); ++it)
        sum += it->second;
    return sum;
}

} // namespace

CKVViewer::CKVViewer()
{
    // The base constructor made the master camera's renderer while this
    // object was still a plain view, so it is a stock one; replace it.
    getCamera()->setRenderer(createRenderer(getCamera()));
}

CKVViewer::CKVViewer(CKVViewer const& other, osg::CopyOp const& copyop)
    : osg::Object(other, copyop)
    , osgViewer::Viewer(other, copyop)
    , mSwapBuffers(other.mSwapBuffers)
{
    getCamera()->setRenderer(createRenderer(getCamera()));
}

CKVViewer::~CKVViewer() = default;

osg::GraphicsOperation* CKVViewer::createRenderer(osg::Camera* camera)
{
    CKVRenderer* renderer = new CKVRenderer(camera);
    camera->setStats(new osg::Stats(camera->getName()));
    return renderer;
}

void CKVViewer::collectSceneStats(unsigned int frameNumber)
{
    Views views;
    getViews(views);
    for (osgViewer::View* view : views) {
        osg::Stats* stats = view->getStats();
        osg::Node* sceneRoot = view->getSceneData();
        if (!stats || !sceneRoot)
            continue;

        osgUtil::StatsVisitor visitor;
        sceneRoot->accept(visitor);
        visitor.totalUpStats();

        auto set = [&](char const* name, double value) { stats->setAttribute(frameNumber, name, value); };
        set("Number of unique StateSet", visitor._statesetSet.size());
        set("Number of unique Group", visitor._groupSet.size());
        set("Number of unique Transform", visitor._transformSet.size());
        set("Number of unique LOD", visitor._lodSet.size());
        set("Number of unique Switch", visitor._switchSet.size());
        set("Number of unique Geode", visitor._geodeSet.size());
        set("Number of unique Drawable", visitor._drawableSet.size());
        set("Number of unique Geometry", visitor._geometrySet.size());
        set("Number of unique Vertices", visitor._uniqueStats._vertexCount);
        set("Number of unique Primitives", sumPrimitives(visitor._uniqueStats));

        set("Number of instanced Stateset", visitor._numInstancedStateSet);
        set("Number of instanced Group", visitor._numInstancedGroup);
        set("Number of instanced Transform", visitor._numInstancedTransform);
        set("Number of instanced LOD", visitor._numInstancedLOD);
        set("Number of instanced Switch", visitor._numInstancedSwitch);
        set("Number of instanced Geode", visitor._numInstancedGeode);
        set("Number of instanced Drawable", visitor._numInstancedDrawable);
        set("Number of instanced Geometry", visitor._numInstancedGeometry);
        set("Number of instanced Vertices", visitor._instancedStats._vertexCount);
        set("Number of instanced Primitives", sumPrimitives(visitor._instancedStats));
    }
}

void CKVViewer::renderingTraversals()
{
    // No checkWindowStatus and no early return on done: the render
    // context's tick checks the windows and the done flag before each frame.
    Contexts contexts;
    getContexts(contexts, true);

    double const beginTime = elapsedTime();
    osg::FrameStamp* frameStamp = getViewerFrameStamp();
    unsigned int const frameNumber = frameStamp ? frameStamp->getFrameNumber() : 0;

    if (getViewerStats() && getViewerStats()->collectStats("scene"))
        collectSceneStats(frameNumber);

    Scenes scenes;
    getScenes(scenes);
    for (osgViewer::Scene* scene : scenes) {
        if (!scene)
            continue;
        if (osgDB::DatabasePager* pager = scene->getDatabasePager())
            pager->signalBeginFrame(frameStamp);
        if (osgDB::ImagePager* pager = scene->getImagePager())
            pager->signalBeginFrame(frameStamp);
        // Builds the bounding volumes here, before cull needs them.
        if (scene->getSceneData())
            scene->getSceneData()->getBound();
    }

    Cameras cameras;
    getCameras(cameras);

    if (_endDynamicDrawBlock.valid())
        _endDynamicDrawBlock->reset();
    if (_startRenderingBarrier.valid())
        _startRenderingBarrier->block();

    for (osg::Camera* camera : cameras) {
        auto* renderer = dynamic_cast<osgViewer::Renderer*>(camera->getRenderer());
        if (renderer && !renderer->getGraphicsThreadDoesCull() && !camera->getCameraThread())
            renderer->cull();
    }

    bool madeCurrent = false;
    for (auto it = contexts.begin(); it != contexts.end() && !_done; ++it) {
        osg::GraphicsContext* context = *it;
        if (!context->getGraphicsThread() && context->valid()) {
            madeCurrent = true;
            makeCurrent(context);
            context->runOperations();
        }
    }

    if (_endRenderingDispatchBarrier.valid())
        _endRenderingDispatchBarrier->block();

    if (mSwapBuffers) {
        for (auto it = contexts.begin(); it != contexts.end() && !_done; ++it) {
            osg::GraphicsContext* context = *it;
            if (!context->getGraphicsThread() && context->valid()) {
                madeCurrent = true;
                makeCurrent(context);
                context->swapBuffers();
            }
        }
    }

    for (osgViewer::Scene* scene : scenes) {
        if (!scene)
            continue;
        if (osgDB::DatabasePager* pager = scene->getDatabasePager())
            pager->signalEndFrame();
        if (osgDB::ImagePager* pager = scene->getImagePager())
            pager->signalEndFrame();
    }

    if (_endDynamicDrawBlock.valid())
        _endDynamicDrawBlock->block();

    if (_releaseContextAtEndOfFrameHint && madeCurrent)
        releaseContext();

    if (getViewerStats() && getViewerStats()->collectStats("update")) {
        double const endTime = elapsedTime();
        getViewerStats()->setAttribute(frameNumber, "Rendering traversals begin time ", beginTime);
        getViewerStats()->setAttribute(frameNumber, "Rendering traversals end time ", endTime);
        getViewerStats()->setAttribute(frameNumber, "Rendering traversals time taken", endTime - beginTime);
    }

    _requestRedraw = false;
}

} // namespace Kelvor
