#include "fbx/CKVFBXAnimationImp.h"

#include "fbx/ReaderWriterFBX.h"

#include <new>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVFBXAnimationImp, CKVFBXAnimation)

CKVAnimationResource* createAnimationResourceImp(unsigned int type)
{
    if (type != CKVAnimationResource::kFBX)
        return nullptr;
    return new (std::nothrow) CKVFBXAnimationImp();
}

CKVFBXAnimationImp::CKVFBXAnimationImp() = default;

CKVFBXAnimationImp::~CKVFBXAnimationImp()
{
    m_current = nullptr;
    m_manager = nullptr;
    m_fbxScene = nullptr;
    m_node = nullptr;
    m_animations.clear();
}

bool CKVFBXAnimationImp::load(char const* path)
{
    if (m_node.valid() || !path || !*path)
        return false;
    if (!m_manager.valid())
        m_manager = new CKVOSGAnimationManager;
    ReaderWriterFBX reader;
    reader.setAnimationManager(m_manager.get());
    osgDB::ReaderWriter::ReadResult result = reader.readNode(path, nullptr, &m_fbxScene);
    if (!result.validNode())
        return false;
    m_node = result.takeNode();
    return true;
}

bool CKVFBXAnimationImp::addAnimation(char const* name, char const* path)
{
    if (!m_fbxScene.valid() || !name)
        return false;
    CKVAString const key(name);
    for (Entry const& entry : m_animations) {
        if (entry.first == key)
            return false;
    }
    m_animations.emplace_back(key, CKVAString(path));
    return true;
}

unsigned int CKVFBXAnimationImp::getAnimationCount() const
{
    return static_cast<unsigned int>(m_animations.size());
}

char const* CKVFBXAnimationImp::getAnimationName(unsigned int index) const
{
    return index < m_animations.size() ? m_animations[index].first.c_str() : "";
}

void CKVFBXAnimationImp::playAnimation(char const* name)
{
    if (!m_manager.valid() || !m_fbxScene.valid())
        return;
    std::string const requested = name ? name : "";
    // An unknown name is ignored: whatever plays goes on, and nothing is
    // read or unregistered.
    Entry const* found = nullptr;
    for (Entry const& entry : m_animations) {
        if (requested == entry.first.c_str())
            found = &entry;
    }
    if (!found)
        return;
    if (m_current.valid() && m_current->getName() == requested) {
        if (!m_manager->isPlaying(m_current.get()))
            m_manager->playAnimation(m_current.get(), 0, 1.0f);
        return;
    }

    // One clip is registered at a time: the one played before, and any
    // the character's own file brought, go before the next is read.
    m_manager->stopAll();
    m_current = nullptr;
    osgAnimation::AnimationList const registered = m_manager->getAnimationList();
    for (osg::ref_ptr<osgAnimation::Animation> const& animation : registered)
        m_manager->removeRegisteredAnimation(animation.get());
    m_manager->setLastAnimation(nullptr);

    ReaderWriterFBX reader;
    reader.setAnimationManager(m_manager.get());
    // Of a file with several clips, the one of the requested name.
    reader.setClipName(requested);
    // Only the side effect counts: the clip is now registered on the
    // manager and delivered as its last animation.
    reader.readNode(found->second.c_str(), nullptr, &m_fbxScene);
    m_current = m_manager->getLastAnimation();
    if (m_current.valid()) {
        m_current->setName(requested);
        m_manager->playAnimation(m_current.get(), 0, 1.0f);
    }
}

void CKVFBXAnimationImp::stopAll()
{
    if (m_manager.valid())
        m_manager->stopAll();
}

} // namespace Kelvor
