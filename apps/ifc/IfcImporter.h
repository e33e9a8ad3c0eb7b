#pragma once

#include "apps/ifc/IfcImportSummary.h"
#include "apps/ifc/IfcProgressCallback.h"
#include "apps/ifc/IfcScene.h"

#include <string>

namespace Kelvor {

// The whole import of an IFC file into host content: read, evaluate the
// geometry, find repeated shapes, build the scene. Progress runs once from
// 0 to 1 over all steps. Nothing throws; a failure leaves the scene empty
// and a message for the user.
class IfcImporter
{
public:
    IfcImporter();
    ~IfcImporter();

    void setProgressCallback(IfcProgressCallback callback) { mProgress = std::move(callback); }

    bool import(std::string const& path, IfcScene& scene);

    std::string const& getError() const { return mError; }
    IfcImportSummary const& getSummary() const { return mSummary; }

private:
    IfcProgressCallback mProgress;
    std::string mError;
    IfcImportSummary mSummary;
};

} // namespace Kelvor
