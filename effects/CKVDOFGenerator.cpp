#include "effects/CKVDOFGenerator.h"

#include "effects/DOFGeometry.h"

namespace Kelvor {

namespace {

// The composite covers every pixel; nothing needs clearing.
constexpr GLbitfield kClearMask = 0;

} // namespace

CKVDOFGenerator::CKVDOFGenerator(osg::Texture2D* depthTexture, int width, int height)
    : CKVFullScreenGenerator(new DOFGeometry(depthTexture), width, height, kOrderNum, kClearMask)
{
}

CKVDOFGenerator::~CKVDOFGenerator() = default;

DOFGeometry* CKVDOFGenerator::getDOFGeometry() const
{
    return static_cast<DOFGeometry*>(getGeometry());
}

void CKVDOFGenerator::setNearEnd(float value)
{
    getDOFGeometry()->setNearEnd(value);
}

void CKVDOFGenerator::setFarBegin(float value)
{
    getDOFGeometry()->setFarBegin(value);
}

void CKVDOFGenerator::setBlurSize(float value)
{
    getDOFGeometry()->setBlurSize(value);
}

} // namespace Kelvor
