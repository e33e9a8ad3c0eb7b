// The table generator, on coarse sampling so that a whole run takes seconds:
// it runs once, writes each table once in its order, and what it writes is
// what its textures hold.
#include "environment/CAtmosphericModelGeometry.h"
#include "environment/KVAtmosphereTables.h"
#include "support/GLTest.h"

#include <osg/GLExtensions>
#include <osg/RenderInfo>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

namespace Kelvor {
namespace {

namespace fs = std::filesystem;
using T = KVAtmosphereTables;

std::vector<char> fileBytes(fs::path const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::vector<char> textureBytes(osg::State& state, osg::Texture* texture)
{
    osg::Texture::TextureObject* object = texture->getTextureObject(state.getContextID());
    if (!object)
        return {};
    std::size_t const texels = std::size_t(texture->getTextureWidth()) * std::max(texture->getTextureHeight(), 1) *
                               std::max(texture->getTextureDepth(), 1);
    std::vector<char> bytes(texels * T::kTexelBytes);
    state.setActiveTextureUnit(0);
    glBindTexture(texture->getTextureTarget(), object->id());
    glGetTexImage(texture->getTextureTarget(), 0, GL_RGBA, GL_FLOAT, bytes.data());
    glBindTexture(texture->getTextureTarget(), 0);
    state.haveAppliedTextureAttribute(0, osg::StateAttribute::TEXTURE);
    return bytes;
}

class AtmosphereGeneratorGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        mFolder = fs::temp_directory_path() / ("kv-atmosphere-gen-" + std::to_string(::getpid()));
        fs::create_directories(mFolder);
    }
    void TearDown() override
    {
        GLTest::TearDown();
        fs::remove_all(mFolder);
    }
    fs::path mFolder;
};

TEST_F(AtmosphereGeneratorGLTest, RunsOnceWritingEachTableOnceAsItsTextureHoldsIt)
{
    osg::ref_ptr<CBGGeode> geode = createAtmosphereModelGeode();
    ASSERT_EQ(geode->getNumDrawables(), 1u);
    auto* generator = dynamic_cast<CAtmosphericModelGeometry*>(geode->getDrawable(0));
    ASSERT_NE(generator, nullptr);
    generator->setDumpFolder(mFolder.string());
    generator->setReducedSampling(true);
    std::vector<std::string> steps;
    generator->setProgress([&](std::string const& step, int order, double) {
        steps.push_back(order > 0 ? step + " " + std::to_string(order) : step);
    });

    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        osg::RenderInfo renderInfo(&state, nullptr);
        EXPECT_FALSE(generator->isInitialized());
        generator->draw(renderInfo);
        EXPECT_TRUE(generator->isInitialized());

        std::vector<std::string> const expected = {(mFolder / "transmittance_texture.data").string(),
                                                   (mFolder / "irradiance_texture.data").string(),
                                                   (mFolder / "scattering_texture.data").string()};
        EXPECT_EQ(generator->getWrittenFiles(), expected);
        // Each table is written right after the pass that completes it.
        std::vector<std::string> const order = {"transmittance 1",
                                                "wrote " + expected[0],
                                                "direct irradiance 1",
                                                "single scattering 1",
                                                "scattering density 2",
                                                "indirect irradiance 2",
                                                "multiple scattering 2",
                                                "scattering density 3",
                                                "indirect irradiance 3",
                                                "multiple scattering 3",
                                                "scattering density 4",
                                                "indirect irradiance 4",
                                                "wrote " + expected[1],
                                                "multiple scattering 4",
                                                "wrote " + expected[2]};
        EXPECT_EQ(steps, order);

        struct Table
        {
            osg::Texture* texture;
            char const* file;
            std::size_t bytes;
        };
        Table const tables[] = {{generator->getTransmittanceTexture(), T::kTransmittanceFile, T::kTransmittanceBytes},
                                {generator->getScatteringTexture(), T::kScatteringFile, T::kScatteringBytes},
                                {generator->getIrradianceTexture(), T::kIrradianceFile, T::kIrradianceBytes}};
        std::vector<std::vector<char>> before;
        std::vector<fs::file_time_type> written;
        for (Table const& t : tables)
        {
            fs::path const path = mFolder.string() + t.file;
            before.push_back(textureBytes(state, t.texture));
            written.push_back(fs::last_write_time(path));
            EXPECT_EQ(before.back().size(), t.bytes) << t.file;
            EXPECT_TRUE(fileBytes(path) == before.back()) << t.file << " differs from its texture";
        }

        generator->draw(renderInfo);
        EXPECT_EQ(generator->getWrittenFiles().size(), 3u);
        for (std::size_t i = 0; i < 3; ++i)
        {
            EXPECT_TRUE(textureBytes(state, tables[i].texture) == before[i]) << tables[i].file << " changed";
            EXPECT_EQ(fs::last_write_time(mFolder.string() + tables[i].file), written[i]) << tables[i].file;
        }
        generator->releaseGLObjects(&state);
    }));
}

} // namespace
} // namespace Kelvor
