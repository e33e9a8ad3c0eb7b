#include "programs/CKVProgramManager.h"

#include "programs/CKVProgramKinds.h"
#include "programs/KVShaderSource.h"

#include <osg/Shader>

namespace Kelvor {

namespace {

// The parameter bits a node's defines follow, in the order they are applied.
// The other named bits (shadow, SSAO, ...) belong to effects that switch them
// on the root, so a node never sets them.
int const kNodeParams[] = {1, 128, 1024, 2048, 8192, 4096};

char const* const kPBRDefine = "_USE_PBR";

char const* const kPostProcessVertex = "postprocess.vert";
char const* const kPostProcessFragment = "postprocess.frag";

} // namespace

CKVProgramManager& CKVProgramManager::instance()
{
    static CKVProgramManager manager;
    return manager;
}

CKVProgramManager::CKVProgramManager()
{
    mDefineNames[1] = "_USE_TEXTURE";
    mDefineNames[2] = "_USE_SHADOW";
    mDefineNames[4] = "_USE_SSAO";
    mDefineNames[8] = "_USE_LPV";
    mDefineNames[16] = "_USE_ATMOSPHERE";
    mDefineNames[32] = "_USE_VOLUMETRICLIGHT";
    mDefineNames[64] = "_USE_FOG";
    mDefineNames[128] = "_USE_INSTANCE_MATRIX";
    mDefineNames[1024] = "_USE_ANIMATION_CLIPTEST";
    mDefineNames[2048] = "_USE_HIGHLIGHT_STYLE";
    mDefineNames[4096] = "_USE_ALPHA_TEST";
    mDefineNames[8192] = "_USE_ANTI_REPEAR_TEXTURE";
}

CKVProgramManager::~CKVProgramManager() = default;

osg::ref_ptr<osg::Program> CKVProgramManager::getProgram(CKVProgramParam const& param)
{
    auto const found = mPrograms.find(param);
    if (found != mPrograms.end())
        return found->second;

    osg::ref_ptr<osg::Program> program = CKVProgramKinds::createProgram(param.getType());
    if (program.valid())
        mPrograms.emplace(param, program);
    return program;
}

void CKVProgramManager::applyDefines(osg::StateSet* stateSet, CKVProgramParam const& param) const
{
    if (!stateSet || param.getType() == CKVProgramParam::kNoProgram)
        return;

    for (int bit : kNodeParams)
    {
        std::string const name = getDefineName(bit);
        if (param.hasParam(static_cast<CKVProgramParam::Param>(bit)))
            stateSet->setDefine(name, osg::StateAttribute::ON);
        else
            stateSet->removeDefine(name);
    }
    if (param.getType() == CKVProgramParam::kSurfacePBR)
        stateSet->setDefine(kPBRDefine, osg::StateAttribute::ON);
    else
        stateSet->removeDefine(kPBRDefine);
}

char const* CKVProgramManager::getDefineName(int param) const
{
    auto const found = mDefineNames.find(param);
    return found != mDefineNames.end() ? found->second.c_str() : "";
}

void CKVProgramManager::dirtyDefine(std::string const& name)
{
    for (auto& entry : mPrograms)
    {
        osg::Program* program = entry.second.get();
        for (unsigned int i = 0; i < program->getNumShaders(); ++i)
        {
            osg::Shader* shader = program->getShader(i);
            if (shader && shader->getShaderDefines().count(name) != 0)
                shader->dirtyShader();
        }
    }
}

char const* CKVProgramManager::getPostProcessFragmentBody()
{
    return KVShaderSource::get(kPostProcessFragment);
}

osg::ref_ptr<osg::Program> CKVProgramManager::createPostProcessProgram(std::set<std::string> const& defines) const
{
    char const* vertex = KVShaderSource::get(kPostProcessVertex);
    char const* fragment = getPostProcessFragmentBody();
    if (!vertex || !fragment)
        return nullptr;

    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName("PostProcessProgram");
    // The fragment source starts without defines; its owner writes them in.
    osg::ref_ptr<osg::Shader> shaders[] = {
        new osg::Shader(osg::Shader::VERTEX, std::string(CKVProgramKinds::kPrefixV) + vertex),
        new osg::Shader(osg::Shader::FRAGMENT, std::string(CKVProgramKinds::kPrefixV) + fragment)};
    for (osg::ref_ptr<osg::Shader> const& shader : shaders)
    {
        shader->setShaderDefines(defines);
        shader->setShaderDefinesMode(osg::Shader::USE_MANUAL_SETTINGS);
        program->addShader(shader.get());
    }
    return program;
}

} // namespace Kelvor
