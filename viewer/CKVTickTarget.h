#pragma once

namespace Kelvor {

// What the window's timer drives: the render context implements it. Kept as
// an interface so that the window does not depend on the binding.
class CKVTickTarget
{
public:
    virtual ~CKVTickTarget();

    // Called on the timer's thread every period with the milliseconds since
    // the timer started (not since the previous call).
    virtual void onTick(unsigned int milliseconds) = 0;
};

} // namespace Kelvor
