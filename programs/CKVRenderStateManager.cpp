#include "programs/CKVRenderStateManager.h"

#include "programs/KVGLDriverQuery.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>

namespace Kelvor {

namespace {

// These drivers report bindless textures but are not trusted with them:
// resident handles misbehaved there, and ordinary texture units are safe.
char const* const kExcludedRenderers[] = {"intel", "amd", "radeon"};

char const* const kBindlessExtensions[] = {"GL_ARB_bindless_texture", "GL_NV_bindless_texture"};

// Everything the bindless path may call. glMakeTextureHandleNonResident is
// never called, yet a driver without it is not one to trust with the rest.
char const* const kBindlessFunctions[] = {
    "glGetTextureHandle",     "glMakeTextureHandleResident", "glMakeTextureHandleNonResident",
    "glUniformHandleui64",    "glUniformHandleui64v",        "glIsTextureHandleResident",
};

char const* const kFunctionSuffixes[] = {"", "ARB", "NV"};

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool resolvesInSomeForm(KVGLDriverQuery const& driver, char const* name)
{
    for (char const* suffix : kFunctionSuffixes) {
        if (driver.hasFunction((std::string(name) + suffix).c_str()))
            return true;
    }
    return false;
}

} // namespace

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

bool CKVRenderStateManager::detectBindlessTexture(KVGLDriverQuery const& driver)
{
    std::string const renderer = lowerCase(driver.getRenderer());
    for (char const* excluded : kExcludedRenderers) {
        if (renderer.find(excluded) != std::string::npos)
            return false;
    }
    // The extension decides before any entry point: some drivers resolve the
    // bindless entry points without offering the extension.
    bool const offered = std::any_of(std::begin(kBindlessExtensions), std::end(kBindlessExtensions),
                                     [&](char const* name) { return driver.isExtensionSupported(name); });
    if (!offered)
        return false;
    return std::all_of(std::begin(kBindlessFunctions), std::end(kBindlessFunctions),
                       [&](char const* name) { return resolvesInSomeForm(driver, name); });
}

void CKVRenderStateManager::initExtensions(KVGLDriverQuery const& driver)
{
    std::string const version = driver.getVersion();
    applyGLVersion(version.empty() ? nullptr : version.c_str());
    mBindlessTexture = detectBindlessTexture(driver);
}

void CKVRenderStateManager::initExtensions()
{
    initExtensions(KVGLDriverQuery::current());
}

} // namespace Kelvor
