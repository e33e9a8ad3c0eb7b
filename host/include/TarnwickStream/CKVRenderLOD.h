#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVGeometry.h"
#include "TarnwickRender/CKVBasicMaterial.h"

#include <vector>

namespace Kelvor {

// One level of an imported model: geometry with its materials, child
// levels, and the range in which the level is loaded and shown.
class CKVRenderLOD : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderLOD)
public:
    enum LoadMode : int {
        kNone = 0,
        kEyeDistance = 1,      // distance from the eye to the centre
        kRadiusDistance = 2,   // that distance in units of the bounding radius
        kPixelSize = 3         // size of the bound on screen, in pixels
    };

    struct GeometryEntry
    {
        kv_shared_ptr<CKVBasicMaterial const> material;
        kv_shared_ptr<CKVGeometry const> geometry;
    };

    CKVRenderLOD();
    ~CKVRenderLOD() override;

    // False for null or for this level itself.
    bool addChildLOD(CKVRenderLOD* child);
    unsigned int getNumChildLOD() const { return static_cast<unsigned int>(mChildren.size()); }
    CKVRenderLOD* getChildLOD(unsigned int index) const;

    // Keeps references to both; materials are usually shared between
    // geometries. False for a null geometry. A null material stands for the
    // default one.
    bool addGeometry(CKVBasicMaterial const* material, CKVGeometry const* geometry);
    unsigned int getNumGeometry() const { return static_cast<unsigned int>(mGeometries.size()); }
    GeometryEntry const& getGeometry(unsigned int index) const { return mGeometries[index]; }

    // With culling-child set the level picks among its children by their
    // ranges instead of testing its own.
    bool getCullingChild() const { return mCullingChild; }
    void setCullingChild(bool cullingChild) { mCullingChild = cullingChild; }
    float getMinDistance() const { return mMinDistance; }
    float getMaxDistance() const { return mMaxDistance; }
    void setLoadDistance(float minimum, float maximum);
    LoadMode getLoadMode() const { return mLoadMode; }
    void setLoadMode(LoadMode mode) { mLoadMode = mode; }

    // Levels in this subtree, this one included.
    unsigned int countLODs() const;

private:
    std::vector<kv_shared_ptr<CKVRenderLOD>> mChildren;
    std::vector<GeometryEntry> mGeometries;
    bool mCullingChild;
    float mMinDistance;
    float mMaxDistance;
    LoadMode mLoadMode;
};

} // namespace Kelvor
