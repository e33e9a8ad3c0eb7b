#pragma once

#include <osgText/Text>

namespace Kelvor {

class CKVTextGeometry;

// The scene graph's side of a host text label: an osgText::Text drawn with
// the backend's text program, so that labels clip, write velocity and take
// part in the other effects like any surface. Its colour is the albedo of
// the material in force on the node that carries it, white without one.
//
// The back pointer owns nothing; the host label clears it before it dies.
class CKVOSGText2D : public osgText::Text
{
public:
    static char const* const s_className;

    explicit CKVOSGText2D(CKVTextGeometry* host = nullptr);
    CKVOSGText2D(CKVOSGText2D const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override;
    osg::Object* clone(osg::CopyOp const& copyop) const override;
    bool isSameKindAs(osg::Object const* object) const override;
    char const* libraryName() const override;
    char const* className() const override;
    void accept(osg::NodeVisitor& visitor) override;

    void drawImplementation(osg::RenderInfo& renderInfo) const override;

    CKVTextGeometry* getHostGeometry() const { return mHost; }
    // Called by the host label's destructor.
    void clearHostGeometry() { mHost = nullptr; }

    // The colour a draw uses under `state`: the topmost "AlbedoColor_V4" in
    // force, or white.
    static osg::Vec4 currentAlbedo(osg::State const& state);

protected:
    ~CKVOSGText2D() override;

    // The stock state set (glyph texture, the text library's defines) with
    // the backend's text program on it.
    osg::StateSet* createStateSet() override;

private:
    CKVTextGeometry* mHost;
};

} // namespace Kelvor
