#pragma once

#include <osg/Program>
#include <osg/StateSet>
#include <osg/Texture2D>
#include <osg/ref_ptr>

#include <set>
#include <string>

namespace Kelvor {

class CBGGeode;

// The last step of a frame with effects: a full-screen triangle in the main
// camera's own stage that shows the chain's result, through the colour
// grading table when grading is on. Its fragment source carries its
// switches as written "#define" lines, rebuilt only when they change: the
// triangle is drawn outside the root's state set, so OSG's define variants
// would never see the root's defines.
class CKVFinalPass
{
public:
    CKVFinalPass();

    CBGGeode* getQuad() const { return mQuad.get(); }
    osg::Program* getProgram() const { return mProgram.get(); }

    // The texture shown, on unit 0 as "texMap".
    void setInput(osg::Texture2D* texture);
    osg::Texture2D* getInput() const;

    // Writes the wanted defines that `defines` has on into the fragment
    // source; grading only once the table has an image. True when the
    // source changed; an unchanged list leaves it alone, since a new source
    // means a recompile.
    bool rebuildProgram(osg::StateSet const* defines);
    std::string const& getDefinesText() const { return mDefinesText; }
    std::set<std::string> const& getWantedDefines() const { return mWantedDefines; }

    // Makes the grading table, once, on the next free unit as "texLUT".
    void createLUT();
    bool isLUTCreated() const { return mLUTCreated; }
    osg::Texture2D* getLUTTexture() const { return mLUTTexture.get(); }
    // Reads a table image into the existing table. False, with the old
    // table kept, when there is no table yet or the image cannot be read.
    // The program is rebuilt by the caller: grading may start now.
    bool setLUTImage(std::string const& imagePath);
    bool hasLUTImage() const;

    unsigned int getNextTextureUnit() const { return mNextTextureUnit; }

private:
    osg::ref_ptr<CBGGeode> mQuad;
    osg::ref_ptr<osg::Program> mProgram;
    std::set<std::string> mWantedDefines;
    std::string mDefinesText;
    unsigned int mNextTextureUnit = 0;
    bool mLUTCreated = false;
    osg::ref_ptr<osg::Texture2D> mLUTTexture;
};

} // namespace Kelvor
