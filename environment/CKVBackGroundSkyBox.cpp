#include "environment/CKVBackGroundSkyBox.h"

#include "environment/CKVDDSImageListReader.h"
#include "programs/CKVProgramManager.h"

#include "TarnwickCommon/Common.h"
#include "TarnwickRender/CKVProgramParam.h"

#include <osg/Depth>
#include <osg/Texture2D>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <cmath>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBackGroundSkyBox, CKVBackGround)

namespace {

constexpr unsigned int kSkyBoxProgramKind = 9;
constexpr unsigned int kIrradianceUnit = 6;
constexpr unsigned int kPrefilterUnit = 7;
constexpr unsigned int kBrdfUnit = 8;

// Faces of the cloud cube, in cube-map face order.
char const* const kCloudFaces[6] = {"/px.png", "/nx.png", "/py.png", "/ny.png", "/pz.png", "/nz.png"};

osg::StateAttribute::GLModeValue const kProtectedOn = osg::StateAttribute::ON | osg::StateAttribute::PROTECTED;

osg::ref_ptr<osg::Image> readImage(std::string const& path)
{
    if (path.empty())
        return nullptr;
    return osgDB::readRefImageFile(path, osgDB::Registry::instance()->getOptions());
}

std::string skyResourceFolder()
{
    CKVAString directory;
    Common::getResourceDirectory(directory);
    return std::string(directory.c_str()) + "/skybox";
}

void clampLinear(osg::TextureCubeMap& map)
{
    map.setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    map.setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    map.setWrap(osg::Texture::WRAP_R, osg::Texture::CLAMP_TO_EDGE);
    map.setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    map.setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
}

// The six faces of a DDS cube file, or none.
bool readCubeFile(std::string const& path, CKVDDSImageListReader::ImageList& faces)
{
    faces.clear();
    osg::ref_ptr<osgDB::Options> options = CKVDDSImageListReader::createOptions(&faces);
    osgDB::readRefImageFile(path, options.get());
    return faces.size() == 6;
}

} // namespace

CKVBackGroundSkyBox::CKVBackGroundSkyBox()
{
    mNode->setName("skybox");
}

CKVBackGroundSkyBox::~CKVBackGroundSkyBox() = default;

void CKVBackGroundSkyBox::setFacePaths(std::string const& px, std::string const& nx, std::string const& py,
                                       std::string const& ny, std::string const& pz, std::string const& nz)
{
    mCubeMapPath.clear();
    mFacePaths[0] = px;
    mFacePaths[1] = nx;
    mFacePaths[2] = py;
    mFacePaths[3] = ny;
    mFacePaths[4] = pz;
    mFacePaths[5] = nz;
}

void CKVBackGroundSkyBox::setSkyUniform(osg::Uniform* uniform)
{
    if (mSkyUniform.valid())
        mNode->getOrCreateStateSet()->addUniform(mSkyUniform.get());
    mSkyUniform = uniform;
}

osg::ref_ptr<CBGGeometry> CKVBackGroundSkyBox::createCube()
{
    // Two triangles per face, wound to face inwards: the eye is inside.
    static float const corners[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                        {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
    static unsigned int const faces[6][4] = {{1, 2, 6, 5}, {0, 4, 7, 3}, {3, 7, 6, 2},
                                             {0, 1, 5, 4}, {4, 5, 6, 7}, {0, 3, 2, 1}};
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (auto const& face : faces) {
        unsigned int const order[6] = {face[0], face[2], face[1], face[0], face[3], face[2]};
        for (unsigned int index : order)
            vertices->push_back(osg::Vec3f(corners[index][0], corners[index][1], corners[index][2]));
    }
    osg::ref_ptr<CBGGeometry> cube = new CBGGeometry;
    cube->setVertexArray(vertices.get());
    cube->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 36));
    cube->setUseDisplayList(false);
    cube->setUseVertexBufferObjects(true);
    cube->setUseVertexArrayObject(true);
    cube->setCullingActive(false);
    return cube;
}

