#pragma once

#include "environment/CBGGeode.h"

#include "TarnwickCommon/CKVSharedObject.h"

#include <osg/ref_ptr>

namespace Kelvor {

// What paints behind the scene. Each kind builds its drawing under one
// CBGGeode, which the render context swaps in and out of the scene; the
// object itself lives as long as the context, so switching back finds it
// ready.
class CKVBackGround : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVBackGround)
public:
    CKVBackGround();
    ~CKVBackGround() override;

    // Builds the drawing; the base has none.
    virtual void initialize() {}

    CBGGeode* getNode() const { return mNode.get(); }

protected:
    osg::ref_ptr<CBGGeode> mNode;
};

} // namespace Kelvor
