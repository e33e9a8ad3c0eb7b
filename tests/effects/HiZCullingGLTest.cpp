// Instance culling on a live render context, driven by host commands and
// render configurations: a grid of 10,000 instanced boxes on the ground, seen
// at a slant so that some leave the frustum, some shrink below two pixels
// and, behind a wall, some are hidden. The counts the GPU writes into the
// indirect command are checked against a CPU reference that runs the same
// three tests on the depth chain read back from the GPU.
#include "scene/LitSceneFixture.h"
#include "scene/SceneShapes.h"

#include "effects/CKVHiZGenerator.h"
#include "effects/CKVPostProcessNode.h"
#include "effects/HiZGeometry.h"
#include "programs/CKVRenderStateManager.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGGeometry.h"
#include "support/ImageCompare.h"

#include "TarnwickGeometry/CKVLineSeg.h"
#include "TarnwickRender/CKVRCAreaSelectObject.h"
#include "TarnwickRender/CKVRCLineSegmentIntersection.h"
#include "TarnwickRender/CKVRCPickSelectObject.h"
#include "TarnwickRender/CKVSelectionResult.h"

#include <osg/GLExtensions>
#include <osg/Transform>
#include <osg/PrimitiveSetIndirect>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Kelvor {
namespace {

constexpr unsigned int kPictureWidth = 256;
constexpr unsigned int kPictureHeight = 192;
constexpr unsigned int kGridSide = 100;
constexpr float kGridSpacing = 0.2f;
constexpr float kBoxHalf = 0.08f;
constexpr float kSmallFeaturePixels = 2.0f;
constexpr int kTexelBudget = 64;

enum Outcome
{
    kKept,
    kOutsideFrustum,
    kTooSmall,
    kHidden,
    kOutcomeCount
};

// The depth chain as read back: level by level, row by row.
struct DepthChain
{
    std::vector<std::vector<float>> levels;
    std::vector<osg::Vec2i> sizes;

    float at(int level, int x, int y) const
    {
        return levels[level][static_cast<std::size_t>(y) * sizes[level].x() + x];
    }
};

// The culling program's tests in float on the CPU; without a chain only the
// frustum and size tests run.
Outcome cullReference(osg::Matrixf const& toClip, osg::Vec3f const& centre, osg::Vec3f const& extent,
                      osg::Vec2f const& screen, DepthChain const* chain)
{
    osg::Vec4f corners[8];
    int beyond[5] = {};
    bool behindEye = false;
    for (int i = 0; i < 8; ++i)
    {
        osg::Vec3f const sign((i & 1) ? 1.0f : -1.0f, (i & 2) ? 1.0f : -1.0f, (i & 4) ? 1.0f : -1.0f);
        osg::Vec3f const p = centre + osg::Vec3f(sign.x() * extent.x(), sign.y() * extent.y(), sign.z() * extent.z());
        osg::Vec4f const c = osg::Vec4f(p, 1.0f) * toClip;
        corners[i] = c;
        beyond[0] += c.x() > c.w();
        beyond[1] += c.x() < -c.w();
        beyond[2] += c.y() > c.w();
        beyond[3] += c.y() < -c.w();
        beyond[4] += c.z() < -c.w();
        behindEye = behindEye || c.w() <= 0.0f;
    }
    if (std::find(std::begin(beyond), std::end(beyond), 8) != std::end(beyond))
        return kOutsideFrustum;
    if (behindEye)
        return kKept;
    osg::Vec3f low(1e30f, 1e30f, 1e30f), high(-1e30f, -1e30f, -1e30f);
    for (osg::Vec4f const& c : corners)
    {
        osg::Vec3f const ndc(c.x() / c.w(), c.y() / c.w(), c.z() / c.w());
        for (int a = 0; a < 3; ++a)
        {
            low[a] = std::min(low[a], ndc[a]);
            high[a] = std::max(high[a], ndc[a]);
        }
    }
    float const lowPixel[2] = {(low.x() * 0.5f + 0.5f) * screen.x(), (low.y() * 0.5f + 0.5f) * screen.y()};
    float const highPixel[2] = {(high.x() * 0.5f + 0.5f) * screen.x(), (high.y() * 0.5f + 0.5f) * screen.y()};
    if (highPixel[0] - lowPixel[0] <= kSmallFeaturePixels && highPixel[1] - lowPixel[1] <= kSmallFeaturePixels)
        return kTooSmall;
    if (!chain)
        return kKept;

    int first[2], end[2];
    for (int a = 0; a < 2; ++a)
    {
        int const last = static_cast<int>(screen[a]) - 1;
        first[a] = std::clamp(static_cast<int>(std::floor(lowPixel[a])), 0, last);
        end[a] = std::clamp(static_cast<int>(std::floor(highPixel[a])), 0, last);
    }
    int const top = static_cast<int>(chain->levels.size()) - 1;
    int level = 0;
    auto texels = [&](int l) { return ((end[0] >> l) - (first[0] >> l) + 1) * ((end[1] >> l) - (first[1] >> l) + 1); };
    while (level < top && texels(level) > kTexelBudget)
        ++level;
    osg::Vec2i const size = chain->sizes[level];
    float farthest = 0.0f;
    for (int y = std::min(first[1] >> level, size.y() - 1); y <= std::min(end[1] >> level, size.y() - 1); ++y)
        for (int x = std::min(first[0] >> level, size.x() - 1); x <= std::min(end[0] >> level, size.x() - 1); ++x)
            farthest = std::max(farthest, chain->at(level, x, y));
    return low.z() * 0.5f + 0.5f <= farthest ? kKept : kHidden;
}

// An instance of the shape before it, at (x, y, z).
kv_shared_ptr<CKVLogicBufferGeometry> placed(double x, double y, double z, CKVDrawable* drawable = nullptr)
{
    kv_shared_ptr<CKVLogicBufferGeometry> instance(drawable ? new CKVLogicBufferGeometry(drawable)
                                                            : new CKVLogicBufferGeometry);
    instance->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(x, y, z)));
    return instance;
}

