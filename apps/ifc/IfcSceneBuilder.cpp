#include "apps/ifc/IfcSceneBuilder.h"

#include "apps/ifc/IfcPartBuilder.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVTransformState.h"

#include <cstdio>

namespace Kelvor {

namespace {

void unpackColour(std::uint32_t key, unsigned char bytes[4])
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(key >> (24 - 8 * i));
}

// The centre of the product's extent: the origin its vertices are stored
// against, so that floats keep their precision far from zero.
CKVPoint3D centreOf(IfcProductGeometry const& product)
{
    CKVBndBox box;
    for (IfcMesh const& mesh : product.meshes) {
        for (std::size_t i = 0; i + 2 < mesh.positions.size(); i += 3)
            box.addPoint(CKVPoint3D(mesh.positions[i], mesh.positions[i + 1], mesh.positions[i + 2]));
    }
    return box.valid() ? box.midPt() : CKVPoint3D();
}

std::string colourName(std::array<float, 4> const& rgba)
{
    unsigned char bytes[4];
    unpackColour(IfcMesh::packColour(rgba), bytes);
    char text[16];
    std::snprintf(text, sizeof text, "#%02X%02X%02X%02X", bytes[0], bytes[1], bytes[2], bytes[3]);
    return text;
}

} // namespace

IfcSceneBuilder::IfcSceneBuilder() = default;
IfcSceneBuilder::~IfcSceneBuilder() = default;

bool IfcSceneBuilder::fail(std::string message, IfcScene& scene)
{
    mError = std::move(message);
    scene.clear();
    mMaterials.clear();
    mDrawables.clear();
    return false;
}

kv_shared_ptr<CKVSceneNode> IfcSceneBuilder::makeNode(std::string const& name)
{
    kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
    if (node)
        node->setName(name.c_str());
    return node;
}

CKVBasicMaterial* IfcSceneBuilder::materialFor(std::array<float, 4> const& rgba, IfcScene& scene)
{
    std::uint32_t const key = IfcMesh::packColour(rgba);
    auto it = mMaterials.find(key);
    if (it != mMaterials.end())
        return it->second;
    unsigned char bytes[4];
    unpackColour(key, bytes);
    kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial());
    material->setRGBA(bytes[0], bytes[1], bytes[2], bytes[3]);
    material->setSortTransparency(bytes[3] < 255);
    scene.materials.push_back(material);
    mMaterials.emplace(key, material.get());
    return material.get();
}

bool IfcSceneBuilder::addColourNode(CKVSceneNode& parent, IfcMesh const& mesh,
                                    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> const& buffers,
                                    bool instanced, IfcScene& scene)
{
    kv_shared_ptr<CKVSceneNode> node = makeNode(colourName(mesh.rgba));
    kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
    // The index buffer is set up front: packing fills instances before parts
    // and only counts instances into an index that already exists.
    kv_shared_ptr<CKVVertexIndex> index(CKVRenderCallback::createVertexIndex(CKVVertexIndex::kTriangles));
    if (!node || !geometry || !index)
        return false;
    geometry->setVertexIndex(index.get());
    CKVBasicMaterial* material = materialFor(mesh.rgba, scene);
    kv_shared_ptr<CKVSceneNodeState> state(new CKVMaterialState(material));
    node->getStateSet()->addState(state.get());

    CKVProgramParam param;
    material->getProgramParam(param);
    if (instanced)
        param.addParam(CKVProgramParam::kUseInstanceMatrix);
    node->setProgramParam(param);

    for (kv_shared_ptr<CKVLogicBufferGeometry> const& buffer : buffers) {
        if (!geometry->addLogicBuffer(buffer.get()))
            return false;
    }
    // The geometry goes to the node only once it holds its content: the
    // backend builds its arrays when the geometry is added.
    if (!node->addRenderObject(geometry.get()) || !parent.addChildNode(node.get()))
        return false;
    scene.geometries.push_back(geometry);
    return true;
}

