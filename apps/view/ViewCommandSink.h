#pragma once

namespace Kelvor {

class CKVCamera;
class CKVEvent;
class CKVPoint3D;

// Where the viewer's input ends up: render commands for the backend, and
// keys for the viewer itself. The orbit operator talks only to this.
class ViewCommandSink
{
public:
    virtual ~ViewCommandSink() = default;

    virtual void applyCamera(CKVCamera const& camera) = 0;
    // A wheel notch over the given event's cursor.
    virtual void zoom(CKVEvent const& event) = 0;
    // A click, in window pixels with y from the top.
    virtual void pick(CKVPoint3D const& pixel) = 0;
    virtual void keyDown(CKVEvent const& event) = 0;
};

} // namespace Kelvor
