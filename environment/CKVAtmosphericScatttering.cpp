#include "environment/CKVAtmosphericScatttering.h"

#include "environment/KVAtmosphereSpectra.h"
#include "environment/KVAtmosphereTables.h"
#include "environment/KVSpectralLuminance.h"

#include <TarnwickCommon/Common.h>

#include <osg/Image>

namespace Kelvor {

namespace {

// Precomputed wavelengths of the luminance modes, and the exponents that
// weight the neighbours of the three reference wavelengths.
constexpr int kPrecomputedLuminanceMode = 2;
constexpr int kWavelengthsPrecomputed = 15;
constexpr int kWavelengthsApproximate = 3;
constexpr double kSkyLambdaPower = -3.0;
constexpr double kSunLambdaPower = 0.0;

void dropStorage(osg::Texture2D* texture)
{
    texture->setTextureSize(0, 0);
}

void dropStorage(osg::Texture3D* texture)
{
    texture->setTextureSize(0, 0, 0);
}

template <class Texture>
void setTableImage(Texture* texture, unsigned char* block, int width, int height, int depth)
{
    if (!block)
    {
        // No storage at all: the unit samples as black, so the sky does too.
        dropStorage(texture);
        return;
    }
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->setImage(width, height, depth, GL_RGBA32F_ARB, GL_RGBA, GL_FLOAT, block, osg::Image::USE_NEW_DELETE, 1);
    texture->setImage(image.get());
}

} // namespace

CKVAtmosphericScatttering::CKVAtmosphericScatttering(osg::UniformBufferBinding* lightBinding,
                                                     osg::Camera* sceneCamera, osg::Referenced* extra)
    : m_extra(extra)
{
    buildAtmosphereModel();
    m_sky = new CKVAtmosphereSky(lightBinding, sceneCamera,
                                 {m_transmittanceTexture, m_scatteringTexture, m_irradianceTexture});
}

void CKVAtmosphericScatttering::releaseGLObjects(osg::State* state) const
{
    CBGGroup::releaseGLObjects(state);
    m_sky->releaseGLObjects(state);
}

void CKVAtmosphericScatttering::buildAtmosphereModel()
{
    m_sunAngularRadius = 0.022f;
    m_bottomRadius = 6360000.0f;
    m_topRadius = 6420000.0f;
    m_lengthUnitInMeters = 1000.0f;
    m_constantSolarIrradiance = 1.5;
    m_rayleigh = 1.24062e-6;
    m_rayleighScaleHeight = 8000.0;
    m_mieScaleHeight = 1200.0;
    m_mieAngstromAlpha = 0.0;
    m_mieAngstromBeta = 5.328e-3;
    m_mieSingleScatteringAlbedo = 0.9;
    m_miePhaseFunctionG = 0.7;
    m_groundAlbedo = 0.1;
    m_maxSunZenithAngle = 2.0943951023931953; // 120 degrees
    m_useHalfPrecision = false;
    m_useConstantSolarSpectrum = false;
    m_useOzone = true;
    m_useCombinedTextures = true;
    m_reservedMode = 1;
    m_luminanceMode = 1;

    // The ozone layer: a tent of 15 km each side of its 25 km peak.
    constexpr double kOzoneLayerWidth = 25000.0;
    constexpr double kOzoneSlope = 1.0 / 15000.0;
    m_densityProfileLayers = {
        {"rayleigh", 0.0, 1.0, -1.0 / m_rayleighScaleHeight, 0.0, 0.0},
        {"mie", 0.0, 1.0, -1.0 / m_mieScaleHeight, 0.0, 0.0},
        {"absorption0", kOzoneLayerWidth, 0.0, 0.0, kOzoneSlope, -2.0 / 3.0},
        {"absorption1", 0.0, 0.0, 0.0, -kOzoneSlope, 8.0 / 3.0},
    };

    KVAtmosphereSpectrumInputs inputs;
    inputs.constantSolarIrradiance = m_constantSolarIrradiance;
    inputs.rayleigh = m_rayleigh;
    inputs.mieScaleHeight = m_mieScaleHeight;
    inputs.mieAngstromAlpha = m_mieAngstromAlpha;
    inputs.mieAngstromBeta = m_mieAngstromBeta;
    inputs.mieSingleScatteringAlbedo = m_mieSingleScatteringAlbedo;
    inputs.groundAlbedo = m_groundAlbedo;
    inputs.useConstantSolarSpectrum = m_useConstantSolarSpectrum;
    inputs.useOzone = m_useOzone;
    KVAtmosphereSpectra spectra = KVAtmosphereSpectra::build(inputs);
    m_wavelengths = std::move(spectra.wavelengths);
    m_solarIrradiance = std::move(spectra.solarIrradiance);
    m_rayleighScattering = std::move(spectra.rayleighScattering);
    m_mieScattering = std::move(spectra.mieScattering);
    m_mieExtinction = std::move(spectra.mieExtinction);
    m_absorptionExtinction = std::move(spectra.absorptionExtinction);
    m_groundAlbedoSpectrum = std::move(spectra.groundAlbedo);

    using T = KVAtmosphereTables;
    m_transmittanceTexture = createAtmosphereTexture2D(T::kTransmittanceWidth, T::kTransmittanceHeight);
    m_scatteringTexture = createAtmosphereTexture3D(T::kScatteringWidth, T::kScatteringHeight, T::kScatteringDepth,
                                                    GL_RGBA, m_useHalfPrecision);
    m_irradianceTexture = createAtmosphereTexture2D(T::kIrradianceWidth, T::kIrradianceHeight);
    loadTables();
}

void CKVAtmosphericScatttering::loadTables()
{
    using T = KVAtmosphereTables;
    CKVAString folder;
    Common::getResourceDirectory(folder);
    folder += T::kFolder;

    setTableImage(m_transmittanceTexture.get(),
                  readAtmosphereDataFile(folder + T::kTransmittanceFile, T::kTransmittanceBytes),
                  T::kTransmittanceWidth, T::kTransmittanceHeight, 1);
    setTableImage(m_scatteringTexture.get(), readAtmosphereDataFile(folder + T::kScatteringFile, T::kScatteringBytes),
                  T::kScatteringWidth, T::kScatteringHeight, T::kScatteringDepth);
    setTableImage(m_irradianceTexture.get(), readAtmosphereDataFile(folder + T::kIrradianceFile, T::kIrradianceBytes),
                  T::kIrradianceWidth, T::kIrradianceHeight, 1);
}

osg::ref_ptr<osg::Texture2D> CKVAtmosphericScatttering::createAtmosphereTexture2D(int width, int height)
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setTextureSize(width, height);
    texture->setInternalFormat(GL_RGBA32F_ARB);
    texture->setSourceFormat(GL_RGBA);
    texture->setSourceType(GL_FLOAT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

osg::ref_ptr<osg::Texture3D> CKVAtmosphericScatttering::createAtmosphereTexture3D(int width, int height, int depth,
                                                                                  GLenum sourceFormat,
                                                                                  bool halfPrecision)
{
    osg::ref_ptr<osg::Texture3D> texture = new osg::Texture3D;
    texture->setTextureSize(width, height, depth);
    texture->setInternalFormat(halfPrecision ? GL_RGBA16F_ARB : GL_RGBA32F_ARB);
    texture->setSourceFormat(sourceFormat);
    texture->setSourceType(GL_FLOAT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_R, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

unsigned char* CKVAtmosphericScatttering::readAtmosphereDataFile(CKVAString const& path, std::size_t expectedBytes)
{
    return KVAtmosphereTables::read(path.c_str(), expectedBytes);
}

osg::Vec3d CKVAtmosphericScatttering::computeSpectralRadianceToLuminanceFactors(double lambdaPower) const
{
    return KVSpectralLuminance::radianceToLuminanceFactors(m_wavelengths, m_solarIrradiance, lambdaPower);
}

int CKVAtmosphericScatttering::getPrecomputedWavelengthCount() const
{
    return m_luminanceMode == kPrecomputedLuminanceMode ? kWavelengthsPrecomputed : kWavelengthsApproximate;
}

osg::Vec3d CKVAtmosphericScatttering::getSkySpectralRadianceToLuminance() const
{
    if (getPrecomputedWavelengthCount() == kWavelengthsPrecomputed)
    {
        double const efficacy = KVSpectralLuminance::kMaxLuminousEfficacy;
        return osg::Vec3d(efficacy, efficacy, efficacy);
    }
    return computeSpectralRadianceToLuminanceFactors(kSkyLambdaPower);
}

osg::Vec3d CKVAtmosphericScatttering::getSunSpectralRadianceToLuminance() const
{
    return computeSpectralRadianceToLuminanceFactors(kSunLambdaPower);
}

} // namespace Kelvor
