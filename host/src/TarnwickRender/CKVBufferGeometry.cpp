#include "TarnwickRender/CKVBufferGeometry.h"

#include "TarnwickRender/CKVRenderCallback.h"

#include <algorithm>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVBufferGeometry, CKVRenderObject)

namespace {

using Name = CKVVertexBufferAttribute::Name;

Name const kRowNames[4] = {CKVVertexBufferAttribute::kInstanceMatrixR1, CKVVertexBufferAttribute::kInstanceMatrixR2,
                           CKVVertexBufferAttribute::kInstanceMatrixR3, CKVVertexBufferAttribute::kInstanceMatrixR4};

// The per-vertex attributes that parts fill; the vertex position comes first
// because it decides how many vertices a part has.
Name const kPartNames[4] = {CKVVertexBufferAttribute::kVertex, CKVVertexBufferAttribute::kNormal,
                            CKVVertexBufferAttribute::kTexCoord, CKVVertexBufferAttribute::kColor};

float const* floatsOf(CKVVertexBufferAttribute* attribute, unsigned int& size)
{
    size = 0;
    if (!attribute)
        return nullptr;
    float const* data = static_cast<float const*>(attribute->getData());
    if (data)
        size = attribute->getDataSize();
    return data;
}

// True when every index of a part lies within its own vertices.
bool partIndicesValid(CKVLogicBufferGeometry const& part)
{
    unsigned int const numVertex = part.getNumVertex();
    for (unsigned int index : part.getIndexData()) {
        if (index >= numVertex)
            return false;
    }
    return true;
}

} // namespace

CKVBufferGeometry::CKVBufferGeometry() = default;

CKVBufferGeometry::~CKVBufferGeometry()
{
    // Let the buffers go to another geometry; they may outlive this one.
    for (kv_shared_ptr<CKVLogicBufferGeometry>& buffer : mLogicBuffers) {
        buffer->unplace();
        buffer->release(this);
    }
}

CKVVertexBufferAttribute* CKVBufferGeometry::getVertexBufferAttribute(CKVVertexBufferAttribute::Name name) const
{
    return name < CKVVertexBufferAttribute::kNameCount ? mAttributes[name].get() : nullptr;
}

bool CKVBufferGeometry::setVertexBufferAttribute(CKVVertexBufferAttribute* attribute)
{
    if (!attribute || attribute->getName() >= CKVVertexBufferAttribute::kNameCount)
        return false;
    mAttributes[attribute->getName()] = attribute;
    mBuffersReplaced = true;
    return true;
}

void CKVBufferGeometry::setVertexIndex(CKVVertexIndex* index)
{
    mIndex = index;
    mBuffersReplaced = true;
}

void CKVBufferGeometry::removeVertexBufferAttribute(CKVVertexBufferAttribute::Name name)
{
    if (name < CKVVertexBufferAttribute::kNameCount && mAttributes[name]) {
        mAttributes[name] = nullptr;
        mBuffersReplaced = true;
    }
}

CKVBndBox CKVBufferGeometry::computeBoundingBox() const
{
    CKVBndBox vertexBox;
    unsigned int size = 0;
    if (float const* p = floatsOf(mAttributes[CKVVertexBufferAttribute::kVertex].get(), size)) {
        for (unsigned int i = 0; i + 3 <= size; i += 3)
            vertexBox.addPoint(CKVPoint3D(p[i], p[i + 1], p[i + 2]));
    }

    CKVBndBox instanceBox;
    float const* rows[4] = {};
    unsigned int numInstance = ~0u;
    for (int r = 0; r < 4; ++r) {
        rows[r] = floatsOf(mAttributes[kRowNames[r]].get(), size);
        numInstance = rows[r] ? std::min(numInstance, size / 4) : 0u;
    }
    if (numInstance > 0 && vertexBox.valid()) {
        for (unsigned int i = 0; i < numInstance; ++i) {
            // Row r of the row-vector placement is column r of ours.
            CKVMatrix3D placement;
            for (int r = 0; r < 4; ++r) {
                for (int c = 0; c < 4; ++c)
                    placement(c, r) = rows[r][4 * i + c];
            }
            instanceBox.addBndBox(CKVBndBox(vertexBox).transformBy(placement));
        }
    } else {
        instanceBox = vertexBox;
    }

    std::lock_guard<std::mutex> lock(mBoxMutex);
    mVertexBox = vertexBox;
    mInstanceBox = instanceBox;
    return instanceBox;
}

