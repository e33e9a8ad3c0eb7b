#pragma once

#include <osg/GL>
#include <osg/Referenced>

namespace osg {
class State;
}

namespace Kelvor {

// The two driver calls that turn a texture object into a resident bindless
// handle. Kept behind this small interface so that the bookkeeping around
// them (when handles are made, when they are made again) can be exercised on
// drivers that have no bindless textures at all.
class KVBindlessHandleMaker : public osg::Referenced
{
public:
    // False where handles cannot be made in `state`'s context; nothing else
    // is then called and every handle stays 0.
    virtual bool isAvailable(osg::State& state) const = 0;
    virtual GLuint64 getTextureHandle(osg::State& state, GLuint textureId) const = 0;
    virtual void makeTextureHandleResident(osg::State& state, GLuint64 handle) const = 0;

    // The maker that calls the driver through osg::GLExtensions; available
    // only where the driver check found bindless textures usable.
    static KVBindlessHandleMaker* getDriverMaker();

protected:
    ~KVBindlessHandleMaker() override = default;
};

} // namespace Kelvor
