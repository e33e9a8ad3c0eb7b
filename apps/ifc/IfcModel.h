#pragma once

#include <cstddef>
#include <memory>
#include <string>

class BuildingModel; // IFC++

namespace Kelvor {

// A parsed IFC file: IFC++'s entity model and the schema the file declared.
// Only the reader fills it and only the geometry extraction looks inside, so
// IFC++'s types stay out of every other file.
class IfcModel
{
public:
    IfcModel();
    ~IfcModel();

    bool isEmpty() const { return !mModel; }
    // As the file's FILE_SCHEMA names it, upper case ("IFC2X3", "IFC4").
    std::string const& getSchema() const { return mSchema; }
    std::size_t getNumEntity() const;

    std::shared_ptr<BuildingModel> const& getBuildingModel() const { return mModel; }
    void reset(std::shared_ptr<BuildingModel> model, std::string schema);
    void clear();

private:
    std::shared_ptr<BuildingModel> mModel;
    std::string mSchema;
};

} // namespace Kelvor
