#include "programs/CKVProgramKinds.h"

#include "environment/KVAtmosphereShaders.h"
#include "programs/KVShaderSource.h"

#include <osg/Shader>

#include <set>

namespace Kelvor {

char const* const CKVProgramKinds::kPrefixV = "#version 420 core\n";
char const* const CKVProgramKinds::kPrefixP =
    "#version 420 core\n#extension GL_ARB_bindless_texture : enable\n";

namespace {

char const* const TAA = "_USE_TAA";
char const* const TEX = "_USE_TEXTURE";
char const* const PBR = "_USE_PBR";
char const* const SHD = "_USE_SHADOW";
char const* const AO = "_USE_SSAO";
char const* const LPV = "_USE_LPV";
char const* const ATM = "_USE_ATMOSPHERE";
char const* const VOL = "_USE_VOLUMETRICLIGHT";
char const* const FOG = "_USE_FOG";
char const* const INS = "_USE_INSTANCE_MATRIX";
char const* const ANI = "_USE_ANIMATION_CLIPTEST";
char const* const CLP = "_USE_CLIP_TEST";
char const* const ALF = "_USE_ALPHA_TEST";
char const* const HIL = "_USE_HIGHLIGHT_STYLE";
char const* const SIL = "_USE_SILHOUETTE";
char const* const WHT = "_USE_WHITE_COLOR";
char const* const NBT = "_USE_NOT_BINDLESS_TEXTURE";
char const* const REP = "_USE_ANTI_REPEAR_TEXTURE";
char const* const RAN = "_USE_WEATHER_RAIN";
char const* const SNW = "_USE_WEATHER_SNOW";
char const* const SKT = "_USE_SKY_TERRAIN";

using Stage = CKVProgramKinds::Stage;
using Kind = CKVProgramKinds::Kind;

osg::Shader::Type const VS = osg::Shader::VERTEX;
osg::Shader::Type const GS = osg::Shader::GEOMETRY;
osg::Shader::Type const FS = osg::Shader::FRAGMENT;

std::vector<Kind> makeKinds()
{
    // Kinds 1 and 3 are one source set: kind 3 differs only by _USE_PBR,
    // which applyDefines puts on the node.
    std::vector<std::string> const surfaceDefines = {TAA, TEX, PBR, SHD, AO, LPV, ATM,
                                                     VOL, FOG, INS, ANI, CLP, ALF, HIL,
                                                     SIL, WHT, NBT, REP, RAN, SNW};
    Stage const surfaceVS{VS, CKVProgramKinds::kVersion,
                          {"blocks", "world_position", "frame_motion", "surface.vert"},
                          CKVProgramKinds::kListens};
    Stage const surfaceFS{FS, CKVProgramKinds::kVersionBindless,
                          {"blocks", "shading", "frame_outputs", "surface.frag"}, CKVProgramKinds::kListens};

    std::vector<std::string> const reflectedDefines = {TEX, SHD, ATM, FOG, INS,
                                                       ANI, CLP, RAN, SNW, NBT};
    // Kind 7 leaves out the clip planes: the instanced reflection never clips.
    std::vector<std::string> const reflectedInstancedDefines = {TEX, SHD, ATM, FOG, INS,
                                                                ANI, RAN, SNW, NBT};
    Stage const reflectedFS{FS, CKVProgramKinds::kVersionBindless,
                            {"blocks", "shading", "albedo_sampler", "reflected.frag"}, CKVProgramKinds::kListens};

    Stage const depthVS{VS, CKVProgramKinds::kVersion, {"blocks", "world_position", "depth.vert"},
                        CKVProgramKinds::kListens};
    Stage const depthInstancedVS{VS, CKVProgramKinds::kVersion,
                                 {"instanced", "blocks", "world_position", "depth.vert"}, CKVProgramKinds::kListens};
    // The depth-only fragment shaders have nothing to vary on.
    Stage const depthEmptyFS{FS, CKVProgramKinds::kVersion, {"depth_empty.frag"},
                             CKVProgramKinds::kManualEmpty};
    Stage const depthClipFS{FS, CKVProgramKinds::kVersion, {"depth_clip.frag"},
                            CKVProgramKinds::kManualEmpty};

    // Shadow casters: world position only; the geometry stage draws each
    // triangle into all cascades at once.
    Stage const casterVS{VS, CKVProgramKinds::kVersion, {"blocks", "world_position", "shadow_caster.vert"},
                         CKVProgramKinds::kListens};
    Stage const casterInstancedVS{VS, CKVProgramKinds::kVersion,
                                  {"instanced", "blocks", "world_position", "shadow_caster.vert"},
                                  CKVProgramKinds::kListens};
    Stage const casterGS{GS, CKVProgramKinds::kVersion, {"shadow_cascades.geom"}, CKVProgramKinds::kListens};
    Stage const casterFS{FS, CKVProgramKinds::kVersionBindless, {"shadow_moments", "albedo_sampler", "shadow_caster.frag"},
                         CKVProgramKinds::kListens};

    // The atmosphere programs: the lookup library of the precomputed tables,
    // then the shared tone curve, then the pass's own body.
    std::vector<std::string> const atmosphereLibrary = KVAtmosphereShaders::lookupLibrary();
    auto atmosphereFS = [&](char const* body) {
        std::vector<std::string> sources = {"blocks"};
        sources.insert(sources.end(), atmosphereLibrary.begin(), atmosphereLibrary.end());
        sources.push_back("sky_tone");
        sources.push_back(body);
        return Stage{FS, CKVProgramKinds::kVersionBindless, sources, CKVProgramKinds::kListens};
    };

    return {
        {1, {surfaceVS, surfaceFS}, surfaceDefines},
        {2,
         {{VS, CKVProgramKinds::kVersion, {"blocks", "frame_motion", "flat.vert"}, CKVProgramKinds::kListens},
          {FS, CKVProgramKinds::kVersion, {"frame_outputs", "flat.frag"},
           CKVProgramKinds::kListens}},
         {TAA, VOL, INS, HIL}},
        {3, {surfaceVS, surfaceFS}, surfaceDefines},
        {6,
         {{VS, CKVProgramKinds::kVersion, {"blocks", "reflected.vert"}, CKVProgramKinds::kListens},
          reflectedFS},
         reflectedDefines},
        {7,
         {{VS, CKVProgramKinds::kVersion, {"instanced", "blocks", "reflected.vert"},
           CKVProgramKinds::kListens},
          reflectedFS},
         reflectedInstancedDefines},
        // Sky capture: each triangle of the cube goes to all six faces.
        {8,
         {{VS, CKVProgramKinds::kVersion, {"sky_cube.vert"}, CKVProgramKinds::kListens},
          {GS, CKVProgramKinds::kVersion, {"sky_cube.geom"}, CKVProgramKinds::kUntouched},
          atmosphereFS("sky.frag")},
         {FOG, ATM, SKT, RAN, SNW, NBT}},
        // Sky box: both stages listen to the same list.
        {9,
         {{VS, CKVProgramKinds::kVersion, {"blocks", "background_skybox.vert"}, CKVProgramKinds::kListens},
          {FS, CKVProgramKinds::kVersion, {"blocks", "background_skybox.frag"}, CKVProgramKinds::kListens}},
         {TAA, VOL, ATM, RAN, SIL, WHT}},
        // Text keeps the pragma mode; its list adds the text library's own
        // defines, which the list given here would otherwise replace.
        {13,
         {{VS, CKVProgramKinds::kVersion, {"blocks", "frame_motion", "text.vert"}, CKVProgramKinds::kListensPragma},
          {FS, CKVProgramKinds::kVersion, {"frame_outputs", "text.frag"}, CKVProgramKinds::kListensPragma}},
         {TAA, SIL, VOL, CLP, "BACKDROP_COLOR", "SHADOW", "OUTLINE", "SIGNED_DISTANCE_FIELD",
          "TEXTURE_DIMENSION", "GLYPH_DIMENSION"}},
        {14, {casterVS, casterGS, casterFS}, {NBT}},
        {15, {casterInstancedVS, casterGS, casterFS}, {NBT}},
        {16,
         {casterVS,
          {GS, CKVProgramKinds::kVersion, {"shadow_terrain", "shadow_cascades.geom"}, CKVProgramKinds::kListens},
          {FS, CKVProgramKinds::kVersion, {"shadow_moments", "shadow_caster_terrain.frag"},
           CKVProgramKinds::kListens}},
         {NBT}},
        // Sun colour at the camera, one texel.
        {19,
         {{VS, CKVProgramKinds::kVersion, {"postprocess.vert"}, CKVProgramKinds::kListens},
          atmosphereFS("sun_colour.frag")},
         {NBT}},
        {20, {depthVS, depthEmptyFS}, {CLP}},
        {21, {depthInstancedVS, depthEmptyFS}, {CLP}},
        {23, {depthVS, depthClipFS}, {ANI, CLP}},
        {24, {depthInstancedVS, depthClipFS}, {ANI, CLP}},
    };
}

std::vector<Kind> const& kinds()
{
    static std::vector<Kind> const table = makeKinds();
    return table;
}

std::string joinedNames(std::vector<std::string> const& sources)
{
    std::string name;
    for (std::string const& s : sources)
        name += (name.empty() ? "" : "+") + s;
    return name;
}

} // namespace

CKVProgramKinds::Kind const* CKVProgramKinds::find(unsigned int kind)
{
    for (Kind const& k : kinds())
    {
        if (k.kind == kind)
            return &k;
    }
    return nullptr;
}

std::string CKVProgramKinds::assembleSource(Stage const& stage)
{
    std::string text = stage.prefix == kVersionBindless ? kPrefixP : kPrefixV;
    for (std::string const& name : stage.sources)
    {
        char const* part = KVShaderSource::get(name.c_str());
        if (!part)
            return std::string();
        text += part;
    }
    return text;
}

osg::ref_ptr<osg::Program> CKVProgramKinds::createProgram(unsigned int kind)
{
    Kind const* entry = find(kind);
    if (!entry)
        return nullptr;

    osg::ShaderDefines const defines(entry->defines.begin(), entry->defines.end());
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName("KVProgram" + std::to_string(kind));
    // The sources fix the block bindings themselves; OSG still warns at each
    // link about active blocks it was not told of, so it is told the same.
    program->addBindUniformBlock("CameraInfo", 0);
    program->addBindUniformBlock("EntityInfo", 1);
    program->addBindUniformBlock("LightInfo", 2);
    for (Stage const& stage : entry->stages)
    {
        std::string const source = assembleSource(stage);
        if (source.empty())
            return nullptr;
        osg::ref_ptr<osg::Shader> shader = new osg::Shader(stage.type);
        shader->setName(joinedNames(stage.sources));
        // Manual mode before the source, so that setting the source does not
        // look for pragmas and replace the list.
        if (stage.defineUse == kListens || stage.defineUse == kManualEmpty)
            shader->setShaderDefinesMode(osg::Shader::USE_MANUAL_SETTINGS);
        shader->setShaderSource(source);
        if (stage.defineUse == kListens || stage.defineUse == kListensPragma)
            shader->setShaderDefines(defines);
        // The program gathers its shaders' define lists when a shader is
        // added, so each shader is complete before it goes in.
        program->addShader(shader.get());
    }
    return program;
}

} // namespace Kelvor
