#include "host/HostStandIns.h"

#include "TarnwickRender/CKVBufferGeometry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

using namespace Kelvor;

namespace {

using TestAttribute = hosttest::MemoryAttribute;
using TestIndex = hosttest::MemoryIndex;

// A geometry that makes its own buffers, as the backend's does through its
// factories, and that counts the logic buffer operations reaching it.
class TestGeometry : public CKVBufferGeometry
{
public:
    using CKVBufferGeometry::getLogicBufferMutex;

    std::atomic<int> adds{0};
    std::atomic<int> removes{0};

protected:
    bool addLogicBufferImp(CKVLogicBufferGeometry* buffer) override
    {
        ++adds;
        return CKVBufferGeometry::addLogicBufferImp(buffer);
    }
    bool removeLogicBufferImp(CKVLogicBufferGeometry* buffer) override
    {
        ++removes;
        return CKVBufferGeometry::removeLogicBufferImp(buffer);
    }
    CKVVertexBufferAttribute* createVertexBufferAttribute(CKVVertexBufferAttribute::Name name) const override
    {
        return new TestAttribute(name);
    }
    CKVVertexIndex* createVertexIndex(unsigned int mode) const override { return new TestIndex(mode); }
};

std::vector<float> floats(CKVVertexBufferAttribute* attribute)
{
    if (!attribute || !attribute->getData())
        return {};
    float const* p = static_cast<float const*>(attribute->getData());
    return std::vector<float>(p, p + attribute->getDataSize());
}

std::vector<unsigned int> indices(CKVVertexIndex* index)
{
    if (!index || !index->getData())
        return {};
    unsigned int const* p = static_cast<unsigned int const*>(index->getData());
    return std::vector<unsigned int>(p, p + index->getDataSize());
}

// One triangle at x offset `x`, with or without normals.
kv_shared_ptr<CKVLogicBufferGeometry> trianglePart(float x, bool normals)
{
    kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry(new CKVDrawable));
    float const positions[] = {x, 0, 0, x + 1, 0, 0, x, 1, 0};
    float const up[] = {0, 0, 1, 0, 0, 1, 0, 0, 1};
    unsigned int const triangle[] = {0, 1, 2};
    part->setVertexData(CKVVertexBufferAttribute::kVertex, positions, 9);
    if (normals)
        part->setVertexData(CKVVertexBufferAttribute::kNormal, up, 9);
    part->setIndexData(triangle, 3);
    return part;
}

kv_shared_ptr<CKVLogicBufferGeometry> instanceAt(double x)
{
    kv_shared_ptr<CKVLogicBufferGeometry> instance(new CKVLogicBufferGeometry(new CKVDrawable));
    instance->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(x, 0, 0)));
    return instance;
}

// A unit cube's corners as the shared shape of instanced geometry.
void giveUnitShape(CKVBufferGeometry& geometry)
{
    kv_shared_ptr<TestAttribute> vertex(new TestAttribute(CKVVertexBufferAttribute::kVertex));
    float const corners[] = {0, 0, 0, 1, 1, 1};
    vertex->setData(corners, 6);
    kv_shared_ptr<TestIndex> index(new TestIndex(CKVVertexIndex::kLines));
    unsigned int const line[] = {0, 1};
    index->setData(line, 2);
    index->addSegment(CKVBufferDataSegment(0, 2));
    index->updateDrawRange();
    geometry.setVertexBufferAttribute(vertex.get());
    geometry.setVertexIndex(index.get());
}

} // namespace

