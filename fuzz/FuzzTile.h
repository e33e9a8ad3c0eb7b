#pragma once

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Group>
#include <osg/Image>
#include <osg/LOD>
#include <osg/Material>
#include <osg/Texture2D>
#include <osgDB/FileUtils>
#include <osgDB/FileNameUtils>
#include <osgDB/Options>
#include <osgDB/WriteFile>

#include <cstring>
#include <string>

namespace Kelvor {

// A small tile of the kind photogrammetry tile sets hold: a level-of-detail
// node with a coarse and a fine range, a material, and a texture image
// embedded in the file. The tile seeds of the corpora are written with it.
struct FuzzTile
{
    static osg::ref_ptr<osg::Geometry> quad(float size)
    {
        osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
        vertices->push_back({0, 0, 0});
        vertices->push_back({size, 0, 0});
        vertices->push_back({size, size, 0});
        vertices->push_back({0, size, 0});
        osg::ref_ptr<osg::Vec2Array> uv = new osg::Vec2Array;
        uv->push_back({0, 0});
        uv->push_back({1, 0});
        uv->push_back({1, 1});
        uv->push_back({0, 1});
        geometry->setVertexArray(vertices);
        geometry->setTexCoordArray(0, uv);
        osg::ref_ptr<osg::DrawElementsUShort> triangles = new osg::DrawElementsUShort(GL_TRIANGLES);
        for (unsigned short i : {0, 1, 2, 0, 2, 3})
            triangles->push_back(i);
        geometry->addPrimitiveSet(triangles);
        return geometry;
    }

    static bool write(std::string const& path)
    {
        osgDB::makeDirectoryForFile(path);
        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->allocateImage(2, 2, 1, GL_RGB, GL_UNSIGNED_BYTE);
        std::memset(image->data(), 180, image->getTotalSizeInBytes());
        image->setFileName("Tile_0.png");
        osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(image);
        osg::ref_ptr<osg::Material> material = new osg::Material;
        material->setDiffuse(osg::Material::FRONT_AND_BACK, osg::Vec4(0.8f, 0.6f, 0.4f, 1.0f));

        osg::ref_ptr<osg::Geode> coarse = new osg::Geode;
        coarse->addDrawable(quad(2.0f));
        coarse->getOrCreateStateSet()->setTextureAttribute(0, texture);
        coarse->getOrCreateStateSet()->setAttribute(material);
        osg::ref_ptr<osg::Group> fine = new osg::Group;
        fine->addChild(quad(1.0f));
        fine->addChild(quad(0.5f));

        osg::ref_ptr<osg::LOD> lod = new osg::LOD;
        lod->addChild(coarse, 0.0f, 100.0f);
        lod->addChild(fine, 100.0f, 1e6f);
        osg::ref_ptr<osgDB::Options> options = new osgDB::Options("WriteImageHint=IncludeData");
        return osgDB::writeNodeFile(*lod, path, options.get());
    }
};

} // namespace Kelvor