class HiZCullingGLTest : public LitSceneFixture
{
protected:
    HiZCullingGLTest() : LitSceneFixture({kPictureWidth, kPictureHeight, CKVPoint3D(0.0, -16.0, 4.0), CKVPoint3D(0.0, 0.0, 0.0)})
    {
        // The pre-pass draws into the window, which the capture must fit.
        mWindowWidth = kPictureWidth;
        mWindowHeight = kPictureHeight;
    }

    void configure(CKVRenderConfig& config) override
    {
        config.setLightPosition(CKVVec3<float>(-0.3f, -0.5f, 0.8f));
        config.setUseDepthPrePass(true);
        config.setUseOcclusionCull(true);
    }

    void TearDown() override
    {
        LitSceneFixture::TearDown();
        // The switches are process-wide.
        CKVRenderStateManager::instance().setHiZ(true);
        CKVRenderStateManager::instance().setOcclusionCulling(true);
    }

    kv_shared_ptr<CKVSceneNode> addColoured(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> const& shapes,
                                            osg::Vec4ub const& colour, CKVPoint3D const& at = CKVPoint3D(0, 0, 0))
    {
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(colour.r(), colour.g(), colour.b(), colour.a());
        material->setSortTransparency(colour.a() < 255);
        CKVProgramParam param;
        if (shapes.size() > 1)
            param.addParam(CKVProgramParam::kUseInstanceMatrix);
        mMaterials.push_back(material);
        return addNode(material.get(), shapes, at, param);
    }

    // Boxes on the ground, `side` by `side`, centred on the origin; instance
    // i the drawable of id i + 1 when `identified`.
    CKVOSGGeometry* addGrid(unsigned int side, osg::Vec4ub const& colour, CKVPoint3D const& at = CKVPoint3D(0, 0, 0),
                            bool identified = false)
    {
        std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> shapes{SceneShapes::boxShape(kBoxHalf, kBoxHalf, kBoxHalf)};
        for (unsigned int i = 0; i < side * side; ++i)
        {
            if (identified)
                mDrawables.push_back(new CKVDrawable(i + 1));
            osg::Vec3f const centre = gridCentre(side, i);
            shapes.push_back(placed(centre.x(), centre.y(), centre.z(), identified ? mDrawables.back().get() : nullptr));
        }
        addColoured(shapes, colour, at);
        return lastGeometry();
    }

    static osg::Vec3f gridCentre(unsigned int side, unsigned int i)
    {
        float const origin = -0.5f * kGridSpacing * (side - 1);
        return osg::Vec3f(origin + kGridSpacing * (i % side), origin + kGridSpacing * (i / side), kBoxHalf);
    }

    void addWall(osg::Vec4ub const& colour)
    {
        addColoured({SceneShapes::boxShape(2.0f, 0.1f, 2.0f), placed(0.0, -5.0, 2.0)}, colour);
    }

