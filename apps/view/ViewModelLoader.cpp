#include "apps/view/ViewModelLoader.h"

#include "apps/ifc/IfcImporter.h"
#include "apps/view/ViewContentBounds.h"
#include "apps/view/ViewModelSceneBuilder.h"
#include "apps/view/ViewNotifyCapture.h"
#include "apps/view/ViewOsgFileImporter.h"
#include "apps/view/ViewProceduralBuilding.h"
#include "TarnwickStream/CKVModelIOManager.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Kelvor {

char const* const ViewModelLoader::kDefaultModelPath = "/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc";

namespace {

std::string lowerExtension(std::string const& path)
{
    std::size_t const slash = path.find_last_of("/\\");
    std::size_t const dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return std::string();
    std::string extension = path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

} // namespace

// Tile folders are directories; everything else has to be a file we may read.
bool ViewModelLoader::checkReadable(std::string const& path, std::string& error)
{
    struct stat info;
    if (::stat(path.c_str(), &info) != 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    if (S_ISDIR(info.st_mode))
        return true;
    int const fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    ::close(fd);
    if (info.st_size == 0) {
        error = path + ": the file is empty";
        return false;
    }
    return true;
}

bool ViewModelLoader::fail(std::string message)
{
    mError = std::move(message);
    return false;
}

void ViewModelLoader::registerOsgFormats()
{
    CKVModelIOManager* registry = CKVModelIOManager::instance();
    kv_shared_ptr<CKVModelImportExport> importer(new ViewOsgFileImporter);
    for (std::string const& extension : ViewOsgFileImporter::extensions()) {
        std::string const dotted = "." + extension;
        if (!registry->findImportExport(extension.c_str()) && !registry->findImportExport(dotted.c_str()))
            registry->addImportExport(dotted.c_str(), importer.get());
    }
}

bool ViewModelLoader::load(std::string const& path, ViewContent& content)
{
    mError.clear();
    content = ViewContent();
    auto const start = std::chrono::steady_clock::now();
    ViewNotifyCapture notices;
    bool loaded = false;
    if (path.empty()) {
        struct stat info;
        if (!mDefaultModelPath.empty() && ::stat(mDefaultModelPath.c_str(), &info) == 0)
            loaded = loadIfc(mDefaultModelPath, content);
        else
            loaded = loadBuiltIn(content);
    } else {
        std::string error;
        if (!checkReadable(path, error))
            return fail(error);
        loaded = lowerExtension(path) == "ifc" ? loadIfc(path, content) : loadThroughRegistry(path, content);
    }
    if (!loaded) {
        content = ViewContent();
        std::string const reason = notices.lastProblem();
        if (!reason.empty())
            mError += " (" + reason + ")";
        return false;
    }
    content.loadSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return true;
}

bool ViewModelLoader::loadIfc(std::string const& path, ViewContent& content)
{
    IfcImporter importer;
    importer.setProgressCallback(mProgress);
    IfcScene scene;
    if (!importer.import(path, scene))
        return fail(importer.getError().empty() ? path + ": not a readable IFC file" : importer.getError());
    IfcImportSummary const& summary = importer.getSummary();
    content.root = scene.root;
    content.products = scene.products;
    content.kind = summary.schema.empty() ? "IFC" : summary.schema;
    content.elements = summary.products;
    content.triangles = summary.triangles;
    content.instances = summary.instances;
    for (std::string const& notice : summary.notices())
        content.notices.push_back(path + ": " + notice);
    content.box = ViewContentBounds::compute(*content.root);
    if (!content.box.valid())
        return fail(path + ": the model has no extent");
    return true;
}

bool ViewModelLoader::loadThroughRegistry(std::string const& path, ViewContent& content)
{
    registerOsgFormats();
    kv_shared_ptr<CKVModelImportExport> importer = CKVModelIOManager::instance()->findByPath(path.c_str());
    std::string const extension = lowerExtension(path);
    if (!importer)
        return fail(path + ": no importer for " + (extension.empty() ? "files without extension" : "." + extension));
    if (mProgress)
        mProgress(0.0, "Reading");
    kv_shared_ptr<CKVModelBase> model;
    if (!importer->readModel(path.c_str(), model) || !model)
        return fail(path + ": the file could not be read as ." + extension);
    if (mProgress)
        mProgress(0.6, "Converting");
    ViewModelSceneBuilder builder;
    if (!builder.build(*model, content))
        return fail(path + ": " + builder.getError());
    content.kind = extension;
    if (mProgress)
        mProgress(1.0, "Done");
    return true;
}

bool ViewModelLoader::loadBuiltIn(ViewContent& content)
{
    kv_shared_ptr<CKVModelBase> model = ViewProceduralBuilding::build();
    ViewModelSceneBuilder builder;
    if (!builder.build(*model, content))
        return fail("built-in building: " + builder.getError());
    content.kind = "built-in building";
    return true;
}

std::string ViewModelLoader::summary(ViewContent const& content)
{
    char text[256];
    std::snprintf(text, sizeof text, "%s: %u products, %llu triangles, %u instances, loaded in %.2f s",
                  content.kind.c_str(), content.elements, content.triangles, content.instances,
                  content.loadSeconds);
    return text;
}

} // namespace Kelvor
