#include "viewer/CKVMatrixCullVisitor.h"
#include "viewer/CKVRenderLeaf.h"

#include <gtest/gtest.h>

#include <osg/Camera>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/MatrixTransform>
#include <osg/Viewport>
#include <osgUtil/RenderStage>
#include <osgUtil/StateGraph>

#include <map>
#include <set>
#include <string>

namespace Kelvor {
namespace {

osg::Matrixd const kView = osg::Matrixd::lookAt(osg::Vec3d(0, -6, 2), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 0, 1));
osg::Matrixd const kProjection = osg::Matrixd::ortho(-10, 10, -10, 10, -50, 50);

osg::ref_ptr<osg::Geode> makeQuad(std::string const& name)
{
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    vertices->push_back(osg::Vec3(-1, -1, 0));
    vertices->push_back(osg::Vec3(1, -1, 0));
    vertices->push_back(osg::Vec3(1, 1, 0));
    vertices->push_back(osg::Vec3(-1, 1, 0));
    osg::ref_ptr<osg::Geometry> quad = new osg::Geometry;
    quad->setName(name);
    quad->setVertexArray(vertices.get());
    quad->addPrimitiveSet(new osg::DrawArrays(GL_QUADS, 0, 4));
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(quad.get());
    return geode;
}

osg::ref_ptr<osg::MatrixTransform> makeTransform(osg::Matrixd const& matrix, osg::Node* child)
{
    osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(matrix);
    transform->addChild(child);
    return transform;
}

osg::ref_ptr<osg::Camera> makeNestedCamera(osg::Transform::ReferenceFrame frame, osg::Camera::TransformOrder order,
                                           osg::Matrixd const& view, osg::Node* child)
{
    osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    camera->setRenderOrder(osg::Camera::NESTED_RENDER);
    camera->setReferenceFrame(frame);
    camera->setTransformOrder(order);
    camera->setViewMatrix(view);
    if (frame == osg::Transform::ABSOLUTE_RF)
        camera->setProjectionMatrix(kProjection);
    camera->addChild(child);
    return camera;
}

// Pushes a model view matrix the way effect code does, outside the
// visitor's transform and camera operations.
class ForeignPushCallback : public osg::NodeCallback
{
public:
    explicit ForeignPushCallback(osg::Matrixd const& matrix)
        : mMatrix(matrix)
    {
    }
    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override
    {
        auto* cull = static_cast<osgUtil::CullVisitor*>(visitor);
        cull->pushModelViewMatrix(new osg::RefMatrix(mMatrix * *cull->getModelViewMatrix()),
                                  osg::Transform::RELATIVE_RF);
        traverse(node, visitor);
        cull->popModelViewMatrix();
    }

private:
    osg::Matrixd mMatrix;
};

void collectLeaves(osgUtil::StateGraph const& graph, std::map<std::string, CKVRenderLeaf*>& leaves)
{
    for (auto const& leaf : graph._leaves)
    {
        auto* kvLeaf = dynamic_cast<CKVRenderLeaf*>(leaf.get());
        ASSERT_NE(kvLeaf, nullptr) << "a stock leaf for " << leaf->getDrawable()->getName();
        leaves[leaf->getDrawable()->getName()] = kvLeaf;
    }
    for (auto const& child : graph._children)
        collectLeaves(*child.second, leaves);
}

void collectLeaves(osgUtil::RenderBin const& bin, std::map<std::string, CKVRenderLeaf*>& leaves)
{
    for (osgUtil::StateGraph const* graph : bin.getStateGraphList())
        collectLeaves(*graph, leaves);
    for (auto const& child : bin.getRenderBinList())
        collectLeaves(*child.second, leaves);
}

void expectNear(osg::Matrixd const& actual, osg::Matrixd const& expected, char const* what, std::string const& name)
{
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_NEAR(actual(row, column), expected(row, column), 1e-9)
                << what << " of " << name << " at (" << row << ", " << column << ")";
}

osg::Matrixd orIdentity(osg::RefMatrix const* matrix)
{
    return matrix != nullptr ? osg::Matrixd(*matrix) : osg::Matrixd();
}

class MatrixCullVisitorTest : public ::testing::Test
{
protected:
    // One cull of `scene` as the scene view does it, with kView and kProjection.
    std::map<std::string, CKVRenderLeaf*> cull(osg::Node& scene)
    {
        mVisitor->reset();
        mVisitor->setCullingMode(osg::CullSettings::VIEW_FRUSTUM_CULLING);
        mVisitor->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        mGraph->clean();
        mStage->reset();
        mVisitor->setStateGraph(mGraph.get());
        mVisitor->setRenderStage(mStage.get());
        mVisitor->pushViewport(mViewport.get());
        mVisitor->pushProjectionMatrix(new osg::RefMatrix(kProjection));
        mVisitor->pushModelViewMatrix(new osg::RefMatrix(kView), osg::Transform::ABSOLUTE_RF);
        scene.accept(*mVisitor);
        mVisitor->popModelViewMatrix();
        mVisitor->popProjectionMatrix();
        mVisitor->popViewport();

        std::map<std::string, CKVRenderLeaf*> leaves;
        collectLeaves(*mStage, leaves);
        return leaves;
    }