    CKVOSGGeometry* lastGeometry() const
    {
        return static_cast<CKVBufferGeometryImp*>(mGeometries.back().get())->getOSGGeometry();
    }

    void frames(int count = 3)
    {
        for (int i = 0; i < count; ++i)
            mContext->onTick(++mTickMs);
    }

    // The instance count the GPU holds in the geometry's first command.
    unsigned int drawnInstances(CKVOSGGeometry& geometry)
    {
        unsigned int count = ~0u;
        tickWith([&](CKVRenderContext*) {
            count = drawnInstancesNow(geometry);
            return true;
        });
        return count;
    }

    // Inside a drain: what the last frame left.
    unsigned int drawnInstancesNow(CKVOSGGeometry& geometry)
    {
        GLuint count = ~0u;
        {
            auto const* commands = static_cast<osg::DrawElementsIndirect*>(geometry.getPrimitiveSet(0))
                                       ->getIndirectCommandArray();
            osg::State& state = *mContext->getMainCamera()->getGraphicsContext()->getState();
            osg::GLBufferObject* buffer = commands->getBufferObject()->getGLBufferObject(state.getContextID());
            if (!buffer)
                return count;
            using GetNamed = void(GL_APIENTRY*)(GLuint, GLintptr, GLsizeiptr, void*);
            auto const get = reinterpret_cast<GetNamed>(osg::getGLExtensionFuncPtr("glGetNamedBufferSubData"));
            get(buffer->getGLObjectID(), static_cast<GLintptr>(buffer->getOffset(commands->getBufferIndex())) + 4,
                sizeof(count), &count);
        }
        return count;
    }

    // The chain and the counts that were culled against it, read together.
    DepthChain readChain(CKVOSGGeometry* geometry = nullptr, unsigned int* drawn = nullptr)
    {
        DepthChain chain;
        tickWith([&](CKVRenderContext*) {
            chain = readChainNow();
            if (geometry && drawn)
                *drawn = drawnInstancesNow(*geometry);
            return true;
        });
        return chain;
    }

    DepthChain readChainNow()
    {
        DepthChain chain;
        CKVHiZGenerator* generator = mContext->getRoot()->getHiZGenerator();
        unsigned int const levels = HiZGeometry::levelsFor(generator->getWidth(), generator->getHeight());
        {
            osg::State& state = *mContext->getMainCamera()->getGraphicsContext()->getState();
            osg::Texture::TextureObject* texture = generator->getHiZTexture()->getTextureObject(state.getContextID());
            if (!texture)
                return chain;
            using GetImage = void(GL_APIENTRY*)(GLuint, GLint, GLenum, GLenum, GLsizei, void*);
            auto const get = reinterpret_cast<GetImage>(osg::getGLExtensionFuncPtr("glGetTextureImage"));
            int w = static_cast<int>(generator->getWidth()), h = static_cast<int>(generator->getHeight());
            for (unsigned int level = 0; level <= levels; ++level)
            {
                chain.sizes.emplace_back(w, h);
                chain.levels.emplace_back(static_cast<std::size_t>(w) * h);
                get(texture->id(), static_cast<GLint>(level), GL_DEPTH_COMPONENT, GL_FLOAT,
                    static_cast<GLsizei>(chain.levels.back().size() * sizeof(float)), chain.levels.back().data());
                w = std::max(w >> 1, 1);
                h = std::max(h >> 1, 1);
            }
        }
        return chain;
    }

    // Outcomes of the CPU reference for every instance of `geometry`, with
    // the matrices the last frame culled with.
    std::vector<unsigned int> reference(CKVOSGGeometry& geometry, DepthChain const* chain,
                                        osg::Vec2f const& screen = osg::Vec2f(kPictureWidth, kPictureHeight),
                                        std::vector<Outcome>* each = nullptr)
    {
        CKVOSGCamera* camera = mContext->getMainCamera();
        // The node's own matrix as well: the program reads it from the block.
        osg::Matrixf const viewProjection(osg::computeLocalToWorld(geometry.getParentalNodePaths().front()) *
                                          camera->getViewMatrix() * camera->getCullProjection());
        osg::BoundingBox const box = geometry.getVertexBound();
        std::vector<osg::Matrixd> instances;
        geometry.getInstanceMatrices(instances);
        std::vector<unsigned int> outcomes(kOutcomeCount, 0);
        for (osg::Matrixd const& instance : instances)
        {
            Outcome const outcome =
                cullReference(osg::Matrixf(instance) * viewProjection, box.center(), (box._max - box._min) * 0.5f, screen, chain);
            ++outcomes[outcome];
            if (each)
                each->push_back(outcome);
        }
        return outcomes;
    }

