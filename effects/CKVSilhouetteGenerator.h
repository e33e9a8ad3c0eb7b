#pragma once

#include "effects/CKVFullScreenGenerator.h"

#include <osg/Vec3f>
#include <osg/Vec4f>

namespace Kelvor {

class SilhouetteGeometry;

// Outlines and creases drawn from the scene's normal and depth targets, for
// the render styles with edges. First in the effect chain; it always reads
// the scene colour.
class CKVSilhouetteGenerator : public CKVFullScreenGenerator
{
public:
    static constexpr int kOrderNum = 21;

    // The scene pass's normal and depth targets, read every frame.
    CKVSilhouetteGenerator(osg::Texture2D* normalTexture, osg::Texture2D* depthTexture, int width, int height);

    char const* className() const override { return "CKVSilhouetteGenerator"; }

    void setEdgeColor(osg::Vec4f const& color);
    void setEdgeOnlyBackgroundColor(osg::Vec3f const& color);
    void setEdgeOnly(bool edgeOnly);
    osg::Vec4f const& getEdgeColor() const;
    osg::Vec3f const& getEdgeOnlyBackgroundColor() const;
    bool getEdgeOnly() const;

    SilhouetteGeometry* getSilhouetteGeometry() const;

protected:
    ~CKVSilhouetteGenerator() override;
};

} // namespace Kelvor
