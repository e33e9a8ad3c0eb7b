#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

namespace Kelvor {

// A three-level family: two creatable by name, the middle one not.
class ModelTestBase : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(ModelTestBase)
public:
    explicit ModelTestBase(bool* destroyed = nullptr) : mDestroyed(destroyed) {}
    ~ModelTestBase() override
    {
        if (mDestroyed)
            *mDestroyed = true;
    }

private:
    bool* mDestroyed;
};

class ModelTestMiddle : public ModelTestBase
{
    KV_DECLARE_RUNTIME_CLASS(ModelTestMiddle)
public:
    explicit ModelTestMiddle(int) {}
};

class ModelTestLeaf : public ModelTestMiddle
{
    KV_DECLARE_RUNTIME_CLASS(ModelTestLeaf)
public:
    ModelTestLeaf() : ModelTestMiddle(0) {}
};

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(ModelTestBase, CKVSharedObject)
KV_IMPLEMENT_RUNTIME_CLASS(ModelTestMiddle, ModelTestBase)
KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(ModelTestLeaf, ModelTestMiddle)

namespace {

TEST(KvSharedPtr, SelfAssignmentKeepsTheCount)
{
    bool destroyed = false;
    kv_shared_ptr<ModelTestBase> p(new ModelTestBase(&destroyed));
    ASSERT_EQ(1u, p->refCount());

    kv_shared_ptr<ModelTestBase>& alias = p;
    p = alias;
    EXPECT_EQ(1u, p->refCount());
    p = p.get();
    EXPECT_EQ(1u, p->refCount());
    EXPECT_FALSE(destroyed);

    kv_shared_ptr<ModelTestBase> second = p;
    second = p; // same object through another holder
    EXPECT_EQ(2u, p->refCount());
}

TEST(KvSharedPtr, LastHolderDeletesAndReassignmentReleasesTheOld)
{
    bool firstGone = false;
    bool secondGone = false;
    {
        kv_shared_ptr<ModelTestBase> a(new ModelTestBase(&firstGone));
        kv_shared_ptr<ModelTestBase> b = a;
        a = new ModelTestBase(&secondGone);
        EXPECT_FALSE(firstGone) << "b still holds the first object";
        b = nullptr;
        EXPECT_TRUE(firstGone);
        EXPECT_FALSE(secondGone);

        kv_shared_ptr<ModelTestBase> moved(std::move(a));
        EXPECT_FALSE(a.valid());
        EXPECT_EQ(1u, moved->refCount());
    }
    EXPECT_TRUE(secondGone);
}

TEST(KvSharedPtr, ConvertsFromDerivedSharingOneCount)
{
    kv_shared_ptr<ModelTestLeaf> leaf(new ModelTestLeaf);
    kv_shared_ptr<ModelTestBase> base = leaf;
    EXPECT_EQ(2u, leaf->refCount());
    EXPECT_TRUE(base == leaf.get());
}

TEST(CKVSharedObject, UnrefToZeroLeavesTheObjectAlive)
{
    bool destroyed = false;
    ModelTestBase* object = new ModelTestBase(&destroyed);
    EXPECT_EQ(0u, object->refCount());
    EXPECT_EQ(1u, object->ref());
    EXPECT_EQ(2u, object->ref());
    EXPECT_EQ(1u, object->unref());
    EXPECT_EQ(0u, object->unref());
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(0u, object->refCount());
    delete object;
    EXPECT_TRUE(destroyed);
}

TEST(CKVSharedObject, CopyStartsUnreferenced)
{
    ModelTestBase original;
    original.ref();
    ModelTestBase copy(original);
    EXPECT_EQ(0u, copy.refCount());
    original.unref();
}

TEST(CKVSharedObject, CountIsExactUnderConcurrentHolders)
{
    bool destroyed = false;
    kv_shared_ptr<ModelTestBase> shared(new ModelTestBase(&destroyed));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([shared] {
            for (int i = 0; i < 2000; ++i) {
                kv_shared_ptr<ModelTestBase> local = shared;
                kv_shared_ptr<ModelTestBase> another = local;
            }
        });
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(1u, shared->refCount());
    shared = nullptr;
    EXPECT_TRUE(destroyed);
}

TEST(CKVRuntimeClass, IsKindOfFollowsEveryLevel)
{
    ModelTestLeaf leaf;
    CKVObject const& object = leaf;
    EXPECT_EQ(ModelTestLeaf::desc(), object.isA());
    EXPECT_TRUE(object.isKindOf(ModelTestLeaf::desc()));
    EXPECT_TRUE(object.isKindOf(ModelTestMiddle::desc()));
    EXPECT_TRUE(object.isKindOf(ModelTestBase::desc()));
    EXPECT_TRUE(object.isKindOf(CKVSharedObject::desc()));
    EXPECT_TRUE(object.isKindOf(CKVObject::desc()));
    EXPECT_FALSE(object.isKindOf(nullptr));

    ModelTestBase base;
    EXPECT_FALSE(base.isKindOf(ModelTestMiddle::desc()));
    EXPECT_STREQ("ModelTestMiddle", ModelTestMiddle::desc()->name());
    EXPECT_EQ(ModelTestBase::desc(), ModelTestMiddle::desc()->base());
}

TEST(CKVRuntimeClass, CreatesByNameOnlyWhenCreatable)
{
    CKVRuntimeClass const* leafRecord = CKVRuntimeClass::find("ModelTestLeaf");
    ASSERT_EQ(ModelTestLeaf::desc(), leafRecord);
    ASSERT_TRUE(leafRecord->canCreate());
    CKVObject* created = leafRecord->createObject();
    ASSERT_NE(nullptr, created);
    EXPECT_EQ(ModelTestLeaf::desc(), created->isA());
    delete created;

    CKVRuntimeClass const* middle = CKVRuntimeClass::find("ModelTestMiddle");
    ASSERT_NE(nullptr, middle);
    EXPECT_FALSE(middle->canCreate());
    EXPECT_EQ(nullptr, middle->createObject());

    EXPECT_EQ(nullptr, CKVRuntimeClass::find("NoSuchClass"));
    EXPECT_EQ(nullptr, CKVRuntimeClass::find(nullptr));
    EXPECT_NE(nullptr, CKVRuntimeClass::find("CKVSharedObject"));
}

} // namespace
} // namespace Kelvor
