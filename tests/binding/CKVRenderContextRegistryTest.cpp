#include "DispatchTestContexts.h"

#include "binding/CKVRenderContextImp.h"
#include "binding/CKVRenderContextRegistry.h"
#include "binding/CKVRenderContextX11Imp.h"

#include "TarnwickRender/CKVRenderCallback.h"

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

unsigned int idOf(CKVRenderContext* context)
{
    return static_cast<CKVRenderContextImp*>(context)->getId();
}

TEST(CKVRenderContextRegistryTest, CreatesX11ContextsWithIdsFromTheCounter)
{
    CKVRenderContext* first = CKVRenderCallback::createRenderContext(-1);
    CKVRenderContext* second = CKVRenderCallback::createRenderContext(-1);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(first->isKindOf(CKVRenderContextX11Imp::desc()));
    // The argument is not the id: both asked for -1 and both exist.
    EXPECT_EQ(idOf(second), idOf(first) + 1);
    EXPECT_TRUE(CKVRenderContextRegistry::contains(first));
    EXPECT_TRUE(CKVRenderContextRegistry::contains(second));

    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(first));
    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(second));
}

TEST(CKVRenderContextRegistryTest, RefusesAnIdThatALiveContextHolds)
{
    CKVRenderContext* context = CKVRenderCallback::createRenderContext(0);
    ASSERT_NE(context, nullptr);
    unsigned int const held = idOf(context);
    unsigned int const before = CKVRenderContextRegistry::size();

    EXPECT_EQ(CKVRenderCallback::createRenderContext(static_cast<int>(held)), nullptr);
    EXPECT_EQ(CKVRenderContextRegistry::size(), before);

    // Once that context is gone the id is free again.
    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
    CKVRenderContext* again = CKVRenderCallback::createRenderContext(static_cast<int>(held));
    ASSERT_NE(again, nullptr);
    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(again));
}

TEST(CKVRenderContextRegistryTest, DestroyClearsThePointerAndRefusesASecondTime)
{
    CKVRenderContext* context = CKVRenderCallback::createRenderContext(-1);
    ASSERT_NE(context, nullptr);
    CKVRenderContext* copy = context;
    unsigned int const before = CKVRenderContextRegistry::size();

    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(CKVRenderContextRegistry::size(), before - 1);
    EXPECT_FALSE(CKVRenderContextRegistry::contains(copy));
    EXPECT_FALSE(CKVRenderCallback::destroyRenderContext(context));
}

TEST(CKVRenderContextRegistryTest, DestroyRefusesForeignAndUnlistedContexts)
{
    ForeignContext foreign;
    CKVRenderContext* foreignPointer = &foreign;
    EXPECT_FALSE(CKVRenderCallback::destroyRenderContext(foreignPointer));
    EXPECT_EQ(foreignPointer, &foreign);

    // One of ours that the host did not get from the factory.
    auto* unlisted = new CKVRenderContextX11Imp;
    CKVRenderContext* unlistedPointer = unlisted;
    EXPECT_FALSE(CKVRenderCallback::destroyRenderContext(unlistedPointer));
    EXPECT_EQ(unlistedPointer, unlisted);
    delete unlisted;
}

} // namespace
} // namespace Kelvor
