#include "scene/CKVOSGText2D.h"

#include "programs/CKVProgramManager.h"
#include "viewer/CKVOSGState.h"

#include "TarnwickRender/CKVProgramParam.h"

#include <osg/NodeVisitor>
#include <osg/State>
#include <osg/Uniform>

#include <cstring>

namespace Kelvor {

char const* const CKVOSGText2D::s_className = "CKVOSGText2D";

namespace {

// One program for all text: every label asks for the same kind without
// switches of its own.
osg::Program* textProgram()
{
    static osg::ref_ptr<osg::Program> const program =
        CKVProgramManager::instance().getProgram(CKVProgramParam(CKVProgramParam::kText));
    return program.get();
}

} // namespace

CKVOSGText2D::CKVOSGText2D(CKVTextGeometry* host)
    : mHost(host)
{
    // The base constructor made the stock state set: its virtual call could
    // not reach ours yet.
    assignStateSet();
}

CKVOSGText2D::CKVOSGText2D(CKVOSGText2D const& other, osg::CopyOp const& copyop)
    : osgText::Text(other, copyop)
    , mHost(nullptr)
{
}

CKVOSGText2D::~CKVOSGText2D() = default;

osg::Object* CKVOSGText2D::cloneType() const
{
    return new CKVOSGText2D();
}

osg::Object* CKVOSGText2D::clone(osg::CopyOp const& copyop) const
{
    return new CKVOSGText2D(*this, copyop);
}

bool CKVOSGText2D::isSameKindAs(osg::Object const* object) const
{
    return object && std::strcmp(object->className(), s_className) == 0;
}

char const* CKVOSGText2D::libraryName() const
{
    return "Kelvor";
}

char const* CKVOSGText2D::className() const
{
    return s_className;
}

void CKVOSGText2D::accept(osg::NodeVisitor& visitor)
{
    osg::Drawable::accept(visitor);
}

osg::StateSet* CKVOSGText2D::createStateSet()
{
    osg::StateSet* stateSet = osgText::Text::createStateSet();
    if (stateSet) {
        if (osg::Program* program = textProgram())
            stateSet->setAttributeAndModes(program, osg::StateAttribute::ON);
    }
    return stateSet;
}

osg::Vec4 CKVOSGText2D::currentAlbedo(osg::State const& state)
{
    osg::Vec4 colour(1.0f, 1.0f, 1.0f, 1.0f);
    osg::State::UniformMap const& uniforms = state.getUniformMap();
    auto const found = uniforms.find("AlbedoColor_V4");
    if (found == uniforms.end() || found->second.uniformVec.empty())
        return colour;
    osg::Uniform const* uniform = found->second.uniformVec.back().first;
    if (uniform)
        uniform->get(colour);
    return colour;
}

void CKVOSGText2D::drawImplementation(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    osg::Vec4 const colour = currentAlbedo(state);

    // The text's own placement (offset, rotation, position) is a matrix that
    // the stock draw applies to the state's model view only; our shaders read
    // the model matrix from the entity block, so it goes there for the draw.
    CKVOSGState* kvState = CKVOSGState::asKVState(state);
    osg::Matrixd placement;
    if (!kvState || !computeMatrix(placement, &state)) {
        osgText::Text::drawImplementation(state, colour);
        return;
    }
    osg::Matrixd const model = kvState->getModelMatrix();
    osg::Matrixd const view = kvState->getViewMatrix();
    osg::Matrixf const lastModel = kvState->getLastModelMatrix();
    osg::ref_ptr<osg::RefMatrix> const modelView = new osg::RefMatrix(state.getModelViewMatrix());

    osg::ref_ptr<osg::RefMatrix> const placedModelView = new osg::RefMatrix(placement * *modelView);
    kvState->applyMatrices(placedModelView.get(), placement * model, view, osg::Matrixf(placement) * lastModel);
    // The stock draw applies the placement to the model view once more for
    // fixed-function state; restore the plain model view first so that it
    // isn't applied twice there.
    state.applyModelViewMatrix(modelView.get());
    osgText::Text::drawImplementation(state, colour);
    kvState->applyMatrices(modelView.get(), model, view, lastModel);
}

} // namespace Kelvor
