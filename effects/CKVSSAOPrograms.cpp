#include "effects/CKVSSAOPrograms.h"

#include "programs/KVShaderSource.h"

#include <initializer_list>
#include <string>

namespace Kelvor {

namespace {

char const* const kVersion = "#version 420 core\n";

// The chunks joined in order after the version line; null when one of them
// was not built in.
osg::ref_ptr<osg::Shader> shader(osg::Shader::Type type, std::initializer_list<char const*> chunks)
{
    std::string text = kVersion;
    std::string name;
    for (char const* chunk : chunks)
    {
        char const* body = KVShaderSource::get(chunk);
        if (!body)
            return nullptr;
        text += body;
        text += '\n';
        name = chunk;
    }
    osg::ref_ptr<osg::Shader> made = new osg::Shader(type, text);
    made->setName(name);
    return made;
}

osg::ref_ptr<osg::Program> program(char const* name, osg::ref_ptr<osg::Shader> const& vertex,
                                   osg::ref_ptr<osg::Shader> const& fragment)
{
    osg::ref_ptr<osg::Program> made = new osg::Program;
    made->setName(name);
    for (osg::Shader* stage : {vertex.get(), fragment.get()})
    {
        if (stage)
            made->addShader(stage);
    }
    return made;
}

} // namespace

osg::ref_ptr<osg::Program> CKVSSAOPrograms::geometry(bool instanced)
{
    osg::ref_ptr<osg::Shader> vertex =
        instanced ? shader(osg::Shader::VERTEX, {"instanced", "blocks", "world_position", "ssao_geometry.vert"})
                  : shader(osg::Shader::VERTEX, {"blocks", "world_position", "ssao_geometry.vert"});
    return program(instanced ? "SSAOGeometryInstanced" : "SSAOGeometry", vertex,
                   shader(osg::Shader::FRAGMENT, {"ssao_geometry.frag"}));
}

osg::ref_ptr<osg::Program> CKVSSAOPrograms::occlusion()
{
    return program("SSAO", shader(osg::Shader::VERTEX, {"postprocess.vert"}),
                   shader(osg::Shader::FRAGMENT, {"blocks", "ssao.frag"}));
}

osg::ref_ptr<osg::Program> CKVSSAOPrograms::blur()
{
    return program("SSAOBlur", shader(osg::Shader::VERTEX, {"postprocess.vert"}),
                   shader(osg::Shader::FRAGMENT, {"ssao_blur.frag"}));
}

} // namespace Kelvor
