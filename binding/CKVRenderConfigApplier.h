#pragma once

#include "binding/CKVBackGroundSwitcher.h"
#include "binding/CKVUniformBlock.h"

#include "TarnwickRender/CKVRenderConfig.h"

#include <osg/Uniform>
#include <osg/observer_ptr>
#include <osg/ref_ptr>

namespace Kelvor {

class CKVAtmosphereSky;
class CKVOSGCamera;
class CKVPostProcessNode;

// Turns the host's render configuration into root defines, effect switches,
// light block values and the background. The first application sets every
// switch; after that a switch is touched only when it differs from the
// stored copy, because each define change recompiles the shaders that
// listen to it.
class CKVRenderConfigApplier
{
public:
    CKVRenderConfigApplier();
    ~CKVRenderConfigApplier();

    // What the configuration acts on; absent ones are skipped. The block is
    // shared, not copied: writes land in the context's LightInfo.
    void setTargets(CKVPostProcessNode* root, CKVOSGCamera* mainCamera, CKVUniformBlock const& lightInfo,
                    osg::Uniform* rainIntensity);

    // The atmosphere that the switch, the light and the atmosphere
    // background steer; none until set.
    void setAtmosphere(CKVAtmosphereSky* atmosphere);

    // With `configured` false every switch is applied; always true.
    bool applyRenderConfig(CKVRenderConfig const& config, bool configured);
    bool applyBackGround(CKVBackGroundConfig const& config) { return mBackGrounds.apply(config); }

    CKVRenderConfig const& getRenderConfig() const { return mConfig; }
    CKVBackGroundSwitcher& getBackGrounds() { return mBackGrounds; }
    CKVBackGroundSwitcher const& getBackGrounds() const { return mBackGrounds; }

    // Root define changes made so far, each of which dirtied the programs
    // that listen to the define.
    unsigned int getDefineChangeCount() const { return mDefineChanges; }

    // Sets or removes a define on the root's state set and tells the program
    // manager, so that programs built with the old set are rebuilt.
    void applyDefine(char const* name, bool on);

    static constexpr float kWeatherThreshold = 0.5f;

private:
    void applySwitches(CKVRenderConfig const& config, bool all);
    // The shadow generator's level; the final pass follows when it lists
    // the shadow define.
    void applyShadowLevel(int level);
    // The ambient occlusion generator's level.
    void applySSAOLevel(int level);
    void applyFogSwitch(bool on);
    void applyBackGroundDependents(CKVRenderConfig const& config);
    void applyValues(CKVRenderConfig const& config);
    bool hasDefine(char const* name) const;
    osg::Uniform* rootUniform(char const* name) const;
    osg::Uniform* getOrCreateRootUniform(char const* name, osg::Uniform::Type type);
    void applyMainClearMask(bool depthPrePass);

    osg::ref_ptr<CKVPostProcessNode> mRoot;
    osg::ref_ptr<CKVOSGCamera> mMainCamera;
    CKVUniformBlock mLightInfo;
    osg::ref_ptr<osg::Uniform> mRainIntensity;
    osg::observer_ptr<CKVAtmosphereSky> mAtmosphere;
    CKVRenderConfig mConfig;
    CKVBackGroundSwitcher mBackGrounds;
    unsigned int mDefineChanges = 0;
};

} // namespace Kelvor
