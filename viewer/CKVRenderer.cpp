#include "viewer/CKVRenderer.h"

#include "viewer/CKVSceneView.h"

#include <osg/DisplaySettings>
#include <osgViewer/View>
#include <osgViewer/ViewerBase>

namespace Kelvor {

CKVRenderer::CKVRenderer(osg::Camera* camera)
    : osgViewer::Renderer(camera)
{
    // The base constructor has built and queued two stock scene views; the
    // first is replaced and set up again the same way, with our classes.
    osg::ref_ptr<CKVSceneView> sceneView = new CKVSceneView;
    _sceneView[0] = sceneView;
    sceneView->setFrameStamp(new osg::FrameStamp);

    osg::Camera* master = camera->getView() ? camera->getView()->getCamera() : camera;
    osg::StateSet* globalStateSet = nullptr;
    osg::StateSet* secondaryStateSet = nullptr;
    if (master == camera) {
        globalStateSet = camera->getOrCreateStateSet();
    } else {
        globalStateSet = master->getOrCreateStateSet();
        secondaryStateSet = camera->getStateSet();
    }

    osgViewer::View* view = dynamic_cast<osgViewer::View*>(camera->getView());
    osgViewer::ViewerBase* viewerBase = view ? view->getViewerBase() : nullptr;
    bool const automaticFlush = !(viewerBase && viewerBase->getIncrementalCompileOperation());

    osg::DisplaySettings* displaySettings = camera->getDisplaySettings();
    if (!displaySettings && view)
        displaySettings = view->getDisplaySettings();
    if (!displaySettings)
        displaySettings = osg::DisplaySettings::instance().get();
    _serializeDraw = displaySettings ? displaySettings->getSerializeDrawDispatch() : false;

    sceneView->setAutomaticFlush(automaticFlush);
    sceneView->setGlobalStateSet(globalStateSet);
    sceneView->setSecondaryStateSet(secondaryStateSet);
    // Options 0: no head light. This also installs the CKVCullVisitor.
    sceneView->setDefaults(0);

    if (displaySettings && displaySettings->getUseSceneViewForStereoHint())
        sceneView->setDisplaySettings(displaySettings);
    else
        sceneView->setResetColorMaskToAllOn(false);

    sceneView->setCamera(camera, false);

    osg::ref_ptr<osgUtil::CullVisitor::Identifier> first = new osgUtil::CullVisitor::Identifier;
    osg::ref_ptr<osgUtil::CullVisitor::Identifier> second = new osgUtil::CullVisitor::Identifier;
    osgUtil::CullVisitor* central = sceneView->getCullVisitor();
    central->setIdentifier(first.get());
    sceneView->setCullVisitorLeft(central->clone());
    sceneView->getCullVisitorLeft()->setIdentifier(first.get());
    sceneView->setCullVisitorRight(central->clone());
    sceneView->getCullVisitorRight()->setIdentifier(second.get());

    _availableQueue.reset();
    _availableQueue.add(_sceneView[0].get());
    _availableQueue.add(_sceneView[1].get());
}

CKVRenderer::~CKVRenderer() = default;

} // namespace Kelvor
