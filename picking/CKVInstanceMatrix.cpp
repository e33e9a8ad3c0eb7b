#include "picking/CKVInstanceMatrix.h"

#include <cstring>

namespace Kelvor {

char const* const CKVInstanceMatrix::s_className = "CKVInstanceMatrix";

CKVInstanceMatrix::CKVInstanceMatrix(osg::Matrixd const& matrix, unsigned int instanceIndex)
    : osg::RefMatrixd(matrix)
    , mInstanceIndex(instanceIndex)
{
}

CKVInstanceMatrix::~CKVInstanceMatrix() = default;

char const* CKVInstanceMatrix::libraryName() const
{
    return "Kelvor";
}

char const* CKVInstanceMatrix::className() const
{
    return s_className;
}

osg::Object* CKVInstanceMatrix::cloneType() const
{
    return new CKVInstanceMatrix(osg::Matrixd(), 0);
}

osg::Object* CKVInstanceMatrix::clone(osg::CopyOp const&) const
{
    return new CKVInstanceMatrix(*this, mInstanceIndex);
}

bool CKVInstanceMatrix::isSameKindAs(osg::Object const* object) const
{
    return object && std::strcmp(object->className(), s_className) == 0;
}

unsigned int CKVInstanceMatrix::instanceIndexOf(osg::RefMatrixd const* matrix)
{
    if (!matrix || std::strcmp(matrix->className(), s_className) != 0)
        return 0;
    return static_cast<CKVInstanceMatrix const*>(matrix)->getInstanceIndex();
}

} // namespace Kelvor
