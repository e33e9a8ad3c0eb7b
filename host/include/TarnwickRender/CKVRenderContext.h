#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVObject.h"
#include "TarnwickCommon/CKVVec.h"

#include <vector>

namespace Kelvor {

class CKVBackGroundConfig;
class CKVCamera;
class CKVGraphicsContext;
class CKVGraphicsModel;
class CKVPoint3D;
class CKVRenderCommandCache;
class CKVRenderConfig;
class CKVSceneNode;
class CKVSelectionResult;

// What a rendering backend offers the host: one window, its frame tick and
// the operations that render commands end in. The backend derives from it and
// hands instances out through the render-context factory of
// CKVRenderCallback; only the matching destroy factory deletes one.
// Operations report failure by a false or null result.
class CKVRenderContext : public CKVObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderContext)
public:
    virtual bool initialize(CKVGraphicsContext* graphicsContext) = 0;
    virtual bool destroy() = 0;
    virtual bool setGraphicsModel(CKVGraphicsModel* model) = 0;
    virtual CKVRenderCommandCache* getRenderCommandCache() = 0;
    virtual void onTick(unsigned int milliseconds) = 0;
    virtual bool renderFrame() = 0;
    virtual bool applyCamera(CKVCamera const& camera) = 0;
    virtual bool attachSceneData(CKVSceneNode* node) = 0;
    virtual bool detachSceneData(CKVSceneNode* node) = 0;
    virtual bool getCapture(char const* path, CKVVec2<unsigned int> const& size, CKVCamera const& camera,
                            bool thumbnail) = 0;
    virtual bool setTerrainHeight(float height) = 0;
    virtual bool setViewPort(int width, int height) = 0;
    virtual bool getViewPort(int& width, int& height) = 0;
    virtual bool waterMask(char const* imagePath, unsigned int width, unsigned int height) = 0;
    // Positions are window pixels with y counted from the top.
    virtual bool pickSelectObject(CKVPoint3D const& pixel, CKVSelectionResult& result) = 0;
    virtual bool areaSelectObject(CKVPoint3D const& corner1, CKVPoint3D const& corner2, unsigned int maxCount,
                                  std::vector<CKVSelectionResult>& results) = 0;
    virtual bool lineSegmentIntersection(CKVPoint3D const& start, CKVPoint3D const& end,
                                         CKVSelectionResult& result) = 0;
    virtual bool updateClipTest(CKVVec4<float> const* planes, unsigned int count) = 0;
    virtual bool applyBackGround(CKVBackGroundConfig const& config) = 0;
    virtual bool applyRenderConfig(CKVRenderConfig const& config) = 0;

    // The OpenGL strings, filled by the backend once it has had a current context.
    char const* getGLVendor() const { return mGLVendor.c_str(); }
    char const* getGLRenderer() const { return mGLRenderer.c_str(); }
    char const* getGLVersion() const { return mGLVersion.c_str(); }
    char const* getGLSLVersion() const { return mGLSLVersion.c_str(); }

protected:
    CKVRenderContext();
    ~CKVRenderContext() override;

    CKVRenderContext(CKVRenderContext const&) = delete;
    CKVRenderContext& operator=(CKVRenderContext const&) = delete;

    CKVAString mGLVendor;
    CKVAString mGLRenderer;
    CKVAString mGLVersion;
    CKVAString mGLSLVersion;
};

} // namespace Kelvor
