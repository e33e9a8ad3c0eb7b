#pragma once

#include "binding/CKVRenderContextImp.h"

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVRenderContext.h"
#include "TarnwickRender/CKVSelectionResult.h"

#include <sstream>
#include <string>
#include <vector>

namespace Kelvor {

// One of our contexts whose operations record their arguments and answer
// `answer`, so that dispatches can be checked without a window. Selections
// that answer true report one hit at a position derived from the input.
class RecordingContext : public CKVRenderContextImp
{
public:
    bool answer = true;
    std::vector<std::string> calls;
    std::vector<CKVCamera> cameras;

    bool applyCamera(CKVCamera const& camera) override
    {
        cameras.push_back(camera);
        return record("applyCamera");
    }
    bool attachSceneData(CKVSceneNode* node) override { return record("attach", node != nullptr); }
    bool detachSceneData(CKVSceneNode* node) override { return record("detach", node != nullptr); }
    bool getCapture(char const* path, CKVVec2<unsigned int> const& size, CKVCamera const&, bool thumbnail) override
    {
        return record("capture", path, size.x, size.y, thumbnail);
    }
    bool setTerrainHeight(float height) override { return record("terrain", height); }
    bool setViewPort(int width, int height) override { return record("viewport", width, height); }
    bool waterMask(char const* path, unsigned int width, unsigned int height) override
    {
        return record("water", path, width, height);
    }
    bool updateClipTest(CKVVec4<float> const* planes, unsigned int count) override
    {
        return record("clip", count, planes ? planes[count - 1].w : 0.0f);
    }
    bool applyBackGround(CKVBackGroundConfig const&) override { return record("background"); }
    bool applyRenderConfig(CKVRenderConfig const& config) override
    {
        return record("config", config.getMaxZoomDistance());
    }
    bool pickSelectObject(CKVPoint3D const& pixel, CKVSelectionResult& result) override
    {
        result.setPosition(pixel);
        return record("pick", pixel.x, pixel.y);
    }
    bool areaSelectObject(CKVPoint3D const& corner1, CKVPoint3D const& corner2, unsigned int maxCount,
                          std::vector<CKVSelectionResult>& results) override
    {
        results.resize(2);
        results[0].setPosition(corner1);
        results[1].setPosition(corner2);
        return record("area", maxCount);
    }
    bool lineSegmentIntersection(CKVPoint3D const& start, CKVPoint3D const& end, CKVSelectionResult& result) override
    {
        result.setPosition(end);
        return record("line", start.x, end.x);
    }

private:
    template <class... Args>
    bool record(char const* name, Args const&... args)
    {
        std::ostringstream line;
        line << name;
        ((line << ' ' << args), ...);
        calls.push_back(line.str());
        return answer;
    }
};

// A context of someone else's backend: every operation would succeed, so a
// dispatch that forgot to check the context class would report true.
class ForeignContext : public CKVRenderContext
{
public:
    bool initialize(CKVGraphicsContext*) override { return true; }
    bool destroy() override { return true; }
    bool setGraphicsModel(CKVGraphicsModel*) override { return true; }
    CKVRenderCommandCache* getRenderCommandCache() override { return nullptr; }
    void onTick(unsigned int) override {}
    bool renderFrame() override { return true; }
    bool applyCamera(CKVCamera const&) override { return true; }
    bool attachSceneData(CKVSceneNode*) override { return true; }
    bool detachSceneData(CKVSceneNode*) override { return true; }
    bool getCapture(char const*, CKVVec2<unsigned int> const&, CKVCamera const&, bool) override { return true; }
    bool setTerrainHeight(float) override { return true; }
    bool setViewPort(int, int) override { return true; }
    bool getViewPort(int&, int&) override { return true; }
    bool waterMask(char const*, unsigned int, unsigned int) override { return true; }
    bool pickSelectObject(CKVPoint3D const&, CKVSelectionResult&) override { return true; }
    bool areaSelectObject(CKVPoint3D const&, CKVPoint3D const&, unsigned int,
                          std::vector<CKVSelectionResult>&) override
    {
        return true;
    }
    bool lineSegmentIntersection(CKVPoint3D const&, CKVPoint3D const&, CKVSelectionResult&) override { return true; }
    bool updateClipTest(CKVVec4<float> const*, unsigned int) override { return true; }
    bool applyBackGround(CKVBackGroundConfig const&) override { return true; }
    bool applyRenderConfig(CKVRenderConfig const&) override { return true; }
};

} // namespace Kelvor
