// Edges on a live render context, driven by render configurations alone: a
// lit cube read back pixel by pixel against the same cube without edges,
// and the four render styles on one scene as golden images.
#include "scene/LitSceneFixture.h"
#include "scene/SceneShapes.h"


#include <cstdlib>
#include <vector>

namespace Kelvor {
namespace {

int channelSum(osg::Image const& image, int x, int y)
{
    unsigned char const* p = image.data(x, y);
    return p[0] + p[1] + p[2];
}

int channelDistance(osg::Image const& first, int x, int y, osg::Image const& second, int sx, int sy)
{
    unsigned char const* a = first.data(x, y);
    unsigned char const* b = second.data(sx, sy);
    return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
}

// The cube as the camera sees it. Corner i has bit k set where its
// coordinate k is the larger one; an edge joins two corners that differ in
// one bit, between the two faces across the other two axes.
struct ProjectedCube
{
    osg::Vec2d corners[8];
    bool facing[3][2];  // axis, larger side: the face is turned to the eye

    ProjectedCube(osg::Vec3d const& centre, double half, osg::Matrixd const& toWindow, osg::Vec3d const& eye)
    {
        for (int i = 0; i < 8; ++i) {
            osg::Vec3d const offset(i & 1 ? half : -half, i & 2 ? half : -half, i & 4 ? half : -half);
            osg::Vec3d const window = (centre + offset) * toWindow;
            corners[i] = osg::Vec2d(window.x(), window.y());
        }
        for (int axis = 0; axis < 3; ++axis)
            for (int side = 0; side < 2; ++side)
                facing[axis][side] = (side ? 1.0 : -1.0) * (eye[axis] - centre[axis]) > half;
    }

    // How many faces turned to the eye meet at the edge from corner i along
    // `axis`: 2 on a crease, 1 on the outline, 0 hidden.
    int facesAt(int i, int axis) const
    {
        int count = 0;
        for (int other = 0; other < 3; ++other)
            if (other != axis)
                count += facing[other][(i >> other) & 1] ? 1 : 0;
        return count;
    }

    // Points a pixel apart along the edges with `faces` faces turned to the
    // eye; `trim` leaves out the ends, where edges meet and prove nothing.
    std::vector<osg::Vec2d> edgePoints(int faces, bool trim = true) const
    {
        std::vector<osg::Vec2d> points;
        for (int i = 0; i < 8; ++i)
            for (int axis = 0; axis < 3; ++axis) {
                if ((i >> axis) & 1 || facesAt(i, axis) != faces)
                    continue;
                osg::Vec2d const a = corners[i];
                osg::Vec2d const b = corners[i | (1 << axis)];
                int const steps = static_cast<int>((b - a).length()) + 1;
                for (int k = trim ? 2 : 0; k <= (trim ? steps - 2 : steps); ++k)
                    points.push_back(a + (b - a) * (double(k) / steps));
            }
        return points;
    }

    // Inside a face turned to the eye, at least `margin` from every edge
    // that shows.
    bool insideFace(osg::Vec2d const& p, double margin) const
    {
        for (int faces : {1, 2})
            for (osg::Vec2d const& q : edgePoints(faces, false))
                if ((p - q).length() < margin)
                    return false;
        int const around[5][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
        for (int axis = 0; axis < 3; ++axis)
            for (int side = 0; side < 2; ++side) {
                if (!facing[axis][side])
                    continue;
                int const u = (axis + 1) % 3;
                int const v = (axis + 2) % 3;
                int positive = 0;
                for (int k = 0; k < 4; ++k) {
                    osg::Vec2d const a = corners[side << axis | around[k][0] << u | around[k][1] << v];
                    osg::Vec2d const b = corners[side << axis | around[k + 1][0] << u | around[k + 1][1] << v];
                    positive += (b - a).x() * (p - a).y() - (b - a).y() * (p - a).x() > 0.0 ? 1 : 0;
                }
                if (positive == 0 || positive == 4)
                    return true;
            }
        return false;
    }
};

class SilhouetteGLTest : public LitSceneFixture
{
protected:
    SilhouetteGLTest() : LitSceneFixture({160, 120, CKVPoint3D(3.2, -4.4, 3.0), CKVPoint3D(0.0, 0.0, 0.6)}) {}