TEST(BufferGeometryContent, AttributeDataKeepsWholeElementsAndBounds)
{
    kv_shared_ptr<TestAttribute> normal(new TestAttribute(CKVVertexBufferAttribute::kNormal));
    float const data[] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_TRUE(normal->setData(data, 8));
    EXPECT_EQ(6u, normal->getDataSize());
    EXPECT_EQ(2u, normal->getNumElement());
    EXPECT_FALSE(normal->setData(data, 2)); // no whole element
    EXPECT_EQ(6u, normal->getDataSize());

    float const patch[] = {9, 9};
    EXPECT_FALSE(normal->updateData(5, patch, 2));
    EXPECT_FALSE(normal->updateData(~0u, patch, 2)); // offset + count would wrap
    EXPECT_TRUE(normal->updateData(4, patch, 2));     // exactly to the end
    EXPECT_EQ((std::vector<float>{1, 2, 3, 4, 9, 9}), floats(normal.get()));

    kv_shared_ptr<TestAttribute> unnamed(new TestAttribute(static_cast<CKVVertexBufferAttribute::Name>(9)));
    EXPECT_FALSE(unnamed->setData(data, 8));
}

TEST(BufferGeometryContent, DrawRangeClampsSortsAndMergesSegments)
{
    kv_shared_ptr<TestIndex> index(new TestIndex(CKVVertexIndex::kTriangles));
    std::vector<unsigned int> data(30, 0);
    index->setData(data.data(), 30);
    index->setSegments({{12, 6}, {0, 3}, {3, 3}, {9, 0}, {27, 9}, {40, 3}, {15, 6}});
    index->updateDrawRange();
    // 0-3 and 3-6 touch; 12-18 and 15-21 overlap; 27-36 is cut at 30; the
    // empty and the out-of-range ones go.
    std::vector<CKVBufferDataSegment> const expected = {{0, 6}, {12, 9}, {27, 3}};
    EXPECT_EQ(expected, index->getSegments());
}

TEST(BufferGeometryContent, PartsPackIntoOneIndexedBuffer)
{
    kv_shared_ptr<TestGeometry> geometry(new TestGeometry);
    kv_shared_ptr<CKVLogicBufferGeometry> first = trianglePart(0, true);
    kv_shared_ptr<CKVLogicBufferGeometry> second = trianglePart(5, false);
    ASSERT_TRUE(geometry->addLogicBuffer(first.get()));
    ASSERT_TRUE(geometry->addLogicBuffer(second.get()));
    EXPECT_FALSE(geometry->validRendering());

    ASSERT_TRUE(geometry->updatePhysicalBuffer());
    EXPECT_FALSE(geometry->updatePhysicalBuffer()); // nothing changed since

    EXPECT_EQ((std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 0, 0, 6, 0, 0, 5, 1, 0}),
              floats(geometry->getVertexBufferAttribute(CKVVertexBufferAttribute::kVertex)));
    // The part without normals is padded so that normals stay aligned.
    EXPECT_EQ((std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
              floats(geometry->getVertexBufferAttribute(CKVVertexBufferAttribute::kNormal)));
    EXPECT_EQ(nullptr, geometry->getVertexBufferAttribute(CKVVertexBufferAttribute::kTexCoord));
    EXPECT_EQ((std::vector<unsigned int>{0, 1, 2, 3, 4, 5}), indices(geometry->getVertexIndex()));
    // Adjacent parts draw as one command; each part still knows its own range.
    ASSERT_EQ(1u, geometry->getVertexIndex()->getNumSegment());
    EXPECT_EQ(CKVBufferDataSegment(0, 6), geometry->getVertexIndex()->getSegment(0));
    EXPECT_EQ(CKVBufferDataSegment(3, 3), second->getSegment());
    EXPECT_EQ(3u, second->getBaseVertex());
    EXPECT_TRUE(geometry->validRendering());

    CKVBndBox const box = geometry->getVertexBoundingBox();
    EXPECT_TRUE(box.maxPt().isEqualTo(CKVPoint3D(6, 1, 0)));
    EXPECT_TRUE(geometry->getInstanceBnundingBox().maxPt().isEqualTo(CKVPoint3D(6, 1, 0)));

    // A pick resolves a triangle to its part.
    EXPECT_EQ(first.get(), geometry->queryLogicBuffer(0, 0));
    EXPECT_EQ(second.get(), geometry->queryLogicBuffer(0, 1));
    EXPECT_EQ(nullptr, geometry->queryLogicBuffer(0, 2));
    CKVProgramParam param;
    geometry->getProgramParam(param);
    EXPECT_FALSE(param.hasParam(CKVProgramParam::kUseInstanceMatrix));

    // Removing the first part moves the second to the front on the next packing.
    ASSERT_TRUE(geometry->removeLogicBuffer(first.get()));
    EXPECT_FALSE(first->isPlaced());
    ASSERT_TRUE(geometry->updatePhysicalBuffer());
    EXPECT_EQ((std::vector<unsigned int>{0, 1, 2}), indices(geometry->getVertexIndex()));
    EXPECT_EQ(second.get(), geometry->queryLogicBuffer(0, 0));
    EXPECT_EQ(0u, second->getBaseVertex());
    EXPECT_EQ(nullptr, geometry->getVertexBufferAttribute(CKVVertexBufferAttribute::kNormal));

    // With no parts left, nothing is drawn.
    ASSERT_TRUE(geometry->removeLogicBuffer(second.get()));
    ASSERT_TRUE(geometry->updatePhysicalBuffer());
    EXPECT_FALSE(geometry->validRendering());
}

