#pragma once

#include "TarnwickGeometry/CKVMatrix3D.h"

#include <osg/Array>
#include <osg/Geometry>

#include <vector>

namespace Kelvor {

class CKVBufferGeometry;
class CKVOSGVertexArrayState;

// The scene graph's side of a host buffer geometry: its attribute arrays, its
// one multi-draw primitive set and, for instanced geometry, the four rows of
// the instance matrices as per-instance attributes at locations 3 to 6. One
// draw binds one vertex array object and issues one indirect multi-draw.
//
// With occlusion culling on, the rows that the draw reads are also the output
// of the culling pass: in the pass of the camera named "OcclusionCamera" the
// geometry does not draw but dispatches the culling program, which reads
// unchanging copies of the rows and writes the surviving instances over the
// rows and their number into the first indirect command. When culling is
// switched off again the next draw puts the full rows and count back.
//
// The back pointer to the host geometry owns nothing; the host clears it
// before it dies, after which this geometry draws nothing and its bound is
// the plain drawable's.
class CKVOSGGeometry : public osg::Geometry
{
public:
    static char const* const s_className;
    static constexpr unsigned int kInstanceRowCount = 4;
    // The culling program's local size: one invocation per instance.
    static constexpr unsigned int kCullingGroupSize = 512;

    explicit CKVOSGGeometry(CKVBufferGeometry* host = nullptr);
    // Copies share the arrays as the copy operation says but have no host.
    CKVOSGGeometry(CKVOSGGeometry const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override;
    osg::Object* clone(osg::CopyOp const& copyop) const override;
    bool isSameKindAs(osg::Object const* object) const override;
    char const* libraryName() const override;
    char const* className() const override;
    void accept(osg::NodeVisitor& visitor) override;

    osg::BoundingBox computeBoundingBox() const override;
    osg::VertexArrayState* createVertexArrayStateImplementation(osg::RenderInfo& renderInfo) const override;
    void drawImplementation(osg::RenderInfo& renderInfo) const override;

    // The rows and their copies are no stock arrays of osg::Geometry.
    void resizeGLObjectBuffers(unsigned int maxSize) override;
    void releaseGLObjects(osg::State* state = nullptr) const override;

    // Binds the arrays unless the vertex array object already holds them.
    void drawKVVertexArraysImplementation(osg::RenderInfo& renderInfo) const;

    CKVBufferGeometry* getHostGeometry() const { return mHost; }
    // The box of one instance's vertices as the host knows them (narrowed to
    // floats), or the drawable's own box when no host geometry is attached.
    // The drawable's bound spans every instance, which is the wrong frame
    // inside an instance's model matrix.
    osg::BoundingBox getVertexBound() const;
    // Called by the host geometry's destructor.
    void clearHostGeometry();

    // Re-reads the host's buffers: attribute arrays, instance rows (and their
    // copies when culling is on) and the primitive set. Does nothing without
    // a host geometry of ours.
    void rebuild();

    // Installs one row of the instance matrices. All rows share one buffer
    // object, R1 first; null only dirties the bound.
    void setInstanceMatrixR1(osg::Array* array) { setInstanceMatrixRow(0, array); }
    void setInstanceMatrixR2(osg::Array* array) { setInstanceMatrixRow(1, array); }
    void setInstanceMatrixR3(osg::Array* array) { setInstanceMatrixRow(2, array); }
    void setInstanceMatrixR4(osg::Array* array) { setInstanceMatrixRow(3, array); }
    osg::Array* getInstanceMatrixRow(unsigned int row) const;
    // The unchanging input of the culling pass; null when the row was
    // installed with culling off and no culling pass has run since (the
    // first one makes them).
    osg::Array* getInstanceMatrixRowCopy(unsigned int row) const;

    // Whether culling has touched (or may touch) the rows and commands.
    bool getOcclusionApplied() const { return mOcclusionApplied; }

    // The instance matrices as the CPU holds them (never the culled rows),
    // for picking. False when a row is missing or there are no instances.
    // Throws std::out_of_range when a row is shorter than the first.
    bool getInstanceMatrices(std::vector<osg::Matrixd>& matrices) const;
    bool getInstanceMatrices(std::vector<CKVMatrix3D>& matrices) const;

protected:
    ~CKVOSGGeometry() override;

private:
    void setInstanceMatrixRow(unsigned int row, osg::Array* array);

    // Our vertex array state, when it is the current one of `state`.
    CKVOSGVertexArrayState* currentKVVertexArrayState(osg::State& state) const;
    // True when an array changed on the CPU since it was last bound.
    bool arraysChanged(unsigned int contextID) const;
    void keepVertexArrayObjectComplete(osg::RenderInfo& renderInfo) const;
    void dispatchCulling(osg::RenderInfo& renderInfo) const;
    void restoreInstances(osg::State& state) const;
    // Copies row `row` as culling input, in a buffer object shared by the
    // copies, and marks the row's buffer as written by the GPU.
    void makeInstanceRowCopy(unsigned int row) const;

    osg::ref_ptr<osg::Array> mInstanceRows[kInstanceRowCount];
    CKVBufferGeometry* mHost;
    mutable bool mOcclusionApplied;
    mutable osg::ref_ptr<osg::Array> mInstanceRowCopies[kInstanceRowCount];
};

} // namespace Kelvor
