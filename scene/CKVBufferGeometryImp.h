#pragma once

#include "TarnwickRender/CKVBufferGeometry.h"

#include <osg/ref_ptr>

#include <vector>

namespace Kelvor {

class CKVInstanceSearch;
class CKVOSGGeometry;

// The backend's buffer geometry: the host keeps the logic buffers and packs
// them, the attribute and index buffers it packs into are ours (made through
// the registered factories), and the CKVOSGGeometry here draws them.
class CKVBufferGeometryImp : public CKVBufferGeometry
{
    KV_DECLARE_RUNTIME_CLASS(CKVBufferGeometryImp)
public:
    CKVBufferGeometryImp();
    // Detaches the geometry first: the scene graph or a render leaf may still
    // hold it, and it must stop reading this object.
    ~CKVBufferGeometryImp() override;

    CKVOSGGeometry* getOSGGeometry() const { return mGeometry.get(); }

    // Adds (flag true) or removes (flag false) each logic buffer, all under
    // the logic buffer lock. True when at least one changed the list; false
    // for an empty list. Packing and the rebuild of the OSG side follow
    // separately (updatePhysicalBuffer, then CKVOSGGeometry::rebuild).
    bool updateLogicBuffers(std::vector<bool> const& add, std::vector<CKVLogicBufferGeometry*> const& buffers);

    // Picking's index over the instances, made when first asked for.
    CKVInstanceSearch& instanceSearch();

private:
    osg::ref_ptr<CKVOSGGeometry> mGeometry;
    osg::ref_ptr<CKVInstanceSearch> mInstanceSearch;
};

// Factory for the host's table.
CKVBufferGeometry* createBufferGeometryImp();

} // namespace Kelvor
