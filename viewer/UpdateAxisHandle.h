#pragma once

#include <osg/View>

namespace Kelvor {

// The axis handle's slave callback. Left to itself, OpenSceneGraph would
// rebuild the slave's view and projection from the master's every frame;
// the handle sets its own (CKVAxisHandle::update), so this does nothing.
class UpdateAxisHandle : public osg::View::Slave::UpdateSlaveCallback
{
public:
    void updateSlave(osg::View& view, osg::View::Slave& slave) override;

protected:
    ~UpdateAxisHandle() override;
};

} // namespace Kelvor
