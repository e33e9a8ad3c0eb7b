#pragma once

#include "TarnwickGeometry/CKVRenderGeometryData.h"

#include <vector>

namespace Kelvor {

// Render data with faces. The face list is a flat array of ints: for each
// face its point count n (at least 3) followed by n indices into the point
// array, in counter-clockwise order seen from the front. Shapes hand out
// triangles only (every count is 3), and CKVShell::setShell accepts this
// same list, so a shape's render data can become a shell unchanged.
class CKVRenderBrepFaceData : public CKVRenderGeometryData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderBrepFaceData)
public:
    CKVRenderBrepFaceData() = default;
    ~CKVRenderBrepFaceData() override;

    // Length of the face list in ints (not the number of faces).
    unsigned int getNumFacelist() const { return static_cast<unsigned int>(mFacelist.size()); }
    int const* getFacelistArray() const { return mFacelist.empty() ? nullptr : mFacelist.data(); }
    // Number of faces in the list.
    unsigned int getNumFaces() const { return mNumFaces; }

    // False, storing nothing, when the list is malformed: a count below 3, a
    // face running past the end, or an index outside the current points.
    bool setFacelist(std::vector<int> facelist);

    // True when `facelist` is well formed for `numPoints` points; the number
    // of faces goes to `numFaces`.
    static bool checkFacelist(int const* facelist, unsigned int size, unsigned int numPoints,
                              unsigned int& numFaces);

private:
    std::vector<int> mFacelist;
    unsigned int mNumFaces = 0;
};

} // namespace Kelvor
