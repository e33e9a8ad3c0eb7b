#include "programs/CKVRenderStateManager.h"
#include "programs/KVGLDriverQuery.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace Kelvor {
namespace {

// A manager of its own per test: the process-wide one keeps its switches.
class TestManager : public CKVRenderStateManager
{
};

char const* const kNvidia = "NVIDIA GeForce RTX 3060/PCIe/SSE2";

std::vector<std::string> const kBindlessFunctions = {
    "glGetTextureHandle",  "glMakeTextureHandleResident", "glMakeTextureHandleNonResident",
    "glUniformHandleui64", "glUniformHandleui64v",        "glIsTextureHandleResident",
};

// A driver that answers from lists; by default one with everything bindless
// textures need, entry points in the ARB form.
class FakeDriver : public KVGLDriverQuery
{
public:
    FakeDriver()
    {
        for (std::string const& name : kBindlessFunctions)
            functions.insert(name + "ARB");
    }

    std::string getVersion() const override { return version; }
    std::string getRenderer() const override { return renderer; }
    bool isExtensionSupported(char const* name) const override { return extensions.count(name) != 0; }
    bool hasFunction(char const* name) const override { return functions.count(name) != 0; }

    void removeFunctionInEveryForm(std::string const& name)
    {
        for (char const* suffix : {"", "ARB", "NV"})
            functions.erase(name + suffix);
    }

    std::string version = "4.6.0 NVIDIA 535.104.05";
    std::string renderer = kNvidia;
    std::set<std::string> extensions = {"GL_ARB_bindless_texture", "GL_NV_bindless_texture"};
    std::set<std::string> functions;
};

bool detect(FakeDriver const& driver)
{
    TestManager manager;
    manager.initExtensions(driver);
    return manager.isBindlessTexture();
}

TEST(RenderStateManagerDetection, ExcludedRenderersGetNoBindlessTexturesWhateverTheyOffer)
{
    FakeDriver driver;
    ASSERT_TRUE(detect(driver)) << "the reference driver itself must qualify";

    for (char const* renderer :
         {"Mesa Intel(R) UHD Graphics 630 (CFL GT2)", "INTEL HD GRAPHICS 4000", "intel iris",
          "AMD Radeon RX 6800 XT (navi21, LLVM 15.0.6, DRM 3.49, 6.1.0)", "ATI Technologies Radeon HD 7970",
          "RADEON PRO W5700", "Amd Custom GPU 0405"}) {
        driver.renderer = renderer;
        TestManager manager;
        // An earlier answer must not survive the check.
        manager.setBindlessTexture(true);
        manager.initExtensions(driver);
        EXPECT_FALSE(manager.isBindlessTexture()) << renderer;
    }
}

TEST(RenderStateManagerDetection, NeedsOneOfTheTwoExtensionsBeforeAnyEntryPoint)
{
    FakeDriver driver;
    // Entry points resolve on some drivers that do not offer the extension.
    driver.extensions.clear();
    for (std::string const& name : kBindlessFunctions)
        driver.functions.insert(name);
    EXPECT_FALSE(detect(driver));

    driver.extensions = {"GL_NV_bindless_texture"};
    EXPECT_TRUE(detect(driver));
    driver.extensions = {"GL_ARB_bindless_texture"};
    EXPECT_TRUE(detect(driver));
    driver.extensions = {"GL_ARB_bindless_texture_extra", "GL_EXT_bindless_texture"};
    EXPECT_FALSE(detect(driver));
}

TEST(RenderStateManagerDetection, EveryEntryPointMustResolveInSomeForm)
{
    for (std::string const& missing : kBindlessFunctions) {
        FakeDriver driver;
        driver.removeFunctionInEveryForm(missing);
        EXPECT_FALSE(detect(driver)) << missing << " missing";
    }

    // The forms may be mixed, and any one form is enough.
    for (char const* suffix : {"", "ARB", "NV"}) {
        FakeDriver driver;
        driver.functions.clear();
        for (std::string const& name : kBindlessFunctions)
            driver.functions.insert(name + suffix);
        EXPECT_TRUE(detect(driver)) << "only the form with suffix '" << suffix << "'";
    }
    FakeDriver mixed;
    mixed.removeFunctionInEveryForm("glIsTextureHandleResident");
    mixed.functions.insert("glIsTextureHandleResidentNV");
    EXPECT_TRUE(detect(mixed));

    // Other suffixes do not count.
    FakeDriver other;
    other.removeFunctionInEveryForm("glUniformHandleui64");
    other.functions.insert("glUniformHandleui64EXT");
    other.functions.insert("glUniformHandleui64IMG");
    EXPECT_FALSE(detect(other));
}

TEST(RenderStateManagerDetection, OcclusionCullingNeedsAVersionAbove4_2)
{
    struct Case
    {
        char const* version;
        bool occlusionCulling;
    };
    for (Case const& c : {Case{"4.2.0 NVIDIA 390.157", false}, Case{"4.3.0 NVIDIA 535.104.05", true},
                          Case{"4.5 (Compatibility Profile) Mesa 22.3.6", true}, Case{"3.3 (Core Profile) Mesa", false},
                          Case{"OpenGL ES 3.2 Mesa 22.3.6", false}}) {
        FakeDriver driver;
        driver.version = c.version;
        TestManager manager;
        manager.initExtensions(driver);
        EXPECT_EQ(manager.isOcclusionCulling(), c.occlusionCulling) << c.version;
        EXPECT_FALSE(manager.isVertexAttribBinding()) << c.version;
    }

    // The version decides even where the renderer ends the bindless check.
    FakeDriver intel;
    intel.version = "4.2.0 - Build 10.18";
    intel.renderer = "Intel(R) HD Graphics 4000";
    TestManager manager;
    manager.initExtensions(intel);
    EXPECT_FALSE(manager.isOcclusionCulling());
    EXPECT_FLOAT_EQ(manager.getGLVersion(), 4.2f);
    EXPECT_FALSE(manager.isBindlessTexture());
}

} // namespace
} // namespace Kelvor
