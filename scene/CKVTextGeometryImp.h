#pragma once

#include "scene/CKVOSGText2D.h"

#include "TarnwickRender/CKVTextGeometry.h"

#include <osg/ref_ptr>

namespace Kelvor {

// The host's text label as a CKVOSGText2D. Every setter stores the value in
// the host base first and then updates the label, so the two never differ.
// A new label uses the default font "fonts/simhei.ttf" from the resource
// directory, lies in the xy plane and reads along +x.
class CKVTextGeometryImp : public CKVTextGeometry
{
    KV_DECLARE_RUNTIME_CLASS(CKVTextGeometryImp)
public:
    static char const* const kDefaultFont;

    CKVTextGeometryImp();
    ~CKVTextGeometryImp() override;

    CKVTextGeometryImp(CKVTextGeometryImp const&) = delete;
    CKVTextGeometryImp& operator=(CKVTextGeometryImp const&) = delete;

    // The label's extent in the frame of its node; invalid without text.
    CKVBndBox computeBoundingBox() const override;

    void setText(wchar_t const* text) override;
    // A font that cannot be read leaves the label's font as it was.
    void setFontFile(char const* path) override;
    void setFontSize(float size) override;
    void setPosition(CKVPoint3D const& position) override;
    // Turns the label so that it reads along `direction` in the plane whose
    // normal is `normal`; refused, with nothing changed, unless both have
    // length and are perpendicular.
    bool setDirection(CKVVector3D const& direction, CKVVector3D const& normal) override;

    CKVOSGText2D* getOSGText() const { return mText.get(); }

    // Reads a font by name through OpenSceneGraph's file search, which also
    // looks in the resource directory. Null when not found.
    static osg::ref_ptr<osgText::Font> readFont(char const* name);

private:
    osg::ref_ptr<CKVOSGText2D> mText;
};

// The text factory registered with CKVRenderCallback.
CKVTextGeometry* createTextGeometryImp();

} // namespace Kelvor
