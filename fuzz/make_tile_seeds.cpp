// Writes the tile seeds of the osgb target (fuzz/corpus/osgb):
//   g++ -std=c++17 -Ifuzz fuzz/make_tile_seeds.cpp -losgDB -losg -lOpenThreads -o /tmp/seeds && /tmp/seeds fuzz/corpus/osgb
#include "FuzzTile.h"
#include <osg/PagedLOD>
int main(int, char** argv)
{
    bool ok = Kelvor::FuzzTile::write(std::string(argv[1]) + "/lod-texture.osgb");
    osg::ref_ptr<osg::PagedLOD> paged = new osg::PagedLOD;
    paged->addChild(Kelvor::FuzzTile::quad(1.0f), 0.0f, 50.0f);
    paged->setFileName(1, "lod-texture.osgb");
    paged->setRange(1, 50.0f, 1e6f);
    paged->setRangeMode(osg::LOD::PIXEL_SIZE_ON_SCREEN);
    ok = osgDB::writeNodeFile(*paged, std::string(argv[1]) + "/paged.osgb") && ok;
    return ok ? 0 : 1;
}