TEST(BufferGeometryContent, APartReachingOutsideItsVerticesIsNotDrawn)
{
    kv_shared_ptr<TestGeometry> geometry(new TestGeometry);
    kv_shared_ptr<CKVLogicBufferGeometry> bad(new CKVLogicBufferGeometry);
    float const positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    unsigned int const triangle[] = {0, 1, 3};
    bad->setVertexData(CKVVertexBufferAttribute::kVertex, positions, 9);
    bad->setIndexData(triangle, 3);
    kv_shared_ptr<CKVLogicBufferGeometry> good = trianglePart(2, false);
    geometry->addLogicBuffer(bad.get());
    geometry->addLogicBuffer(good.get());
    ASSERT_TRUE(geometry->updatePhysicalBuffer());

    EXPECT_EQ(0u, bad->getSegment().getCount());
    // The good part's vertices still come after the bad part's.
    EXPECT_EQ((std::vector<unsigned int>{3, 4, 5}), indices(geometry->getVertexIndex()));
    EXPECT_EQ(good.get(), geometry->queryLogicBuffer(0, 0));
}

TEST(BufferGeometryContent, InstancesPackIntoMatrixRows)
{
    kv_shared_ptr<TestGeometry> geometry(new TestGeometry);
    giveUnitShape(*geometry);
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> instances = {instanceAt(0), instanceAt(10), instanceAt(20)};
    for (auto& instance : instances)
        ASSERT_TRUE(geometry->addLogicBuffer(instance.get()));
    ASSERT_TRUE(geometry->updatePhysicalBuffer());

    EXPECT_EQ(3u, geometry->getVertexIndex()->getNumInstance());
    // Row 4 of each placement carries its translation.
    EXPECT_EQ((std::vector<float>{0, 0, 0, 1, 10, 0, 0, 1, 20, 0, 0, 1}),
              floats(geometry->getVertexBufferAttribute(CKVVertexBufferAttribute::kInstanceMatrixR4)));
    EXPECT_EQ((std::vector<float>{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}),
              floats(geometry->getVertexBufferAttribute(CKVVertexBufferAttribute::kInstanceMatrixR1)));

    EXPECT_TRUE(geometry->getVertexBoundingBox().maxPt().isEqualTo(CKVPoint3D(1, 1, 1)));
    CKVBndBox const all = geometry->getInstanceBnundingBox();
    EXPECT_TRUE(all.minPt().isEqualTo(CKVPoint3D(0, 0, 0)));
    EXPECT_TRUE(all.maxPt().isEqualTo(CKVPoint3D(21, 1, 1)));

    CKVProgramParam param;
    geometry->getProgramParam(param);
    EXPECT_TRUE(param.hasParam(CKVProgramParam::kUseInstanceMatrix));

    EXPECT_EQ(instances[2].get(), geometry->queryLogicBuffer(2, 0));
    EXPECT_EQ(nullptr, geometry->queryLogicBuffer(3, 0));

    // Removal closes the gap: the last instance takes the freed index.
    ASSERT_TRUE(geometry->removeLogicBuffer(instances[1].get()));
    ASSERT_TRUE(geometry->updatePhysicalBuffer());
    EXPECT_EQ(2u, geometry->getVertexIndex()->getNumInstance());
    EXPECT_EQ(instances[2].get(), geometry->queryLogicBuffer(1, 0));
    EXPECT_TRUE(geometry->getInstanceBnundingBox().maxPt().isEqualTo(CKVPoint3D(21, 1, 1)));
}

