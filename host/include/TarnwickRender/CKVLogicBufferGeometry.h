#pragma once

#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickRender/CKVBufferDataSegment.h"
#include "TarnwickRender/CKVLogicRenderObject.h"
#include "TarnwickRender/CKVVertexBufferAttribute.h"

#include <atomic>
#include <memory>
#include <vector>

namespace Kelvor {

class CKVBufferGeometry;

// One object packed into a buffer geometry. It is either an instance (a
// placement of the geometry's shared shape) or a part (vertices and indices
// of its own, appended to the geometry's buffers). Its content is fixed once
// a geometry holds it: remove it and add a new one to change it. Where it
// landed in the physical buffers is written by the geometry when it packs.
class CKVLogicBufferGeometry : public CKVLogicRenderObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVLogicBufferGeometry)
public:
    static constexpr unsigned int kNotPlaced = ~0u;

    CKVLogicBufferGeometry();
    explicit CKVLogicBufferGeometry(CKVDrawable* drawable);
    ~CKVLogicBufferGeometry() override;

    // Makes this an instance placed by `matrix`. False once a geometry holds it.
    bool setInstanceMatrix(CKVMatrix3D const& matrix);
    bool isInstance() const { return mIsInstance; }
    CKVMatrix3D const& getInstanceMatrix() const { return mInstanceMatrix; }

    // Part content: per-vertex floats of one attribute (not the instance
    // rows) and indices counted from this part's first vertex. Counts are
    // rounded down to whole elements. False once a geometry holds it, for an
    // instance, or for an instance-row name.
    bool setVertexData(CKVVertexBufferAttribute::Name name, float const* data, unsigned int count);
    bool setIndexData(unsigned int const* data, unsigned int count);
    std::vector<float> const& getVertexData(CKVVertexBufferAttribute::Name name) const;
    std::vector<unsigned int> const& getIndexData() const;
    // Vertices of the part, from its position data.
    unsigned int getNumVertex() const;

    // The geometry that holds it, or null.
    CKVBufferGeometry const* getOwner() const { return mOwner.load(std::memory_order_acquire); }

    // Placement after the last packing, read under the geometry's logic mutex.
    // kNotPlaced until packed.
    unsigned int getInstanceIndex() const { return mInstanceIndex; }
    unsigned int getBaseVertex() const;
    // The part's indices in the packed index buffer; count 0 for an instance.
    CKVBufferDataSegment const& getSegment() const;
    bool isPlaced() const { return mInstanceIndex != kNotPlaced || getBaseVertex() != kNotPlaced; }

private:
    friend class CKVBufferGeometry;

    bool claim(CKVBufferGeometry const* owner);
    void release(CKVBufferGeometry const* owner);
    void placeInstance(unsigned int index);
    void placePart(unsigned int baseVertex, CKVBufferDataSegment const& segment);
    void unplace();

    // What only a part has. A model of a million placements holds a million
    // instances, so the part's buffers and placement are kept out of the
    // object until one is set.
    struct PartData
    {
        std::vector<float> vertexData[CKVVertexBufferAttribute::kNameCount];
        std::vector<unsigned int> indices;
        unsigned int baseVertex = kNotPlaced;
        CKVBufferDataSegment segment;
    };
    PartData& partData();

    CKVMatrix3D mInstanceMatrix;
    std::unique_ptr<PartData> mPart;
    std::atomic<CKVBufferGeometry const*> mOwner{nullptr};
    unsigned int mInstanceIndex = kNotPlaced;
    // After the index, where it fills what would be padding.
    bool mIsInstance = false;
};

} // namespace Kelvor
