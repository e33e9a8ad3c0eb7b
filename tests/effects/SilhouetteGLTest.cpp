// Edges on a live render context, driven by render configurations alone: a
// lit cube read back pixel by pixel against the same cube without edges,
// and the four render styles on one scene as golden images.
#include "scene/LitSceneFixture.h"
#include "scene/SceneShapes.h"

#include "effects/CKVPostProcessNode.h"
#include "effects/CKVSilhouetteGenerator.h"

#include <algorithm>
#include <array>
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

// The cube as the camera sees it: its twelve edges on the screen, which of
// them show (a crease between two faces turned to the eye, or part of the
// outline with one), and the faces turned to the eye as screen polygons.
class ProjectedCube
{
public:
    ProjectedCube(osg::Vec3d const& centre, double half, osg::Matrixd const& toWindow, osg::Vec3d const& eye)
    {
        for (int i = 0; i < 8; ++i) {
            osg::Vec3d const corner = centre + osg::Vec3d(i & 1 ? half : -half, i & 2 ? half : -half,
                                                          i & 4 ? half : -half);
            osg::Vec3d const window = corner * toWindow;
            mCorners[i] = osg::Vec2d(window.x(), window.y());
        }
        // Corners of each face in order around it, with its outward axis.
        struct Face
        {
            int corners[4];
            osg::Vec3d normal;
        };
        Face const faces[6] = {{{0, 2, 6, 4}, {-1, 0, 0}}, {{1, 3, 7, 5}, {1, 0, 0}}, {{0, 1, 5, 4}, {0, -1, 0}},
                               {{2, 3, 7, 6}, {0, 1, 0}},  {{0, 1, 3, 2}, {0, 0, -1}}, {{4, 5, 7, 6}, {0, 0, 1}}};
        for (Face const& face : faces) {
            bool const towardEye = (eye - (centre + face.normal * half)) * face.normal > 0.0;
            if (towardEye)
                mFrontFaces.push_back({mCorners[face.corners[0]], mCorners[face.corners[1]],
                                       mCorners[face.corners[2]], mCorners[face.corners[3]]});
            for (int k = 0; k < 4; ++k) {
                int const a = std::min(face.corners[k], face.corners[(k + 1) % 4]);
                int const b = std::max(face.corners[k], face.corners[(k + 1) % 4]);
                mFacesTowardEye[a * 8 + b] += towardEye ? 1 : 0;
                mEdgeSeen[a * 8 + b] = true;
            }
        }
    }

    // Points every pixel along the edges that show: `creases` picks those
    // between two visible faces, else the outline.
    std::vector<osg::Vec2d> edgePoints(bool creases) const
    {
        std::vector<osg::Vec2d> points;
        for (int key = 0; key < 64; ++key) {
            if (!mEdgeSeen[key] || mFacesTowardEye[key] != (creases ? 2 : 1))
                continue;
            osg::Vec2d const a = mCorners[key / 8];
            osg::Vec2d const b = mCorners[key % 8];
            int const steps = static_cast<int>((b - a).length());
            // The ends are corners, where edges meet; they prove nothing.
            for (int i = 2; i < steps - 1; ++i)
                points.push_back(a + (b - a) * (double(i) / steps));
        }
        return points;
    }

    // Inside a visible face and at least `margin` pixels from every edge
    // that shows.
    bool insideFace(osg::Vec2d const& p, double margin) const
    {
        for (int key = 0; key < 64; ++key)
            if (mFacesTowardEye[key] > 0 && distanceToSegment(p, mCorners[key / 8], mCorners[key % 8]) < margin)
                return false;
        for (auto const& quad : mFrontFaces) {
            int positive = 0;
            for (int k = 0; k < 4; ++k) {
                osg::Vec2d const e = quad[(k + 1) % 4] - quad[k];
                osg::Vec2d const q = p - quad[k];
                positive += e.x() * q.y() - e.y() * q.x() > 0.0 ? 1 : 0;
            }
            if (positive == 0 || positive == 4)
                return true;
        }
        return false;
    }

private:
    static double distanceToSegment(osg::Vec2d const& p, osg::Vec2d const& a, osg::Vec2d const& b)
    {
        osg::Vec2d const ab = b - a;
        double const t = std::max(0.0, std::min(1.0, ((p - a) * ab) / (ab * ab)));
        return (p - (a + ab * t)).length();
    }

    osg::Vec2d mCorners[8];
    int mFacesTowardEye[64] = {};
    bool mEdgeSeen[64] = {};
    std::vector<std::array<osg::Vec2d, 4>> mFrontFaces;
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
        std::vector<osg::Vec2d> const points = cube.edgePoints(creases);
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
    CKVSilhouetteGenerator const* generator =
        static_cast<CKVSilhouetteGenerator const*>(mContext->getRoot()->getSilhouetteGenerator());
    EXPECT_TRUE(generator->getEdgeOnly());
}

} // namespace Kelvor
