#pragma once

#include "TarnwickCommon/CKVObject.h"

namespace Kelvor {

// What a render context needs to know about the host's window to attach to
// it. Platform subclasses add the native handles.
class CKVWindowData : public CKVObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVWindowData)
public:
    CKVWindowData();
    CKVWindowData(int width, int height);
    CKVWindowData(CKVWindowData const&) = default;
    CKVWindowData& operator=(CKVWindowData const&) = default;
    ~CKVWindowData() override;

    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }
    // Multisample count; 0 for none.
    int getSamples() const { return mSamples; }
    // Stencil bits requested; 0 for none.
    int getStencil() const { return mStencil; }
    bool getDoubleBuffer() const { return mDoubleBuffer; }

    void setSize(int width, int height)
    {
        mWidth = width;
        mHeight = height;
    }
    void setSamples(int samples) { mSamples = samples; }
    void setStencil(int stencil) { mStencil = stencil; }
    void setDoubleBuffer(bool doubleBuffer) { mDoubleBuffer = doubleBuffer; }

private:
    int mWidth = 0;
    int mHeight = 0;
    int mSamples = 0;
    int mStencil = 0;
    bool mDoubleBuffer = true;
};

} // namespace Kelvor
