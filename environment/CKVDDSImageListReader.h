#pragma once

#include <osg/Image>
#include <osg/ref_ptr>
#include <osgDB/Options>
#include <osgDB/ReadFile>

#include <string>
#include <vector>

namespace Kelvor {

// Reads the faces of a DDS cube file into separate images. Callers ask for
// it the way image readers take extra inputs: the plugin data
// "dds_image_list" of the read options points at a
// std::vector<osg::ref_ptr<osg::Image>>, which the read fills with the six
// faces (+X, -X, +Y, -Y, +Z, -Z), each with its mipmap chain. Options made
// by `createOptions` carry a read callback that honours that entry; every
// other read passes through to the registry unchanged.
class CKVDDSImageListReader : public osgDB::ReadFileCallback
{
public:
    using ImageList = std::vector<osg::ref_ptr<osg::Image>>;

    static char const* const kPluginDataName;  // "dds_image_list"

    // Options from the registry's, with `list` as "dds_image_list" and this
    // reader as their read callback. `list` must outlive the read.
    static osg::ref_ptr<osgDB::Options> createOptions(ImageList* list);

    // The faces of a cube file, or of a plain texture its one image, each a
    // complete osg::Image. False, with `faces` empty and `error` (when given)
    // naming the file and the reason, for a file that is not a DDS file of a
    // format this reader knows or whose header asks for more than it holds.
    static bool readFaces(std::string const& path, ImageList& faces, std::string* error = nullptr);
    // The same from bytes in memory; `name` is what images and messages
    // carry as the file's name.
    static bool readFaces(unsigned char const* bytes, std::size_t size, std::string const& name,
                          ImageList& faces, std::string* error = nullptr);

    osgDB::ReaderWriter::ReadResult readImage(std::string const& filename,
                                              osgDB::Options const* options) override;

protected:
    ~CKVDDSImageListReader() override = default;
};

} // namespace Kelvor
