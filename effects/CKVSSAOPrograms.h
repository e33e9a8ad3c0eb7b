#pragma once

#include <osg/Program>
#include <osg/ref_ptr>

namespace Kelvor {

// The programs of the ambient occlusion passes. They are the effect's own:
// built here from the embedded sources, not through the program manager,
// since they depend on no node define.
class CKVSSAOPrograms
{
public:
    // View-space position and normal of the scene; `instanced` reads the
    // instance matrix.
    static osg::ref_ptr<osg::Program> geometry(bool instanced);
    // The occlusion of each pixel from the position and normal maps.
    static osg::ref_ptr<osg::Program> occlusion();
    // The mean of the occlusion over each pixel's 3 by 3 neighbourhood.
    static osg::ref_ptr<osg::Program> blur();
};

} // namespace Kelvor
