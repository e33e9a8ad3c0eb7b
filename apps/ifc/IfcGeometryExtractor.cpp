#include "apps/ifc/IfcGeometryExtractor.h"

#include "apps/ifc/IfcMessageSink.h"
#include "apps/ifc/IfcOpeningDeepener.h"
#include "apps/ifc/IfcStructureCycleCheck.h"
#include "apps/ifc/IfcUtf8.h"

#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcSpace.h>
#include <ifcpp/geometry/Carve/GeometryConverter.h>
#include <ifcpp/model/BuildingModel.h>

#include <carve/triangulator.hpp>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>

namespace Kelvor {

namespace {

using Rgba = std::array<float, 4>;

// IFC++ reports its own evaluation as 0..1; the conversion into meshes here
// gets the last tenth.
constexpr double kEvaluateShare = 0.9;

// Surfaces without a style. Spaces are volumes of air: drawn faintly so
// that they do not hide the building.
Rgba const kDefaultColour{{0.75f, 0.75f, 0.75f, 1.0f}};
Rgba const kSpaceColour{{0.55f, 0.7f, 0.9f, 0.15f}};

// IFC++'s converter leaves its progress mark uninitialised until a model
// reset, which decides whether any progress is reported at all.
class Converter : public GeometryConverter
{
public:
    explicit Converter(shared_ptr<BuildingModel>& model) : GeometryConverter(model) { m_recent_progress = 0.0; }
};

float clamp01(double value)
{
    return static_cast<float>(std::max(0.0, std::min(1.0, value)));
}

// The first appearance that styles surfaces. IFC++'s "transparency" is in
// fact the opacity.
bool surfaceColour(std::vector<shared_ptr<AppearanceData>> const& appearances, Rgba& rgba)
{
    for (shared_ptr<AppearanceData> const& appearance : appearances) {
        if (!appearance)
            continue;
        AppearanceData::GeometryTypeEnum const type = appearance->m_apply_to_geometry_type;
        if (type != AppearanceData::GEOM_TYPE_SURFACE && type != AppearanceData::GEOM_TYPE_ANY)
            continue;
        vec4 const& diffuse = appearance->m_color_diffuse;
        rgba = {{clamp01(diffuse.r()), clamp01(diffuse.g()), clamp01(diffuse.b()), clamp01(appearance->m_transparency)}};
        return true;
    }
    return false;
}

// Appends the faces of a mesh set, placed by `transform`, to `mesh`.
// Vertices are numbered in the order the faces first use them, which is the
// same for every evaluation of the same shape; polygons are cut into
// triangles in their own plane.
void appendMeshSet(carve::mesh::MeshSet<3> const& meshset, carve::math::Matrix const& transform, IfcMesh& mesh)
{
    if (meshset.vertex_storage.empty())
        return;
    carve::mesh::Vertex<3> const* const base = meshset.vertex_storage.data();
    std::vector<int> remap(meshset.vertex_storage.size(), -1);
    auto indexOf = [&](carve::mesh::Vertex<3> const* vertex) -> int {
        std::size_t const slot = static_cast<std::size_t>(vertex - base);
        if (slot >= remap.size())
            return -1;
        if (remap[slot] < 0) {
            carve::geom::vector<3> const p = transform * vertex->v;
            remap[slot] = static_cast<int>(mesh.getNumVertex());
            mesh.positions.push_back(p.x);
            mesh.positions.push_back(p.y);
            mesh.positions.push_back(p.z);
        }
        return remap[slot];
    };

    std::vector<carve::mesh::Vertex<3> const*> loop;
    std::vector<carve::geom::vector<2>> projected;
    std::vector<carve::triangulate::tri_idx> cut;
    for (carve::mesh::Mesh<3> const* part : meshset.meshes) {
        for (carve::mesh::Face<3> const* face : part->faces) {
            std::size_t const n = face->nVertices();
            if (n < 3)
                continue;
            loop.clear();
            carve::mesh::Edge<3> const* edge = face->edge;
            for (std::size_t i = 0; i < n; ++i, edge = edge->next)
                loop.push_back(edge->vert);

            cut.clear();
            if (n == 3) {
                cut.emplace_back(0, 1, 2);
            } else {
                face->getProjectedVertices(projected);
                try {
                    carve::triangulate::triangulate(projected, cut);
                } catch (...) {
                    continue; // a self-crossing polygon: leave the face out
                }
            }
            for (carve::triangulate::tri_idx const& t : cut) {
                int const a = indexOf(loop[t.a]);
                int const b = indexOf(loop[t.b]);
                int const c = indexOf(loop[t.c]);
                if (a < 0 || b < 0 || c < 0 || a == b || b == c || a == c)
                    continue;
                mesh.triangles.push_back(static_cast<unsigned int>(a));
                mesh.triangles.push_back(static_cast<unsigned int>(b));
                mesh.triangles.push_back(static_cast<unsigned int>(c));
            }
        }
    }
}

void appendItem(ItemShapeData const& item, Rgba const& colour, carve::math::Matrix const& transform,
                std::map<std::uint32_t, IfcMesh>& byColour)
{
    if (item.m_meshsets.empty() && item.m_meshsets_open.empty())
        return;
    // Merged by colour; the map keeps them in a fixed order.
    IfcMesh& mesh = byColour[IfcMesh::packColour(colour)];
    mesh.rgba = colour;
    for (auto const* list : {&item.m_meshsets, &item.m_meshsets_open}) {
        for (shared_ptr<carve::mesh::MeshSet<3>> const& meshset : *list) {
            if (meshset)
                appendMeshSet(*meshset, transform, mesh);
        }
    }
}

bool convertProduct(ProductShapeData& shape, IfcProductGeometry& out)
{
    if (shape.m_ifc_object_definition.expired())
        return false;
    shared_ptr<IfcObjectDefinition> definition(shape.m_ifc_object_definition);
    shared_ptr<IfcProduct> product = dynamic_pointer_cast<IfcProduct>(definition);
    if (!product)
        return false;

    Rgba productColour = dynamic_pointer_cast<IfcSpace>(product) ? kSpaceColour : kDefaultColour;
    surfaceColour(shape.getAppearances(), productColour);
    carve::math::Matrix const transform = shape.getTransform();

    std::map<std::uint32_t, IfcMesh> byColour;
    for (shared_ptr<RepresentationData> const& representation : shape.m_vec_representations) {
        if (!representation)
            continue;
        Rgba representationColour = productColour;
        surfaceColour(representation->m_vec_representation_appearances, representationColour);
        for (shared_ptr<ItemShapeData> const& item : representation->m_vec_item_data) {
            if (!item)
                continue;
            Rgba itemColour = representationColour;
            surfaceColour(item->m_vec_item_appearances, itemColour);
            appendItem(*item, itemColour, transform, byColour);
        }
    }

    out.meshes.clear();
    for (auto& entry : byColour) {
        if (!entry.second.triangles.empty())
            out.meshes.push_back(std::move(entry.second));
    }
    if (out.meshes.empty())
        return false;

    out.info.typeName = product->className();
    out.info.entityId = static_cast<unsigned long long>(product->m_entity_id);
    out.info.globalId = product->m_GlobalId ? ifcToUtf8(product->m_GlobalId->m_value) : std::string();
    out.info.name = product->m_Name ? ifcToUtf8(product->m_Name->m_value) : std::string();
    return true;
}

} // namespace

IfcGeometryExtractor::IfcGeometryExtractor() = default;
IfcGeometryExtractor::~IfcGeometryExtractor() = default;

bool IfcGeometryExtractor::extract(IfcModel const& model, std::vector<IfcProductGeometry>& products)
{
    mError.clear();
    mNumWarning = 0;
    shared_ptr<BuildingModel> building = model.getBuildingModel();
    if (!building) {
        mError = "no IFC model to convert";
        return false;
    }

    int const loop = IfcStructureCycleCheck::findLoop(*building);
    if (loop >= 0) {
        mError = "the file's spatial structure contains itself (entity #" + std::to_string(loop) + ")";
        return false;
    }

    IfcMessageSink sink;
    sink.phase = "Creating geometry";
    sink.share = kEvaluateShare;
    sink.progress = &mProgress;
    bool ok = true;
    try {
        IfcOpeningDeepener::deepen(*building);
        Converter converter(building);
        converter.setMessageCallBack(&sink, &IfcMessageSink::receive);
        converter.convertGeometry();

        std::map<int, shared_ptr<ProductShapeData>>& shapes = converter.getShapeInputData();
        std::size_t done = 0;
        for (auto& entry : shapes) {
            ++done;
            if (!entry.second)
                continue;
            IfcProductGeometry product;
            try {
                if (convertProduct(*entry.second, product))
                    products.push_back(std::move(product));
            } catch (std::exception const&) {
                ++sink.warnings;
            }
            if (mProgress && done % 64 == 0)
                mProgress(kEvaluateShare + (1.0 - kEvaluateShare) * done / shapes.size(), "Creating geometry");
        }
        converter.unsetMessageCallBack();
    } catch (std::exception const& e) {
        mError = std::string("IFC geometry error: ") + e.what();
        ok = false;
    } catch (...) {
        mError = "IFC geometry error";
        ok = false;
    }
    // The converter redirected the model's messages to itself; it is gone now.
    building->setMessageTarget(nullptr);
    mNumWarning = sink.warnings;
    mFirstProblem = sink.firstError;
    if (ok && mProgress)
        mProgress(1.0, "Creating geometry");
    return ok;
}

} // namespace Kelvor