    // Where a world point lies in the window, y counted from the top as
    // the pick commands count it.
    CKVPoint3D pickPixel(osg::Vec3f const& world)
    {
        CKVOSGCamera* camera = mContext->getMainCamera();
        osg::Vec3d const window = osg::Vec3d(world) * camera->getViewMatrix() * camera->getCullProjection() *
                                  camera->getViewport()->computeWindowMatrix();
        return CKVPoint3D(window.x(), camera->getViewport()->height() - window.y(), 0.0);
    }

    // The instance of the grid a result names, or -1.
    static long instanceOf(CKVSelectionResult const* result)
    {
        return result && result->getDrawable() ? long(result->getDrawable()->getId()) - 1 : -1;
    }

    std::vector<kv_shared_ptr<CKVBasicMaterial>> mMaterials;
    std::vector<kv_shared_ptr<CKVDrawable>> mDrawables;
};

osg::Vec4ub const kGridColour(200, 120, 60, 255);
osg::Vec4ub const kWallColour(90, 110, 160, 255);

} // namespace

TEST_F(HiZCullingGLTest, CountsBehindAWallMatchTheReferenceAndThePictureIsUnchanged)
{
    CKVOSGGeometry* grid = addGrid(kGridSide, kGridColour);
    addWall(kWallColour);
    frames();

    unsigned int drawn = 0;
    DepthChain const chain = readChain(grid, &drawn);
    ASSERT_FALSE(chain.levels.empty());
    std::vector<unsigned int> const outcomes = reference(*grid, &chain);
    // Every test has work to do here.
    EXPECT_GT(outcomes[kOutsideFrustum], 500u);
    EXPECT_GT(outcomes[kTooSmall], 100u);
    EXPECT_GT(outcomes[kHidden], 500u);
    EXPECT_GT(outcomes[kKept], 1000u);
    // Float rounding on the two sides may tip an instance that sits exactly
    // on a boundary.
    EXPECT_NEAR(double(drawn), double(outcomes[kKept]), 3.0);

    osg::ref_ptr<osg::Image> culled = capture();
    mConfig.setUseOcclusionCull(false);
    applyConfig();
    osg::ref_ptr<osg::Image> whole = capture();
    ASSERT_TRUE(culled.valid() && whole.valid());
    // What differs is the boxes under two pixels, far away.
    ImageCompareResult const same =
        ImageCompare().compare(*culled, *whole, ImageTolerance{24, 0.01}, "hiz_culled_vs_whole");
    EXPECT_TRUE(same.passed) << same.message;
}

TEST_F(HiZCullingGLTest, WithoutThePrePassOnlyFrustumAndSizeCullAndEdgeStraddlersStay)
{
    mConfig.setUseDepthPrePass(false);
    applyConfig();
    // Off the origin, so that the node's matrix takes part.
    CKVOSGGeometry* grid = addGrid(kGridSide, kGridColour, CKVPoint3D(0.7, 1.3, 0.0));
    addWall(kWallColour);
    // Three boxes at the depth of the wall: inside the view, straddling its
    // left edge, and just outside it.
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> edge{SceneShapes::boxShape(0.3f, 0.3f, 0.3f)};
    for (double x : {0.0, -5.5, -6.5})
    {
        edge.push_back(placed(x, -5.0, 0.3));
    }
    addColoured(edge, kGridColour);
    CKVOSGGeometry* edgeGeometry = lastGeometry();
    frames();

    std::vector<unsigned int> const outcomes = reference(*grid, nullptr);
    EXPECT_GT(outcomes[kOutsideFrustum], 500u);
    EXPECT_GT(outcomes[kTooSmall], 100u);
    EXPECT_NEAR(double(drawnInstances(*grid)), double(outcomes[kKept]), 3.0);

    std::vector<unsigned int> const edgeOutcomes = reference(*edgeGeometry, nullptr);
    ASSERT_EQ(edgeOutcomes[kOutsideFrustum], 1u) << "the left box must lie just outside the view";
    EXPECT_EQ(drawnInstances(*edgeGeometry), 2u);
}

