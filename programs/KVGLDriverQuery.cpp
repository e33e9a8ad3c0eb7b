#include "programs/KVGLDriverQuery.h"

#include <osg/GL>
#include <osg/GLExtensions>

namespace Kelvor {

namespace {

std::string glString(GLenum name)
{
    char const* text = reinterpret_cast<char const*>(glGetString(name));
    return text ? std::string(text) : std::string();
}

class CurrentDriverQuery : public KVGLDriverQuery
{
public:
    std::string getVersion() const override { return glString(GL_VERSION); }
    std::string getRenderer() const override { return glString(GL_RENDERER); }
    bool isExtensionSupported(char const* name) const override { return osg::isGLExtensionSupported(0, name); }
    bool hasFunction(char const* name) const override { return osg::getGLExtensionFuncPtr(name) != nullptr; }
};

} // namespace

KVGLDriverQuery const& KVGLDriverQuery::current()
{
    static CurrentDriverQuery const query;
    return query;
}

} // namespace Kelvor
