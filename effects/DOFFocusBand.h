#pragma once

namespace Kelvor {

// The eye depths that bound the sharp band of the depth of field. The
// settings are fractions of the camera's depth range, not distances: a
// near end of 0.4 ends the near blur 40 % of the way from the near plane
// to the far plane. Between the near end and the far begin nothing blurs.
struct DOFFocusBand
{
    float nearBegin = 0.0f;  // fully blurred in front of this
    float nearEnd = 0.0f;    // sharp from here
    float farBegin = 0.0f;   // blurring starts here
    float farEnd = 0.0f;     // fully blurred from here

    static DOFFocusBand fromDepthRange(double zNear, double zFar, float nearEndFraction, float farBeginFraction);
};

} // namespace Kelvor
