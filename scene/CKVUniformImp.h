#pragma once

#include "TarnwickRender/CKVUniform.h"

#include <osg/Uniform>
#include <osg/ref_ptr>

namespace Kelvor {

// The host's typed shader value kept in one osg::Uniform of the matching
// type. Every setter goes through the base first, which refuses a value of
// the wrong type, so the host's copy and the osg::Uniform stay in step.
class CKVUniformImp : public CKVUniform
{
    KV_DECLARE_RUNTIME_CLASS(CKVUniformImp)
public:
    // Without a valid type (as made by name) there is no osg::Uniform and
    // every setter answers false.
    CKVUniformImp();
    CKVUniformImp(char const* name, unsigned int type);
    ~CKVUniformImp() override;

    // Replaces the osg::Uniform by a new one of `count` elements. A node that
    // already holds the old one keeps it, so call this before adding the
    // uniform to a node.
    bool setNumElements(unsigned int count) override;

    using CKVUniform::setValue;
    bool setElement(float const (&value)[4], unsigned int index) override;
    bool setValue(float const (&value)[4]) override;
    bool setValue(float const (&value)[3]) override;
    bool setValue(float const (&value)[2]) override;
    bool setValue(float value) override;
    bool setValue(unsigned int const (&value)[4]) override;
    bool setValue(unsigned int const (&value)[3]) override;
    bool setValue(unsigned int const (&value)[2]) override;
    bool setValue(unsigned int value) override;
    bool setValue(int const (&value)[4]) override;
    bool setValue(int const (&value)[3]) override;
    bool setValue(int const (&value)[2]) override;
    bool setValue(int value) override;
    bool setValue(bool value) override;

    // Null for an invalid type.
    osg::Uniform* getOSGUniform() const { return mUniform.get(); }

    // The osg::Uniform type of a host data type; false outside 1 to 13.
    static bool osgTypeOf(unsigned int type, osg::Uniform::Type& osgType);

private:
    // Whether a value of `type` may be set now.
    bool accepts(DataType type) const { return mUniform.valid() && getDataType() == type; }

    osg::ref_ptr<osg::Uniform> mUniform;
};

// Factory for the host's table: null, allocating nothing, for a type outside
// 1 to 13.
CKVUniform* createUniformImp(char const* name, unsigned int type);

} // namespace Kelvor
