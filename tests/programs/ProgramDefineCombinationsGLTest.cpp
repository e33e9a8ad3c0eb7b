#include "programs/CKVProgramKinds.h"
#include "support/GLTest.h"

#include "ProgramVariantBuild.h"

#include <gtest/gtest.h>

#include <osg/GLObjects>
#include <osg/Program>
#include <osg/Shader>
#include <osg/State>
#include <osg/StateSet>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace Kelvor {
namespace {

using programtest::buildVariant;
using programtest::DefineSet;
using programtest::describe;

char const* const kNotBindless = "_USE_NOT_BINDLESS_TEXTURE";
char const* const kPBR = "_USE_PBR";
// Kinds 1 to this one are looked up in the table; a kind without an entry
// has no program yet.
constexpr unsigned int kLastKind = 24;
// Up to this many varying defines every subset is built.
constexpr std::size_t kAllSubsetsUpTo = 10;
// Beyond it, every subset with at most this many defines on, and every one
// with at most this many off.
constexpr std::size_t kFewOn = 3;
constexpr std::size_t kFewOff = 2;

bool contains(DefineSet const& set, std::string const& name)
{
    return std::find(set.begin(), set.end(), name) != set.end();
}

bool listensTo(CKVProgramKinds::Kind const& kind, std::string const& name)
{
    return contains(kind.defines, name);
}

// The defines a kind is always built with, whatever else is on: this driver
// has no bindless textures, and _USE_PBR is put on the node for kind 3 and
// taken off for every other kind, so the two are never on together
// elsewhere and never off in kind 3.
DefineSet alwaysOn(CKVProgramKinds::Kind const& kind)
{
    DefineSet always;
    if (listensTo(kind, kNotBindless))
        always.push_back(kNotBindless);
    if (kind.kind == 3)
        always.push_back(kPBR);
    return always;
}

DefineSet varying(CKVProgramKinds::Kind const& kind)
{
    DefineSet result;
    for (std::string const& d : kind.defines) {
        if (d != kNotBindless && d != kPBR)
            result.push_back(d);
    }
    return result;
}

void addSubsetsOfSize(DefineSet const& from, std::size_t size, bool complement, std::vector<DefineSet>& out)
{
    std::vector<bool> pick(from.size(), false);
    std::fill(pick.begin(), pick.begin() + std::min(size, from.size()), true);
    do {
        DefineSet set;
        for (std::size_t i = 0; i < from.size(); ++i) {
            if (pick[i] != complement)
                set.push_back(from[i]);
        }
        out.push_back(set);
    } while (std::prev_permutation(pick.begin(), pick.end()));
}

// Which combinations to build. The defines of a kind are independent
// switches (the render context and the host turn them on and off one by
// one), so any subset can occur. Few defines: all subsets. Many (the
// surface kinds listen to about twenty, a million subsets): the subsets
// grouped by how many are on. The sources interact only where a branch of
// one define declares what a branch of another uses, or where branches
// nest; every such interaction involves two or three defines, so every
// subset of up to three on covers them with the rest off, and every subset
// of up to two off covers the same with the rest on.
std::vector<DefineSet> combinations(DefineSet const& defines)
{
    std::vector<DefineSet> sets;
    std::size_t const n = defines.size();
    if (n <= kAllSubsetsUpTo) {
        for (std::size_t size = 0; size <= n; ++size)
            addSubsetsOfSize(defines, size, false, sets);
        return sets;
    }
    for (std::size_t size = 0; size <= kFewOn; ++size)
        addSubsetsOfSize(defines, size, false, sets);
    for (std::size_t off = 0; off <= kFewOff; ++off)
        addSubsetsOfSize(defines, off, true, sets);
    return sets;
}

// Kinds whose lists hold defines of the text library: those carry values
// that the library sets itself, and are not switched on and off here.
bool hasValuedDefines(CKVProgramKinds::Kind const& kind)
{
    return std::any_of(kind.defines.begin(), kind.defines.end(),
                       [](std::string const& d) { return d.rfind("_USE_", 0) != 0; });
}

class ProgramDefineCombinationsGLTest : public GLTest
{
protected:
    void expectKindsBuild(std::vector<unsigned int> const& kinds)
    {
        for (unsigned int k : kinds) {
            CKVProgramKinds::Kind const* kind = CKVProgramKinds::find(k);
            ASSERT_NE(kind, nullptr) << "kind " << k << " is not in the table";
            SCOPED_TRACE("kind " + std::to_string(k));
            expectEveryCombinationBuilds(*kind);
        }
    }

