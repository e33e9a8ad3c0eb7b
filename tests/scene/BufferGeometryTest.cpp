#include "BufferGeometryTestSupport.h"

#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGGeometry.h"
#include "scene/CKVOSGMultiDrawElementsIndirectUInt.h"

#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickGeometry/KVMatrixConvert.h"

#include <gtest/gtest.h>

#include <osg/BufferObject>
#include <osg/TriangleIndexFunctor>

#include <stdexcept>
#include <vector>

namespace Kelvor {
namespace {

std::vector<float> floatsOf(CKVVertexBufferAttribute& attribute)
{
    float const* data = static_cast<float const*>(attribute.getData());
    return data ? std::vector<float>(data, data + attribute.getDataSize()) : std::vector<float>();
}

osg::DefaultIndirectCommandDrawElements const& commandsOf(CKVVertexIndexImp const& index)
{
    return static_cast<osg::DefaultIndirectCommandDrawElements const&>(
        *index.getPrimitiveSet()->getIndirectCommandArray());
}

struct TriangleCollector
{
    void operator()(unsigned int a, unsigned int b, unsigned int c) { seen.insert(seen.end(), {a, b, c}); }
    std::vector<unsigned int> seen;
};

TEST(BufferGeometryAttributeTest, SetDataKeepsWholeElementsAndMarksTheArrayDirty)
{
    CKVVertexBufferAttributeImp vertex(CKVVertexBufferAttribute::kVertex);
    ASSERT_EQ(vertex.getOSGArray()->getType(), osg::Array::Vec3ArrayType);
    float const data[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    unsigned int const before = vertex.getOSGArray()->getModifiedCount();

    ASSERT_TRUE(vertex.setData(data, 8));
    EXPECT_EQ(floatsOf(vertex), std::vector<float>(data, data + 6));
    EXPECT_EQ(vertex.getOSGArray()->getNumElements(), 2u);
    EXPECT_NE(vertex.getOSGArray()->getModifiedCount(), before);

    EXPECT_FALSE(vertex.setData(data, 2)) << "less than one element";
    EXPECT_FALSE(vertex.setData(nullptr, 6));
    EXPECT_EQ(floatsOf(vertex), std::vector<float>(data, data + 6));
    ASSERT_TRUE(vertex.setData(data + 3, 3));
    EXPECT_EQ(floatsOf(vertex), std::vector<float>(data + 3, data + 6));

    // Sized in place: whole elements, kept floats kept, new ones zero, and
    // the array marked for upload again.
    unsigned int const beforeResize = vertex.getOSGArray()->getModifiedCount();
    float* grown = vertex.resizeData(7);
    ASSERT_EQ(grown, vertex.getData());
    EXPECT_EQ(floatsOf(vertex), (std::vector<float>{4, 5, 6, 0, 0, 0}));
    EXPECT_NE(vertex.getOSGArray()->getModifiedCount(), beforeResize);
    EXPECT_EQ(vertex.resizeData(2), nullptr) << "less than one element";
    EXPECT_EQ(vertex.getDataSize(), 6u);

    // A name without an element size has no array and refuses everything.
    CKVVertexBufferAttributeImp unknown(CKVVertexBufferAttribute::kNameCount);
    EXPECT_FALSE(unknown.setData(data, 4));
    EXPECT_EQ(unknown.resizeData(4), nullptr);
    EXPECT_EQ(unknown.getData(), nullptr);
}

TEST(BufferGeometryAttributeTest, UpdatesStayWithinTheBuffer)
{
    CKVVertexBufferAttributeImp texCoord(CKVVertexBufferAttribute::kTexCoord);
    float const zeros[6] = {};
    float const ones[3] = {1, 1, 1};
    EXPECT_FALSE(texCoord.updateData(0, ones, 1)) << "empty";
    ASSERT_TRUE(texCoord.setData(zeros, 6));
    unsigned int const before = texCoord.getOSGArray()->getModifiedCount();
    EXPECT_FALSE(texCoord.updateData(4, ones, 3));
    EXPECT_FALSE(texCoord.updateData(0xffffffffu, ones, 2)) << "offset + count wraps";
    EXPECT_EQ(floatsOf(texCoord), std::vector<float>(6, 0.0f));
    EXPECT_EQ(texCoord.getOSGArray()->getModifiedCount(), before);
    // Offsets count floats; a write may end mid-element, exactly at the end.
    ASSERT_TRUE(texCoord.updateData(3, ones, 3));
    EXPECT_EQ(floatsOf(texCoord), (std::vector<float>{0, 0, 0, 1, 1, 1}));
    EXPECT_NE(texCoord.getOSGArray()->getModifiedCount(), before);

    // Indices have the same bound but reach the GPU only with the draw range.
    CKVVertexIndexImp index(CKVVertexIndex::kTriangles);
    unsigned int const indices[6] = {0, 1, 2, 2, 3, 0};
    unsigned int const patch[2] = {7, 8};
    unsigned int const indexBefore = index.getPrimitiveSet()->getModifiedCount();
    ASSERT_TRUE(index.setData(indices, 6));
    EXPECT_FALSE(index.updateData(5, patch, 2));
    ASSERT_TRUE(index.updateData(4, patch, 2));
    unsigned int const* stored = static_cast<unsigned int const*>(index.getData());
    EXPECT_EQ(std::vector<unsigned int>(stored, stored + 6), (std::vector<unsigned int>{0, 1, 2, 2, 7, 8}));
    EXPECT_EQ(index.getPrimitiveSet()->getModifiedCount(), indexBefore);
    index.updateDrawRange();
    EXPECT_NE(index.getPrimitiveSet()->getModifiedCount(), indexBefore);
}

TEST(BufferGeometryIndexTest, DrawRangeWritesOneCommandPerSegmentIntoAFreshArray)
{
    CKVVertexIndexImp index(CKVVertexIndex::kTriangles);
    std::vector<unsigned int> const indices(30, 0u);
    ASSERT_TRUE(index.setData(indices.data(), 30));
    index.setSegments({CKVBufferDataSegment(18, 6), CKVBufferDataSegment(0, 6)});
    index.updateDrawRange();

    osg::DefaultIndirectCommandDrawElements const& commands = commandsOf(index);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].count, 6u);
    EXPECT_EQ(commands[0].firstIndex, 0u);
    EXPECT_EQ(commands[1].firstIndex, 18u);
    EXPECT_EQ(commands[0].instanceCount, 1u) << "not instanced: drawn once";
    EXPECT_EQ(commands[1].instanceCount, 1u);
    EXPECT_EQ(commands.getBufferObject()->getUsage(), GLenum(GL_DYNAMIC_COPY));

