#include "viewer/CKVCullVisitor.h"

namespace Kelvor {

CKVCullVisitor::CKVCullVisitor() = default;

CKVCullVisitor::CKVCullVisitor(CKVCullVisitor const& other)
    : osg::Object(other)
    , CKVMatrixCullVisitor(other)
{
}

CKVCullVisitor::~CKVCullVisitor() = default;

osgUtil::CullVisitor* CKVCullVisitor::clone() const
{
    return new CKVCullVisitor(*this);
}

} // namespace Kelvor
