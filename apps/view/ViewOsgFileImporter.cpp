#include "apps/view/ViewOsgFileImporter.h"

#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickStream/CKVRenderLOD.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Material>
#include <osg/NodeVisitor>
#include <osg/Texture>
#include <osg/TriangleIndexFunctor>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/ReadFile>

#include <cmath>
#include <map>
#include <tuple>
#include <utility>

namespace Kelvor {

namespace {

struct TriangleCollector
{
    std::vector<CKVVec3<unsigned int>>* triangles = nullptr;
    void operator()(unsigned int a, unsigned int b, unsigned int c)
    {
        triangles->push_back(CKVVec3<unsigned int>{a, b, c});
    }
};

// Beyond a million kilometres, or no number at all: no real model has such
// coordinates, but a reader that takes noise for a model gives them.
constexpr double kMaxCoordinate = 1.0e9;

bool plausible(osg::Vec3d const& p)
{
    for (int i = 0; i < 3; ++i) {
        if (!std::isfinite(p[i]) || std::fabs(p[i]) > kMaxCoordinate)
            return false;
    }
    return true;
}

using Colour = std::tuple<unsigned char, unsigned char, unsigned char, unsigned char>;
// Meshes share a material when colour and texture file agree.
using Look = std::pair<Colour, std::string>;

unsigned char toByte(float value)
{
    value = value < 0.0f ? 0.0f : (value > 1.0f ? 1.0f : value);
    return static_cast<unsigned char>(value * 255.0f + 0.5f);
}

Colour toColour(osg::Vec4 const& rgba)
{
    return Colour(toByte(rgba.r()), toByte(rgba.g()), toByte(rgba.b()), toByte(rgba.a()));
}

// The nearest osg::Material on the way from the geometry up to the root
// decides the colour, as it would in OpenSceneGraph's own rendering
// (override flags aside).
bool materialColour(osg::Geometry const& geometry, osg::NodePath const& path, Colour& out)
{
    auto fromStateSet = [&out](osg::StateSet const* stateSet) {
        if (!stateSet)
            return false;
        auto const* material =
            dynamic_cast<osg::Material const*>(stateSet->getAttribute(osg::StateAttribute::MATERIAL));
        if (!material)
            return false;
        out = toColour(material->getDiffuse(osg::Material::FRONT));
        return true;
    };
    if (fromStateSet(geometry.getStateSet()))
        return true;
    for (auto it = path.rbegin(); it != path.rend(); ++it) {
        if (fromStateSet((*it)->getStateSet()))
            return true;
    }
    return false;
}

// The image file of the nearest texture on unit 0, as a path the backend can
// open: model formats name their images relative to the model's folder. Empty
// when there is none or the file cannot be found.
std::string textureFile(osg::Geometry const& geometry, osg::NodePath const& path, std::string const& folder)
{
    auto fromStateSet = [](osg::StateSet const* stateSet) -> osg::Image const* {
        if (!stateSet)
            return nullptr;
        auto const* texture =
            dynamic_cast<osg::Texture const*>(stateSet->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
        return texture && texture->getNumImages() > 0 ? texture->getImage(0) : nullptr;
    };
    osg::Image const* image = fromStateSet(geometry.getStateSet());
    for (auto it = path.rbegin(); !image && it != path.rend(); ++it)
        image = fromStateSet((*it)->getStateSet());
    if (!image || image->getFileName().empty())
        return std::string();
    std::string const& name = image->getFileName();
    for (std::string const& candidate : {name, osgDB::concatPaths(folder, name)}) {
        if (osgDB::fileType(candidate) == osgDB::REGULAR_FILE)
            return osgDB::getRealPath(candidate);
    }
    return osgDB::findDataFile(name);
}

class MeshCollector : public osg::NodeVisitor
{
public:
    explicit MeshCollector(std::string folder)
        : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN)
        , mFolder(std::move(folder))
    {
    }

    void apply(osg::Drawable& drawable) override
    {
        osg::Geometry* geometry = drawable.asGeometry();
        if (geometry)
            collect(*geometry);
    }

    std::map<Look, std::vector<kv_shared_ptr<CKVMesh>>> meshes;

private:
    void collect(osg::Geometry& geometry)
    {
        auto const* vertices = dynamic_cast<osg::Vec3Array const*>(geometry.getVertexArray());
        if (!vertices || vertices->empty())
            return;
        std::vector<CKVVec3<unsigned int>> triangles;
        osg::TriangleIndexFunctor<TriangleCollector> functor;
        functor.triangles = &triangles;
        geometry.accept(functor);
        if (triangles.empty())
            return;

        osg::Matrixd const world = osg::computeLocalToWorld(getNodePath());
        std::vector<CKVVec3<float>> points;
        points.reserve(vertices->size());
        for (osg::Vec3 const& v : *vertices) {
            osg::Vec3d const p = osg::Vec3d(v) * world;
            if (!plausible(p))
                return;
            points.push_back(CKVVec3<float>{float(p.x()), float(p.y()), float(p.z())});
        }
        kv_shared_ptr<CKVMesh> mesh(new CKVMesh);
        mesh->setPoint(points.data(), static_cast<unsigned int>(points.size()));
        mesh->setTriangle(triangles.data(), static_cast<unsigned int>(triangles.size()));

        auto const* normals = dynamic_cast<osg::Vec3Array const*>(geometry.getNormalArray());
        if (normals && normals->size() == vertices->size() &&
            geometry.getNormalArray()->getBinding() == osg::Array::BIND_PER_VERTEX) {
            // Normals go through the inverse transpose, so that scaled
            // models keep them perpendicular.
            osg::Matrixd const inverse = osg::Matrixd::inverse(world);
            std::vector<CKVVec3<float>> turned;
            turned.reserve(normals->size());
            for (osg::Vec3 const& n : *normals) {
                osg::Vec3d t = osg::Matrixd::transform3x3(inverse, osg::Vec3d(n));
                t.normalize();
                turned.push_back(CKVVec3<float>{float(t.x()), float(t.y()), float(t.z())});
            }
            mesh->setNormal(turned.data(), static_cast<unsigned int>(turned.size()));
        }

        // Grey when the file says nothing about colour.
        Colour colour(200, 200, 200, 255);
        osg::NodePath const& path = getNodePath();
        if (!materialColour(geometry, path, colour)) {
            auto const* colours = dynamic_cast<osg::Vec4Array const*>(geometry.getColorArray());
            if (colours && !colours->empty())
                colour = toColour(colours->front());
        }
        std::string texture;
        auto const* uv = dynamic_cast<osg::Vec2Array const*>(geometry.getTexCoordArray(0));
        if (uv && uv->size() == vertices->size()) {
            texture = textureFile(geometry, path, mFolder);
            if (!texture.empty()) {
                std::vector<CKVVec2<float>> coordinates;
                coordinates.reserve(uv->size());
                for (osg::Vec2 const& c : *uv)
                    coordinates.push_back(CKVVec2<float>{c.x(), c.y()});
                mesh->setUV(coordinates.data(), static_cast<unsigned int>(coordinates.size()));
            }
        }
        meshes[Look(colour, texture)].push_back(mesh);
    }

    std::string mFolder;
};

} // namespace

ViewOsgFileImporter::ViewOsgFileImporter() = default;
ViewOsgFileImporter::~ViewOsgFileImporter() = default;

std::vector<std::string> ViewOsgFileImporter::extensions()
{
    // The formats whose reader-writers Debian's OpenSceneGraph ships, and
    // FBX, whose reader-writer the backend registers; "osgb" is left to the
    // tile-set importer.
    return {"osg", "osgt", "osgx", "ive", "obj", "3ds", "dae", "x", "stl", "ply", "lwo", "ac", "flt", "fbx"};
}

bool ViewOsgFileImporter::readModel(char const* path, kv_shared_ptr<CKVModelBase>& model)
{
    model = nullptr;
    if (!path)
        return false;
    osg::ref_ptr<osg::Node> node = osgDB::readRefNodeFile(path);
    if (!node)
        return false;
    MeshCollector collector(osgDB::getFilePath(path));
    node->accept(collector);
    if (collector.meshes.empty())
        return false;

    kv_shared_ptr<CKVRenderLOD> level(new CKVRenderLOD);
    for (auto const& [look, meshes] : collector.meshes) {
        Colour const& colour = look.first;
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(std::get<0>(colour), std::get<1>(colour), std::get<2>(colour), std::get<3>(colour));
        if (!look.second.empty())
            material->setTexture(look.second.c_str());
        material->setSortTransparency(std::get<3>(colour) < 255);
        for (kv_shared_ptr<CKVMesh> const& mesh : meshes)
            level->addGeometry(material.get(), mesh.get());
    }
    kv_shared_ptr<CKVModelBase> result(new CKVModelBase);
    result->addLOD(level.get());
    model = result;
    return true;
}

} // namespace Kelvor
