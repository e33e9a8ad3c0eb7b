// The depth of field's settings as the root hands them on, and its
// half-size targets.
#include "effects/CKVDOFGenerator.h"
#include "effects/DOFGeometry.h"

#include <gtest/gtest.h>

namespace Kelvor {

// Small blur sizes fade the blur in at the smallest kernel rather than
// sampling finer.
TEST(DOFGeneratorTest, BlurSizeSetsKernelAndBlend)
{
    struct Case
    {
        float size;
        float kernel;
        float blend;
    };
    Case const cases[] = {{0.1f, 0.25f, 0.4f}, {0.0f, 0.25f, 0.0f}, {0.25f, 0.25f, 1.0f}, {3.0f, 3.0f, 1.0f}};
    osg::ref_ptr<CKVDOFGenerator> generator = new CKVDOFGenerator(nullptr, 64, 48);
    for (Case const& c : cases) {
        generator->setBlurSize(c.size);
        EXPECT_FLOAT_EQ(generator->getDOFGeometry()->getKernelSize(), c.kernel) << c.size;
        EXPECT_FLOAT_EQ(generator->getDOFGeometry()->getBlend(), c.blend) << c.size;
    }
}

// Odd sizes truncate at half size; the output follows at full size.
TEST(DOFGeneratorTest, HalfSizeTruncates)
{
    osg::ref_ptr<CKVDOFGenerator> generator = new CKVDOFGenerator(nullptr, 64, 48);
    generator->resize(101, 51);
    DOFGeometry const* geometry = generator->getDOFGeometry();
    EXPECT_EQ(geometry->getHalfWidth(), 50);
    EXPECT_EQ(geometry->getHalfHeight(), 25);
    EXPECT_EQ(generator->getOutput()->getTextureWidth(), 101);
    EXPECT_EQ(generator->getOutput()->getTextureHeight(), 51);
    generator->resize(1, 0);
    EXPECT_EQ(geometry->getHalfWidth(), 50) << "a zero size is ignored";
}

} // namespace Kelvor