    index.setNumInstance(250);
    index.updateDrawRange();
    EXPECT_NE(&commandsOf(index), &commands) << "the GPU may have written the old ones";
    EXPECT_EQ(commandsOf(index)[1].instanceCount, 250u);

    index.clearSegments();
    index.updateDrawRange();
    EXPECT_EQ(commandsOf(index).size(), 0u);
    EXPECT_EQ(CKVVertexIndexImp(CKVVertexIndex::kModeCount).getPrimitiveSet(), nullptr);
}

TEST(BufferGeometryIndexTest, FunctorsSeeEveryIndexWhateverTheCommandsDraw)
{
    CKVVertexIndexImp index(CKVVertexIndex::kTriangles);
    unsigned int const indices[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_TRUE(index.setData(indices, 9));
    index.setSegments({CKVBufferDataSegment(3, 3)});
    index.updateDrawRange();

    osg::TriangleIndexFunctor<TriangleCollector> triangles;
    index.getPrimitiveSet()->accept(triangles);
    EXPECT_EQ(triangles.seen, std::vector<unsigned int>(indices, indices + 9));
}

class BufferGeometryHostTest : public ::testing::Test
{
protected:
    void TearDown() override { CKVRenderStateManager::instance().setOcclusionCulling(true); }

    // A unit square shape with `count` instances along x, packed and rebuilt.
    kv_shared_ptr<CKVBufferGeometryImp> makeInstanced(unsigned int count)
    {
        kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
        std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers{makeSquarePart(-1, -1, 1, 1)};
        for (unsigned int i = 0; i < count; ++i)
        {
            CKVMatrix3D placement = CKVMatrix3D::translation(CKVVector3D(10.0 * i, 0.0, 5.0));
            placement(0, 1) = 0.25 * i;
            buffers.push_back(makeInstance(placement));
        }
        host->updateLogicBuffers(std::vector<bool>(buffers.size(), true), rawPointers(buffers));
        host->updatePhysicalBuffer();
        host->getOSGGeometry()->rebuild();
        return host;
    }

    BufferFactoriesScope mFactories;
};

TEST_F(BufferGeometryHostTest, RebuildWiresTheHostBuffers)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
    float const colours[16] = {};
    kv_shared_ptr<CKVLogicBufferGeometry> part = makeSquarePart(0, 0, 1, 1);
    part->setVertexData(CKVVertexBufferAttribute::kColor, colours, 16);
    ASSERT_TRUE(host->updateLogicBuffers({true}, {part.get()}));
    ASSERT_TRUE(host->updatePhysicalBuffer());
    CKVOSGGeometry* geometry = host->getOSGGeometry();
    geometry->rebuild();
    geometry->rebuild();

    auto arrayOf = [&](CKVVertexBufferAttribute::Name name) {
        return static_cast<CKVVertexBufferAttributeImp*>(host->getVertexBufferAttribute(name))->getOSGArray();
    };
    EXPECT_EQ(geometry->getVertexArray(), arrayOf(CKVVertexBufferAttribute::kVertex));
    EXPECT_EQ(geometry->getNormalArray(), nullptr);
    ASSERT_EQ(geometry->getColorArray(), arrayOf(CKVVertexBufferAttribute::kColor));
    EXPECT_EQ(geometry->getColorArray()->getBinding(), osg::Array::BIND_UNDEFINED) << "attached, never sent";
    ASSERT_EQ(geometry->getNumPrimitiveSets(), 1u);
    EXPECT_EQ(geometry->getPrimitiveSet(0), static_cast<CKVVertexIndexImp*>(host->getVertexIndex())->getPrimitiveSet());

    // Made by name, as hosts may.
    for (char const* name : {"CKVBufferGeometryImp", "CKVVertexBufferAttributeImp", "CKVVertexIndexImp"})
    {
        kv_shared_ptr<CKVSharedObject> made(static_cast<CKVSharedObject*>(CKVRuntimeClass::find(name)->createObject()));
        EXPECT_STREQ(made->isA()->name(), name);
    }
}

TEST_F(BufferGeometryHostTest, BoundComesFromTheInstancesUntilTheHostIsGone)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeInstanced(3);
    osg::ref_ptr<CKVOSGGeometry> geometry = host->getOSGGeometry();
    osg::BoundingBox const placed = geometry->getBoundingBox();
    EXPECT_FLOAT_EQ(placed.xMax(), float(host->getInstanceBnundingBox().maxPt().x));
    EXPECT_FLOAT_EQ(placed.zMin(), 5.0f);