void CKVBufferGeometry::getProgramParam(CKVProgramParam& param) const
{
    bool instanced = mIndex && mIndex->getNumInstance() > 0 && mAttributes[CKVVertexBufferAttribute::kInstanceMatrixR1];
    if (!instanced) {
        // Instances count from the moment they are added, not only once the
        // render thread has packed them: a host may read or copy the
        // parameter before it inserts the geometry, and a program made
        // without the switch draws every instance at the origin.
        std::lock_guard<std::mutex> lock(mLogicMutex);
        instanced = std::any_of(mLogicBuffers.begin(), mLogicBuffers.end(),
                                [](kv_shared_ptr<CKVLogicBufferGeometry> const& buffer) { return buffer->isInstance(); });
    }
    if (instanced)
        param.addParam(CKVProgramParam::kUseInstanceMatrix);
}

CKVBndBox CKVBufferGeometry::getVertexBoundingBox() const
{
    std::lock_guard<std::mutex> lock(mBoxMutex);
    return mVertexBox;
}

CKVBndBox CKVBufferGeometry::getInstanceBnundingBox() const
{
    std::lock_guard<std::mutex> lock(mBoxMutex);
    return mInstanceBox;
}

bool CKVBufferGeometry::validRendering() const
{
    CKVVertexBufferAttribute* vertex = mAttributes[CKVVertexBufferAttribute::kVertex].get();
    return vertex && vertex->getDataSize() >= 3 && mIndex && mIndex->getNumSegment() > 0;
}

bool CKVBufferGeometry::addLogicBuffer(CKVLogicBufferGeometry* buffer)
{
    std::lock_guard<std::mutex> lock(mLogicMutex);
    return addLogicBufferImp(buffer);
}

bool CKVBufferGeometry::removeLogicBuffer(CKVLogicBufferGeometry* buffer)
{
    std::lock_guard<std::mutex> lock(mLogicMutex);
    return removeLogicBufferImp(buffer);
}

unsigned int CKVBufferGeometry::getNumLogicBuffer() const
{
    std::lock_guard<std::mutex> lock(mLogicMutex);
    return static_cast<unsigned int>(mLogicBuffers.size());
}

void CKVBufferGeometry::getLogicBuffers(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>>& out) const
{
    std::lock_guard<std::mutex> lock(mLogicMutex);
    out.insert(out.end(), mLogicBuffers.begin(), mLogicBuffers.end());
}

bool CKVBufferGeometry::addLogicBufferImp(CKVLogicBufferGeometry* buffer)
{
    if (!buffer || !buffer->claim(this))
        return false;
    mLogicBuffers.emplace_back(buffer);
    mLogicChanged = true;
    return true;
}

bool CKVBufferGeometry::removeLogicBufferImp(CKVLogicBufferGeometry* buffer)
{
    auto it = std::find(mLogicBuffers.begin(), mLogicBuffers.end(), buffer);
    if (!buffer || it == mLogicBuffers.end())
        return false;
    // Unplace and release before the list drops what may be the last reference.
    if (buffer->isInstance() && buffer->getInstanceIndex() < mInstancesByIndex.size())
        mInstancesByIndex[buffer->getInstanceIndex()] = nullptr;
    buffer->unplace();
    buffer->release(this);
    mLogicBuffers.erase(it);
    mLogicChanged = true;
    return true;
}

