#include "effects/CKVFinalPass.h"

#include "environment/CBGGeode.h"
#include "environment/CFullScreenTriangleGeometry.h"
#include "programs/CKVProgramManager.h"
#include "programs/KVDefineBlock.h"
#include "viewer/DepthMask.h"

#include <osg/Image>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

namespace Kelvor {

namespace {

// The fragment stage is the program's second shader.
constexpr unsigned int kFragmentShaderIndex = 1;
char const* const kColorGradingDefine = "_USE_COLOR_GRADING";

} // namespace

CKVFinalPass::CKVFinalPass()
    : mQuad(new CBGGeode)
    , mWantedDefines{"_USE_VOLUMETRICLIGHT", "_USE_DOF", kColorGradingDefine, "_USE_SHADOW"}
{
    mQuad->setName("PostProcessQuad");
    mQuad->addDrawable(new CFullScreenTriangleGeometry);
    mProgram = CKVProgramManager::instance().createPostProcessProgram(mWantedDefines);

    osg::StateSet* stateSet = mQuad->getOrCreateStateSet();
    if (mProgram.valid())
        stateSet->setAttribute(mProgram.get(), osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    stateSet->addUniform(new osg::Uniform("texMap", 0));
    // The triangle replaces every pixel: depth plays no part.
    stateSet->setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    stateSet->setAttribute(new DepthMask(false), osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    stateSet->setMode(GL_BLEND, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    mNextTextureUnit = 1;
}

void CKVFinalPass::setInput(osg::Texture2D* texture)
{
    osg::StateSet* stateSet = mQuad->getOrCreateStateSet();
    if (texture)
        stateSet->setTextureAttribute(0, texture, osg::StateAttribute::ON);
    else
        stateSet->removeTextureAttribute(0, osg::StateAttribute::TEXTURE);
}

osg::Texture2D* CKVFinalPass::getInput() const
{
    osg::StateSet const* stateSet = mQuad->getStateSet();
    osg::StateAttribute const* attribute =
        stateSet ? stateSet->getTextureAttribute(0, osg::StateAttribute::TEXTURE) : nullptr;
    return const_cast<osg::Texture2D*>(dynamic_cast<osg::Texture2D const*>(attribute));
}

bool CKVFinalPass::rebuildProgram(osg::StateSet const* defines)
{
    char const* body = CKVProgramManager::getPostProcessFragmentBody();
    if (!body)
        return false;
    // Grading through a table that has no image yet looks every colour up
    // in an empty texture, which reads black: until a table is given the
    // frame goes out ungraded.
    std::set<std::string> wanted = mWantedDefines;
    if (!hasLUTImage())
        wanted.erase(kColorGradingDefine);
    return KVDefineBlock::rebuild(mProgram.get(), kFragmentShaderIndex, wanted, defines, body, mDefinesText);
}

bool CKVFinalPass::hasLUTImage() const
{
    return mLUTTexture.valid() && mLUTTexture->getImage() != nullptr;
}

void CKVFinalPass::createLUT()
{
    if (mLUTCreated)
        return;
    mLUTTexture = new osg::Texture2D;
    mLUTTexture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    mLUTTexture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    mLUTTexture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    mLUTTexture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    // A table read later keeps its exact texel values.
    mLUTTexture->setResizeNonPowerOfTwoHint(false);
    osg::StateSet* stateSet = mQuad->getOrCreateStateSet();
    stateSet->setTextureAttribute(mNextTextureUnit, mLUTTexture.get(), osg::StateAttribute::ON);
    stateSet->addUniform(new osg::Uniform("texLUT", static_cast<int>(mNextTextureUnit)));
    ++mNextTextureUnit;
    mLUTCreated = true;
}

bool CKVFinalPass::setLUTImage(std::string const& imagePath)
{
    if (!mLUTTexture.valid() || imagePath.empty())
        return false;
    osg::ref_ptr<osg::Image> image = osgDB::readImageFile(imagePath, osgDB::Registry::instance()->getOptions());
    if (!image.valid())
        return false;
    mLUTTexture->setImage(image.get());
    mLUTTexture->dirtyTextureObject();
    return true;
}

} // namespace Kelvor
