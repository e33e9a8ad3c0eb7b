#include "models/CKVOSGBImport.h"

#include "models/CKVPagedLODResolver.h"
#include "models/CKVTileMeshConverter.h"
#include "models/CKVTilePath.h"

#include "TarnwickCommon/Common.h"

#include <osg/Geometry>
#include <osg/Image>
#include <osg/LOD>
#include <osg/Material>
#include <osg/Texture>
#include <osgDB/ReadFile>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <algorithm>
#include <cstring>
#include <new>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVOSGBImport, CKVModelImportExport)

namespace {

unsigned char channel(float value)
{
    return static_cast<unsigned char>(std::clamp(static_cast<int>(value * 255.0f), 0, 255));
}

} // namespace

CKVOSGBImport::CKVOSGBImport()
{
    m_materials.push_back(kv_shared_ptr<CKVBasicMaterial>(new CKVBasicMaterial));
}

CKVOSGBImport::~CKVOSGBImport() = default;

bool CKVOSGBImport::readModel(char const* path, kv_shared_ptr<CKVModelBase>& model)
{
    model = nullptr;
    kv_shared_ptr<CKVRenderLOD> lod = loadTile(path);
    if (!lod)
        return false;
    model = new (std::nothrow) CKVModelBase;
    if (!model)
        return false;
    model->addLOD(lod.get());
    return true;
}

kv_shared_ptr<CKVRenderLOD> CKVOSGBImport::loadTile(char const* path)
{
    if (!path || !*path)
        return nullptr;
    std::string const file = CKVTilePath::normalize(path);
    osg::ref_ptr<osg::Node> root = osgDB::readRefNodeFile(file, osgDB::Registry::instance()->getOptions());
    if (!root)
        return nullptr;
    CKVPagedLODResolver().resolve(*root, file);
    m_basePath = CKVTilePath::folderOf(file);

    kv_shared_ptr<CKVRenderLOD> lod(new CKVRenderLOD);
    walkNode(*root, *lod);
    return lod;
}

void CKVOSGBImport::walkNode(osg::Node& node, CKVRenderLOD& lod)
{
    pushMaterial(node.getStateSet());
    if (osg::Geometry* geometry = node.asGeometry())
        addGeometry(*geometry, lod);
    else if (osg::Group* group = node.asGroup())
        walkGroup(*group, lod);
    popMaterial();
}

void CKVOSGBImport::walkGroup(osg::Group& group, CKVRenderLOD& lod)
{
    char const* const name = group.className();
    if (std::strcmp(name, "PagedLOD") == 0 || std::strcmp(name, "LOD") == 0) {
        walkLOD(static_cast<osg::LOD&>(group), lod);
        return;
    }
    for (unsigned int i = 0; i < group.getNumChildren(); ++i) {
        osg::Node* child = group.getChild(i);
        if (!child)
            continue;
        if (child->asGroup()) {
            kv_shared_ptr<CKVRenderLOD> childLOD(new CKVRenderLOD);
            lod.addChildLOD(childLOD.get());
            walkNode(*child, *childLOD);
        } else {
            walkNode(*child, lod);
        }
    }
}

void CKVOSGBImport::walkLOD(osg::LOD& node, CKVRenderLOD& lod)
{
    lod.setLoadMode(node.getRangeMode() == osg::LOD::PIXEL_SIZE_ON_SCREEN ? CKVRenderLOD::kPixelSize
                                                                         : CKVRenderLOD::kEyeDistance);
    lod.setCullingChild(true);
    for (unsigned int i = 0; i < node.getNumRanges(); ++i) {
        kv_shared_ptr<CKVRenderLOD> rangeLOD(new CKVRenderLOD);
        rangeLOD->setLoadDistance(node.getMinRange(i), node.getMaxRange(i));
        lod.addChildLOD(rangeLOD.get());
        if (i < node.getNumChildren() && node.getChild(i))
            walkNode(*node.getChild(i), *rangeLOD);
    }
}

void CKVOSGBImport::addGeometry(osg::Geometry const& geometry, CKVRenderLOD& lod)
{
    kv_shared_ptr<CKVMesh> mesh = CKVTileMeshConverter::convert(geometry);
    if (mesh)
        lod.addGeometry(m_materials.back().get(), mesh.get());
}

void CKVOSGBImport::pushMaterial(osg::StateSet const* stateSet)
{
    if (!stateSet) {
        m_materials.push_back(m_materials.back());
        return;
    }
    std::string const texture = unpackTexture(*stateSet);
    kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial(*m_materials.back()));
    if (osg::StateAttribute const* attribute = stateSet->getAttribute(osg::StateAttribute::MATERIAL)) {
        osg::Vec4 const diffuse = static_cast<osg::Material const*>(attribute)->getDiffuse(osg::Material::FRONT_AND_BACK);
        material->setRGBA(channel(diffuse.r()), channel(diffuse.g()), channel(diffuse.b()), channel(diffuse.a()));
    }
    if (!texture.empty())
        material->setTexture(texture.c_str());
    m_materials.push_back(material);
}

void CKVOSGBImport::popMaterial()
{
    // The default material at the bottom stays for the next walk.
    if (m_materials.size() > 1)
        m_materials.pop_back();
}

std::string CKVOSGBImport::unpackTexture(osg::StateSet const& stateSet) const
{
    osg::Image const* image = nullptr;
    for (auto const& unit : stateSet.getTextureAttributeList()) {
        for (auto const& entry : unit) {
            osg::Texture const* texture = entry.second.first.valid() ? entry.second.first->asTexture() : nullptr;
            if (texture && texture->getImage(0)) {
                image = texture->getImage(0);
                break;
            }
        }
        if (image)
            break;
    }
    // An image without a name has nowhere to go beside the tile.
    if (!image || image->getFileName().empty())
        return std::string();
    std::string const path = CKVTilePath::join(m_basePath, image->getFileName());
    if (Common::checkFile(path.c_str()))
        return path;
    if (osgDB::writeImageFile(*image, path, osgDB::Registry::instance()->getOptions()))
        return path;
    return std::string();
}

} // namespace Kelvor