void CKVBackGroundSkyBox::initialize()
{
    if (mInitialized)
        return;
    mInitialized = true;
    mNode->addDrawable(createCube().get());

    osg::StateSet* stateSet = mNode->getOrCreateStateSet();
    if (mLightBinding.valid())
        stateSet->setAttribute(mLightBinding.get());
    stateSet->addUniform(new osg::Uniform("reflect", false));
    applyMode(mAtmosphereMode != 0);

    CKVProgramParam param;
    param.setType(static_cast<CKVProgramParam::Type>(kSkyBoxProgramKind));
    osg::ref_ptr<osg::Program> program = CKVProgramManager::instance().getProgram(param);
    if (program.valid())
        stateSet->setAttributeAndModes(program.get(), osg::StateAttribute::ON);
    stateSet->setAttributeAndModes(new osg::Depth(osg::Depth::LEQUAL, 0.0, 1.0, false), osg::StateAttribute::ON);
}

void CKVBackGroundSkyBox::setAtmosphereMode(bool atmosphere)
{
    if (static_cast<int>(atmosphere) == mAtmosphereMode)
        return;
    applyMode(atmosphere);
    mAtmosphereMode = atmosphere ? 1 : 0;
}

void CKVBackGroundSkyBox::createCloudMap()
{
    mCloudMap = new osg::TextureCubeMap;
    clampLinear(*mCloudMap);
    osg::StateSet* stateSet = mNode->getOrCreateStateSet();
    stateSet->setTextureAttributeAndModes(kCloudUnit, mCloudMap.get(), kProtectedOn);
    stateSet->addUniform(new osg::Uniform("cloudbox", static_cast<int>(kCloudUnit)), kProtectedOn);
}

void CKVBackGroundSkyBox::applyMode(bool atmosphere)
{
    if (!mCloudMap.valid())
        createCloudMap();
    osg::StateSet* stateSet = mNode->getOrCreateStateSet();
    std::string const folder = skyResourceFolder();

    if (atmosphere) {
        if (mEnvironmentMap.valid())
            stateSet->setTextureAttributeAndModes(kSkyUnit, mEnvironmentMap.get(), kProtectedOn);
        else
            stateSet->removeTextureAttribute(kSkyUnit, osg::StateAttribute::TEXTURE);
        stateSet->addUniform(new osg::Uniform("skybox", static_cast<int>(kSkyUnit)));
        osg::ref_ptr<osg::Image> faces[6];
        for (unsigned int i = 0; i < 6; ++i) {
            faces[i] = readImage(folder + kCloudFaces[i]);
            if (!faces[i].valid())
                return;  // all six or none
        }
        for (unsigned int i = 0; i < 6; ++i)
            mCloudMap->setImage(i, faces[i].get());
        return;
    }

    loadUserMap();
    stateSet->setTextureAttributeAndModes(kSkyUnit, mUserMap.get(), kProtectedOn);
    stateSet->addUniform(new osg::Uniform("skybox", static_cast<int>(kSkyUnit)));
    // The user sky gets the cloud layer of the downward face on every side.
    if (osg::ref_ptr<osg::Image> cloud = readImage(folder + kCloudFaces[5])) {
        for (unsigned int i = 0; i < 6; ++i)
            mCloudMap->setImage(i, cloud.get());
    }
}

void CKVBackGroundSkyBox::loadUserMap()
{
    if (!mUserMap.valid())
        mUserMap = new osg::TextureCubeMap;
    CKVDDSImageListReader::ImageList faces;
    if (mCubeMapPath.empty() || !readCubeFile(mCubeMapPath, faces)) {
        faces.clear();
        for (std::string const& path : mFacePaths)
            faces.push_back(readImage(path));
    }
    for (unsigned int i = 0; i < 6; ++i)
        mUserMap->setImage(i, faces[i].get());
    clampLinear(*mUserMap);
}

