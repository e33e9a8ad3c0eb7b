#include "apps/view/ViewOsgFileImporter.h"

#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickStream/CKVRenderLOD.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Material>
#include <osg/NodeVisitor>
#include <osg/TriangleIndexFunctor>
#include <osgDB/ReadFile>

#include <map>
#include <tuple>

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

using Colour = std::tuple<unsigned char, unsigned char, unsigned char, unsigned char>;

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

class MeshCollector : public osg::NodeVisitor
{
public:
    MeshCollector() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Drawable& drawable) override
    {
        osg::Geometry* geometry = drawable.asGeometry();
        if (geometry)
            collect(*geometry);
    }

    std::map<Colour, std::vector<kv_shared_ptr<CKVMesh>>> meshes;

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
        meshes[colour].push_back(mesh);
    }
};

} // namespace

ViewOsgFileImporter::ViewOsgFileImporter() = default;
ViewOsgFileImporter::~ViewOsgFileImporter() = default;

std::vector<std::string> ViewOsgFileImporter::extensions()
{
    // The formats whose reader-writers Debian's OpenSceneGraph ships;
    // "osgb" is left to the tile-set importer.
    return {"osg", "osgt", "osgx", "ive", "obj", "3ds", "dae", "x", "stl", "ply", "lwo", "ac", "flt"};
}

bool ViewOsgFileImporter::readModel(char const* path, kv_shared_ptr<CKVModelBase>& model)
{
    model = nullptr;
    if (!path)
        return false;
    osg::ref_ptr<osg::Node> node = osgDB::readRefNodeFile(path);
    if (!node)
        return false;
    MeshCollector collector;
    node->accept(collector);
    if (collector.meshes.empty())
        return false;

    kv_shared_ptr<CKVRenderLOD> level(new CKVRenderLOD);
    for (auto const& [colour, meshes] : collector.meshes) {
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(std::get<0>(colour), std::get<1>(colour), std::get<2>(colour), std::get<3>(colour));
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