    void configure(CKVRenderConfig& config) override
    {
        config.setLightPosition(CKVVec3<float>(0.2f, -0.9f, 0.4f));
        config.setLightIntensity(1.5f);
        config.setAmbientIntensity(0.4f);
        config.setRenderStyleEdgeColor(CKVVec4<float>(0.0f, 0.0f, 0.0f, 1.0f));
    }

    void addBox(CKVPoint3D const& position, float sx, float sy, float sz, osg::Vec3ub const& colour)
    {
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(colour.r(), colour.g(), colour.b(), 255);
        mMaterials.push_back(material);
        LitSceneFixture::addNode(material.get(), {SceneShapes::boxShape(sx, sy, sz)}, position);
    }

    osg::ref_ptr<osg::Image> captureStyle(CKVRenderConfig::RenderStyle style)
    {
        mConfig.setRenderStyle(style);
        applyConfig();
        return capture();
    }

    std::vector<kv_shared_ptr<CKVBasicMaterial>> mMaterials;
};

} // namespace

// Edges mark the outline and the creases of the cube and nothing inside
// its faces; with an edge alpha of 0 the picture is the one without edges.
TEST_F(SilhouetteGLTest, CubeEdgesLieOnItsOutlineAndCreasesOnly)
{
    double const kHalf = 0.6;
    osg::Vec3d const centre(0.0, 0.0, 0.6);
    addBox(CKVPoint3D(centre.x(), centre.y(), centre.z()), kHalf, kHalf, kHalf, osg::Vec3ub(200, 170, 120));
    osg::ref_ptr<osg::Image> plain = captureStyle(CKVRenderConfig::kShaded);
    osg::ref_ptr<osg::Image> edged = captureStyle(CKVRenderConfig::kShadedWithEdges);
    ASSERT_TRUE(plain.valid() && edged.valid());

    osg::Vec3d const eye(mView.eye.x, mView.eye.y, mView.eye.z);
    osg::Matrixd const toWindow =
        osg::Matrixd::lookAt(eye, osg::Vec3d(mView.target.x, mView.target.y, mView.target.z), osg::Vec3d(0, 0, 1)) *
        osg::Matrixd::perspective(mCamera.getFieldOfView(), double(mView.width) / mView.height, 0.5, 100.0) *
        osg::Matrixd::translate(1.0, 1.0, 1.0) * osg::Matrixd::scale(0.5 * mView.width, 0.5 * mView.height, 0.5);
    ProjectedCube const cube(centre, kHalf, toWindow, eye);

    // A black edge takes most of a pixel's brightness.
    int const kDarkened = 120;
    auto darkened = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= plain->s() || y >= plain->t())
            return false;
        return channelSum(*plain, x, y) - channelSum(*edged, x, y) > kDarkened;
    };
    // Within a pixel and a half of the projected line: rasterising and the
    // two-sided test each move it by up to a pixel.
    auto darkenedNear = [&](osg::Vec2d const& p) {
        for (int dy = -2; dy <= 2; ++dy)
            for (int dx = -2; dx <= 2; ++dx)
                if (dx * dx + dy * dy <= 2 && darkened(int(p.x()) + dx, int(p.y()) + dy))
                    return true;
        return false;
    };
    for (bool creases : {false, true}) {
        std::vector<osg::Vec2d> const points = cube.edgePoints(creases ? 2 : 1);
        ASSERT_GT(points.size(), creases ? 40u : 100u);
        std::size_t marked = 0;
        for (osg::Vec2d const& p : points)
            marked += darkenedNear(p) ? 1 : 0;
        EXPECT_GT(double(marked) / points.size(), 0.95) << (creases ? "creases" : "outline");
    }
    int inside = 0;
    for (int y = 0; y < plain->t(); ++y)
        for (int x = 0; x < plain->s(); ++x) {
            if (!cube.insideFace(osg::Vec2d(x + 0.5, y + 0.5), 4.0))
                continue;
            ++inside;
            EXPECT_FALSE(darkened(x, y)) << "edge inside a face at " << x << "," << y;
        }
    EXPECT_GT(inside, 600) << "three faces are in view";

