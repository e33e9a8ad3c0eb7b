#pragma once

#include <osgUtil/UpdateVisitor>

namespace Kelvor {

// The viewer's update visitor. Besides the stock update it gives nodes that
// did not come from the host (imported tiles, loaded models) the shader
// state that host geometry has, so that nothing in the scene is ever drawn
// with fixed-function state. A state set is converted once: the program it
// receives marks it as done.
class CKVOSGNodeAdapter : public osgUtil::UpdateVisitor
{
public:
    CKVOSGNodeAdapter();

    void apply(osg::Drawable& drawable) override;
    void apply(osg::Geode& geode) override;
    // A paged level is updated as a plain level of detail.
    void apply(osg::PagedLOD& node) override;

protected:
    ~CKVOSGNodeAdapter() override;

private:
    // Texture at unit 0 becomes "Albedo_Tx", otherwise the material's diffuse
    // colour becomes "AlbedoColor_V4"; then the surface program.
    static void convert(osg::Node& node);
};

} // namespace Kelvor
