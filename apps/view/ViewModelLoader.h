#pragma once

#include "apps/ifc/IfcProgressCallback.h"
#include "apps/view/ViewContent.h"

#include <string>

namespace Kelvor {

// Loads what the viewer is asked to show, by the file's extension: IFC
// through the IFC import, everything else through the host's model
// registry (the tile-set importers, and OpenSceneGraph's formats through
// ViewOsgFileImporter, which is registered for the extensions nobody else
// has taken). With no path: the FZK-Haus sample when installed, else the
// built-in building.
class ViewModelLoader
{
public:
    static char const* const kDefaultModelPath;

    void setProgressCallback(IfcProgressCallback callback) { mProgress = std::move(callback); }
    // Where the default sample is looked for; tests point it elsewhere.
    void setDefaultModelPath(std::string path) { mDefaultModelPath = std::move(path); }

    // False with getError() set: one line, naming the file.
    bool load(std::string const& path, ViewContent& content);
    std::string const& getError() const { return mError; }

    // False with `error` set (one line, naming the file) when the model
    // cannot even be opened: missing, unreadable or empty.
    static bool checkReadable(std::string const& path, std::string& error);

    // The summary line of a loaded model.
    static std::string summary(ViewContent const& content);

    // Puts ViewOsgFileImporter under each extension no importer holds yet.
    static void registerOsgFormats();

private:
    bool loadIfc(std::string const& path, ViewContent& content);
    bool loadThroughRegistry(std::string const& path, ViewContent& content);
    bool loadBuiltIn(ViewContent& content);
    bool fail(std::string message);

    IfcProgressCallback mProgress;
    std::string mDefaultModelPath = kDefaultModelPath;
    std::string mError;
};

} // namespace Kelvor