    // Against the scene through the same targets (grading without a table
    // passes it unchanged), since the window's own samples differ on the
    // outline.
    mConfig.setRenderStyleEdgeColor(CKVVec4<float>(0.0f, 0.0f, 0.0f, 0.0f));
    applyConfig();
    osg::ref_ptr<osg::Image> clear = capture();
    mConfig.setColorGradingUse(true);
    osg::ref_ptr<osg::Image> throughTargets = captureStyle(CKVRenderConfig::kShaded);
    ASSERT_TRUE(clear.valid() && throughTargets.valid());
    ImageCompareResult const same =
        ImageCompare().compare(*clear, *throughTargets, ImageTolerance{2, 0.0}, "edges_alpha_0");
    EXPECT_TRUE(same.passed) << same.message;
}

// The same scene in the four styles. The edge-only style shows its own
// background colour wherever there is no edge, never the scene's colour.
TEST_F(SilhouetteGLTest, RenderStylesShowTheirEdges)
{
    addBox(CKVPoint3D(0.0, 0.0, -0.05), 2.5f, 2.5f, 0.05f, osg::Vec3ub(150, 160, 150));
    addBox(CKVPoint3D(0.0, 0.0, 0.6), 0.6f, 0.6f, 0.6f, osg::Vec3ub(200, 90, 60));
    addBox(CKVPoint3D(-1.4, -0.6, 0.35), 0.35f, 0.35f, 0.35f, osg::Vec3ub(70, 110, 200));
    mConfig.setRenderStyleEdgeColor(CKVVec4<float>(0.1f, 0.1f, 0.1f, 0.9f));
    mConfig.setEdgeOnlyBackgroundColor(CKVVec3<float>(1.0f, 1.0f, 0.9f));
    char const* const names[] = {"edges_style0_shaded", "edges_style1_shaded_with_edges",
                                 "edges_style2_white_model", "edges_style3_edges_only"};
    CKVRenderConfig::RenderStyle const styles[] = {CKVRenderConfig::kShaded, CKVRenderConfig::kShadedWithEdges,
                                                   CKVRenderConfig::kWhiteModelWithEdges,
                                                   CKVRenderConfig::kEdgesOnly};
    osg::ref_ptr<osg::Image> pictures[4];
    for (int i = 0; i < 4; ++i) {
        pictures[i] = captureStyle(styles[i]);
        ASSERT_TRUE(pictures[i].valid());
        expectGolden(*pictures[i], names[i]);
    }
    // Where the shaded style shows no edge, the edge-only style shows its
    // background, whatever the scene's colour there.
    osg::Image const& plain = *pictures[0];
    osg::Image const& edged = *pictures[1];
    int clear = 0;
    for (int y = 0; y < plain.t(); ++y)
        for (int x = 0; x < plain.s(); ++x) {
            if (channelDistance(plain, x, y, edged, x, y) > 2)
                continue;
            ++clear;
            unsigned char const* p = pictures[3]->data(x, y);
            ASSERT_LE(std::abs(p[0] - 255) + std::abs(p[1] - 255) + std::abs(p[2] - 230), 8) << "at " << x << "," << y;
        }
    EXPECT_GT(clear, 15000);
}

} // namespace Kelvor
