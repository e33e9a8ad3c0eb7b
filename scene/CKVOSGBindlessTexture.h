#pragma once

#include "scene/KVBindlessHandleMaker.h"

#include <osg/Array>
#include <osg/StateAttribute>
#include <osg/Texture>
#include <osg/Uniform>

#include <map>
#include <string>
#include <vector>

namespace osg {
class StateSet;
}

namespace Kelvor {

// Gives textures to the shaders as resident bindless handles, made the first
// time the owning state set is applied in a draw. A change between textured
// objects then costs a uniform update instead of a texture bind, and the
// number of textures is not limited by the units.
//
// Single textures go to a sampler uniform of their own, which must be a
// KVBindlessHandleUniform (`new KVBindlessHandleUniform(name, 0, true)`); the
// caller adds that uniform to the state set. Texture arrays go into a 64-bit
// array that backs a uniform block; the block's buffer is updated with the
// next frame's uniform buffer upload.
//
// Handles stay resident until the context dies: residency belongs to the
// context, not to the state set.
class CKVOSGBindlessTexture : public osg::StateAttribute
{
public:
    // Not an OpenSceneGraph type: the attribute has a slot of its own in
    // every state set, and there is at most one per state set.
    static constexpr unsigned int kType = 100;

    struct TextureEntry
    {
        osg::ref_ptr<osg::Texture> texture;
        osg::ref_ptr<osg::Uniform> uniform;
    };

    struct TextureArrayEntry
    {
        std::vector<osg::ref_ptr<osg::Texture>> textures;
        // Element i receives the handle of textures[i].
        osg::ref_ptr<osg::UInt64Array> handles;
        int blockIndex = 0;
    };

    CKVOSGBindlessTexture();
    CKVOSGBindlessTexture(CKVOSGBindlessTexture const& other,
                          osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    META_StateAttribute(Kelvor, CKVOSGBindlessTexture, static_cast<osg::StateAttribute::Type>(kType))

    // Keyed by the uniform's name: an entry with the same name is replaced.
    void addTexture(TextureEntry const& entry);
    // Keyed by the block index: an entry with the same index is replaced.
    void addTextureArray(TextureArrayEntry const& entry);

    std::map<std::string, TextureEntry> const& getTextures() const { return mTextures; }
    std::map<int, TextureArrayEntry> const& getTextureArrays() const { return mTextureArrays; }
    bool isDirty() const { return mDirty; }

    // Where the handles come from; the driver by default (and for null).
    void setHandleMaker(KVBindlessHandleMaker* maker);
    KVBindlessHandleMaker* getHandleMaker() const { return mHandleMaker.get(); }

    // Distinct attributes compare equal when they are of this class: state
    // sorting then groups them instead of splitting the render graph by
    // texture, which is the point of bindless textures.
    int compare(osg::StateAttribute const& other) const override;

    // Makes the handles of everything added since the last application, here
    // and in the attributes of the enclosing state sets.
    void apply(osg::State& state) const override;

    // With a state: the context's objects are going away, so the handles are
    // made anew at the next application. Handles are never made non-resident.
    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CKVOSGBindlessTexture() override;

private:
    // What apply does for this attribute alone.
    void makePendingHandles(osg::State& state) const;
    // The texture's handle in `state`'s context, uploading it first if
    // needed; 0 when it has no texture object.
    GLuint64 makeHandle(osg::Texture& texture, osg::State& state) const;

    std::map<std::string, TextureEntry> mTextures;
    std::map<int, TextureArrayEntry> mTextureArrays;
    mutable bool mDirty = false;
    osg::ref_ptr<KVBindlessHandleMaker> mHandleMaker;
};

// The bindless texture attribute of `stateSet`, made and added (ON) when it
// has none. Null for a null state set.
osg::ref_ptr<CKVOSGBindlessTexture> getOrCreateBindlessTexture(osg::StateSet* stateSet);

} // namespace Kelvor
