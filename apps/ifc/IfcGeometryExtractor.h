#pragma once

#include "apps/ifc/IfcModel.h"
#include "apps/ifc/IfcProductGeometry.h"
#include "apps/ifc/IfcProgressCallback.h"

#include <string>
#include <vector>

namespace Kelvor {

// Turns the products of a parsed model into triangles: IFC++ evaluates each
// product's representation (extrusions, B-reps, openings cut out, mapped
// items expanded), and the meshes are triangulated here, placed in world
// coordinates and grouped by surface colour. Products without triangles
// (annotations, axes, openings) are left out. Openings that hold a window or
// a door are first made to reach through their host (IfcOpeningDeepener),
// which changes them in the model.
//
// This is the one file that includes IFC++'s geometry headers, which take
// about half a minute to compile.
class IfcGeometryExtractor
{
public:
    IfcGeometryExtractor();
    ~IfcGeometryExtractor();

    void setProgressCallback(IfcProgressCallback callback) { mProgress = std::move(callback); }

    // Appends one entry per product with triangles, in the order of the
    // products' instance numbers. False with getError() set when the model is
    // empty or the evaluation failed as a whole; failures of single products
    // only count as warnings.
    bool extract(IfcModel const& model, std::vector<IfcProductGeometry>& products);

    std::string const& getError() const { return mError; }
    unsigned int getNumWarning() const { return mNumWarning; }
    // The first warning or error IFC++ gave; empty when none.
    std::string const& getFirstProblem() const { return mFirstProblem; }

private:
    IfcProgressCallback mProgress;
    std::string mError;
    unsigned int mNumWarning = 0;
    std::string mFirstProblem;
};

} // namespace Kelvor
