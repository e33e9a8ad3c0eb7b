#include "apps/view/ViewProceduralBuilding.h"

#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickStream/CKVRenderLOD.h"

namespace Kelvor {

namespace {

constexpr double kLength = 12.0;   // along x
constexpr double kDepth = 9.0;     // along y
constexpr double kStorey = 3.2;
constexpr double kWall = 0.3;
constexpr double kSlab = 0.25;
// Panes stand a little proud of the wall faces so that they never fight
// the wall for depth.
constexpr double kPaneProud = 0.02;

kv_shared_ptr<CKVBasicMaterial> material(unsigned char r, unsigned char g, unsigned char b, unsigned char a = 255)
{
    kv_shared_ptr<CKVBasicMaterial> m(new CKVBasicMaterial);
    m->setRGBA(r, g, b, a);
    m->setSortTransparency(a < 255);
    return m;
}

} // namespace

kv_shared_ptr<CKVMesh> ViewProceduralBuilding::box(double x0, double y0, double z0, double x1, double y1, double z1)
{
    float const lo[3] = {float(x0), float(y0), float(z0)};
    float const hi[3] = {float(x1), float(y1), float(z1)};
    std::vector<CKVVec3<float>> points;
    std::vector<CKVVec3<float>> normals;
    std::vector<CKVVec3<unsigned int>> triangles;
    // Each face: the axis it faces along and the side; corners go round
    // counter-clockwise seen from outside.
    for (int axis = 0; axis < 3; ++axis) {
        for (int side = 0; side < 2; ++side) {
            int const u = (axis + 1) % 3;
            int const v = (axis + 2) % 3;
            unsigned int const base = static_cast<unsigned int>(points.size());
            float const fixed = side ? hi[axis] : lo[axis];
            float const corners[4][2] = {{lo[u], lo[v]}, {hi[u], lo[v]}, {hi[u], hi[v]}, {lo[u], hi[v]}};
            for (auto const& corner : corners) {
                CKVVec3<float> p{};
                float* pv = &p.x;
                pv[axis] = fixed;
                pv[u] = corner[0];
                pv[v] = corner[1];
                points.push_back(p);
                CKVVec3<float> n{0.0f, 0.0f, 0.0f};
                (&n.x)[axis] = side ? 1.0f : -1.0f;
                normals.push_back(n);
            }
            if (side)
                triangles.insert(triangles.end(), {{base, base + 1, base + 2}, {base, base + 2, base + 3}});
            else
                triangles.insert(triangles.end(), {{base, base + 2, base + 1}, {base, base + 3, base + 2}});
        }
    }
    kv_shared_ptr<CKVMesh> mesh(new CKVMesh);
    mesh->setPoint(points.data(), static_cast<unsigned int>(points.size()));
    mesh->setNormal(normals.data(), static_cast<unsigned int>(normals.size()));
    mesh->setTriangle(triangles.data(), static_cast<unsigned int>(triangles.size()));
    return mesh;
}

kv_shared_ptr<CKVModelBase> ViewProceduralBuilding::build()
{
    kv_shared_ptr<CKVBasicMaterial> concrete = material(170, 170, 165);
    kv_shared_ptr<CKVBasicMaterial> plaster = material(236, 228, 210);
    kv_shared_ptr<CKVBasicMaterial> roof = material(150, 60, 45);
    kv_shared_ptr<CKVBasicMaterial> glass = material(120, 170, 210, 110);
    kv_shared_ptr<CKVBasicMaterial> wood = material(120, 80, 45);

    kv_shared_ptr<CKVRenderLOD> level(new CKVRenderLOD);
    auto add = [&level](kv_shared_ptr<CKVBasicMaterial> const& m, kv_shared_ptr<CKVMesh> const& shape) {
        level->addGeometry(m.get(), shape.get());
    };

    double const top = 2.0 * kStorey;
    // Ground slab, first floor slab, roof slab with an overhang. The first
    // floor rests between the walls: flush with their outer faces it would
    // fight them for depth along a band round the house.
    add(concrete, box(-0.5, -0.5, -kSlab, kLength + 0.5, kDepth + 0.5, 0.0));
    add(concrete, box(kWall, kWall, kStorey - kSlab, kLength - kWall, kDepth - kWall, kStorey));
    add(roof, box(-0.6, -0.6, top, kLength + 0.6, kDepth + 0.6, top + 0.4));
    // Walls: front (y = 0) and back, then the two gables between them.
    add(plaster, box(0.0, 0.0, 0.0, kLength, kWall, top));
    add(plaster, box(0.0, kDepth - kWall, 0.0, kLength, kDepth, top));
    add(plaster, box(0.0, kWall, 0.0, kWall, kDepth - kWall, top));
    add(plaster, box(kLength - kWall, kWall, 0.0, kLength, kDepth - kWall, top));

    // Windows: three per storey on the front and back, one per storey on
    // each gable; the front's middle ground-floor bay is the door.
    for (int storey = 0; storey < 2; ++storey) {
        double const sill = storey * kStorey + 0.9;
        double const head = sill + 1.4;
        for (int bay = 0; bay < 3; ++bay) {
            double const x0 = 1.5 + bay * 3.8;
            double const x1 = x0 + 1.4;
            if (storey == 0 && bay == 1)
                add(wood, box(x0, -kPaneProud, 0.0, x1, 0.0, 2.2));
            else
                add(glass, box(x0, -kPaneProud, sill, x1, 0.0, head));
            add(glass, box(x0, kDepth, sill, x1, kDepth + kPaneProud, head));
        }
        add(glass, box(-kPaneProud, 3.8, sill, 0.0, 5.2, head));
        add(glass, box(kLength, 3.8, sill, kLength + kPaneProud, 5.2, head));
    }

    kv_shared_ptr<CKVModelBase> model(new CKVModelBase);
    model->addLOD(level.get());
    return model;
}

} // namespace Kelvor
