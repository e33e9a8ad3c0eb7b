#include "apps/ifc/IfcImporter.h"

#include "apps/ifc/IfcGeometryExtractor.h"
#include "apps/ifc/IfcModel.h"
#include "apps/ifc/IfcModelReader.h"
#include "apps/ifc/IfcSceneBuilder.h"
#include "apps/ifc/IfcShapeIndex.h"

#include <chrono>

namespace Kelvor {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Shares of the progress bar, measured on a mid-size house: parsing and
// geometry take about equally long, matching and building little.
constexpr double kParseEnd = 0.45;
constexpr double kGeometryEnd = 0.9;
constexpr double kMatchEnd = 0.93;

// Reports a step's own 0..1 progress as its slice of the whole.
IfcProgressCallback slice(IfcProgressCallback const& whole, double from, double to)
{
    if (!whole)
        return IfcProgressCallback();
    return [whole, from, to](double fraction, char const* phase) { whole(from + (to - from) * fraction, phase); };
}

} // namespace

IfcImporter::IfcImporter() = default;
IfcImporter::~IfcImporter() = default;

bool IfcImporter::import(std::string const& path, IfcScene& scene)
{
    mError.clear();
    mSummary = IfcImportSummary();
    scene.clear();
    Clock::time_point const start = Clock::now();

    std::vector<IfcProductGeometry> products;
    {
        IfcModel model;
        IfcModelReader reader;
        reader.setProgressCallback(slice(mProgress, 0.0, kParseEnd));
        if (!reader.read(path, model)) {
            mError = reader.getError();
            return false;
        }
        mSummary.schema = model.getSchema();
        mSummary.entities = static_cast<unsigned int>(model.getNumEntity());
        mSummary.warnings = reader.getNumWarning();
        mSummary.damagedEntities = reader.getNumDamaged();
        mSummary.skippedEntities = reader.getNumSkipped();
        mSummary.declaredEntities = reader.getNumDeclared();
        mSummary.firstProblem = reader.getFirstProblem();
        mSummary.parseSeconds = secondsSince(start);

        Clock::time_point const geometryStart = Clock::now();
        IfcGeometryExtractor extractor;
        extractor.setProgressCallback(slice(mProgress, kParseEnd, kGeometryEnd));
        if (!extractor.extract(model, products)) {
            mError = path + ": " + extractor.getError();
            return false;
        }
        mSummary.warnings += extractor.getNumWarning();
        mSummary.geometrySeconds = secondsSince(geometryStart);
        // The entity model goes here, before the scene is built: it is the
        // largest thing in memory.
    }
    if (products.empty()) {
        mError = path + ": the file holds no product with geometry";
        return false;
    }

    Clock::time_point const buildStart = Clock::now();
    if (mProgress)
        mProgress(kGeometryEnd, "Finding repeated shapes");
    IfcShapeIndex shapes;
    shapes.build(products);

    IfcSceneBuilder builder;
    builder.setProgressCallback(slice(mProgress, kMatchEnd, 1.0));
    if (!builder.build(products, shapes.getShapes(), scene)) {
        mError = path + ": " + builder.getError();
        return false;
    }
    mSummary.buildSeconds = secondsSince(buildStart);

    mSummary.products = static_cast<unsigned int>(products.size());
    for (IfcProductGeometry const& product : products)
        mSummary.triangles += product.getNumTriangle();
    for (IfcShape const& shape : shapes.getShapes())
        mSummary.storedTriangles += products[shape.uses.front().product].getNumTriangle();
    mSummary.distinctShapes = static_cast<unsigned int>(shapes.getShapes().size());
    mSummary.sharedShapes = shapes.getNumSharedShape();
    mSummary.instances = shapes.getNumInstance();
    mSummary.materials = static_cast<unsigned int>(scene.materials.size());
    mSummary.geometries = static_cast<unsigned int>(scene.geometries.size());
    mSummary.totalSeconds = secondsSince(start);
    if (mProgress)
        mProgress(1.0, "Done");
    return true;
}

} // namespace Kelvor
