#include "TarnwickGeometry/CKVRenderBrepFaceData.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderBrepFaceData, CKVRenderGeometryData)

CKVRenderBrepFaceData::~CKVRenderBrepFaceData() = default;

bool CKVRenderBrepFaceData::checkFacelist(int const* facelist, unsigned int size, unsigned int numPoints,
                                          unsigned int& numFaces)
{
    if (size > 0 && !facelist)
        return false;
    unsigned int faces = 0;
    unsigned int pos = 0;
    while (pos < size) {
        int const count = facelist[pos++];
        if (count < 3 || static_cast<unsigned int>(count) > size - pos)
            return false;
        for (int i = 0; i < count; ++i) {
            int const index = facelist[pos++];
            if (index < 0 || static_cast<unsigned int>(index) >= numPoints)
                return false;
        }
        ++faces;
    }
    numFaces = faces;
    return true;
}

bool CKVRenderBrepFaceData::setFacelist(std::vector<int> facelist)
{
    unsigned int faces = 0;
    if (!checkFacelist(facelist.data(), static_cast<unsigned int>(facelist.size()), getNumPoints(), faces))
        return false;
    mFacelist = std::move(facelist);
    mNumFaces = faces;
    return true;
}

} // namespace Kelvor
