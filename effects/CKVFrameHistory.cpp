#include "effects/CKVFrameHistory.h"

#include <osg/BufferObject>
#include <osg/GLExtensions>
#include <osg/Viewport>

#include <algorithm>
#include <cstring>

namespace Kelvor {

namespace {

constexpr unsigned int kMatrixFloats = 16;
constexpr unsigned int kHistoryFloats = 3 * kMatrixFloats;

} // namespace

CKVFrameHistory::CKVFrameHistory(osg::FloatArray* cameraInfo)
    : mCameraInfo(cameraInfo)
    , mJitterUniform(new osg::Uniform("current_prev_jitter", osg::Vec4f()))
{
}

void CKVFrameHistory::setJitterSamples(std::vector<osg::Vec2d> const& samples)
{
    mJitterSamples = samples;
    mJitterIndex = 0;
}

void CKVFrameHistory::applyJitter(osg::Matrixd& projection, osg::Viewport const& viewport)
{
    // No table, no jitter: the index would otherwise wrap by a modulo of 0.
    if (mJitterSamples.empty() || viewport.width() <= 0.0 || viewport.height() <= 0.0)
        return;
    mLastJitter = mJitter;
    osg::Vec2d const sample = mJitterSamples[mJitterIndex];
    mJitterIndex = (mJitterIndex + 1) % static_cast<unsigned int>(mJitterSamples.size());
    mJitter.set(sample.x() / viewport.width(), sample.y() / viewport.height());
    projection(2, 0) -= mJitter.x();
    projection(2, 1) -= mJitter.y();
    mJitterUniform->set(osg::Vec4f(mJitter.x(), mJitter.y(), mLastJitter.x(), mLastJitter.y()));
}

void CKVFrameHistory::writeAndAdvance(osg::Matrixf const& view, osg::Matrixf const& projection, bool writeBlock)
{
    // The cull of the main pass runs with the one context current.
    unsigned int const contextID = 0;
    if (writeBlock && mCameraInfo.valid() && mCameraInfo->size() >= kHistoryFirstFloat + kHistoryFloats)
    {
        float block[kHistoryFloats];
        std::memcpy(block, mLastView.ptr(), sizeof(float) * kMatrixFloats);
        std::memcpy(block + kMatrixFloats, mLastProjection.ptr(), sizeof(float) * kMatrixFloats);
        std::memcpy(block + 2 * kMatrixFloats, mLastViewProjection.ptr(), sizeof(float) * kMatrixFloats);
        // Kept in the array too, so a full upload of the block carries them.
        std::copy(block, block + kHistoryFloats, mCameraInfo->begin() + kHistoryFirstFloat);

        osg::BufferObject* bufferObject = mCameraInfo->getBufferObject();
        osg::GLBufferObject* buffer = bufferObject ? bufferObject->getGLBufferObject(contextID) : nullptr;
        if (buffer && buffer->getGLObjectID() != 0 && !buffer->isDirty())
        {
            osg::GLExtensions* gl = buffer->_extensions;
            GLintptr const offset = static_cast<GLintptr>(buffer->getOffset(mCameraInfo->getBufferIndex())) +
                                    kHistoryFirstFloat * sizeof(float);
            gl->glBindBuffer(GL_UNIFORM_BUFFER, buffer->getGLObjectID());
            gl->glBufferSubData(GL_UNIFORM_BUFFER, offset, sizeof(block), block);
            gl->glBindBuffer(GL_UNIFORM_BUFFER, 0);
        }
    }
    mLastView = view;
    mLastProjection = projection;
    mLastViewProjection = view * projection;
}

} // namespace Kelvor
