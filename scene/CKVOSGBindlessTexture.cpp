#include "scene/CKVOSGBindlessTexture.h"

#include "scene/KVBindlessHandleUniform.h"

#include <osg/State>
#include <osg/StateSet>

namespace Kelvor {

namespace {

void storeHandle(osg::Uniform& uniform, GLuint64 handle)
{
    if (auto* bindless = dynamic_cast<KVBindlessHandleUniform*>(&uniform))
        bindless->set(handle, true);
    else
        uniform.set(static_cast<unsigned long long>(handle));
}

} // namespace

CKVOSGBindlessTexture::CKVOSGBindlessTexture()
    : mHandleMaker(KVBindlessHandleMaker::getDriverMaker())
{
}

void CKVOSGBindlessTexture::setHandleMaker(KVBindlessHandleMaker* maker)
{
    mHandleMaker = maker ? maker : KVBindlessHandleMaker::getDriverMaker();
}

CKVOSGBindlessTexture::CKVOSGBindlessTexture(CKVOSGBindlessTexture const& other, osg::CopyOp const& copyop)
    : osg::StateAttribute(other, copyop)
    , mTextures(other.mTextures)
    , mTextureArrays(other.mTextureArrays)
    , mDirty(other.mDirty)
    , mHandleMaker(other.mHandleMaker)
{
}

CKVOSGBindlessTexture::~CKVOSGBindlessTexture() = default;

void CKVOSGBindlessTexture::addTexture(TextureEntry const& entry)
{
    if (!entry.uniform.valid())
        return;
    mTextures[entry.uniform->getName()] = entry;
    mDirty = true;
}

void CKVOSGBindlessTexture::addTextureArray(TextureArrayEntry const& entry)
{
    mTextureArrays[entry.blockIndex] = entry;
    mDirty = true;
}

int CKVOSGBindlessTexture::compare(osg::StateAttribute const& other) const
{
    COMPARE_StateAttribute_Types(CKVOSGBindlessTexture, other)
    return 0;
}

GLuint64 CKVOSGBindlessTexture::makeHandle(osg::Texture& texture, osg::State& state) const
{
    texture.apply(state);
    osg::Texture::TextureObject* object = texture.getTextureObject(state.getContextID());
    if (!object)
        return 0;
    KVBindlessHandleMaker const& maker = *mHandleMaker;
    GLuint64 const handle = maker.getTextureHandle(state, object->id());
    if (handle != 0)
        maker.makeTextureHandleResident(state, handle);
    return handle;
}

void CKVOSGBindlessTexture::apply(osg::State& state) const
{
    makePendingHandles(state);
    // The attribute of an enclosing state set shares this one's slot, so the
    // state never applies it while this one is in effect: its handles (the
    // root's noise texture, for one) are made here instead.
    for (auto const& enclosing : state.getAttributeVec(this)) {
        if (enclosing.first == this)
            continue;
        if (auto const* other = dynamic_cast<CKVOSGBindlessTexture const*>(enclosing.first))
            other->makePendingHandles(state);
    }
}

void CKVOSGBindlessTexture::makePendingHandles(osg::State& state) const
{
    if (!mDirty)
        return;
    mDirty = false;
    if (!mHandleMaker->isAvailable(state))
        return;

    // Making a handle binds each texture on the active unit behind the
    // state's back; what the state set bound there is put back afterwards.
    unsigned int const unit = state.getActiveTextureUnit();
    osg::StateAttribute const* bound = state.getLastAppliedTextureAttribute(unit, osg::StateAttribute::TEXTURE);
    osg::Texture const* lastBound = nullptr;

    for (auto const& named : mTextures) {
        TextureEntry const& entry = named.second;
        if (!entry.texture.valid())
            continue;
        GLuint64 const handle = makeHandle(*entry.texture, state);
        lastBound = entry.texture.get();
        if (handle != 0)
            storeHandle(*entry.uniform, handle);
    }

    for (auto const& indexed : mTextureArrays) {
        TextureArrayEntry const& entry = indexed.second;
        if (!entry.handles.valid())
            continue;
        for (std::size_t i = 0; i < entry.textures.size(); ++i) {
            if (!entry.textures[i].valid())
                continue;
            GLuint64 const handle = makeHandle(*entry.textures[i], state);
            lastBound = entry.textures[i].get();
            if (handle != 0 && i < entry.handles->size())
                (*entry.handles)[i] = handle;
        }
        entry.handles->dirty();
    }

    if (!lastBound)
        return;
    if (bound)
        bound->apply(state);
    else
        state.haveAppliedTextureAttribute(unit, lastBound);
}

void CKVOSGBindlessTexture::releaseGLObjects(osg::State* state) const
{
    if (state)
        mDirty = true;
}

osg::ref_ptr<CKVOSGBindlessTexture> getOrCreateBindlessTexture(osg::StateSet* stateSet)
{
    if (!stateSet)
        return nullptr;
    auto const type = static_cast<osg::StateAttribute::Type>(CKVOSGBindlessTexture::kType);
    if (auto* existing = dynamic_cast<CKVOSGBindlessTexture*>(stateSet->getAttribute(type)))
        return existing;
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = new CKVOSGBindlessTexture;
    stateSet->setAttributeAndModes(attribute.get(), osg::StateAttribute::ON);
    return attribute;
}

} // namespace Kelvor
