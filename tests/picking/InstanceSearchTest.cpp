#include "PickingTestScene.h"

#include "picking/CKVInstanceBVH.h"
#include "picking/CKVInstanceSearch.h"
#include "picking/CKVScenePicker.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVScelectAbilityState.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"
#include "TarnwickRender/CKVSelectionResult.h"
#include "TarnwickRender/CKVTransformState.h"
#include "TarnwickRender/CKVVisibilityState.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

namespace Kelvor {
namespace {

std::string describe(bool found, CKVSelectionResult const& r)
{
    std::ostringstream out;
    out.precision(17);
    if (!found)
        return "none";
    out << r.getDrawable() << '#' << r.getInstanceIndex() << " node " << r.getSceneNode() << " at "
        << r.getPosition().x << ',' << r.getPosition().y << ',' << r.getPosition().z;
    return out.str();
}

std::string describe(bool found, std::vector<CKVSelectionResult> const& results)
{
    std::string text = found ? "" : "none";
    for (CKVSelectionResult const& r : results)
        text += describe(true, r) + "; ";
    return text;
}

// Random instanced geometry under scene nodes in every state that matters to
// a query: shown, hidden, not selectable, translucent, moved by the node's
// own matrix, and straight under the camera. Instances are turned about
// any axis and scaled unevenly, some of them to nothing.
class RandomInstanceScene
{
public:
    static constexpr int kGeometries = 8;
    static constexpr int kInstancesPerGeometry = 40;

    explicit RandomInstanceScene(unsigned int seed) : mRandom(seed)
    {
        for (int g = 0; g < kGeometries; ++g)
        {
            kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
            std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers{randomShape()};
            for (int i = 0; i < kInstancesPerGeometry; ++i)
                buffers.push_back(randomInstance());
            host->updateLogicBuffers(std::vector<bool>(buffers.size(), true), rawPointers(buffers));
            host->updatePhysicalBuffer();
            host->getOSGGeometry()->rebuild();
            parentFor(g)->addChild(host->getOSGGeometry());
            mHosts.push_back(host);
            mBuffers.push_back(buffers);
        }
    }

    osg::Camera* camera() const { return mScene.camera(); }
    std::mt19937& random() { return mRandom; }
    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(mRandom); }

    // Removes a few instances of every geometry and adds new ones elsewhere,
    // then packs and rebuilds as the update command does.
    void moveSomeInstances()
    {
        for (std::size_t g = 0; g < mHosts.size(); ++g)
        {
            std::vector<kv_shared_ptr<CKVLogicBufferGeometry>>& buffers = mBuffers[g];
            std::vector<bool> add;
            std::vector<CKVLogicBufferGeometry*> changed;
            for (int k = 0; k < 5; ++k)
            {
                std::size_t const victim = 1 + mRandom() % (buffers.size() - 1);
                add.push_back(false);
                changed.push_back(buffers[victim].get());
                buffers.erase(buffers.begin() + victim);
            }
            for (int k = 0; k < 7; ++k)
            {
                buffers.push_back(randomInstance());
                add.push_back(true);
                changed.push_back(buffers.back().get());
            }
            mHosts[g]->updateLogicBuffers(add, changed);
            mHosts[g]->updatePhysicalBuffer();
            mHosts[g]->getOSGGeometry()->rebuild();
        }
    }

    // Moves every instance of one geometry by writing the rows in place,
    // as an update of the attribute does, with no rebuild to announce it.
    void shiftRowsInPlace(std::size_t geometry, float dx)
    {
        CKVVertexBufferAttribute* row4 =
            mHosts[geometry]->getVertexBufferAttribute(CKVVertexBufferAttribute::kInstanceMatrixR4);
        std::vector<float> values(static_cast<float*>(row4->getData()),
                                  static_cast<float*>(row4->getData()) + row4->getDataSize());
        for (std::size_t i = 0; i < values.size(); i += 4)
            values[i] += dx;
        row4->updateData(0, values.data(), static_cast<unsigned int>(values.size()));
    }

private:
    kv_shared_ptr<CKVLogicBufferGeometry> randomShape()
    {
        std::vector<float> vertices;
        std::vector<unsigned int> indices;
        int const triangles = 1 + int(mRandom() % 6);
        for (int t = 0; t < triangles; ++t)
        {
            for (int v = 0; v < 3; ++v)
            {
                for (int axis = 0; axis < 3; ++axis)
                    vertices.push_back(float(uniform(-1.0, 1.0)));
                indices.push_back(static_cast<unsigned int>(indices.size()));
            }
        }
        kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry);
        part->setVertexData(CKVVertexBufferAttribute::kVertex, vertices.data(), unsigned(vertices.size()));
        part->setIndexData(indices.data(), unsigned(indices.size()));
        return part;
    }

