#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVObject.h"
#include "TarnwickGeometry/CKVPoint3D.h"

namespace Kelvor {

// What stands behind the model: a colour, a gradient, a sky box or the sky of
// the atmosphere. Colours are CKVPoint3D with x, y, z as red, green, blue in 0..1.
class CKVBackGroundConfig : public CKVObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVBackGroundConfig)
public:
    enum BackGroundType : int { kSolidColor = 0, kGradient = 1, kSkyBox = 2, kAtmosphere = 3 };

    // One face of a six-image sky box, in the order in which cube maps number
    // their faces (+x, -x, +y, -y, +z, -z).
    enum SkyBoxFace : int {
        kPositiveX = 0,
        kNegativeX = 1,
        kPositiveY = 2,
        kNegativeY = 3,
        kPositiveZ = 4,
        kNegativeZ = 5,
        kFaceCount = 6
    };

    CKVBackGroundConfig();
    CKVBackGroundConfig(CKVBackGroundConfig const&) = default;
    CKVBackGroundConfig& operator=(CKVBackGroundConfig const&) = default;
    ~CKVBackGroundConfig() override;

    BackGroundType getBackGroundType() const { return mType; }
    void setBackGroundType(BackGroundType type) { mType = type; }

    CKVPoint3D getBackGroundColor() const { return mColor; }
    void setBackGroundColor(CKVPoint3D const& rgb) { mColor = rgb; }

    void getGradientBackGround(CKVPoint3D& top, CKVPoint3D& bottom) const;
    void setGradientBackGround(CKVPoint3D const& top, CKVPoint3D const& bottom);

    // A single cube-map image file; when empty the six face images are used.
    CKVAString getCubeMapSkyBoxPath() const { return mCubeMapPath; }
    void setCubeMapSkyBoxPath(char const* path) { mCubeMapPath = path; }

    // The empty string for a face value out of range.
    CKVAString getSingleSkyBoxPath(SkyBoxFace face) const;
    // False for a face value out of range.
    bool setSingleSkyBoxPath(SkyBoxFace face, char const* path);

    bool operator==(CKVBackGroundConfig const& other) const;
    bool operator!=(CKVBackGroundConfig const& other) const { return !(*this == other); }

private:
    BackGroundType mType;
    CKVPoint3D mColor;
    CKVPoint3D mGradientTop;
    CKVPoint3D mGradientBottom;
    CKVAString mCubeMapPath;
    CKVAString mFacePaths[kFaceCount];
};

} // namespace Kelvor
