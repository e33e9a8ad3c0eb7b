#pragma once

#include "effects/CKVFullScreenGeometry.h"

#include <osg/Camera>
#include <osg/Texture2D>
#include <osg/ref_ptr>

namespace Kelvor {

class CBGGeode;

// Base of the full-screen effects of the chain (edges, anti-aliasing,
// volumetric light, depth of field). It is a pre-render camera that is not
// in the scene graph: the post-process node calls its accept in chain order
// and links its input and output. The camera only gives the effect its
// place among the passes; the work is done by its CKVFullScreenGeometry.
class CKVFullScreenGenerator : public osg::Camera
{
public:
    // A size of 0 becomes 1. `clearMask` is the effect's own.
    CKVFullScreenGenerator(CKVFullScreenGeometry* geometry, int width, int height, int orderNum,
                           GLbitfield clearMask);

    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CKVFullScreenGenerator"; }

    // Follows the window: the geometry's targets, then viewport and
    // attachments. A zero size is ignored.
    virtual void resize(int width, int height);

    void setInput(osg::Texture2D* texture);
    osg::Texture2D* getInput() const;
    osg::Texture2D* getOutput() const;

    CKVFullScreenGeometry* getGeometry() const { return mGeometry.get(); }
    CBGGeode* getGeode() const { return mGeode.get(); }

protected:
    ~CKVFullScreenGenerator() override;

private:
    osg::ref_ptr<CKVFullScreenGeometry> mGeometry;
    osg::ref_ptr<CBGGeode> mGeode;
};

} // namespace Kelvor
