#pragma once

#include "environment/CKVBackGround.h"

#include <osg/Uniform>
#include <osg/ref_ptr>

#include <string>

namespace Kelvor {

// A picture drawn over the whole screen behind water, tiled at its own pixel
// size rather than stretched. Pixels of alpha 0 leave the screen as it is.
class CKVBackGroundWaterMask : public CKVBackGround
{
    KV_DECLARE_RUNTIME_CLASS(CKVBackGroundWaterMask)
public:
    CKVBackGroundWaterMask();
    ~CKVBackGroundWaterMask() override;

    // The picture's file and its size in pixels.
    void setImage(std::string const& path, int width, int height);
    // The render size in pixels; the picture repeats across it.
    void setViewport(int width, int height);

    // Reads the picture and builds the drawing. Without a readable picture
    // the node stays empty. Later calls change nothing.
    void initialize() override;

    std::string const& getPath() const { return mPath; }
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }

private:
    std::string mPath;
    int mWidth = 0;
    int mHeight = 0;
    osg::ref_ptr<osg::Uniform> mViewPort;
    bool mInitialized = false;
};

} // namespace Kelvor