// A host reads or copies the parameter before the geometry reaches the
// render thread; the switch must be there already, or the shader places
// every instance at the origin.
TEST(BufferGeometryContent, InstanceSwitchHoldsFromTheFirstInstanceOn)
{
    auto switchOn = [](CKVBufferGeometry const& geometry) {
        CKVProgramParam param;
        geometry.getProgramParam(param);
        return param.hasParam(CKVProgramParam::kUseInstanceMatrix);
    };
    kv_shared_ptr<TestGeometry> geometry(new TestGeometry);
    giveUnitShape(*geometry);
    kv_shared_ptr<CKVLogicBufferGeometry> part = trianglePart(0, false);
    ASSERT_TRUE(geometry->addLogicBuffer(part.get()));
    EXPECT_FALSE(switchOn(*geometry));

    kv_shared_ptr<CKVLogicBufferGeometry> instance = instanceAt(5);
    ASSERT_TRUE(geometry->addLogicBuffer(instance.get()));
    EXPECT_TRUE(switchOn(*geometry));
    ASSERT_TRUE(geometry->updatePhysicalBuffer());
    EXPECT_TRUE(switchOn(*geometry));

    ASSERT_TRUE(geometry->removeLogicBuffer(instance.get()));
    ASSERT_TRUE(geometry->updatePhysicalBuffer());
    EXPECT_FALSE(switchOn(*geometry));
}

TEST(BufferGeometryContent, APartWithInstancesDrawsEveryInstance)
{
    // The shape arrives as a part, so the vertex index is only made by the
    // packing itself; the instance count must still reach it.
    kv_shared_ptr<TestGeometry> geometry(new TestGeometry);
    kv_shared_ptr<CKVLogicBufferGeometry> shape = trianglePart(0, true);
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> instances = {instanceAt(0), instanceAt(4)};
    ASSERT_TRUE(geometry->addLogicBuffer(shape.get()));
    for (auto& instance : instances)
        ASSERT_TRUE(geometry->addLogicBuffer(instance.get()));
    ASSERT_TRUE(geometry->updatePhysicalBuffer());

    ASSERT_NE(nullptr, geometry->getVertexIndex());
    EXPECT_EQ(2u, geometry->getVertexIndex()->getNumInstance());
    EXPECT_TRUE(geometry->getInstanceBnundingBox().maxPt().isEqualTo(CKVPoint3D(5, 1, 0)));
}

TEST(BufferGeometryContent, ReplacingBuffersAsksTheBackendToRebuild)
{
    kv_shared_ptr<TestGeometry> geometry(new TestGeometry);
    EXPECT_TRUE(geometry->updatePhysicalBuffer()); // new: never built
    EXPECT_FALSE(geometry->updatePhysicalBuffer());
    giveUnitShape(*geometry);
    EXPECT_TRUE(geometry->updatePhysicalBuffer());
    EXPECT_TRUE(geometry->getVertexBoundingBox().maxPt().isEqualTo(CKVPoint3D(1, 1, 1)));
    EXPECT_FALSE(geometry->updatePhysicalBuffer());
}