TEST_F(HiZCullingGLTest, SwitchingOffRestoresEveryInstanceAndOnAgainCullsRowsInstalledWhileOff)
{
    mConfig.setUseOcclusionCull(false);
    applyConfig();
    CKVOSGGeometry* grid = addGrid(kGridSide, kGridColour);
    addWall(kWallColour);
    frames();
    unsigned int const all = kGridSide * kGridSide;
    ASSERT_EQ(drawnInstances(*grid), all);
    ASSERT_EQ(grid->getInstanceMatrixRowCopy(0), nullptr);

    mConfig.setUseOcclusionCull(true);
    applyConfig();
    frames();
    unsigned int culled = 0;
    DepthChain const chain = readChain(grid, &culled);
    std::vector<unsigned int> const outcomes = reference(*grid, &chain);
    EXPECT_LT(culled, all * 3 / 5);
    EXPECT_NEAR(double(culled), double(outcomes[kKept]), 3.0);

    // One frame, no host update.
    mConfig.setUseOcclusionCull(false);
    applyConfig();
    frames(1);
    EXPECT_EQ(drawnInstances(*grid), all);
    EXPECT_FALSE(grid->getOcclusionApplied());
}

TEST_F(HiZCullingGLTest, TransparentNodesNeitherOccludeNorAreCulled)
{
    // A glass wall in front of the grid; beyond the grid, an opaque screen
    // hides a transparent row completely.
    CKVOSGGeometry* grid = addGrid(kGridSide, kGridColour);
    addWall(osg::Vec4ub(90, 110, 160, 80));
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> row{SceneShapes::boxShape(0.2f, 0.2f, 0.2f)};
    for (int i = 0; i < 5; ++i)
    {
        row.push_back(placed(-1.0 + 0.5 * i, 14.0, 0.2));
    }
    addColoured(row, osg::Vec4ub(40, 200, 40, 100));
    CKVOSGGeometry* glassRow = lastGeometry();
    addColoured({SceneShapes::boxShape(3.0f, 0.1f, 3.0f), placed(0.0, 12.0, 1.0)}, kWallColour);
    frames();

    unsigned int drawn = 0;
    DepthChain const chain = readChain(grid, &drawn);
    ASSERT_FALSE(chain.levels.empty());
    CKVOSGCamera* camera = mContext->getMainCamera();
    osg::Matrixd const toWindow =
        camera->getViewMatrix() * camera->getCullProjection() * camera->getViewport()->computeWindowMatrix();
    osg::Vec3d const glassCentre = osg::Vec3d(0.0, -5.1, 2.0) * toWindow;
    EXPECT_GT(chain.at(0, int(glassCentre.x()), int(glassCentre.y())), glassCentre.z() + 1e-4)
        << "the glass wall must not reach the depth chain";
    EXPECT_NEAR(double(drawn), double(reference(*grid, &chain)[kKept]), 3.0);
    ASSERT_EQ(reference(*glassRow, &chain)[kHidden], 5u) << "the screen must hide the transparent row";
    EXPECT_EQ(drawnInstances(*glassRow), 5u);
}

