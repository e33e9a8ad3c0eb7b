#include "apps/ifc/IfcPartBuilder.h"

#include "TarnwickGeometry/CKVVector3D.h"

#include <cmath>
#include <map>
#include <tuple>
#include <vector>

namespace Kelvor {

namespace {

// Normals that agree to about a twentieth of a degree count as one plane.
constexpr double kNormalSteps = 1000.0;

CKVVector3D vertexAt(IfcMesh const& mesh, unsigned int index)
{
    return CKVVector3D(mesh.positions[3 * index], mesh.positions[3 * index + 1], mesh.positions[3 * index + 2]);
}

} // namespace

bool IfcPartBuilder::fill(IfcMesh const& mesh, CKVPoint3D const& origin, CKVLogicBufferGeometry& part)
{
    if (part.getOwner() || part.isInstance())
        return false;

    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<unsigned int> indices;
    std::map<std::tuple<unsigned int, long, long, long>, unsigned int> split;
    CKVVector3D const offset(origin.x, origin.y, origin.z);
    unsigned int const numVertex = mesh.getNumVertex();

    for (std::size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
        unsigned int const corner[3] = {mesh.triangles[t], mesh.triangles[t + 1], mesh.triangles[t + 2]};
        if (corner[0] >= numVertex || corner[1] >= numVertex || corner[2] >= numVertex)
            continue;
        CKVVector3D const a = vertexAt(mesh, corner[0]);
        CKVVector3D normal = (vertexAt(mesh, corner[1]) - a).crossProduct(vertexAt(mesh, corner[2]) - a);
        double const length = normal.length();
        if (!(length > 0.0))
            continue;
        normal = normal / length;
        long const nx = std::lround(normal.x * kNormalSteps);
        long const ny = std::lround(normal.y * kNormalSteps);
        long const nz = std::lround(normal.z * kNormalSteps);
        for (unsigned int source : corner) {
            auto inserted = split.emplace(std::make_tuple(source, nx, ny, nz), static_cast<unsigned int>(positions.size() / 3));
            if (inserted.second) {
                CKVVector3D const p = vertexAt(mesh, source) - offset;
                positions.insert(positions.end(), {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)});
                normals.insert(normals.end(), {static_cast<float>(normal.x), static_cast<float>(normal.y),
                                               static_cast<float>(normal.z)});
            }
            indices.push_back(inserted.first->second);
        }
    }
    if (indices.empty())
        return false;

    part.setVertexData(CKVVertexBufferAttribute::kVertex, positions.data(), static_cast<unsigned int>(positions.size()));
    part.setVertexData(CKVVertexBufferAttribute::kNormal, normals.data(), static_cast<unsigned int>(normals.size()));
    part.setIndexData(indices.data(), static_cast<unsigned int>(indices.size()));
    return true;
}

} // namespace Kelvor
