#pragma once

#include "environment/CBGGeometry.h"

namespace Kelvor {

// First drawable of the scene pass. Shaders write colour, velocity, view
// normal and volumetric light at fixed output locations 0 to 3, but OSG
// lists only the attached colour buffers as draw buffers: without the
// velocity texture, location 2 would land in attachment 3. This sets the
// draw buffers slot by slot, GL_NONE where nothing is attached. It does
// nothing while the default framebuffer is bound (the node stepped aside).
class CKVDrawBufferSelect : public CBGGeometry
{
public:
    CKVDrawBufferSelect();

    char const* className() const override { return "CKVDrawBufferSelect"; }

    void setVelocityAttached(bool attached) { mVelocityAttached = attached; }
    bool getVelocityAttached() const { return mVelocityAttached; }

    void drawImplementation(osg::RenderInfo& renderInfo) const override;

protected:
    ~CKVDrawBufferSelect() override;

private:
    bool mVelocityAttached = false;
};

} // namespace Kelvor
