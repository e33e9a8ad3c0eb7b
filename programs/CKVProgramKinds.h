#pragma once

#include <osg/Program>
#include <osg/Shader>
#include <osg/ref_ptr>

#include <string>
#include <vector>

namespace Kelvor {

// The table of program kinds: which built-in sources make each stage, and
// which defines each stage listens to. Adding a kind is one entry here plus
// its .glsl files; kinds without an entry have no program yet.
class CKVProgramKinds
{
public:
    // Text put in front of a stage's sources. Shader files carry no version
    // line of their own, so that several can be joined into one stage.
    enum Prefix
    {
        kVersion,          // "#version 420 core"
        kVersionBindless,  // the version line and the bindless extension line
    };

    // How a stage takes part in OSG's define mechanism.
    enum DefineUse
    {
        kListens,        // the kind's define list, manual mode
        kManualEmpty,    // manual mode with an empty list: never varies
        kListensPragma,  // the kind's define list, mode left at OSG's default
        kUntouched,      // neither a list nor a mode
    };

    struct Stage
    {
        osg::Shader::Type type;
        Prefix prefix;
        std::vector<std::string> sources;  // KVShaderSource names, joined in order
        DefineUse defineUse;
    };

    struct Kind
    {
        unsigned int kind;
        std::vector<Stage> stages;
        std::vector<std::string> defines;
    };

    static char const* const kPrefixV;
    static char const* const kPrefixP;

    // The entry of a kind, or null for a kind out of range or not built in.
    static Kind const* find(unsigned int kind);

    // Prefix and sources of a stage joined; empty when a source is missing.
    static std::string assembleSource(Stage const& stage);

    // A new program of the kind, its shaders in table order; null when the
    // kind has no entry or one of its sources is missing.
    static osg::ref_ptr<osg::Program> createProgram(unsigned int kind);
};

} // namespace Kelvor
