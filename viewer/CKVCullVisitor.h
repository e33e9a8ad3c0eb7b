#pragma once

#include "viewer/CKVMatrixCullVisitor.h"

namespace Kelvor {

// The cull visitor of every backend scene view. Its base keeps the model and
// view matrices apart for the shaders' uniform blocks; being our own class is
// what lets the scene passes recognise it by class name.
class CKVCullVisitor : public CKVMatrixCullVisitor
{
public:
    CKVCullVisitor();
    CKVCullVisitor(CKVCullVisitor const& other);

    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CKVCullVisitor"; }

    using osg::NodeVisitor::clone;
    // The renderer makes the left and right eye visitors by cloning the
    // central one, so the clone has to stay a CKVCullVisitor.
    osgUtil::CullVisitor* clone() const override;

protected:
    ~CKVCullVisitor() override;
};

} // namespace Kelvor
