#include "apps/ifc/IfcModel.h"

#include <ifcpp/model/BuildingModel.h>

namespace Kelvor {

IfcModel::IfcModel() = default;
IfcModel::~IfcModel() = default;

std::size_t IfcModel::getNumEntity() const
{
    return mModel ? mModel->getMapIfcEntities().size() : 0u;
}

void IfcModel::reset(std::shared_ptr<BuildingModel> model, std::string schema)
{
    mModel = std::move(model);
    mSchema = std::move(schema);
}

void IfcModel::clear()
{
    mModel.reset();
    mSchema.clear();
}

} // namespace Kelvor