bool IfcSceneBuilder::buildSingle(IfcProductGeometry const& product, std::size_t index, IfcScene& scene)
{
    kv_shared_ptr<CKVSceneNode> node = makeNode(product.info.typeName + " " + product.info.globalId);
    if (!node)
        return false;
    CKVPoint3D const origin = centreOf(product);
    kv_shared_ptr<CKVTransformState> transform(new CKVTransformState());
    transform->setTransformMode(CKVTransformState::kMatrix);
    transform->setMatrix(CKVMatrix3D::translation(CKVVector3D(origin.x, origin.y, origin.z)));
    node->getStateSet()->addState(transform.get());

    for (IfcMesh const& mesh : product.meshes) {
        kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry(mDrawables[index].get()));
        if (!IfcPartBuilder::fill(mesh, origin, *part))
            continue;
        if (!addColourNode(*node, mesh, {part}, false, scene))
            return false;
        scene.products.bind(part.get(), index);
    }
    return scene.root->addChildNode(node.get());
}

bool IfcSceneBuilder::buildShared(std::vector<IfcProductGeometry> const& products, IfcShape const& shape,
                                  std::size_t number, IfcScene& scene)
{
    IfcProductGeometry const& reference = products[shape.uses.front().product];
    kv_shared_ptr<CKVSceneNode> node = makeNode("shape " + std::to_string(number) + ": " + reference.info.typeName +
                                                " x" + std::to_string(shape.uses.size()));
    if (!node)
        return false;
    // The shape is stored once, around the centre of its first use; each
    // instance matrix carries it from there to its product.
    CKVPoint3D const origin = centreOf(reference);
    CKVMatrix3D const fromOrigin = CKVMatrix3D::translation(CKVVector3D(origin.x, origin.y, origin.z));

    for (IfcMesh const& mesh : reference.meshes) {
        std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers;
        buffers.emplace_back(new CKVLogicBufferGeometry());
        if (!IfcPartBuilder::fill(mesh, origin, *buffers.front()))
            continue;
        for (IfcShapeUse const& use : shape.uses) {
            buffers.emplace_back(new CKVLogicBufferGeometry(mDrawables[use.product].get()));
            buffers.back()->setInstanceMatrix(use.placement * fromOrigin);
        }
        if (!addColourNode(*node, mesh, buffers, true, scene))
            return false;
        for (std::size_t u = 0; u < shape.uses.size(); ++u)
            scene.products.bind(buffers[u + 1].get(), shape.uses[u].product);
    }
    return scene.root->addChildNode(node.get());
}

bool IfcSceneBuilder::build(std::vector<IfcProductGeometry> const& products, std::vector<IfcShape> const& shapes,
                            IfcScene& scene)
{
    mError.clear();
    scene.clear();
    mMaterials.clear();
    mDrawables.clear();

    scene.root = makeNode("IFC model");
    if (!scene.root)
        return fail("no scene node factory is registered", scene);
    {
        kv_shared_ptr<CKVBufferGeometry> probe(CKVRenderCallback::createBufferGeometry());
        if (!probe)
            return fail("no buffer geometry factory is registered", scene);
        kv_shared_ptr<CKVVertexIndex> index(CKVRenderCallback::createVertexIndex(CKVVertexIndex::kTriangles));
        if (!index)
            return fail("no vertex index factory is registered", scene);
    }

    for (IfcProductGeometry const& product : products) {
        scene.products.add(product.info);
        mDrawables.emplace_back(new CKVDrawable(product.info.entityId));
    }

    std::size_t sharedNumber = 0;
    for (std::size_t s = 0; s < shapes.size(); ++s) {
        IfcShape const& shape = shapes[s];
        bool valid = !shape.uses.empty();
        for (IfcShapeUse const& use : shape.uses)
            valid = valid && use.product < products.size();
        if (!valid)
            return fail("shape " + std::to_string(s) + " names a product that does not exist", scene);

        bool const ok = shape.isShared() ? buildShared(products, shape, ++sharedNumber, scene)
                                         : buildSingle(products[shape.uses.front().product], shape.uses.front().product, scene);
        if (!ok)
            return fail("the backend refused a scene node or geometry", scene);
        if (mProgress)
            mProgress(static_cast<double>(s + 1) / shapes.size(), "Building scene");
    }
    mMaterials.clear();
    mDrawables.clear();
    return true;
}

} // namespace Kelvor
