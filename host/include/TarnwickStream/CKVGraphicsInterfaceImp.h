#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVRenderObject.h"

#include <vector>

namespace Kelvor {

class CKVGeometry;

// Turns shapes into render objects, each with the material that was current
// when it was added, for code that builds small scenes of its own (the axis
// handle). Buffer geometry is made through the factories the backend
// registered, so shapes can only be added once a backend is loaded.
class CKVGraphicsInterfaceImp
{
public:
    CKVGraphicsInterfaceImp();
    virtual ~CKVGraphicsInterfaceImp();

    CKVGraphicsInterfaceImp(CKVGraphicsInterfaceImp const&) = delete;
    CKVGraphicsInterfaceImp& operator=(CKVGraphicsInterfaceImp const&) = delete;

    // The material of the shapes added from now on; null returns to a
    // default material.
    void setCurrentMaterial(CKVBasicMaterial* material);
    CKVBasicMaterial* getCurrentMaterial() const { return mCurrentMaterial.get(); }

    // Tessellates the shape into a triangle buffer geometry. False when the
    // shape is null or gives no triangles, or no buffer geometry can be made.
    bool addGeometry(CKVGeometry const* shape);
    // Adds a ready render object with the current material. False for null.
    bool addRenderObject(CKVRenderObject* object);
    void clear();

    // Appends the objects and their materials to the two arrays in step.
    void getRenderObjectArray(std::vector<kv_shared_ptr<CKVRenderObject>>& objects,
                              std::vector<kv_shared_ptr<CKVBasicMaterial>>& materials) const;

private:
    kv_shared_ptr<CKVBasicMaterial> mCurrentMaterial;
    std::vector<kv_shared_ptr<CKVRenderObject>> mObjects;
    std::vector<kv_shared_ptr<CKVBasicMaterial>> mMaterials;
};

} // namespace Kelvor
