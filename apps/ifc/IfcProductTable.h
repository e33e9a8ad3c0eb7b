#pragma once

#include "apps/ifc/IfcProductInfo.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace Kelvor {

class CKVDrawable;
class CKVLogicBufferGeometry;

// The products of an imported model, found from what a pick reports: the
// logic buffer (part or instance) that was hit, or the drawable it carries,
// whose id is the product's entity id. Buffers are keys only; the table
// neither owns them nor reads them.
class IfcProductTable
{
public:
    // Adds a product and returns its index.
    std::size_t add(IfcProductInfo info);
    // Ties a logic buffer to the product of that index; false for null or
    // an index out of range.
    bool bind(CKVLogicBufferGeometry const* buffer, std::size_t product);

    std::size_t size() const { return mProducts.size(); }
    IfcProductInfo const& at(std::size_t index) const { return mProducts[index]; }

    // Null when nothing is known under the key.
    IfcProductInfo const* find(CKVLogicBufferGeometry const* buffer) const;
    IfcProductInfo const* find(CKVDrawable const* drawable) const;
    IfcProductInfo const* findByEntityId(unsigned long long entityId) const;
    IfcProductInfo const* findByGlobalId(std::string const& globalId) const;

    void clear();

private:
    std::vector<IfcProductInfo> mProducts;
    std::unordered_map<CKVLogicBufferGeometry const*, std::size_t> mByBuffer;
    std::unordered_map<unsigned long long, std::size_t> mByEntity;
    std::unordered_map<std::string, std::size_t> mByGlobalId;
};

} // namespace Kelvor
