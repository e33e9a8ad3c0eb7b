#pragma once

#include "environment/CBGGeode.h"

#include <osg/Geometry>
#include <osg/Program>
#include <osg/Texture2D>
#include <osg/Texture3D>
#include <osg/ref_ptr>

#include <functional>
#include <string>
#include <vector>

namespace Kelvor {

// The precomputation of the atmosphere tables on the GPU: its first draw runs
// every pass (transmittance, direct irradiance, single scattering, then per
// scattering order 2 to 4 the scattering density, indirect irradiance and
// multiple scattering) and writes the three tables to files; later draws do
// nothing. A tool: nothing in the running system builds or attaches it.
class CAtmosphericModelGeometry : public osg::Geometry
{
public:
    // The passes, each with its program.
    enum Pass
    {
        TransmittancePass,
        DirectIrradiancePass,
        SingleScatteringPass,
        ScatteringDensityPass,
        IndirectIrradiancePass,
        MultipleScatteringPass,
        PassCount
    };

    // Told after each pass (with the scattering order, 1 for the first
    // three) and after each file, with the seconds since the first pass
    // began. Waits for the GPU to finish each pass.
    using Progress = std::function<void(std::string const& step, int order, double seconds)>;

    CAtmosphericModelGeometry();
    CAtmosphericModelGeometry(CAtmosphericModelGeometry const& other,
                              osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new CAtmosphericModelGeometry; }
    osg::Object* clone(osg::CopyOp const& copyop) const override
    {
        return new CAtmosphericModelGeometry(*this, copyop);
    }
    bool isSameKindAs(osg::Object const* object) const override
    {
        return dynamic_cast<CAtmosphericModelGeometry const*>(object) != nullptr;
    }
    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CAtmosphericModelGeometry"; }

    // Where the tables are written; the resource directory's "/skybox"
    // unless set. Set before the first draw.
    void setDumpFolder(std::string const& folder) { m_dumpFolder = folder; }
    std::string const& getDumpFolder() const { return m_dumpFolder; }
    void setProgress(Progress progress) { m_progress = std::move(progress); }
    // Few integration samples: the tables come out coarse but every pass,
    // target and file is exercised in seconds instead of minutes.
    void setReducedSampling(bool reduced);

    bool isInitialized() const { return initialized; }
    // The files written so far, in order.
    std::vector<std::string> const& getWrittenFiles() const { return m_writtenFiles; }

    osg::Texture2D* getTransmittanceTexture() const { return m_transmittanceTexture.get(); }
    osg::Texture3D* getScatteringTexture() const { return m_scatteringTexture.get(); }
    osg::Texture2D* getIrradianceTexture() const { return m_irradianceTexture.get(); }

    // The program of a pass: the model's text, then the pass's main.
    static osg::ref_ptr<osg::Program> createProgram(Pass pass, bool reducedSampling = false);

    void drawImplementation(osg::RenderInfo& renderInfo) const override;
    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CAtmosphericModelGeometry() override = default;

private:
    struct PassContext;
    void createResources();
    void precompute(osg::RenderInfo& renderInfo) const;
    void dump(PassContext& pass, osg::Texture* texture, char const* fileName) const;

    std::string m_dumpFolder;
    Progress m_progress;
    bool m_reducedSampling = false;
    mutable std::vector<std::string> m_writtenFiles;

    osg::ref_ptr<osg::Texture2D> m_transmittanceTexture;
    osg::ref_ptr<osg::Texture3D> m_scatteringTexture;
    osg::ref_ptr<osg::Texture2D> m_irradianceTexture;
    mutable bool initialized = false;
    osg::ref_ptr<osg::Texture2D> m_deltaIrradianceTexture;
    osg::ref_ptr<osg::Texture3D> m_deltaRayleighTexture;
    osg::ref_ptr<osg::Texture3D> m_deltaMieTexture;
    osg::ref_ptr<osg::Texture3D> m_deltaScatteringDensityTexture;
    osg::ref_ptr<osg::Program> m_programs[PassCount];
    mutable unsigned int m_framebuffer = 0;
};

// The generator on its own small graph: a quad over the viewport in a
// CBGGeode.
osg::ref_ptr<CBGGeode> createAtmosphereModelGeode();

} // namespace Kelvor
