#include "apps/ifc/IfcProductTable.h"

#include "TarnwickRender/CKVDrawable.h"

namespace Kelvor {

std::size_t IfcProductTable::add(IfcProductInfo info)
{
    std::size_t const index = mProducts.size();
    mByEntity.emplace(info.entityId, index);
    if (!info.globalId.empty())
        mByGlobalId.emplace(info.globalId, index);
    mProducts.push_back(std::move(info));
    return index;
}

bool IfcProductTable::bind(CKVLogicBufferGeometry const* buffer, std::size_t product)
{
    if (!buffer || product >= mProducts.size())
        return false;
    mByBuffer[buffer] = product;
    return true;
}

IfcProductInfo const* IfcProductTable::find(CKVLogicBufferGeometry const* buffer) const
{
    auto it = mByBuffer.find(buffer);
    return it == mByBuffer.end() ? nullptr : &mProducts[it->second];
}

IfcProductInfo const* IfcProductTable::find(CKVDrawable const* drawable) const
{
    return drawable ? findByEntityId(drawable->getId()) : nullptr;
}

IfcProductInfo const* IfcProductTable::findByEntityId(unsigned long long entityId) const
{
    auto it = mByEntity.find(entityId);
    return it == mByEntity.end() ? nullptr : &mProducts[it->second];
}

IfcProductInfo const* IfcProductTable::findByGlobalId(std::string const& globalId) const
{
    auto it = mByGlobalId.find(globalId);
    return it == mByGlobalId.end() ? nullptr : &mProducts[it->second];
}

void IfcProductTable::clear()
{
    mProducts.clear();
    mByBuffer.clear();
    mByEntity.clear();
    mByGlobalId.clear();
}

} // namespace Kelvor
