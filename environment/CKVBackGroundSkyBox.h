#pragma once

#include "environment/CBGGeometry.h"
#include "environment/CKVBackGround.h"

#include <osg/BufferIndexBinding>
#include <osg/StateSet>
#include <osg/TextureCubeMap>
#include <osg/Uniform>
#include <osg/ref_ptr>

#include <string>

namespace Kelvor {

// The sky as a cube around the eye, with a turning cloud layer. In
// atmosphere mode it shows the atmosphere's sky cube; in user mode a cube
// from the host's files, one DDS cube file or six face images.
class CKVBackGroundSkyBox : public CKVBackGround
{
    KV_DECLARE_RUNTIME_CLASS(CKVBackGroundSkyBox)
public:
    // Texture units of the sky and the clouds on the node's state set.
    static constexpr unsigned int kSkyUnit = 0;
    static constexpr unsigned int kCloudUnit = 1;

    CKVBackGroundSkyBox();
    ~CKVBackGroundSkyBox() override;

    // Builds the cube and loads the textures of the current mode (atmosphere
    // at construction). Later calls change nothing.
    void initialize() override;

    // Keeps the face paths, which serve as the fallback of the cube file.
    void setCubeMapPath(std::string const& path) { mCubeMapPath = path; }
    // Clears the cube file path. Faces in the order +X, -X, +Y, -Y, +Z, -Z.
    void setFacePaths(std::string const& px, std::string const& nx, std::string const& py,
                      std::string const& ny, std::string const& pz, std::string const& nz);
    std::string const& getCubeMapPath() const { return mCubeMapPath; }
    std::string const& getFacePath(unsigned int face) const { return mFacePaths[face < 6 ? face : 0]; }

    void setEnvironmentMap(osg::TextureCubeMap* map) { mEnvironmentMap = map; }
    // The previous uniform, if any, goes onto the node's state set first.
    void setSkyUniform(osg::Uniform* uniform);
    void setLightBinding(osg::UniformBufferBinding* binding) { mLightBinding = binding; }

    // Switches between the atmosphere's sky and the user's; an unchanged
    // mode reads nothing.
    void setAtmosphereMode(bool atmosphere);
    bool getAtmosphereMode() const { return mAtmosphereMode != 0; }

    // Image-based lighting from the folder of the user sky files:
    // irradiance.dds (unit 6), radiance.dds (unit 7), brdf.png (unit 8).
    // A path without a folder leaves the state set as it is.
    void applyEnvironmentLighting(osg::StateSet* stateSet) const;

    // A UV sphere over latitude -pi/2..pi/2 and longitude 0..2 pi with unit
    // normals and texture coordinates.
    static osg::ref_ptr<CBGGeometry> createSkySphere(float radius, unsigned int sectors, unsigned int stacks);

    osg::TextureCubeMap* getCloudMap() const { return mCloudMap.get(); }
    osg::TextureCubeMap* getUserMap() const { return mUserMap.get(); }

private:
    void applyMode(bool atmosphere);
    void createCloudMap();
    void loadUserMap();
    static osg::ref_ptr<CBGGeometry> createCube();

    std::string mCubeMapPath;
    std::string mFacePaths[6];
    osg::ref_ptr<osg::TextureCubeMap> mEnvironmentMap;
    osg::ref_ptr<osg::Uniform> mSkyUniform;
    osg::ref_ptr<osg::UniformBufferBinding> mLightBinding;
    osg::ref_ptr<osg::TextureCubeMap> mCloudMap;
    int mAtmosphereMode = 1;
    osg::ref_ptr<osg::TextureCubeMap> mUserMap;
    bool mInitialized = false;
};

} // namespace Kelvor