    kv_shared_ptr<CKVLogicBufferGeometry> randomInstance()
    {
        mDrawables.push_back(new CKVDrawable(mDrawables.size() + 1));
        CKVVector3D const axis(uniform(-1, 1), uniform(-1, 1), uniform(0.1, 1));
        bool const collapsed = mRandom() % 25 == 0;
        double const sx = collapsed ? 0.0 : uniform(0.2, 2.0);
        CKVMatrix3D const matrix = CKVMatrix3D::scaling(sx, uniform(0.2, 2.0), uniform(0.2, 2.0)) *
                                   CKVMatrix3D::rotation(uniform(0.0, 6.3), axis) *
                                   CKVMatrix3D::translation(CKVVector3D(uniform(-9, 9), uniform(-9, 9), uniform(-5, 5)));
        kv_shared_ptr<CKVLogicBufferGeometry> instance(new CKVLogicBufferGeometry(mDrawables.back().get()));
        instance->setInstanceMatrix(matrix);
        return instance;
    }

    osg::Group* parentFor(int geometry)
    {
        if (geometry % 6 == 0)
            return mScene.camera();
        kv_shared_ptr<CKVSceneNodeImp> node(new CKVSceneNodeImp());
        CKVSceneNodeStateSet* states = node->getStateSet();
        switch (geometry % 6)
        {
        case 1: {
            auto* visibility = new CKVVisibilityState();
            visibility->removeVisibility(CKVVisibilityState::kDisplay);
            states->addState(visibility);
            break;
        }
        case 2: {
            auto* selectable = new CKVScelectAbilityState();
            selectable->removeSelectAbility(CKVVisibilityState::kDisplay);
            states->addState(selectable);
            break;
        }
        case 3: {
            mMaterials.push_back(new CKVBasicMaterial);
            mMaterials.back()->setRGBA(200, 120, 40, 128);
            mMaterials.back()->setSortTransparency(true);
            states->addState(new CKVMaterialState(mMaterials.back().get()));
            break;
        }
        case 4: {
            auto* transform = new CKVTransformState();
            transform->setTransformMode(CKVTransformState::kMatrix);
            transform->setMatrix(CKVMatrix3D::rotation(0.7, CKVVector3D(0, 0, 1)) *
                                 CKVMatrix3D::translation(CKVVector3D(1.5, -2.0, 0.5)));
            states->addState(transform);
            break;
        }
        default:
            break;
        }
        mScene.camera()->addChild(node->getOSGNode());
        mNodes.push_back(node);
        return node->getOSGNode();
    }

    std::mt19937 mRandom;
    PickingScene mScene;
    std::vector<kv_shared_ptr<CKVSceneNodeImp>> mNodes;
    std::vector<kv_shared_ptr<CKVBasicMaterial>> mMaterials;
    std::vector<kv_shared_ptr<CKVDrawable>> mDrawables;
    std::vector<kv_shared_ptr<CKVBufferGeometryImp>> mHosts;
    std::vector<std::vector<kv_shared_ptr<CKVLogicBufferGeometry>>> mBuffers;
};

