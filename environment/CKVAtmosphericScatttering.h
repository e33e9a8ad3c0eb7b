#pragma once

#include "environment/CBGGroup.h"
#include "environment/CKVAtmosphereSky.h"
#include "environment/KVDensityProfileLayer.h"

#include <TarnwickCommon/CKVAString.h>

#include <osg/Camera>
#include <osg/Texture2D>
#include <osg/Texture3D>
#include <osg/BufferIndexBinding>
#include <osg/Vec3d>
#include <osg/ref_ptr>

#include <vector>

namespace Kelvor {

// The atmosphere of the sky: the physical model, the three lookup tables it
// was precomputed into (transmittance, scattering, ground irradiance), and
// the passes that draw the sky from them. One per render context. The tables
// are loaded once, at construction, from the resource directory's "/skybox"
// folder; the running system never computes them (CAtmosphericModelGeometry
// does, as a tool).
class CKVAtmosphericScatttering : public CBGGroup
{
public:
    // The references are the light block's binding, the camera whose state
    // set the surface programs read, and one the owner asks us to keep.
    explicit CKVAtmosphericScatttering(osg::UniformBufferBinding* lightBinding = nullptr,
                                       osg::Camera* sceneCamera = nullptr, osg::Referenced* extra = nullptr);

    char const* className() const override { return "CKVAtmosphericScatttering"; }

    // The passes that draw from the tables: sun colour, sky cube and
    // image-based light, culled from here (this node has no children).
    void traverse(osg::NodeVisitor& visitor) override { m_sky->traverse(visitor); }
    void releaseGLObjects(osg::State* state = nullptr) const override;
    CKVAtmosphereSky* getSky() const { return m_sky.get(); }
    void setAtmosphereEnabled(bool enabled) { m_sky->setAtmosphereEnabled(enabled); }
    void setSkyPassEnabled(bool enabled) { m_sky->setSkyPassEnabled(enabled); }
    void setUpdateScattering(bool update) { m_sky->setUpdateScattering(update); }
    void setTerrainHeight(float height) { m_sky->setTerrainHeight(height); }
    void setTerrainTexture(osg::Texture2DArray* texture) { m_sky->setTerrainTexture(texture); }
    osg::TextureCubeMap* getEnvironmentMap() const { return m_sky->getEnvironmentMap(); }
    osg::Uniform* getSkyUniform() const { return m_sky->getSkyUniform(); }
    osg::TextureCubeMap* getIrradianceMap() const { return m_sky->getIrradianceMap(); }
    osg::TextureCubeMap* getPrefilterMap() const { return m_sky->getPrefilterMap(); }

    // A float RGBA texture for a table: 32-bit, linear filters, clamped.
    static osg::ref_ptr<osg::Texture2D> createAtmosphereTexture2D(int width, int height);
    // The same in 3D; 16-bit when `halfPrecision`. `sourceFormat` is the
    // pixel format of what is uploaded or rendered into it.
    static osg::ref_ptr<osg::Texture3D> createAtmosphereTexture3D(int width, int height, int depth,
                                                                  GLenum sourceFormat, bool halfPrecision);
    // The file's whole content in a block from new[], or null when the file
    // is missing (asked of Common::checkFile) or is not `expectedBytes` long.
    static unsigned char* readAtmosphereDataFile(CKVAString const& path, std::size_t expectedBytes);

    osg::Texture2D* getTransmittanceTexture() const { return m_transmittanceTexture.get(); }
    osg::Texture3D* getScatteringTexture() const { return m_scatteringTexture.get(); }
    osg::Texture2D* getIrradianceTexture() const { return m_irradianceTexture.get(); }

    // The per-wavelength model (360 to 830 nm, 48 rows).
    std::vector<double> const& getWavelengths() const { return m_wavelengths; }
    std::vector<double> const& getSolarIrradiance() const { return m_solarIrradiance; }
    std::vector<double> const& getRayleighScattering() const { return m_rayleighScattering; }
    std::vector<double> const& getMieScattering() const { return m_mieScattering; }
    std::vector<double> const& getMieExtinction() const { return m_mieExtinction; }
    std::vector<double> const& getAbsorptionExtinction() const { return m_absorptionExtinction; }
    std::vector<KVDensityProfileLayer> const& getDensityProfileLayers() const { return m_densityProfileLayers; }

    // Factors from the tables' radiance at 680, 550 and 440 nm to linear
    // sRGB luminance, for the solar spectrum of this model. `lambdaPower` is
    // the exponent of the wavelength weighting.
    osg::Vec3d computeSpectralRadianceToLuminanceFactors(double lambdaPower) const;
    // Those of the sky (3 precomputed wavelengths: exponent -3; 15: 683 on
    // every channel) and of the sun (always exponent 0).
    osg::Vec3d getSkySpectralRadianceToLuminance() const;
    osg::Vec3d getSunSpectralRadianceToLuminance() const;
    int getPrecomputedWavelengthCount() const;

protected:
    ~CKVAtmosphericScatttering() override = default;

    // Sets the parameters, fills the spectra, creates and loads the tables.
    void buildAtmosphereModel();

private:
    void loadTables();

    // --- The model: physical parameters (lengths in metres, angles in
    // radians, wavelengths in nanometres). Nothing reads them at run time:
    // both shader sets carry their own constants.
    float m_sunAngularRadius = 0.0f;
    float m_bottomRadius = 0.0f;
    float m_topRadius = 0.0f;
    float m_lengthUnitInMeters = 0.0f;
    double m_constantSolarIrradiance = 0.0;
    double m_rayleigh = 0.0;
    double m_rayleighScaleHeight = 0.0;
    double m_mieScaleHeight = 0.0;
    double m_mieAngstromAlpha = 0.0;
    double m_mieAngstromBeta = 0.0;
    double m_mieSingleScatteringAlbedo = 0.0;
    double m_miePhaseFunctionG = 0.0;
    double m_groundAlbedo = 0.0;
    double m_maxSunZenithAngle = 0.0;
    bool m_useHalfPrecision = false;
    bool m_useConstantSolarSpectrum = false;
    bool m_useOzone = true;
    bool m_useCombinedTextures = true;
    int m_reservedMode = 0;
    // 0 none, 1 approximate, 2 precomputed (15 wavelengths).
    int m_luminanceMode = 0;
    std::vector<double> m_wavelengths;
    std::vector<double> m_solarIrradiance;
    std::vector<double> m_rayleighScattering;
    std::vector<double> m_mieScattering;
    std::vector<double> m_mieExtinction;
    std::vector<double> m_absorptionExtinction;
    std::vector<double> m_groundAlbedoSpectrum;
    // "rayleigh", "mie", "absorption0", "absorption1".
    std::vector<KVDensityProfileLayer> m_densityProfileLayers;

    // --- The tables.
    osg::ref_ptr<osg::Texture2D> m_transmittanceTexture;
    osg::ref_ptr<osg::Texture3D> m_scatteringTexture;
    osg::ref_ptr<osg::Texture2D> m_irradianceTexture;

    // Kept for the owner; nothing here reads it.
    osg::ref_ptr<osg::Referenced> m_extra;
    osg::ref_ptr<CKVAtmosphereSky> m_sky;
};

} // namespace Kelvor
