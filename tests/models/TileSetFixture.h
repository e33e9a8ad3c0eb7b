#pragma once

// Tile sets made on the spot: tiles written with OpenSceneGraph's own binary
// writer (PagedLOD file names, ranges and embedded images survive the round
// trip), descriptors written as text, all in a fresh folder per test.

#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickStream/CKVModelBase.h"
#include "TarnwickStream/CKVRenderLOD.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Material>
#include <osg/PrimitiveSet>
#include <osgDB/FileUtils>
#include <osgDB/Options>
#include <osgDB/WriteFile>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace Kelvor {

class TileSetFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string pattern = std::string(::testing::TempDir()) + "tiles_XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        mRoot = pattern;
    }

    void TearDown() override
    {
        std::error_code ignored;
        if (!mRoot.empty())
            std::filesystem::remove_all(mRoot, ignored);
    }

    std::string path(std::string const& relative) const { return mRoot + "/" + relative; }

public:
    // A square of two triangles of side 1 whose lower left corner is at (x, 0, 0).
    static osg::ref_ptr<osg::Geometry> square(float x, float z = 0.0f)
    {
        osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
        vertices->push_back(osg::Vec3(x, 0, z));
        vertices->push_back(osg::Vec3(x + 1, 0, z));
        vertices->push_back(osg::Vec3(x + 1, 1, z));
        vertices->push_back(osg::Vec3(x, 1, z));
        geometry->setVertexArray(vertices.get());
        osg::ref_ptr<osg::DrawElementsUInt> indices = new osg::DrawElementsUInt(GL_TRIANGLES);
        for (unsigned int i : {0u, 1u, 2u, 0u, 2u, 3u})
            indices->push_back(i);
        geometry->addPrimitiveSet(indices.get());
        return geometry;
    }

    static osg::ref_ptr<osg::Geode> squareNode(float x, float z = 0.0f)
    {
        osg::ref_ptr<osg::Geode> geode = new osg::Geode;
        geode->addDrawable(square(x, z).get());
        return geode;
    }

    static void setColour(osg::Node& node, osg::Vec4 const& colour)
    {
        osg::ref_ptr<osg::Material> material = new osg::Material;
        material->setDiffuse(osg::Material::FRONT_AND_BACK, colour);
        node.getOrCreateStateSet()->setAttribute(material.get());
    }

protected:
    // Images go into the tile, as tile sets carry them.
    bool writeTile(osg::Node const& node, std::string const& relative) const
    {
        std::string const file = path(relative);
        if (!osgDB::makeDirectoryForFile(file))
            return false;
        osg::ref_ptr<osgDB::Options> options = new osgDB::Options("WriteImageHint=IncludeData");
        return osgDB::writeNodeFile(node, file, options.get());
    }

    bool writeText(std::string const& relative, std::string const& text) const
    {
        std::string const file = path(relative);
        if (!osgDB::makeDirectoryForFile(file))
            return false;
        std::ofstream out(file, std::ios::binary);
        out << text;
        return bool(out);
    }

    // A one-square tile at x, the usual member of a tile set.
    bool writeSquareTile(std::string const& relative, float x) const
    {
        return writeTile(*squareNode(x), relative);
    }

public:
    static CKVMesh const* meshOf(CKVRenderLOD const& lod, unsigned int index)
    {
        if (index >= lod.getNumGeometry())
            return nullptr;
        CKVGeometry const* geometry = lod.getGeometry(index).geometry.get();
        if (!geometry || !geometry->isKindOf(CKVMesh::desc()))
            return nullptr;
        return static_cast<CKVMesh const*>(geometry);
    }

    // The x of the first point of the first mesh, depth first: which square a
    // tile holds. NaN-free sentinel -1 when there is none.
    static float firstX(CKVRenderLOD const& lod)
    {
        if (CKVMesh const* mesh = meshOf(lod, 0))
            return mesh->getPoints()[0].x;
        for (unsigned int i = 0; i < lod.getNumChildLOD(); ++i) {
            float const x = firstX(*lod.getChildLOD(i));
            if (x != -1.0f)
                return x;
        }
        return -1.0f;
    }

    static std::vector<float> tileXs(CKVModelBase const& model)
    {
        std::vector<float> xs;
        for (unsigned int i = 0; i < model.getNumLOD(); ++i)
            xs.push_back(firstX(*model.getLOD(i)));
        return xs;
    }

protected:
    std::string mRoot;
};

} // namespace Kelvor