CKVLogicBufferGeometry const* CKVBufferGeometry::queryLogicBuffer(unsigned int instanceIndex,
                                                                  unsigned int primitiveIndex) const
{
    std::lock_guard<std::mutex> lock(mLogicMutex);
    // A selection resolves every hit it lists: the packing's own table
    // answers without a walk over every buffer.
    if (instanceIndex < mInstancesByIndex.size()) {
        CKVLogicBufferGeometry const* placed = mInstancesByIndex[instanceIndex];
        if (placed && placed->getInstanceIndex() == instanceIndex)
            return placed;
    }
    for (kv_shared_ptr<CKVLogicBufferGeometry> const& buffer : mLogicBuffers) {
        if (buffer->isInstance() && buffer->getInstanceIndex() == instanceIndex)
            return buffer.get();
    }

    unsigned int perPrimitive = mIndex ? mIndex->getNumIndexPerPrimitive() : 0u;
    if (perPrimitive == 0)
        perPrimitive = 3;
    unsigned long long const first = static_cast<unsigned long long>(primitiveIndex) * perPrimitive;
    if (first > ~0u)
        return nullptr;
    for (kv_shared_ptr<CKVLogicBufferGeometry> const& buffer : mLogicBuffers) {
        if (!buffer->isInstance() && buffer->getSegment().contains(static_cast<unsigned int>(first)))
            return buffer.get();
    }
    return nullptr;
}

CKVVertexBufferAttribute* CKVBufferGeometry::createVertexBufferAttribute(CKVVertexBufferAttribute::Name name) const
{
    return CKVRenderCallback::createVertexBufferAttribute(name);
}

CKVVertexIndex* CKVBufferGeometry::createVertexIndex(unsigned int mode) const
{
    return CKVRenderCallback::createVertexIndex(mode);
}

CKVVertexBufferAttribute* CKVBufferGeometry::ensureAttribute(CKVVertexBufferAttribute::Name name)
{
    if (!mAttributes[name]) {
        CKVVertexBufferAttribute* made = createVertexBufferAttribute(name);
        if (made && made->getName() != name) {
            kv_shared_ptr<CKVVertexBufferAttribute> discard(made);
            return nullptr;
        }
        mAttributes[name] = made;
    }
    return mAttributes[name].get();
}

bool CKVBufferGeometry::updatePhysicalBuffer()
{
    bool packed = mBuffersReplaced.exchange(false);
    {
        std::lock_guard<std::mutex> lock(mLogicMutex);
        if (!mLogicChanged) {
            if (packed)
                computeBoundingBox();
            return packed;
        }

        std::vector<CKVLogicBufferGeometry*> instances;
        std::vector<CKVLogicBufferGeometry*> parts;
        instances.reserve(mLogicBuffers.size());
        for (kv_shared_ptr<CKVLogicBufferGeometry>& buffer : mLogicBuffers)
            (buffer->isInstance() ? instances : parts).push_back(buffer.get());

        bool ok = true;
        // Parts first: packing them may create the vertex index, and the
        // instance count lives on that index.
        // A kind that was packed before and has no buffers now is packed
        // empty, which takes its old content out of the physical buffers.
        if (!parts.empty() || mPackedParts) {
            if (packParts(parts)) {
                mPackedParts = !parts.empty();
                packed = true;
            } else {
                ok = false;
            }
        }
        if (!instances.empty() || mPackedInstances) {
            bool const any = !instances.empty(); // packing takes the list
            if (packInstances(instances)) {
                mPackedInstances = any;
                packed = true;
            } else {
                ok = false;
            }
        }
        // Without the buffers to pack into (no backend factory yet) the
        // change stays pending and the next call tries again.
        mLogicChanged = !ok;
    }
    if (packed)
        computeBoundingBox();
    return packed;
}

