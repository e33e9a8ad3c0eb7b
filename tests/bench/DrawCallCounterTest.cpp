// The counter sits in front of the GL library. Without a current context
// the library's entry points do nothing, so the calls here only exercise
// the routing: a bound call, a name looked up with dlsym as OpenSceneGraph
// does, and one looked up through GLX must all be counted.
#include "bench/CKVDrawCallCounter.h"

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glx.h>

using namespace Kelvor;

namespace {

using MultiDrawIndirect = void (*)(GLenum, GLenum, void const*, GLsizei, GLsizei);
using DrawElements = void (*)(GLenum, GLsizei, GLenum, void const*);

} // namespace

TEST(DrawCallCounterTest, CountsCallsHoweverTheEntryPointWasFound)
{
    CKVDrawCallCounter::Counts const start = CKVDrawCallCounter::counts();
    glDrawArrays(GL_TRIANGLES, 0, 3);
    EXPECT_EQ(CKVDrawCallCounter::since(start).calls, 1u);

    auto looked = reinterpret_cast<DrawElements>(CKVDrawCallCounter::resolve("glDrawElements"));
    ASSERT_NE(looked, nullptr);
    looked(GL_TRIANGLES, 3, GL_UNSIGNED_INT, nullptr);
    EXPECT_EQ(CKVDrawCallCounter::since(start).calls, 2u);

    auto viaGlx = reinterpret_cast<MultiDrawIndirect>(
        glXGetProcAddressARB(reinterpret_cast<GLubyte const*>("glMultiDrawElementsIndirect")));
    ASSERT_NE(viaGlx, nullptr);
    viaGlx(GL_TRIANGLES, GL_UNSIGNED_INT, nullptr, 32, 20);
    CKVDrawCallCounter::Counts const counted = CKVDrawCallCounter::since(start);
    EXPECT_EQ(counted.calls, 3u);
    EXPECT_EQ(counted.multiDraws, 1u);
    EXPECT_EQ(counted.instancedDraws, 1u);
    // The two single draws and the 32 commands of the multi-draw.
    EXPECT_EQ(counted.subDraws, 34u);

    // A display list replays compiled draws: one call.
    glCallList(1);
    EXPECT_EQ(CKVDrawCallCounter::since(start).calls, 4u);

    // Counted calls go on to the GL library, and names the counter does not
    // wrap still resolve there.
    EXPECT_TRUE(CKVDrawCallCounter::forwards("glDrawArrays"));
    EXPECT_TRUE(CKVDrawCallCounter::forwards("glMultiDrawElementsIndirect"));
    EXPECT_NE(glXGetProcAddressARB(reinterpret_cast<GLubyte const*>("glBindBuffer")), nullptr);
    EXPECT_EQ(CKVDrawCallCounter::since(start).calls, 4u);
}
