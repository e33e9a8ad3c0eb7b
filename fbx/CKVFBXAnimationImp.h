#pragma once

#include "fbx/CKVFBXSceneHandle.h"
#include "fbx/CKVOSGAnimationManager.h"

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickRender/CKVFBXAnimation.h"

#include <osg/Node>
#include <osg/ref_ptr>
#include <osgAnimation/Animation>

#include <utility>
#include <vector>

namespace Kelvor {

// A character read from an FBX file with named animation files that play on
// its skeleton. One clip is registered at a time: choosing another reads its
// file again, in the update stage where render commands are applied.
class CKVFBXAnimationImp : public CKVFBXAnimation
{
    KV_DECLARE_RUNTIME_CLASS(CKVFBXAnimationImp)
public:
    CKVFBXAnimationImp();
    ~CKVFBXAnimationImp() override;

    CKVFBXAnimationImp(CKVFBXAnimationImp const&) = delete;
    CKVFBXAnimationImp& operator=(CKVFBXAnimationImp const&) = delete;

    bool load(char const* path) override;
    bool addAnimation(char const* name, char const* path) override;
    unsigned int getAnimationCount() const override;
    char const* getAnimationName(unsigned int index) const override;

    // The character, for attaching under a scene node; null before load.
    osg::Node* getNode() const { return m_node.get(); }
    CKVOSGAnimationManager* getManager() const { return m_manager.get(); }
    // The clip registered last, named as it was asked for; null when none.
    osgAnimation::Animation* getCurrentAnimation() const { return m_current.get(); }

    // Plays the named clip from its start: of the entry's file, the clip of
    // that name (see ReaderWriterFBX::setClipName). The clip playing
    // already goes on; a stopped one restarts without reading its file.
    // After a change exactly one clip is registered. A name that is not in
    // the list is ignored: what plays goes on. An unreadable file leaves
    // nothing playing.
    void playAnimation(char const* name);
    void stopAll();

private:
    using Entry = std::pair<CKVAString, CKVAString>;

    // Members in the order they are released last to first.
    std::vector<Entry> m_animations;
    osg::ref_ptr<osg::Node> m_node;
    osg::ref_ptr<CKVFBXSceneHandle> m_fbxScene;
    osg::ref_ptr<CKVOSGAnimationManager> m_manager;
    osg::ref_ptr<osgAnimation::Animation> m_current;
};

// The animation factory registered with CKVRenderCallback: a resource of
// type 1 (FBX), null for any other type.
CKVAnimationResource* createAnimationResourceImp(unsigned int type);

} // namespace Kelvor