TEST(BufferGeometryContent, ALogicBufferBelongsToOneGeometryAtATime)
{
    kv_shared_ptr<TestGeometry> a(new TestGeometry);
    kv_shared_ptr<TestGeometry> b(new TestGeometry);
    kv_shared_ptr<CKVLogicBufferGeometry> part = trianglePart(0, false);

    ASSERT_TRUE(a->addLogicBuffer(part.get()));
    EXPECT_FALSE(a->addLogicBuffer(part.get()));
    EXPECT_FALSE(b->addLogicBuffer(part.get()));
    EXPECT_FALSE(b->removeLogicBuffer(part.get()));
    EXPECT_EQ(a.get(), part->getOwner());
    // Its content is fixed while held.
    unsigned int const none[] = {0};
    EXPECT_FALSE(part->setIndexData(none, 1));
    EXPECT_FALSE(part->setInstanceMatrix(CKVMatrix3D()));

    ASSERT_TRUE(a->removeLogicBuffer(part.get()));
    EXPECT_TRUE(b->addLogicBuffer(part.get()));

    // A geometry that dies lets its buffers go.
    b = nullptr;
    EXPECT_EQ(nullptr, part->getOwner());
    EXPECT_TRUE(a->addLogicBuffer(part.get()));
}

// Several host threads add and remove while the render thread queries and
// packs. Run under ThreadSanitizer as part of the host tests.
TEST(BufferGeometryContent, LogicBuffersSurviveConcurrentWriters)
{
    kv_shared_ptr<TestGeometry> geometry(new TestGeometry);
    giveUnitShape(*geometry);
    int const writers = 3;
    int const perWriter = 40;
    int const rounds = 20;
    std::vector<std::vector<kv_shared_ptr<CKVLogicBufferGeometry>>> owned(writers);
    for (int w = 0; w < writers; ++w) {
        for (int i = 0; i < perWriter; ++i)
            owned[w].push_back(instanceAt(w * 1000 + i));
    }

    std::set<CKVLogicBufferGeometry const*> known;
    for (auto const& list : owned) {
        for (auto const& buffer : list)
            known.insert(buffer.get());
    }

    std::atomic<bool> done{false};
    std::atomic<int> badAnswers{0};
    std::thread reader([&] {
        while (!done.load()) {
            geometry->updatePhysicalBuffer();
            unsigned int const count = geometry->getNumLogicBuffer();
            for (unsigned int i = 0; i < count + 2; ++i) {
                CKVLogicBufferGeometry const* hit = geometry->queryLogicBuffer(i, 0);
                // A hit may be removed right after the answer; it must
                // still be one of ours and never a freed or foreign one.
                if (hit && known.count(hit) == 0)
                    ++badAnswers;
            }
        }
    });
    std::vector<std::thread> threads;
    for (int w = 0; w < writers; ++w) {
        threads.emplace_back([&, w] {
            for (int r = 0; r < rounds; ++r) {
                for (auto& buffer : owned[w])
                    geometry->addLogicBuffer(buffer.get());
                // Keep the even ones after the last round.
                for (int i = 0; i < perWriter; ++i) {
                    if (r + 1 < rounds || i % 2 == 1)
                        geometry->removeLogicBuffer(owned[w][i].get());
                }
            }
        });
    }
    for (std::thread& t : threads)
        t.join();
    done = true;
    reader.join();

    EXPECT_EQ(0, badAnswers.load());
    EXPECT_EQ(writers * perWriter * rounds, geometry->adds.load());
    ASSERT_EQ(static_cast<unsigned int>(writers * perWriter / 2), geometry->getNumLogicBuffer());
    geometry->updatePhysicalBuffer();
    EXPECT_EQ(static_cast<unsigned int>(writers * perWriter / 2), geometry->getVertexIndex()->getNumInstance());
    for (unsigned int i = 0; i < geometry->getNumLogicBuffer(); ++i) {
        CKVLogicBufferGeometry const* hit = geometry->queryLogicBuffer(i, 0);
        ASSERT_NE(nullptr, hit);
        EXPECT_EQ(i, hit->getInstanceIndex());
    }
}
