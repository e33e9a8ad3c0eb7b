#include "apps/view/ViewInput.h"

#include "viewer/CKVGUIEventHandler.h"

#include <osgGA/GUIActionAdapter>

namespace Kelvor {

namespace {

// The viewer redraws on the backend's tick, so requests for redraws and
// pointer warps have nowhere to go.
class NoActions : public osgGA::GUIActionAdapter
{
public:
    void requestRedraw() override {}
    void requestContinuousUpdate(bool) override {}
    void requestWarpPointer(float, float) override {}
};

} // namespace

ViewInput::ViewInput(CKVScene& scene)
    : mHandler(new CKVGUIEventHandler(&scene))
{
}

ViewInput::~ViewInput() = default;

bool ViewInput::feed(XEvent const& event, int width, int height)
{
    osg::ref_ptr<osgGA::GUIEventAdapter> translated = mTranslator.translate(event, width, height);
    if (!translated)
        return false;
    NoActions actions;
    return mHandler->handle(*translated, actions, nullptr, nullptr);
}

} // namespace Kelvor
