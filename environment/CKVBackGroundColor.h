#pragma once

#include "environment/CKVBackGround.h"

#include <osg/Uniform>
#include <osg/Vec3f>
#include <osg/ref_ptr>

namespace Kelvor {

// A vertical gradient over the whole viewport, drawn at the far plane by one
// full-screen triangle. A solid colour is the gradient with equal ends.
class CKVBackGroundColor : public CKVBackGround
{
    KV_DECLARE_RUNTIME_CLASS(CKVBackGroundColor)
public:
    CKVBackGroundColor();
    ~CKVBackGroundColor() override;

    // Builds the drawing once; later calls change nothing.
    void initialize() override;

    // RGB triples; each becomes opaque.
    void setColors(osg::Vec3f const& top, osg::Vec3f const& bottom);
    void getColors(osg::Vec3f& top, osg::Vec3f& bottom) const;

    // The viewport height in pixels: the gradient runs over it.
    void setHeight(float height);
    float getHeight() const;

private:
    osg::ref_ptr<osg::Uniform> mTopColor;
    osg::ref_ptr<osg::Uniform> mBottomColor;
    osg::ref_ptr<osg::Uniform> mHeight;
    bool mInitialized = false;
};

} // namespace Kelvor