    host = nullptr;
    EXPECT_EQ(geometry->getHostGeometry(), nullptr);
    // The plain drawable's bound: the shape's own vertices, unplaced.
    osg::BoundingBox const plain = geometry->getBoundingBox();
    EXPECT_FLOAT_EQ(plain.xMin(), -1.0f);
    EXPECT_FLOAT_EQ(plain.xMax(), 1.0f);
    EXPECT_FLOAT_EQ(plain.zMax(), 0.0f);
}

TEST_F(BufferGeometryHostTest, InstanceMatricesForPickingComeFromTheCpuRows)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeInstanced(4);
    CKVOSGGeometry* geometry = host->getOSGGeometry();
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers;
    host->getLogicBuffers(buffers);

    std::vector<CKVMatrix3D> placements;
    std::vector<osg::Matrixd> matrices;
    ASSERT_TRUE(geometry->getInstanceMatrices(placements));
    ASSERT_TRUE(geometry->getInstanceMatrices(matrices));
    ASSERT_EQ(placements.size(), 4u);
    for (unsigned int i = 0; i < 4; ++i)
    {
        CKVMatrix3D const& given = buffers[i + 1]->getInstanceMatrix();
        EXPECT_EQ(matrices[i], toOsgMatrix(given));
        EXPECT_DOUBLE_EQ(placements[i](0, 1), given(0, 1));
        EXPECT_DOUBLE_EQ(placements[i](0, 3), 10.0 * i);
    }

    static_cast<osg::Vec4Array*>(geometry->getInstanceMatrixRow(2))->resize(2);
    EXPECT_THROW(geometry->getInstanceMatrices(matrices), std::out_of_range);
    EXPECT_FALSE(makeInstanced(0)->getOSGGeometry()->getInstanceMatrices(matrices));
}

TEST_F(BufferGeometryHostTest, LogicBufferUpdatesReportWhetherAnythingChanged)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
    kv_shared_ptr<CKVLogicBufferGeometry> a = makeSquarePart(0, 0, 1, 1);
    kv_shared_ptr<CKVLogicBufferGeometry> b = makeSquarePart(2, 0, 3, 1);

    EXPECT_FALSE(host->updateLogicBuffers({}, {}));
    EXPECT_TRUE(host->updateLogicBuffers({true, true, false}, {a.get(), b.get(), a.get()}));
    EXPECT_EQ(host->getNumLogicBuffer(), 1u);
    EXPECT_EQ(b->getOwner(), host.get());
    EXPECT_FALSE(host->updateLogicBuffers({false, true}, {a.get(), b.get()}));
}

} // namespace
} // namespace Kelvor
