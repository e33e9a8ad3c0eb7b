#pragma once

namespace Kelvor {

class KVGLDriverQuery;

// What the graphics driver can do and which whole-system switches are on.
// One per process: the backend draws through one driver, and the switches
// (occlusion culling, the depth pyramid) apply to every context alike.
class CKVRenderStateManager
{
public:
    static CKVRenderStateManager& instance();
    virtual ~CKVRenderStateManager();

    // Reads the driver's capabilities. Must run with a GL context current.
    void initExtensions();
    // The same decisions from the answers of `driver`.
    void initExtensions(KVGLDriverQuery const& driver);

    // The version parsed from a GL_VERSION string such as "4.5 (Compatibility
    // Profile) Mesa 22.3.6"; separated out so it can be checked without GL.
    static float parseGLVersion(char const* versionString, float fallback);

    float getGLVersion() const { return mGLVersion; }
    bool isDisableClipDistances() const { return mDisableClipDistances; }
    bool isBindlessTexture() const { return mBindlessTexture; }
    bool isVertexAttribBinding() const { return mVertexAttribBinding; }
    bool isHiZ() const { return mHiZ; }
    bool isOcclusionCulling() const { return mOcclusionCulling; }
    bool isPBRInUse() const { return mPBRInUse; }

    void setHiZ(bool on) { mHiZ = on; }
    void setOcclusionCulling(bool on) { mOcclusionCulling = on; }
    void setPBRInUse(bool on) { mPBRInUse = on; }
    void setBindlessTexture(bool on) { mBindlessTexture = on; }

    // Applies what initExtensions learns, given the driver's answers; split
    // from initExtensions so the decisions can be tested without a driver.
    void applyGLVersion(char const* versionString);

    // Whether `driver` can be trusted with bindless textures.
    static bool detectBindlessTexture(KVGLDriverQuery const& driver);

protected:
    CKVRenderStateManager();

private:
    float mGLVersion = 4.2f;
    bool mDisableClipDistances = false;
    bool mBindlessTexture = false;
    // The separate attribute-format path stays available but off: it is
    // forced off on every driver so that one vertex path is exercised.
    bool mVertexAttribBinding = false;
    bool mHiZ = true;
    bool mOcclusionCulling = true;
    bool mPBRInUse = false;
};

} // namespace Kelvor