    // Builds every combination of the kind; reports the first failures with
    // the GLSL info log and the number of failing combinations.
    void expectEveryCombinationBuilds(CKVProgramKinds::Kind const& kind)
    {
        osg::ref_ptr<osg::Program> program = CKVProgramKinds::createProgram(kind.kind);
        ASSERT_TRUE(program.valid()) << "kind " << kind.kind << ": a source is missing";
        DefineSet const always = alwaysOn(kind);
        std::vector<DefineSet> const sets = combinations(varying(kind));

        int failures = 0;
        ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
            std::size_t built = 0;
            for (DefineSet defines : sets) {
                defines.insert(defines.end(), always.begin(), always.end());
                std::string const problems = buildVariant(*program, state, defines);
                if (!problems.empty() && ++failures <= 3)
                    ADD_FAILURE() << "kind " << kind.kind << " with " << describe(defines) << "\n" << problems;
                // Each variant keeps its GL objects until released; let them
                // go now and then so that the driver's memory stays small.
                if (++built % 64 == 0) {
                    program->releaseGLObjects(&state);
                    osg::flushAllDeletedGLObjects(state.getContextID());
                }
            }
            program->releaseGLObjects(&state);
            osg::flushAllDeletedGLObjects(state.getContextID());
        }));
        EXPECT_EQ(failures, 0) << "kind " << kind.kind << ": " << failures << " of " << sets.size()
                               << " combinations fail";
    }
};

// One test per group of kinds, so that each stays within a test's time.
TEST_F(ProgramDefineCombinationsGLTest, SurfaceBuildsUnderEveryCombination)
{
    expectKindsBuild({1});
}

TEST_F(ProgramDefineCombinationsGLTest, PhysicallyBasedSurfaceBuildsUnderEveryCombination)
{
    expectKindsBuild({3});
}

TEST_F(ProgramDefineCombinationsGLTest, ReflectedSurfacesBuildUnderEveryCombination)
{
    expectKindsBuild({6, 7});
}

// Every other kind of the table, those that land later included.
TEST_F(ProgramDefineCombinationsGLTest, EveryOtherKindBuildsUnderEveryCombination)
{
    std::vector<unsigned int> others;
    for (unsigned int k = 1; k <= kLastKind; ++k) {
        CKVProgramKinds::Kind const* kind = CKVProgramKinds::find(k);
        if (kind && k != 1 && k != 3 && k != 6 && k != 7 && !hasValuedDefines(*kind))
            others.push_back(k);
    }
    // Flat colour and the four depth kinds at least.
    EXPECT_GE(others.size(), 5u);
    expectKindsBuild(others);
}

// Where the driver has bindless textures the shaders declare handles with a
// layout the compiler knows only with the extension enabled. Each such
// declaration must be inside a branch that _USE_NOT_BINDLESS_TEXTURE turns
// off, in a stage that declares the extension in front.
TEST(ProgramBindlessGuards, BindlessDeclarationsAreGuardedAndFollowTheExtensionLine)
{
    int declarations = 0;
    for (unsigned int k = 1; k <= kLastKind; ++k) {
        CKVProgramKinds::Kind const* kind = CKVProgramKinds::find(k);
        if (!kind)
            continue;
        for (CKVProgramKinds::Stage const& stage : kind->stages) {
            std::string const source = CKVProgramKinds::assembleSource(stage);
            bool const extensionDeclared = source.rfind(CKVProgramKinds::kPrefixP, 0) == 0;
            // One entry per open #if: whether it is a bindless-only branch
            // we are in.
            std::vector<bool> guards;
            // The same for the #else branch of each.
            std::vector<bool> elseGuards;
            std::istringstream lines(source);
            std::string line;
            int number = 0;
            while (std::getline(lines, line)) {
                ++number;
                std::string const code = line.substr(0, line.find("//"));
                std::string directive = code;
                directive.erase(0, directive.find_first_not_of(" \t"));
                if (directive.rfind("#if", 0) == 0) {
                    bool const negated =
                        directive.rfind("#ifndef", 0) == 0 || directive.find("!defined") != std::string::npos;
                    bool const names = directive.find(kNotBindless) != std::string::npos;
                    guards.push_back(names && negated);
                    elseGuards.push_back(names && !negated);
                } else if (directive.rfind("#el", 0) == 0 && !guards.empty()) {
                    guards.back() = elseGuards.back();
                    elseGuards.back() = false;
                } else if (directive.rfind("#endif", 0) == 0 && !guards.empty()) {
                    guards.pop_back();
                    elseGuards.pop_back();
                } else if (code.find("bindless_sampler") != std::string::npos ||
                           code.find("bindless_image") != std::string::npos) {
                    ++declarations;
                    bool const guarded = std::find(guards.begin(), guards.end(), true) != guards.end();
                    EXPECT_TRUE(guarded) << "kind " << k << ", " << stage.sources.back() << " line " << number
                                         << " unguarded: " << line;
                    EXPECT_TRUE(extensionDeclared) << "kind " << k << ", " << stage.sources.back() << " line "
                                                   << number << " without the extension line: " << line;
                }
            }
            EXPECT_TRUE(guards.empty()) << "kind " << k << ", " << stage.sources.back() << ": unbalanced #if";
        }
    }
    EXPECT_GT(declarations, 0) << "no bindless declaration found: the check checks nothing";
}

} // namespace
} // namespace Kelvor
