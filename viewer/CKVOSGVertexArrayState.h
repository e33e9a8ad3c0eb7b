#pragma once

#include "viewer/KVOSGVertexAttribArrayDispatch.h"

#include <osg/Geometry>
#include <osg/VertexArrayState>

namespace Kelvor {

// The vertex array state of the backend's geometry: every array goes to the
// generic attribute location of its alias in the state (see CKVOSGState),
// and the four instance matrix rows go to locations 3 to 6 with divisor 1.
//
// OpenSceneGraph 3.6 declares VertexArrayState's assign*Dispatcher and
// setArray operations non-virtual, and its inline setVertexArray & co. call
// the stock setArray. The replacements below therefore hide the stock ones
// and only take effect when called on a CKVOSGVertexArrayState: make one
// with create() (which assigns this class's dispatchers straight after
// construction) and set arrays through a CKVOSGVertexArrayState pointer.
// Stock code that reaches the object as an osg::VertexArrayState still
// works with these dispatchers, because dispatches themselves are virtual.
class CKVOSGVertexArrayState : public osg::VertexArrayState
{
public:
    static constexpr unsigned int kInstanceRowCount = 4;
    static constexpr unsigned int kFirstInstanceRowLocation = 3;

    explicit CKVOSGVertexArrayState(osg::State* state);

    // The vertex array state of `geometry` in `state`'s context: dispatchers
    // for the vertex, colour, normal and texture coordinate arrays it has,
    // and a vertex array object when the state uses one for it. Instance
    // rows are the caller's to assign. Returned unowned, like the stock
    // createVertexArrayStateImplementation.
    static CKVOSGVertexArrayState* create(osg::State& state, osg::Geometry const& geometry);

    // The alias dispatchers for the arrays `geometry` has. Call it again on
    // a geometry's existing vertex array states after setting its arrays:
    // osg::Geometry::setVertexArray & co. reassign dispatchers through the
    // stock operations, which with aliasing off put fixed-function ones in
    // place of these. The dispatches themselves survive such a swap, held
    // at their location among the generic attribute dispatches as the stock
    // state does, so no active list is left pointing at a freed one.
    void assignDispatchersFor(osg::Geometry const& geometry);

    // Each makes its dispatch, if absent, at the location of the state's
    // alias, with divisor 0.
    void assignVertexArrayDispatcher();
    void assignNormalArrayDispatcher();
    void assignColorArrayDispatcher();
    void assignTexCoordArrayDispatcher(unsigned int numUnits);

    // Instance matrix rows 1 to 4: locations 3 to 6, divisor 1.
    void assignInstanceMatrixR1Dispatcher() { assignInstanceRowDispatcher(0); }
    void assignInstanceMatrixR2Dispatcher() { assignInstanceRowDispatcher(1); }
    void assignInstanceMatrixR3Dispatcher() { assignInstanceRowDispatcher(2); }
    void assignInstanceMatrixR4Dispatcher() { assignInstanceRowDispatcher(3); }
    void assignInstanceRowDispatcher(unsigned int row);
    KVOSGVertexAttribArrayDispatch* getInstanceRowDispatch(unsigned int row) const;

    // Binds `array` through `dispatch`, skipping an array already bound with
    // the same modified count; null disables what the dispatch had.
    void setArray(ArrayDispatch* dispatch, osg::State& state, osg::Array const* array);
    using osg::VertexArrayState::setArray;

    using osg::VertexArrayState::setVertexArray;
    using osg::VertexArrayState::setNormalArray;
    using osg::VertexArrayState::setColorArray;
    using osg::VertexArrayState::setTexCoordArray;
    void setVertexArray(osg::State& state, osg::Array const* array) { setArray(_vertexArray.get(), state, array); }
    void setNormalArray(osg::State& state, osg::Array const* array) { setArray(_normalArray.get(), state, array); }
    void setColorArray(osg::State& state, osg::Array const* array) { setArray(_colorArray.get(), state, array); }
    void setTexCoordArray(osg::State& state, unsigned int unit, osg::Array const* array)
    {
        setArray(_texCoordArrays[unit].get(), state, array);
    }
    // Needs assignInstanceRowDispatcher(row) first.
    void setInstanceRowArray(osg::State& state, unsigned int row, osg::Array const* array)
    {
        setArray(mInstanceRows[row].get(), state, array);
    }

    // Separate format and buffer binding (glVertexAttribFormat and
    // glBindVertexBuffer) instead of pointer calls. Off: the render state
    // manager clears it on detection and nothing sets it; the path is kept
    // so that it can be switched on where drivers profit from it.
    static void setUseBindingForm(bool use) { sUseBindingForm = use; }
    static bool getUseBindingForm() { return sUseBindingForm; }

protected:
    ~CKVOSGVertexArrayState() override;

private:
    // Our dispatch at `location`, shared with the generic attribute slot of
    // that location, in place of any dispatch that isn't ours.
    void assignAliasDispatcher(osg::ref_ptr<ArrayDispatch>& slot, unsigned int location);
    void bindWithFormat(KVOSGVertexAttribArrayDispatch& dispatch, osg::Array const& array,
                        osg::GLBufferObject& vbo, bool hadArray);
    static GLintptr bindingStride(unsigned int unit);

    using BindingDivisorFunction = void(GL_APIENTRY*)(GLuint bindingIndex, GLuint divisor);

    osg::ref_ptr<KVOSGVertexAttribArrayDispatch> mInstanceRows[kInstanceRowCount];
    // Not in osg::GLExtensions; looked up on first use of the binding form.
    BindingDivisorFunction mBindingDivisor = nullptr;
    bool mBindingDivisorLookedUp = false;

    static bool sUseBindingForm;
};

} // namespace Kelvor