// Every answer with the instance search equals the answer of trying every
// instance: window picks, world segments in any direction and rectangles,
// before and after instances are removed, added and moved in place.
TEST(InstanceSearchTest, AnswersEqualThoseOfTryingEveryInstance)
{
    RandomInstanceScene scene(20261125);
    CKVScenePicker searched(scene.camera());
    CKVScenePicker exhaustive(scene.camera());
    exhaustive.setUseInstanceSearch(false);
    double const pixels = PickingScene::kPixels;

    int queries = 0, hits = 0;
    auto compareRound = [&](int count) {
        for (int q = 0; q < count; ++q, ++queries)
        {
            CKVSelectionResult a, b;
            std::vector<CKVSelectionResult> as, bs;
            bool foundA = false, foundB = false;
            std::string kind;
            switch (q % 3)
            {
            case 0: {
                CKVPoint3D const pixel(scene.uniform(0, pixels), scene.uniform(0, pixels), 0);
                foundA = searched.pick(pixel, a);
                foundB = exhaustive.pick(pixel, b);
                kind = "pick";
                break;
            }
            case 1: {
                CKVPoint3D const from(scene.uniform(-12, 12), scene.uniform(-12, 12), scene.uniform(-12, 12));
                CKVPoint3D const to(scene.uniform(-12, 12), scene.uniform(-12, 12), scene.uniform(-12, 12));
                foundA = searched.intersect(from, to, a);
                foundB = exhaustive.intersect(from, to, b);
                kind = "segment";
                break;
            }
            default: {
                CKVPoint3D const c1(scene.uniform(0, pixels), scene.uniform(0, pixels), 0);
                CKVPoint3D const c2(c1.x + scene.uniform(-20, 20), c1.y + scene.uniform(-20, 20), 0);
                unsigned int const maxCount = 1 + scene.random()() % 40;
                foundA = searched.select(c1, c2, maxCount, as);
                foundB = exhaustive.select(c1, c2, maxCount, bs);
                ASSERT_EQ(describe(foundA, as), describe(foundB, bs)) << "rectangle, query " << queries;
                hits += foundA ? 1 : 0;
                continue;
            }
            }
            ASSERT_EQ(describe(foundA, a), describe(foundB, b)) << kind << ", query " << queries;
            hits += foundA ? 1 : 0;
        }
    };

    compareRound(4000);
    scene.moveSomeInstances();
    compareRound(3000);
    scene.shiftRowsInPlace(0, 3.0f);
    compareRound(3000);
    EXPECT_GE(queries, 10000);
    EXPECT_GT(hits, queries / 10) << "the queries must meet the scene often enough to mean something";
}

// A pick right after an instance moved finds it where it is now and not
// where it was, whether it moved by a new placement or by its rows.
TEST(InstanceSearchTest, PicksFollowInstancesThatAreRemovedReAddedAndMoved)
{
    PickingScene scene;
    kv_shared_ptr<CKVDrawable> a = new CKVDrawable(1), b = new CKVDrawable(2);
    kv_shared_ptr<CKVLogicBufferGeometry> first = PickingScene::instanceAt(-5, 0, 0, a.get());
    kv_shared_ptr<CKVLogicBufferGeometry> second = PickingScene::instanceAt(5, 0, 0, b.get());
    CKVBufferGeometryImp* host = scene.add({PickingScene::square(0, 0, 0, 1.0, nullptr), first, second});
    CKVScenePicker const picker(scene.camera());
    auto drawableAt = [&](double x, double y) -> CKVDrawable const* {
        CKVSelectionResult result;
        return picker.pick(PickingScene::pixelOver(x, y), result) ? result.getDrawable() : nullptr;
    };
    ASSERT_EQ(drawableAt(-5, 0), a.get());
    ASSERT_EQ(drawableAt(5, 0), b.get());

    // Removed: gone at once.
    host->updateLogicBuffers({false}, {first.get()});
    host->updatePhysicalBuffer();
    host->getOSGGeometry()->rebuild();
    EXPECT_EQ(drawableAt(-5, 0), nullptr);
    EXPECT_EQ(drawableAt(5, 0), b.get());

    // Re-added somewhere else and packed: the packing writes the rows the
    // pick reads, so the rebuild that announces the change is not needed.
    kv_shared_ptr<CKVLogicBufferGeometry> moved = PickingScene::instanceAt(0, 6, 0, a.get());
    host->updateLogicBuffers({true}, {moved.get()});
    host->updatePhysicalBuffer();
    EXPECT_EQ(drawableAt(0, 6), a.get());
    host->getOSGGeometry()->rebuild();
    EXPECT_EQ(drawableAt(0, 6), a.get());
    EXPECT_EQ(drawableAt(-5, 0), nullptr);

    // Rows written in place: the next pick sees the new positions.
    CKVVertexBufferAttribute* row4 = host->getVertexBufferAttribute(CKVVertexBufferAttribute::kInstanceMatrixR4);
    float* rows = static_cast<float*>(row4->getData());
    std::vector<float> shifted(rows, rows + row4->getDataSize());
    for (std::size_t i = 1; i < shifted.size(); i += 4)
        shifted[i] -= 3.0f;
    row4->updateData(0, shifted.data(), static_cast<unsigned int>(shifted.size()));
    EXPECT_EQ(drawableAt(5, -3), b.get());
    EXPECT_EQ(drawableAt(0, 3), a.get());
    EXPECT_EQ(drawableAt(5, 0), nullptr);
    EXPECT_FALSE(host->instanceSearch().building());
}