    osg::ref_ptr<CKVMatrixCullVisitor> mVisitor = new CKVMatrixCullVisitor;
    osg::ref_ptr<osgUtil::StateGraph> mGraph = new osgUtil::StateGraph;
    osg::ref_ptr<osgUtil::RenderStage> mStage = new osgUtil::RenderStage;
    osg::ref_ptr<osg::Viewport> mViewport = new osg::Viewport(0, 0, 64, 64);
};

TEST_F(MatrixCullVisitorTest, SplitsEveryModelViewIntoModelAndView)
{
    osg::Matrixd const t1 = osg::Matrixd::translate(1, 0, 0);
    osg::Matrixd const r2 = osg::Matrixd::rotate(osg::PI_2, osg::Vec3d(0, 0, 1));
    osg::Matrixd const absolute = osg::Matrixd::translate(0, 0, -5);
    osg::Matrixd const postView = osg::Matrixd::translate(0, 1, 0);
    osg::Matrixd const t3 = osg::Matrixd::scale(2, 2, 2);
    osg::Matrixd const preView = osg::Matrixd::rotate(0.3, osg::Vec3d(1, 0, 0));
    osg::Matrixd const absoluteView = osg::Matrixd::lookAt(osg::Vec3d(5, 0, 0), osg::Vec3d(), osg::Vec3d(0, 0, 1));
    osg::Matrixd const t4 = osg::Matrixd::translate(0, 0, 1);
    osg::Matrixd const foreign = osg::Matrixd::translate(0, 0.5, 0);
    osg::Matrixd const t5 = osg::Matrixd::rotate(0.2, osg::Vec3d(0, 1, 0));

    osg::ref_ptr<osg::Group> root = new osg::Group;
    osg::ref_ptr<osg::Geode> b = makeQuad("b");
    b->addDrawable(makeQuad("b2")->getDrawable(0));
    osg::ref_ptr<osg::MatrixTransform> first = makeTransform(t1, makeTransform(r2, makeQuad("a").get()).get());
    first->addChild(b.get());
    root->addChild(first.get());
    osg::ref_ptr<osg::MatrixTransform> absoluteTransform = makeTransform(absolute, makeQuad("c").get());
    absoluteTransform->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    root->addChild(absoluteTransform.get());
    root->addChild(makeNestedCamera(osg::Transform::RELATIVE_RF, osg::Camera::POST_MULTIPLY, postView,
                                    makeTransform(t3, makeQuad("d").get()).get()));
    root->addChild(makeNestedCamera(osg::Transform::RELATIVE_RF, osg::Camera::PRE_MULTIPLY, preView,
                                    makeQuad("e").get()));
    root->addChild(makeNestedCamera(osg::Transform::ABSOLUTE_RF, osg::Camera::POST_MULTIPLY, absoluteView,
                                    makeTransform(t4, makeQuad("f").get()).get()));
    osg::ref_ptr<osg::Group> foreignGroup = new osg::Group;
    foreignGroup->setCullCallback(new ForeignPushCallback(foreign));
    foreignGroup->addChild(makeQuad("g"));
    foreignGroup->addChild(makeTransform(t5, makeQuad("h").get()));
    root->addChild(foreignGroup.get());

    std::map<std::string, CKVRenderLeaf*> leaves = cull(*root);

    std::map<std::string, std::pair<osg::Matrixd, osg::Matrixd>> const expected = {
        {"a", {r2 * t1, kView}},
        {"b", {t1, kView}},
        {"b2", {t1, kView}},
        {"c", {absolute, osg::Matrixd()}},
        {"d", {t3, kView * postView}},
        {"e", {preView, kView}},
        {"f", {t4, absoluteView}},
        {"g", {osg::Matrixd(), foreign * kView}},
        {"h", {t5, foreign * kView}},
    };
    ASSERT_EQ(leaves.size(), expected.size());
    for (auto const& [name, matrices] : expected)
    {
        ASSERT_EQ(leaves.count(name), 1u) << name;
        CKVRenderLeaf const& leaf = *leaves[name];
        osg::Matrixd const model = orIdentity(leaf.getModelMatrix());
        osg::Matrixd const view = orIdentity(leaf.getViewMatrix());
        expectNear(model, matrices.first, "model", name);
        expectNear(view, matrices.second, "view", name);
        expectNear(model * view, *leaf._modelview, "model x view", name);
    }
}

TEST_F(MatrixCullVisitorTest, DrawsSharingATransformOrAViewShareMatrixObjects)
{
    // The state tells changed matrices by pointer: shared ones write nothing.
    osg::ref_ptr<osg::Group> root = new osg::Group;
    osg::ref_ptr<osg::Geode> geode = makeQuad("a");
    geode->addDrawable(makeQuad("b")->getDrawable(0));
    root->addChild(makeTransform(osg::Matrixd::translate(1, 0, 0), geode.get()));
    root->addChild(makeTransform(osg::Matrixd::translate(2, 0, 0), makeQuad("c").get()));
    root->addChild(makeQuad("d"));

    std::map<std::string, CKVRenderLeaf*> leaves = cull(*root);

    ASSERT_EQ(leaves.size(), 4u);
    EXPECT_EQ(leaves["a"]->getModelMatrix(), leaves["b"]->getModelMatrix());
    EXPECT_NE(leaves["a"]->getModelMatrix(), leaves["c"]->getModelMatrix());
    EXPECT_EQ(leaves["a"]->getViewMatrix(), leaves["c"]->getViewMatrix());
    EXPECT_EQ(leaves["a"]->getViewMatrix(), leaves["d"]->getViewMatrix());
}

TEST_F(MatrixCullVisitorTest, ReusesItsLeavesFromFrameToFrame)
{
    osg::ref_ptr<osg::Group> root = new osg::Group;
    for (int i = 0; i < 5; ++i)
        root->addChild(makeTransform(osg::Matrixd::translate(i, 0, 0), makeQuad("q" + std::to_string(i)).get()));

    std::set<CKVRenderLeaf*> first;
    for (auto const& entry : cull(*root))
        first.insert(entry.second);
    std::set<CKVRenderLeaf*> second;
    for (auto const& entry : cull(*root))
        second.insert(entry.second);

    EXPECT_EQ(first.size(), 5u);
    EXPECT_EQ(first, second);
}

TEST_F(MatrixCullVisitorTest, CulledDrawablesMakeNoLeaves)
{
    osg::ref_ptr<osg::Group> root = new osg::Group;
    root->addChild(makeTransform(osg::Matrixd::translate(100, 0, 0), makeQuad("outside").get()));
    root->addChild(makeQuad("inside"));

    std::map<std::string, CKVRenderLeaf*> leaves = cull(*root);

    EXPECT_EQ(leaves.size(), 1u);
    EXPECT_EQ(leaves.count("inside"), 1u);
}

TEST(MatrixCullVisitorCloneTest, CloneStaysThisVisitor)
{
    osg::ref_ptr<CKVMatrixCullVisitor> visitor = new CKVMatrixCullVisitor;
    osg::ref_ptr<osgUtil::CullVisitor> copy = visitor->clone();
    EXPECT_STREQ(copy->className(), "CKVMatrixCullVisitor");
}

} // namespace
} // namespace Kelvor
