#include "programs/CKVRenderStateManager.h"

#include <osg/GL>

#include <cstdlib>

namespace Kelvor {

CKVRenderStateManager& CKVRenderStateManager::instance()
{
    static CKVRenderStateManager manager;
    return manager;
}

CKVRenderStateManager::CKVRenderStateManager() = default;
CKVRenderStateManager::~CKVRenderStateManager() = default;

float CKVRenderStateManager::parseGLVersion(char const* versionString, float fallback)
{
    if (!versionString)
        return fallback;
    // GL ES strings carry a prefix before the number.
    char const* p = versionString;
    while (*p && (*p < '0' || *p > '9'))
        ++p;
    char* end = nullptr;
    float const v = std::strtof(p, &end);
    return (end == p || v <= 0.0f) ? fallback : v;
}

void CKVRenderStateManager::applyGLVersion(char const* versionString)
{
    mGLVersion = parseGLVersion(versionString, mGLVersion);
    mVertexAttribBinding = false;
    // The culling pass needs compute shaders and atomic counters (4.3).
    if (!(mGLVersion > 4.25f))
        mOcclusionCulling = false;
}

void CKVRenderStateManager::initExtensions()
{
    applyGLVersion(reinterpret_cast<char const*>(glGetString(GL_VERSION)));
}

} // namespace Kelvor
