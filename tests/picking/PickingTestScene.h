#pragma once

// Hand-built scenes for picking without a GL context: an orthographic
// camera looking down -z at the xy plane, 100 by 100 pixels over 20 by 20
// world units, and host buffer geometry made the way the host makes it.
#include "scene/BufferGeometryTestSupport.h"

#include "scene/CKVOSGGeometry.h"

#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickRender/CKVDrawable.h"

#include <osg/Camera>
#include <osg/Notify>

#include <sstream>
#include <string>
#include <vector>

namespace Kelvor {

class PickingScene
{
public:
    static constexpr int kPixels = 100;
    static constexpr double kHalfExtent = 10.0;

    PickingScene() : mCamera(new osg::Camera)
    {
        mCamera->setViewport(0, 0, kPixels, kPixels);
        mCamera->setProjectionMatrixAsOrtho(-kHalfExtent, kHalfExtent, -kHalfExtent, kHalfExtent, 1.0, 100.0);
        mCamera->setViewMatrixAsLookAt(osg::Vec3d(0, 0, 50), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 1, 0));
    }

    osg::Camera* camera() const { return mCamera.get(); }

    // The window point (y from the top, as the host counts) over world (x, y).
    static CKVPoint3D pixelOver(double x, double y)
    {
        double const scale = kPixels / (2.0 * kHalfExtent);
        return CKVPoint3D((x + kHalfExtent) * scale, (kHalfExtent - y) * scale, 0.0);
    }

    // A square part of half size `half` around (x, y) at height z, shown as
    // `drawable`.
    static kv_shared_ptr<CKVLogicBufferGeometry> square(double x, double y, double z, double half,
                                                        CKVDrawable* drawable)
    {
        float const x0 = float(x - half), x1 = float(x + half), y0 = float(y - half), y1 = float(y + half);
        float const vertices[] = {x0, y0, float(z), x1, y0, float(z), x1, y1, float(z), x0, y1, float(z)};
        unsigned int const indices[] = {0, 1, 2, 0, 2, 3};
        kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry(drawable));
        part->setVertexData(CKVVertexBufferAttribute::kVertex, vertices, 12);
        part->setIndexData(indices, 6);
        return part;
    }

    static kv_shared_ptr<CKVLogicBufferGeometry> instanceAt(double x, double y, double z, CKVDrawable* drawable)
    {
        kv_shared_ptr<CKVLogicBufferGeometry> instance(new CKVLogicBufferGeometry(drawable));
        instance->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(x, y, z)));
        return instance;
    }

    // Packs the buffers into a new host geometry, puts its drawable under
    // the camera and keeps both alive for the scene's lifetime.
    CKVBufferGeometryImp* add(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> const& buffers)
    {
        kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
        host->updateLogicBuffers(std::vector<bool>(buffers.size(), true), rawPointers(buffers));
        host->updatePhysicalBuffer();
        host->getOSGGeometry()->rebuild();
        mCamera->addChild(host->getOSGGeometry());
        mHosts.push_back(host);
        mBuffers.insert(mBuffers.end(), buffers.begin(), buffers.end());
        return host.get();
    }

private:
    BufferFactoriesScope mFactories;
    osg::ref_ptr<osg::Camera> mCamera;
    std::vector<kv_shared_ptr<CKVBufferGeometryImp>> mHosts;
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> mBuffers;
};

// Collects what OpenSceneGraph reports while it lives.
class NotifyCapture : public osg::NotifyHandler
{
public:
    void notify(osg::NotifySeverity, char const* message) override { mText += message; }
    std::string const& text() const { return mText; }

private:
    std::string mText;
};

class NotifyCaptureScope
{
public:
    NotifyCaptureScope() : mPrevious(osg::getNotifyHandler()), mCapture(new NotifyCapture)
    {
        osg::setNotifyHandler(mCapture.get());
    }
    ~NotifyCaptureScope() { osg::setNotifyHandler(mPrevious.get()); }
    std::string const& text() const { return mCapture->text(); }

private:
    osg::ref_ptr<osg::NotifyHandler> mPrevious;
    osg::ref_ptr<NotifyCapture> mCapture;
};

} // namespace Kelvor
