// The sky capture's geometry and its convolution schedule, without GL.
// A face matrix that disagrees with GL's cube-map layout shows as a sky
// that is mirrored or turned on some faces, with seams at the edges; a
// schedule off by a frame doubles the cost of image-based light or starves
// it.
#include "environment/CKVSkyCubeFaces.h"
#include "environment/IBLGeometry.h"

#include <osg/Vec3f>
#include <osg/Vec4f>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace Kelvor;

namespace {

// Where GL's cube-map lookup puts a direction on a face: the face's major
// axis and the (s, t) in -1..1 that GL's cube-map face selection gives.
struct Lookup
{
    unsigned int face;
    float s;
    float t;
};

Lookup glCubeLookup(osg::Vec3f const& r)
{
    float const ax = std::abs(r.x());
    float const ay = std::abs(r.y());
    float const az = std::abs(r.z());
    if (ax >= ay && ax >= az)
        return r.x() > 0 ? Lookup{0, -r.z() / ax, -r.y() / ax} : Lookup{1, r.z() / ax, -r.y() / ax};
    if (ay >= az)
        return r.y() > 0 ? Lookup{2, r.x() / ay, r.z() / ay} : Lookup{3, r.x() / ay, -r.z() / ay};
    return r.z() > 0 ? Lookup{4, r.x() / az, -r.y() / az} : Lookup{5, -r.x() / az, -r.y() / az};
}

} // namespace

// Every direction must land, through its face's camera, at the texel that a
// lookup of the same direction reads back.
TEST(CKVSkyCubeFaces, EachFaceDrawsWhereTheCubeMapLookupReads)
{
    std::vector<osg::Vec3f> directions;
    for (float a : {-0.8f, -0.3f, 0.0f, 0.45f, 0.9f})
        for (float b : {-0.7f, 0.0f, 0.25f, 0.85f})
            for (int axis = 0; axis < 3; ++axis)
                for (float sign : {-1.0f, 1.0f}) {
                    osg::Vec3f d;
                    d[axis] = sign;
                    d[(axis + 1) % 3] = a;
                    d[(axis + 2) % 3] = b;
                    directions.push_back(d);
                }

    std::set<unsigned int> facesSeen;
    for (osg::Vec3f const& d : directions) {
        Lookup const expected = glCubeLookup(d);
        facesSeen.insert(expected.face);
        osg::Vec4f const clip = osg::Vec4f(d, 1.0f) * CKVSkyCubeFaces::viewProjection(expected.face);
        ASSERT_GT(clip.w(), 0.0f);
        std::string const where = "face " + std::to_string(expected.face) + " direction (" +
                                  std::to_string(d.x()) + ", " + std::to_string(d.y()) + ", " +
                                  std::to_string(d.z()) + ")";
        EXPECT_NEAR(clip.x() / clip.w(), expected.s, 1e-5f) << where;
        EXPECT_NEAR(clip.y() / clip.w(), expected.t, 1e-5f) << where;
        // Inside the depth range, so that nothing of the unit cube is clipped.
        EXPECT_LT(std::abs(clip.z() / clip.w()), 1.0f) << where;
    }
    EXPECT_EQ(facesSeen.size(), CKVSkyCubeFaces::kFaceCount);

    osg::ref_ptr<osg::Uniform> uniform = CKVSkyCubeFaces::createUniform();
    EXPECT_EQ(uniform->getName(), "ViewProjectionMatrix");
    EXPECT_EQ(uniform->getNumElements(), CKVSkyCubeFaces::kFaceCount);
}

// Frames in order, with the physical-material flag of each, and whether the
// convolutions run in it.
TEST(IBLGeometry, ConvolutionsRunEverySecondFrameOnceAPhysicalMaterialExists)
{
    struct Case
    {
        char const* name;
        std::vector<bool> physical;
        std::vector<bool> runs;
    };
    std::vector<Case> const cases = {
        {"flag set from the first frame", {true, true, true, true, true}, {true, false, true, false, true}},
        {"never set", {false, false, false, false}, {false, false, false, false}},
        // The counter has grown meanwhile; the first frame that sees the flag
        // resets it, and the runs start on the next.
        {"set after three frames",
         {false, false, false, true, true, true, true},
         {false, false, false, false, true, false, true}},
    };
    for (Case const& c : cases) {
        int counter = 0;
        std::vector<bool> runs;
        for (bool physical : c.physical)
            runs.push_back(IBLGeometry::advanceSchedule(counter, physical));
        EXPECT_EQ(runs, c.runs) << c.name;
    }
}
