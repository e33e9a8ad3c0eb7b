#pragma once

#include "effects/CKVFullScreenGenerator.h"

namespace Kelvor {

class DOFGeometry;

// Blurs what lies in front of and behind a sharp band of depths. Last in
// the effect chain; it works at half size and lays the blurred near and
// far fields over its sharp input at full size.
class CKVDOFGenerator : public CKVFullScreenGenerator
{
public:
    static constexpr int kOrderNum = 24;

    // The scene depth target, read every frame.
    CKVDOFGenerator(osg::Texture2D* depthTexture, int width, int height);

    char const* className() const override { return "CKVDOFGenerator"; }

    // Fractions of the camera's depth range: sharp from the near end to the
    // far begin.
    void setNearEnd(float value);
    void setFarBegin(float value);
    // The blur's reach; below the smallest kernel it fades the blur in.
    void setBlurSize(float value);

    DOFGeometry* getDOFGeometry() const;

protected:
    ~CKVDOFGenerator() override;
};

} // namespace Kelvor
