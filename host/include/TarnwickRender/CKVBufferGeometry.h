#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVRenderObject.h"
#include "TarnwickRender/CKVVertexBufferAttribute.h"
#include "TarnwickRender/CKVVertexIndex.h"

#include <atomic>
#include <mutex>
#include <vector>

namespace Kelvor {

// Geometry kept as named vertex attribute buffers and one index buffer, into
// which many logic objects are packed so that the whole is one draw. Logic
// buffers are added and removed under the logic mutex, possibly from several
// threads; updatePhysicalBuffer then packs them into the attribute and index
// buffers on the render thread.
class CKVBufferGeometry : public CKVRenderObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVBufferGeometry)
public:
    ~CKVBufferGeometry() override;

    // Recomputes the vertex box (one instance's shape) and the instance box
    // (every placement of it) from the buffers, and returns the instance box.
    CKVBndBox computeBoundingBox() const override;
    // Adds the instance-matrix switch when the geometry holds instances,
    // packed or not yet packed.
    void getProgramParam(CKVProgramParam& param) const override;

    // The attribute of that name, or null.
    CKVVertexBufferAttribute* getVertexBufferAttribute(CKVVertexBufferAttribute::Name name) const;
    // Puts the attribute in the slot of its name, replacing what was there.
    // False for null. Changing which buffers the geometry holds makes the
    // next updatePhysicalBuffer report a change.
    bool setVertexBufferAttribute(CKVVertexBufferAttribute* attribute);
    void removeVertexBufferAttribute(CKVVertexBufferAttribute::Name name);
    CKVVertexIndex* getVertexIndex() const { return mIndex.get(); }
    void setVertexIndex(CKVVertexIndex* index);

    // As of the last computeBoundingBox (run by updatePhysicalBuffer).
    CKVBndBox getVertexBoundingBox() const;
    CKVBndBox getInstanceBnundingBox() const;

    // True when there is something to draw: positions, and a vertex index
    // with at least one segment.
    bool validRendering() const;

    // Thread-safe add and remove of a logic buffer. False for null, for one
    // that this or another geometry holds already (add), or one it does not
    // hold (remove).
    bool addLogicBuffer(CKVLogicBufferGeometry* buffer);
    bool removeLogicBuffer(CKVLogicBufferGeometry* buffer);
    unsigned int getNumLogicBuffer() const;
    void getLogicBuffers(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>>& out) const;

    // The logic buffer hit by a pick: the instance of that index when the
    // geometry holds instances, otherwise the part whose indices hold the
    // primitive. Null when none matches. The pointer stays valid while the
    // buffer is held, that is until a remove on the render thread.
    CKVLogicBufferGeometry const* queryLogicBuffer(unsigned int instanceIndex, unsigned int primitiveIndex) const;

    // Packs the logic buffers into the physical buffers when they changed
    // since the last packing. True when the buffers were rewritten, or other
    // buffer objects were set since the last call, so that the backend must
    // rebuild what it made from them. A new geometry reports true once.
    bool updatePhysicalBuffer();

protected:
    CKVBufferGeometry();

    // Held under the logic mutex by the caller; they must not lock it.
    virtual bool addLogicBufferImp(CKVLogicBufferGeometry* buffer);
    virtual bool removeLogicBufferImp(CKVLogicBufferGeometry* buffer);
    // Guards the logic buffer list and placements. A backend that adds or
    // removes several buffers at once locks it around its own loop.
    std::mutex& getLogicBufferMutex() const { return mLogicMutex; }

    // Make the buffers that packing needs but the geometry lacks. The base
    // uses the factories the backend registered; null when there is none.
    virtual CKVVertexBufferAttribute* createVertexBufferAttribute(CKVVertexBufferAttribute::Name name) const;
    virtual CKVVertexIndex* createVertexIndex(unsigned int mode) const;

private:
    // Keeps `instances` as the packing's table of instances by index,
    // leaving the caller's vector with whatever the table held before.
    bool packInstances(std::vector<CKVLogicBufferGeometry*>& instances);
    bool packParts(std::vector<CKVLogicBufferGeometry*> const& parts);
    CKVVertexBufferAttribute* ensureAttribute(CKVVertexBufferAttribute::Name name);

    kv_shared_ptr<CKVVertexBufferAttribute> mAttributes[CKVVertexBufferAttribute::kNameCount];
    kv_shared_ptr<CKVVertexIndex> mIndex;

    mutable std::mutex mLogicMutex;
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> mLogicBuffers;
    // The instances by the index the last packing gave them; null where one
    // was removed since.
    std::vector<CKVLogicBufferGeometry*> mInstancesByIndex;
    bool mLogicChanged = false;
    bool mPackedInstances = false;
    bool mPackedParts = false;
    std::atomic<bool> mBuffersReplaced{true};

    mutable std::mutex mBoxMutex;
    mutable CKVBndBox mVertexBox;
    mutable CKVBndBox mInstanceBox;
};

} // namespace Kelvor