void CKVBackGroundSkyBox::applyEnvironmentLighting(osg::StateSet* stateSet) const
{
    if (!stateSet)
        return;
    std::string const& source = mCubeMapPath.empty() ? mFacePaths[0] : mCubeMapPath;
    std::string::size_type slash = source.find_last_of('/');
    if (slash == std::string::npos)
        slash = source.find_last_of('\\');
    if (slash == std::string::npos)
        return;
    std::string const folder = source.substr(0, slash);

    auto cubeFromFile = [&](char const* name, osg::Texture::FilterMode minFilter) {
        osg::ref_ptr<osg::TextureCubeMap> map = new osg::TextureCubeMap;
        CKVDDSImageListReader::ImageList faces;
        if (readCubeFile(folder + name, faces)) {
            for (unsigned int i = 0; i < 6; ++i)
                map->setImage(i, faces[i].get());
        }
        clampLinear(*map);
        map->setFilter(osg::Texture::MIN_FILTER, minFilter);
        return map;
    };
    stateSet->setTextureAttributeAndModes(kIrradianceUnit, cubeFromFile("/irradiance.dds", osg::Texture::LINEAR).get());
    stateSet->addUniform(new osg::Uniform("IrradianceMap", static_cast<int>(kIrradianceUnit)));
    stateSet->setTextureAttributeAndModes(kPrefilterUnit,
                                          cubeFromFile("/radiance.dds", osg::Texture::LINEAR_MIPMAP_LINEAR).get());
    stateSet->addUniform(new osg::Uniform("PrefilterMap", static_cast<int>(kPrefilterUnit)));

    osg::ref_ptr<osg::Texture2D> brdf = new osg::Texture2D;
    if (osg::ref_ptr<osg::Image> image = readImage(folder + "/brdf.png"))
        brdf->setImage(image.get());
    brdf->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    brdf->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    brdf->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    brdf->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    stateSet->setTextureAttributeAndModes(kBrdfUnit, brdf.get());
    stateSet->addUniform(new osg::Uniform("BrdfLUT", static_cast<int>(kBrdfUnit)));
}

osg::ref_ptr<CBGGeometry> CKVBackGroundSkyBox::createSkySphere(float radius, unsigned int sectors,
                                                               unsigned int stacks)
{
    osg::ref_ptr<CBGGeometry> sphere = new CBGGeometry;
    if (sectors < 3 || stacks < 2)
        return sphere;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
    osg::ref_ptr<osg::Vec2Array> texCoords = new osg::Vec2Array;
    for (unsigned int i = 0; i <= stacks; ++i) {
        double const latitude = -osg::PI_2 + osg::PI * i / stacks;
        for (unsigned int j = 0; j <= sectors; ++j) {
            double const longitude = 2.0 * osg::PI * j / sectors;
            osg::Vec3f const normal(std::cos(latitude) * std::cos(longitude),
                                    std::cos(latitude) * std::sin(longitude), std::sin(latitude));
            normals->push_back(normal);
            vertices->push_back(normal * radius);
            texCoords->push_back(osg::Vec2f(float(j) / sectors, float(i) / stacks));
        }
    }
    osg::ref_ptr<osg::DrawElementsUInt> triangles = new osg::DrawElementsUInt(GL_TRIANGLES);
    unsigned int const row = sectors + 1;
    for (unsigned int i = 0; i < stacks; ++i) {
        for (unsigned int j = 0; j < sectors; ++j) {
            unsigned int const a = i * row + j;
            unsigned int const b = a + row;
            triangles->push_back(a);
            triangles->push_back(a + 1);
            triangles->push_back(b);
            triangles->push_back(a + 1);
            triangles->push_back(b + 1);
            triangles->push_back(b);
        }
    }
    sphere->setVertexArray(vertices.get());
    sphere->setNormalArray(normals.get(), osg::Array::BIND_PER_VERTEX);
    sphere->setTexCoordArray(0, texCoords.get());
    sphere->addPrimitiveSet(triangles.get());
    return sphere;
}

} // namespace Kelvor
