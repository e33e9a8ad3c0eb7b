#pragma once

#include <osg/Matrixd>

namespace Kelvor {

// The model matrix of one instance of an instanced geometry, as the
// intersection visitor pushes it while it tries that instance. It also names
// the instance: OpenSceneGraph's line intersection records have no instance
// index, but they keep the model matrix of the hit, so the index rides along
// in the matrix and survives the records' sort.
class CKVInstanceMatrix : public osg::RefMatrixd
{
public:
    static char const* const s_className;

    CKVInstanceMatrix(osg::Matrixd const& matrix, unsigned int instanceIndex);

    char const* libraryName() const override;
    char const* className() const override;
    osg::Object* cloneType() const override;
    osg::Object* clone(osg::CopyOp const&) const override;
    bool isSameKindAs(osg::Object const* object) const override;

    unsigned int getInstanceIndex() const { return mInstanceIndex; }

    // The instance a record's matrix names; 0 for any other matrix, as for a
    // hit outside an instance loop.
    static unsigned int instanceIndexOf(osg::RefMatrixd const* matrix);

protected:
    ~CKVInstanceMatrix() override;

private:
    unsigned int mInstanceIndex;
};

} // namespace Kelvor
