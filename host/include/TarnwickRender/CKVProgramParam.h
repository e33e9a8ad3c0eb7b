#pragma once

namespace Kelvor {

// Selects a shader program: a program kind and a set of switch bits. It is a
// plain value so that it can key the backend's program cache directly.
class CKVProgramParam
{
public:
    // Program kinds. 0 asks for no program: the node draws with what it inherits.
    enum Type : unsigned int {
        kNoProgram = 0,
        kSurface = 1,
        kFlatColor = 2,
        kSurfacePBR = 3,
        kWater = 4,
        kPhysicalWater = 5,
        kReflectedSurface = 6,
        kReflectedSurfaceInstanced = 7,
        kSkyCapture = 8,
        kSkyBox = 9,
        kTerrain = 10,
        kReflectedTerrain = 11,
        kVolumetricLight = 12,
        kText = 13,
        kShadowCaster = 14,
        kShadowCasterInstanced = 15,
        kShadowCasterTerrain = 16,
        kReflectiveShadowMap = 17,
        kReflectiveShadowMapInstanced = 18,
        kSunColor = 19,
        kDepthOnly = 20,
        kDepthOnlyInstanced = 21,
        kDepthOnlyTerrain = 22,
        kDepthOnlyClip = 23,
        kDepthOnlyInstancedClip = 24,
        kLastType = kDepthOnlyInstancedClip
    };

    // Switch bits, each standing for the shader define of the same name
    // (kUseTexture is _USE_TEXTURE). 256 and 512 are unassigned.
    enum Param : unsigned int {
        kUseTexture = 1,
        kUseShadow = 2,
        kUseSSAO = 4,
        kUseLPV = 8,
        kUseAtmosphere = 16,
        kUseVolumetricLight = 32,
        kUseFog = 64,
        kUseInstanceMatrix = 128,
        kUseAnimationClipTest = 1024,
        kUseHighlightStyle = 2048,
        kUseAlphaTest = 4096,
        kUseAntiRepeatTexture = 8192
    };

    CKVProgramParam() = default;
    explicit CKVProgramParam(Type type) : mType(type) {}
    CKVProgramParam(CKVProgramParam const&) = default;
    CKVProgramParam& operator=(CKVProgramParam const&) = default;
    ~CKVProgramParam() = default;

    Type getType() const { return mType; }
    void setType(Type type) { mType = type; }

    // A param of several bits is held only when all of them are; 0 is never held.
    bool hasParam(Param param) const { return param != 0u && (mParams & param) == param; }
    void addParam(Param param) { mParams |= param; }
    void removeParam(Param param) { mParams &= ~static_cast<unsigned int>(param); }
    void clearParams() { mParams = 0u; }
    // All bits at once, for callers that walk them.
    unsigned int getParams() const { return mParams; }

    // Orders by kind, then by bits, so that two values differing in any bit
    // are distinct keys.
    bool operator<(CKVProgramParam const& other) const
    {
        return mType != other.mType ? mType < other.mType : mParams < other.mParams;
    }
    bool operator==(CKVProgramParam const& other) const
    {
        return mType == other.mType && mParams == other.mParams;
    }
    bool operator!=(CKVProgramParam const& other) const { return !(*this == other); }

private:
    Type mType = kNoProgram;
    unsigned int mParams = 0u;
};

} // namespace Kelvor
