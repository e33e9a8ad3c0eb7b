#pragma once

#include "scene/CKVSceneNodeImp.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"

#include <osg/Image>
#include <osg/StateSet>
#include <osg/Uniform>
#include <osgDB/WriteFile>
#include <osgUtil/UpdateVisitor>

#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

namespace Kelvor {
namespace MaterialTestSupport {

// A folder of its own for the images a test writes; removed at the end.
class TempFolder
{
public:
    TempFolder()
    {
        char pattern[] = "/tmp/tarnwick-material-XXXXXX";
        char* made = ::mkdtemp(pattern);
        mPath = made ? made : "/tmp";
    }
    ~TempFolder()
    {
        if (mPath != "/tmp" && std::system(("rm -rf '" + mPath + "'").c_str()) != 0)
            return;
    }
    std::string file(char const* name) const { return mPath + "/" + name; }

private:
    std::string mPath;
};

// An image of one colour; `format` GL_RGB, GL_RGBA or GL_LUMINANCE.
inline osg::ref_ptr<osg::Image> solidImage(int width, int height, GLenum format, unsigned char const* value)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(width, height, 1, format, GL_UNSIGNED_BYTE);
    unsigned int const channels = osg::Image::computeNumComponents(format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (unsigned int c = 0; c < channels; ++c)
                image->data(x, y)[c] = value[c];
    return image;
}

inline std::string writeImage(TempFolder const& folder, char const* name, osg::Image const& image)
{
    std::string const path = folder.file(name);
    osgDB::writeImageFile(image, path);
    return path;
}

// A file with an image name whose content no reader understands.
inline std::string writeGarbage(TempFolder const& folder, char const* name)
{
    std::string const path = folder.file(name);
    std::ofstream(path) << "this is not an image";
    return path;
}

// A host node with a material, brought up to date by one update traversal.
class MaterialNode
{
public:
    MaterialNode() : mNode(new CKVSceneNodeImp()) {}
    explicit MaterialNode(CKVBasicMaterial const* material) : MaterialNode() { apply(material); }

    // The material as the next frame's update traversal applies it.
    void apply(CKVBasicMaterial const* material)
    {
        setMaterial(material);
        update();
    }

    void setMaterial(CKVBasicMaterial const* material)
    {
        if (!mState) {
            mState = new CKVMaterialState(material);
            mNode->getStateSet()->addState(mState);
        } else {
            mState->setMaterial(material);
        }
    }

    void update()
    {
        osgUtil::UpdateVisitor visitor;
        mNode->getOSGNode()->accept(visitor);
    }

    osg::StateSet* stateSet() { return mNode->getOSGNode()->getStateSet(); }
    CKVSceneNodeImp& node() { return *mNode; }
    CKVMaterialState* state() { return mState; }

    template <class T>
    T uniformValue(char const* name)
    {
        T value{};
        osg::Uniform* uniform = stateSet() ? stateSet()->getUniform(name) : nullptr;
        if (uniform)
            uniform->get(value);
        return value;
    }

private:
    kv_shared_ptr<CKVSceneNodeImp> mNode;
    CKVMaterialState* mState = nullptr;
};

} // namespace MaterialTestSupport
} // namespace Kelvor
