#include "effects/CKVSilhouetteGenerator.h"

#include "effects/SilhouetteGeometry.h"

namespace Kelvor {

namespace {

// The composite covers every pixel; nothing needs clearing.
constexpr GLbitfield kClearMask = 0;

} // namespace

CKVSilhouetteGenerator::CKVSilhouetteGenerator(osg::Texture2D* normalTexture, osg::Texture2D* depthTexture,
                                               int width, int height)
    : CKVFullScreenGenerator(new SilhouetteGeometry(normalTexture, depthTexture), width, height, kOrderNum,
                             kClearMask)
{
}

CKVSilhouetteGenerator::~CKVSilhouetteGenerator() = default;

SilhouetteGeometry* CKVSilhouetteGenerator::getSilhouetteGeometry() const
{
    return static_cast<SilhouetteGeometry*>(getGeometry());
}

void CKVSilhouetteGenerator::setEdgeColor(osg::Vec4f const& color)
{
    getSilhouetteGeometry()->setEdgeColor(color);
}

void CKVSilhouetteGenerator::setEdgeOnlyBackgroundColor(osg::Vec3f const& color)
{
    getSilhouetteGeometry()->setBackgroundColor(color);
}

void CKVSilhouetteGenerator::setEdgeOnly(bool edgeOnly)
{
    getSilhouetteGeometry()->setEdgeOnly(edgeOnly);
}

osg::Vec4f const& CKVSilhouetteGenerator::getEdgeColor() const
{
    return getSilhouetteGeometry()->getEdgeColor();
}

osg::Vec3f const& CKVSilhouetteGenerator::getEdgeOnlyBackgroundColor() const
{
    return getSilhouetteGeometry()->getBackgroundColor();
}

bool CKVSilhouetteGenerator::getEdgeOnly() const
{
    return getSilhouetteGeometry()->getEdgeOnly();
}

} // namespace Kelvor