// Picking reads the host's rows, not what the GPU kept: specks culled as
// too small are still found under their pixel and by a world segment
// slanting down to them, and a rectangle over the wall still selects the
// boxes hidden behind it. (Queries answer only with parts that carry a host
// drawable.)
TEST_F(HiZCullingGLTest, PickAndAreaSelectionFindInstancesThatCullingRemoved)
{
    CKVOSGGeometry* grid = addGrid(kGridSide, kGridColour, CKVPoint3D(0, 0, 0), true);
    kv_shared_ptr<CKVDrawable> const wall = new CKVDrawable(0);
    addColoured({SceneShapes::boxShape(2.0f, 0.1f, 2.0f), placed(0.0, -5.0, 2.0, wall.get())}, kWallColour);
    // Two specks in the open, beside the wall and above the grid.
    osg::Vec3f const specks[2] = {{4.0f, 2.0f, 1.0f}, {-4.0f, 2.0f, 1.0f}};
    kv_shared_ptr<CKVDrawable> const speckIds[2] = {new CKVDrawable(0), new CKVDrawable(0)};
    addColoured({SceneShapes::boxShape(0.02f, 0.02f, 0.02f), placed(specks[0].x(), specks[0].y(), specks[0].z(), speckIds[0].get()),
                 placed(specks[1].x(), specks[1].y(), specks[1].z(), speckIds[1].get())},
                kGridColour);
    CKVOSGGeometry* speckGeometry = lastGeometry();
    frames();
    unsigned int drawn = 0;
    DepthChain const chain = readChain(grid, &drawn);
    std::vector<Outcome> each;
    std::vector<unsigned int> const outcomes =
        reference(*grid, &chain, osg::Vec2f(kPictureWidth, kPictureHeight), &each);
    ASSERT_NEAR(double(drawn), double(outcomes[kKept]), 3.0);
    ASSERT_EQ(drawnInstances(*speckGeometry), 0u) << "both specks culled this frame";

    kv_shared_ptr<CKVRCPickSelectObject> point = new CKVRCPickSelectObject(pickPixel(specks[0]));
    // The wall's middle, where only hidden boxes lie behind it.
    CKVPoint3D const wallLow = pickPixel(osg::Vec3f(-0.5f, -5.1f, 0.5f));
    CKVPoint3D const wallHigh = pickPixel(osg::Vec3f(0.5f, -5.1f, 1.5f));
    kv_shared_ptr<CKVRCAreaSelectObject> area = new CKVRCAreaSelectObject(wallLow, wallHigh, 1000);
    // From the eye, one segment into the wall and one past it to a speck.
    CKVPoint3D const eye(0.0, -16.0, 4.0);
    kv_shared_ptr<CKVRCLineSegmentIntersection> intoWall =
        new CKVRCLineSegmentIntersection(CKVLineSeg(eye, CKVPoint3D(0.0, 0.0, 0.0)));
    osg::Vec3f const beyond = specks[1] + (specks[1] - osg::Vec3f(0.0f, -16.0f, 4.0f)) * 0.1f;
    kv_shared_ptr<CKVRCLineSegmentIntersection> toSpeck =
        new CKVRCLineSegmentIntersection(CKVLineSeg(eye, CKVPoint3D(beyond.x(), beyond.y(), beyond.z())));
    for (CKVRenderCommand* query :
         std::initializer_list<CKVRenderCommand*>{point.get(), area.get(), intoWall.get(), toSpeck.get()})
        send(query);

    ASSERT_NE(point->getSelection(), nullptr);
    EXPECT_EQ(point->getSelection()->getDrawable(), speckIds[0].get());
    ASSERT_NE(toSpeck->getSelection(), nullptr);
    EXPECT_EQ(toSpeck->getSelection()->getDrawable(), speckIds[1].get());
    ASSERT_NE(intoWall->getSelection(), nullptr);
    EXPECT_EQ(intoWall->getSelection()->getDrawable(), wall.get());
    EXPECT_NEAR(intoWall->getSelection()->getPosition().y, -5.1, 1e-4) << "on the wall's front face";
    unsigned int hiddenSelected = 0;
    for (unsigned int i = 0; i < area->getResultCount(); ++i)
    {
        long const instance = instanceOf(area->getResult(i));
        hiddenSelected += instance >= 0 && each[std::size_t(instance)] == kHidden;
    }
    EXPECT_GT(hiddenSelected, 0u) << area->getResultCount() << " results";
}

// The chain follows the window's size: after a shrink, a zero size (a
// minimised window) and a return to full size, the counts still match the
// reference run at the new size.
TEST_F(HiZCullingGLTest, ResizingKeepsTheChainMatchedToTheWindow)
{
    CKVOSGGeometry* grid = addGrid(kGridSide, kGridColour);
    addWall(kWallColour);
    frames();
    struct Size
    {
        int width, height;
    };
    for (Size const size : {Size{160, 120}, Size{0, 0}, Size{int(kPictureWidth), int(kPictureHeight)}})
    {
        bool resized = false;
        ASSERT_TRUE(tickWith([&](CKVRenderContext* context) { return context->setViewPort(size.width, size.height); },
                             &resized));
        ASSERT_TRUE(resized);
        frames();
        if (size.width == 0)
            continue;
        unsigned int drawn = 0;
        DepthChain const chain = readChain(grid, &drawn);
        ASSERT_FALSE(chain.levels.empty());
        EXPECT_EQ(chain.sizes[0], osg::Vec2i(size.width, size.height));
        std::vector<unsigned int> const outcomes =
            reference(*grid, &chain, osg::Vec2f(float(size.width), float(size.height)));
        EXPECT_GT(outcomes[kHidden], 100u) << size.width;
        EXPECT_NEAR(double(drawn), double(outcomes[kKept]), 3.0) << size.width;
    }
}

} // namespace Kelvor