bool CKVBufferGeometry::packInstances(std::vector<CKVLogicBufferGeometry*>& instances)
{
    unsigned int const count = static_cast<unsigned int>(instances.size());
    if (count == 0) {
        for (Name name : kRowNames)
            mAttributes[name] = nullptr;
    } else {
        // The rows are written straight into the attributes, sized once:
        // at a million instances a staging copy would be 64 MB more to
        // write, hold and read again.
        float* rows[4];
        for (int r = 0; r < 4; ++r) {
            CKVVertexBufferAttribute* attribute = ensureAttribute(kRowNames[r]);
            rows[r] = attribute ? attribute->resizeData(4 * count) : nullptr;
            if (!rows[r])
                return false;
        }
        for (CKVLogicBufferGeometry* instance : instances) {
            CKVMatrix3D const& m = instance->getInstanceMatrix();
            for (int r = 0; r < 4; ++r) {
                for (int c = 0; c < 4; ++c)
                    *rows[r]++ = static_cast<float>(m(c, r));
            }
        }
    }

    for (unsigned int i = 0; i < count; ++i)
        instances[i]->placeInstance(i);
    mInstancesByIndex.swap(instances);
    if (mIndex) {
        mIndex->setNumInstance(count);
        mIndex->updateDrawRange();
    }
    return true;
}

bool CKVBufferGeometry::packParts(std::vector<CKVLogicBufferGeometry*> const& parts)
{
    unsigned int totalVertex = 0;
    for (CKVLogicBufferGeometry* part : parts)
        totalVertex += part->getNumVertex();

    if (totalVertex == 0) {
        for (Name name : kPartNames)
            mAttributes[name] = nullptr;
        if (mIndex) {
            mIndex->clearSegments();
            mIndex->updateDrawRange();
        }
        for (CKVLogicBufferGeometry* part : parts)
            part->placePart(0, CKVBufferDataSegment());
        return true;
    }

    if (!ensureAttribute(CKVVertexBufferAttribute::kVertex))
        return false;
    if (!mIndex) {
        mIndex = createVertexIndex(CKVVertexIndex::kTriangles);
        if (!mIndex)
            return false;
    }

    for (Name name : kPartNames) {
        unsigned int const n = CKVVertexBufferAttribute::elementSize(name);
        bool any = false;
        for (CKVLogicBufferGeometry* part : parts)
            any = any || !part->getVertexData(name).empty();
        if (!any) {
            mAttributes[name] = nullptr;
            continue;
        }
        // A part without this attribute, or with the wrong amount of it,
        // gets zeros so that all attributes stay aligned with the positions.
        std::vector<float> packed;
        packed.reserve(static_cast<std::size_t>(totalVertex) * n);
        for (CKVLogicBufferGeometry* part : parts) {
            std::vector<float> const& data = part->getVertexData(name);
            std::size_t const wanted = static_cast<std::size_t>(part->getNumVertex()) * n;
            if (data.size() == wanted)
                packed.insert(packed.end(), data.begin(), data.end());
            else
                packed.resize(packed.size() + wanted, 0.0f);
        }
        CKVVertexBufferAttribute* attribute = ensureAttribute(name);
        if (attribute)
            attribute->setData(packed.data(), static_cast<unsigned int>(packed.size()));
    }

    unsigned int const perPrimitive = std::max(1u, mIndex->getNumIndexPerPrimitive());
    std::vector<unsigned int> indices;
    std::vector<CKVBufferDataSegment> segments;
    unsigned int baseVertex = 0;
    for (CKVLogicBufferGeometry* part : parts) {
        std::vector<unsigned int> const& own = part->getIndexData();
        // Whole primitives only, and none that reach outside the part.
        unsigned int count = static_cast<unsigned int>(own.size());
        count -= count % perPrimitive;
        if (!partIndicesValid(*part))
            count = 0;
        CKVBufferDataSegment const segment(static_cast<unsigned int>(indices.size()), count);
        for (unsigned int i = 0; i < count; ++i)
            indices.push_back(own[i] + baseVertex);
        if (count > 0)
            segments.push_back(segment);
        part->placePart(baseVertex, segment);
        baseVertex += part->getNumVertex();
    }

    if (!indices.empty())
        mIndex->setData(indices.data(), static_cast<unsigned int>(indices.size()));
    mIndex->setSegments(segments);
    mIndex->updateDrawRange();
    return true;
}

} // namespace Kelvor
