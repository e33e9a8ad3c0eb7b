#pragma once

#include "support/ImageCompare.h"

#include <gtest/gtest.h>

#include <osg/Image>

#include <string>

namespace Kelvor {

// Golden images are PNG files tests/data/golden/<name>.png in the source tree.
// With TARNWICK_UPDATE_GOLDEN=1 in the environment the image is written there
// instead of compared (and the check passes); review and commit the result.
::testing::AssertionResult matchesGolden(osg::Image const& image, std::string const& name,
                                         ImageTolerance const& tolerance = ImageTolerance());

// EXPECT_TRUE(matchesGolden(...)): the failure message names the golden, the
// actual image and the diff image.
void expectMatchesGolden(osg::Image const& image, std::string const& name,
                         ImageTolerance const& tolerance = ImageTolerance());

} // namespace Kelvor