// A geometry large enough to have its tree built on a worker: picks right
// after the install, after a repack and after rows written in place (which
// refit the tree on the spot) answer as trying every instance does.
TEST(InstanceSearchTest, TreesBuiltOnTheWorkerAnswerLikeTryingEveryInstance)
{
    constexpr int kSide = 100;
    PickingScene scene;
    std::mt19937 random(7);
    std::uniform_real_distribution<double> jitter(-0.02, 0.02);
    std::vector<kv_shared_ptr<CKVDrawable>> drawables;
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers{PickingScene::square(0, 0, 0, 0.06, nullptr)};
    for (int i = 0; i < kSide * kSide; ++i)
    {
        drawables.push_back(new CKVDrawable(i));
        buffers.push_back(PickingScene::instanceAt(-9.9 + 0.198 * (i % kSide) + jitter(random),
                                                   -9.9 + 0.198 * (i / kSide) + jitter(random), jitter(random),
                                                   drawables.back().get()));
    }
    CKVBufferGeometryImp* host = scene.add(buffers);
    CKVScenePicker searched(scene.camera());
    CKVScenePicker exhaustive(scene.camera());
    exhaustive.setUseInstanceSearch(false);
    std::uniform_real_distribution<double> pixel(0.0, PickingScene::kPixels);

    int hits = 0;
    auto compare = [&](char const* phase) {
        for (int q = 0; q < 40; ++q)
        {
            CKVPoint3D const at(pixel(random), pixel(random), 0);
            CKVSelectionResult a, b;
            bool const foundA = searched.pick(at, a);
            bool const foundB = exhaustive.pick(at, b);
            ASSERT_EQ(describe(foundA, a), describe(foundB, b)) << phase << ", pick " << q;
            hits += foundA ? 1 : 0;
        }
        for (int q = 0; q < 8; ++q)
        {
            CKVPoint3D const c1(pixel(random), pixel(random), 0);
            CKVPoint3D const c2(c1.x + 6, c1.y + 4, 0);
            std::vector<CKVSelectionResult> as, bs;
            bool const foundA = searched.select(c1, c2, 500, as);
            bool const foundB = exhaustive.select(c1, c2, 500, bs);
            ASSERT_EQ(describe(foundA, as), describe(foundB, bs)) << phase << ", rectangle " << q;
        }
    };

    compare("installed");
    EXPECT_FALSE(host->instanceSearch().building()) << "the first query adopted the worker's tree";

    std::vector<bool> add;
    std::vector<CKVLogicBufferGeometry*> changed;
    for (int k = 0; k < 50; ++k)
    {
        add.push_back(false);
        changed.push_back(buffers[1 + random() % (buffers.size() - 1)].get());
    }
    kv_shared_ptr<CKVDrawable> extra = new CKVDrawable(~0ull);
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> added;
    for (int k = 0; k < 80; ++k)
    {
        added.push_back(PickingScene::instanceAt(jitter(random) * 400, jitter(random) * 400, 1.0, extra.get()));
        add.push_back(true);
        changed.push_back(added.back().get());
    }
    host->updateLogicBuffers(add, changed);
    host->updatePhysicalBuffer();
    host->getOSGGeometry()->rebuild();
    compare("repacked");

    CKVVertexBufferAttribute* row4 = host->getVertexBufferAttribute(CKVVertexBufferAttribute::kInstanceMatrixR4);
    std::vector<float> rows(static_cast<float*>(row4->getData()),
                            static_cast<float*>(row4->getData()) + row4->getDataSize());
    for (std::size_t i = 0; i < rows.size(); i += 4)
        rows[i] = -rows[i];
    row4->updateData(0, rows.data(), static_cast<unsigned int>(rows.size()));
    compare("mirrored in place");
    EXPECT_GT(hits, 40) << "the picks must meet the instances often enough to mean something";
}

} // namespace
} // namespace Kelvor
