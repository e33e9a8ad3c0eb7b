#pragma once

#include <osgAnimation/Animation>
#include <osgAnimation/BasicAnimationManager>

namespace Kelvor {

// The animation manager of one character. Besides playing what is
// registered on it, it remembers the animation that the FBX reader
// delivered last, which is how a reader hands a clip to its caller.
class CKVOSGAnimationManager : public osgAnimation::BasicAnimationManager
{
public:
    static char const* const s_className;

    CKVOSGAnimationManager();
    CKVOSGAnimationManager(CKVOSGAnimationManager const& other,
                           osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override;
    osg::Object* clone(osg::CopyOp const& copyop) const override;
    bool isSameKindAs(osg::Object const* object) const override;
    char const* libraryName() const override;
    char const* className() const override;

    void setLastAnimation(osgAnimation::Animation* animation) { m_lastAnimation = animation; }
    osgAnimation::Animation* getLastAnimation() const { return m_lastAnimation.get(); }

protected:
    ~CKVOSGAnimationManager() override;

private:
    osg::ref_ptr<osgAnimation::Animation> m_lastAnimation;
};

} // namespace Kelvor
