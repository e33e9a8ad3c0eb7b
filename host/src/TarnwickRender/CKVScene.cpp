#include "TarnwickRender/CKVScene.h"

#include "TarnwickGeometry/CKVRay3D.h"
#include "TarnwickRender/CKVEvent.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVScene, CKVObject)

CKVScene::CKVScene() = default;

CKVScene::~CKVScene() = default;

void CKVScene::getSafeCamera(CKVCamera& out) const
{
    std::lock_guard<std::mutex> lock(mMutex);
    out = mCamera;
}

void CKVScene::setCamera(CKVCamera const& camera)
{
    std::lock_guard<std::mutex> lock(mMutex);
    mCamera = camera;
}

void CKVScene::setRenderConfig(CKVRenderConfig const& config)
{
    std::lock_guard<std::mutex> lock(mMutex);
    mRenderConfig = config;
}

bool CKVScene::getSafeOperator(kv_shared_ptr<CKVOperator>& out) const
{
    std::lock_guard<std::mutex> lock(mMutex);
    out = mOperator;
    return out.valid();
}

void CKVScene::setOperator(CKVOperator* op)
{
    // The old operator may die here; let that happen outside the lock, since
    // its destructor may call back into the scene.
    kv_shared_ptr<CKVOperator> old;
    std::lock_guard<std::mutex> lock(mMutex);
    old = mOperator;
    mOperator = op;
}

bool CKVScene::getSafeGraphicsModel(kv_shared_ptr<CKVGraphicsModel>& out) const
{
    std::lock_guard<std::mutex> lock(mMutex);
    out = mGraphicsModel;
    return out.valid();
}

void CKVScene::setGraphicsModel(CKVGraphicsModel* model)
{
    kv_shared_ptr<CKVGraphicsModel> old;
    std::lock_guard<std::mutex> lock(mMutex);
    old = mGraphicsModel;
    mGraphicsModel = model;
}

void CKVScene::setViewportSize(int width, int height)
{
    std::lock_guard<std::mutex> lock(mMutex);
    mViewportWidth = width;
    mViewportHeight = height;
}

void CKVScene::getViewportSize(int& width, int& height) const
{
    std::lock_guard<std::mutex> lock(mMutex);
    width = mViewportWidth;
    height = mViewportHeight;
}

bool CKVScene::getSelectRay(CKVPoint3D const& pixel, CKVRay3D& out) const
{
    std::lock_guard<std::mutex> lock(mMutex);
    if (mViewportWidth <= 0 || mViewportHeight <= 0)
        return false;
    // Pixel edges, not centres: (0, 0) is the corner of the viewport, as the
    // window system reports cursor positions.
    double const ndcX = 2.0 * pixel.x / mViewportWidth - 1.0;
    double const ndcY = 1.0 - 2.0 * pixel.y / mViewportHeight;
    return mCamera.getRayAtNDC(ndcX, ndcY, out);
}

void CKVScene::cameraPosChanged()
{
    mCameraChanges.fetch_add(1, std::memory_order_acq_rel);
}

template <class Handler>
void CKVScene::forward(Handler handler, CKVEvent const& event)
{
    kv_shared_ptr<CKVOperator> op;
    if (getSafeOperator(op))
        ((*op).*handler)(event);
}

void CKVScene::onLButtonDown(CKVEvent const& event) { forward(&CKVOperator::onLButtonDown, event); }
void CKVScene::onLButtonUp(CKVEvent const& event) { forward(&CKVOperator::onLButtonUp, event); }
void CKVScene::onLButtonDblClk(CKVEvent const& event) { forward(&CKVOperator::onLButtonDblClk, event); }
void CKVScene::onMButtonDown(CKVEvent const& event) { forward(&CKVOperator::onMButtonDown, event); }
void CKVScene::onMButtonUp(CKVEvent const& event) { forward(&CKVOperator::onMButtonUp, event); }
void CKVScene::onMButtonDblClk(CKVEvent const& event) { forward(&CKVOperator::onMButtonDblClk, event); }
void CKVScene::onRButtonDown(CKVEvent const& event) { forward(&CKVOperator::onRButtonDown, event); }
void CKVScene::onRButtonUp(CKVEvent const& event) { forward(&CKVOperator::onRButtonUp, event); }
void CKVScene::onRButtonDblClk(CKVEvent const& event) { forward(&CKVOperator::onRButtonDblClk, event); }
void CKVScene::onMouseMove(CKVEvent const& event) { forward(&CKVOperator::onMouseMove, event); }
void CKVScene::onMouseWheel(CKVEvent const& event) { forward(&CKVOperator::onMouseWheel, event); }
void CKVScene::onKeyDown(CKVEvent const& event) { forward(&CKVOperator::onKeyDown, event); }
void CKVScene::onKeyUp(CKVEvent const& event) { forward(&CKVOperator::onKeyUp, event); }

} // namespace Kelvor
