#include <gtest/gtest.h>

#include "viewer/CKVGraphicsWindowX11.h"

namespace Kelvor {
namespace {

TEST(CKVGraphicsWindowX11, UnreachableDisplayGivesAnInvalidWindowAndNoCrash)
{
    osg::ref_ptr<osg::GraphicsContext::Traits> traits =
        CKVGraphicsWindowX11::createTraits(nullptr, 0x1234, true, 4, 8);
    traits->setScreenIdentifier(":98765.0");
    // A compatibility profile: OpenSceneGraph still applies fixed-function state.
    EXPECT_EQ(traits->glContextProfileMask, 1u);

    osg::ref_ptr<CKVGraphicsWindowX11> window = new CKVGraphicsWindowX11(traits.get());
    EXPECT_FALSE(window->valid());
    EXPECT_FALSE(window->realize());
    window->stopTimer();
    window->close();
}

} // namespace
} // namespace Kelvor
