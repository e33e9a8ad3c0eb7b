#pragma once

#include <osg/PrimitiveSetIndirect>

namespace Kelvor {

class CKVVertexIndexImp;

// The index buffer of one buffer geometry and its indirect commands, one per
// segment. However many segments there are, drawing them is one
// glMultiDrawElementsIndirect call. The commands may be rewritten on the GPU
// (occlusion culling counts surviving instances straight into them), so the
// CPU copy of the commands is only what was last uploaded, not what is drawn.
class CKVOSGMultiDrawElementsIndirectUInt : public osg::MultiDrawElementsIndirectUInt
{
public:
    CKVOSGMultiDrawElementsIndirectUInt(CKVVertexIndexImp* owner, GLenum mode);

    void draw(osg::State& state, bool useVertexBufferObjects) const override;

    // Picking and bound computation see every index once, as one run, even
    // while the commands draw sub-ranges of them.
    void accept(osg::PrimitiveFunctor& functor) const override;
    void accept(osg::PrimitiveIndexFunctor& functor) const override;

    // The command array lives in a buffer object of its own, which the stock
    // primitive set does not release with the indices.
    void resizeGLObjectBuffers(unsigned int maxSize) override;
    void releaseGLObjects(osg::State* state = nullptr) const override;

    // The commands to issue: the set's own count when not 0, else all.
    unsigned int getNumCommands() const;

    // The vertex index that owns this set; null once it is gone.
    CKVVertexIndexImp* getOwner() const { return mOwner; }
    void clearOwner() { mOwner = nullptr; }

protected:
    ~CKVOSGMultiDrawElementsIndirectUInt() override;

private:
    CKVVertexIndexImp* mOwner;
};

} // namespace Kelvor
