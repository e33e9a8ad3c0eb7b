#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickRender/CKVProgramParam.h"

namespace Kelvor {

// The plain description of how a surface looks: a colour, a texture path and
// a few switches of blending, depth and culling. The other materials add
// their own values to it. A new material is opaque white, untextured, with
// transparent surfaces depth-sorted and no face culling (building models are
// seldom closed solids).
class CKVBasicMaterial : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVBasicMaterial)
public:
    // One value per material class, so that compare can order materials of
    // different classes and then safely compare the content of equal ones.
    enum MaterialType : int {
        kBasic = 0,
        kLine = 1,
        kPhysical = 2,
        kWater = 3,
        kPhysicalWater = 4,
        kTerrain = 5
    };

    // -1 culls nothing; otherwise the value plus 1028 is the GL face.
    enum FaceCullMode : int { kCullNone = -1, kCullFront = 0, kCullBack = 1, kCullFrontAndBack = 4 };

    CKVBasicMaterial();
    CKVBasicMaterial(CKVBasicMaterial const& other);
    CKVBasicMaterial& operator=(CKVBasicMaterial const& other);
    ~CKVBasicMaterial() override;

    virtual MaterialType getType() const;
    // A new material of the same class and content.
    virtual CKVBasicMaterial* clone() const;

    // Negative, zero or positive: a total order over all materials, by type
    // and then by every value, so that equal materials can be shared.
    int compare(CKVBasicMaterial const& other) const;
    bool operator==(CKVBasicMaterial const& other) const { return compare(other) == 0; }
    bool operator!=(CKVBasicMaterial const& other) const { return compare(other) != 0; }

    // Sets the program kind of the material and its own switches (texture)
    // in `param`; other switches already in `param` stay.
    virtual void getProgramParam(CKVProgramParam& param) const;

    void getRGBA(unsigned char& r, unsigned char& g, unsigned char& b, unsigned char& a) const;
    void setRGB(unsigned char r, unsigned char g, unsigned char b);
    void setRGBA(unsigned char r, unsigned char g, unsigned char b, unsigned char a);

    // The texture file; empty when the colour alone decides.
    char const* getTexture() const { return mTexture.c_str(); }
    void setTexture(char const* path) { mTexture = path; }

    // Transparent surfaces draw in a depth-sorted bin placed after the
    // opaque ones; the bin number orders such bins among themselves.
    bool getSortTransparency() const { return mSortTransparency; }
    void setSortTransparency(bool sort) { mSortTransparency = sort; }
    int getSortTransparencyBin() const { return mSortTransparencyBin; }
    void setSortTransparencyBin(int bin) { mSortTransparencyBin = bin; }

    // Pushes the surface towards the viewer (positive) or away, in units of
    // the depth slope, so that coplanar surfaces do not fight.
    double getFaceDisplacement() const { return mFaceDisplacement; }
    void setFaceDisplacement(double displacement) { mFaceDisplacement = displacement; }

    // A depth range of its own, for overlays drawn in front of everything.
    // The arguments are left alone when the material has none.
    void getDepthRange(bool& use, float& zNear, float& zFar) const;
    void setDepthRange(bool use, float zNear, float zFar);

    FaceCullMode getFaceCullMode() const { return mFaceCullMode; }
    void setFaceCullMode(FaceCullMode mode) { mFaceCullMode = mode; }

protected:
    // Content comparison of two materials of this one's type; subclasses
    // compare the base first.
    virtual int compareContent(CKVBasicMaterial const& other) const;

private:
    unsigned char mRGBA[4];
    CKVAString mTexture;
    bool mSortTransparency;
    int mSortTransparencyBin;
    double mFaceDisplacement;
    bool mUseDepthRange;
    float mDepthNear;
    float mDepthFar;
    FaceCullMode mFaceCullMode;
};

} // namespace Kelvor
