#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

namespace Kelvor {

class CKVEvent;

// The active tool of a scene (orbit, measure, select ...). The scene hands it
// every input event; the render thread ticks it once a frame. The defaults
// ignore everything, so a tool overrides only what it reacts to.
class CKVOperator : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVOperator)
public:
    CKVOperator();
    ~CKVOperator() override;

    // Called on the render thread before each frame; `milliseconds` grows
    // from the start of the frame timer.
    virtual void tick(unsigned int milliseconds);

    virtual void onLButtonDown(CKVEvent const& event);
    virtual void onLButtonUp(CKVEvent const& event);
    virtual void onLButtonDblClk(CKVEvent const& event);
    virtual void onMButtonDown(CKVEvent const& event);
    virtual void onMButtonUp(CKVEvent const& event);
    virtual void onMButtonDblClk(CKVEvent const& event);
    virtual void onRButtonDown(CKVEvent const& event);
    virtual void onRButtonUp(CKVEvent const& event);
    virtual void onRButtonDblClk(CKVEvent const& event);
    virtual void onMouseMove(CKVEvent const& event);
    virtual void onMouseWheel(CKVEvent const& event);
    virtual void onKeyDown(CKVEvent const& event);
    virtual void onKeyUp(CKVEvent const& event);
};

} // namespace Kelvor
