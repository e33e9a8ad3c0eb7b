#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"
#include "TarnwickRender/CKVRenderObject.h"

#include <string>

namespace Kelvor {

// A text label: text, font, size, position, and the direction in which it
// reads with the normal of the plane it lies in. The backend overrides the
// setters to update its label and calls the base to keep the values.
class CKVTextGeometry : public CKVRenderObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVTextGeometry)
public:
    ~CKVTextGeometry() override;

    // Asks for the text program.
    void getProgramParam(CKVProgramParam& param) const override;

    // Null is taken as the empty text.
    virtual void setText(wchar_t const* text);
    virtual void setFontFile(char const* path);
    // Character height in world units.
    virtual void setFontSize(float size);
    virtual void setPosition(CKVPoint3D const& position);
    // False, with nothing changed, when either vector has zero length or
    // they are not perpendicular.
    virtual bool setDirection(CKVVector3D const& direction, CKVVector3D const& normal);

    wchar_t const* getText() const { return mText.c_str(); }
    // Empty: the backend's default font.
    char const* getFontFile() const { return mFontFile.c_str(); }
    float getFontSize() const { return mFontSize; }
    CKVPoint3D const& getPosition() const { return mPosition; }
    void getDirection(CKVVector3D& direction, CKVVector3D& normal) const;

protected:
    // Reads along +x, lying in the xy plane.
    CKVTextGeometry();

private:
    std::wstring mText;
    CKVAString mFontFile;
    float mFontSize;
    CKVPoint3D mPosition;
    CKVVector3D mDirection;
    CKVVector3D mNormal;
};

} // namespace Kelvor
