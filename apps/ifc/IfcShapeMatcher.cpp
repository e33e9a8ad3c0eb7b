#include "apps/ifc/IfcShapeMatcher.h"

#include <cmath>

namespace Kelvor {

namespace {

// The vertices of all meshes of a product, read as one list.
class VertexList
{
public:
    explicit VertexList(IfcProductGeometry const& product)
    {
        for (IfcMesh const& mesh : product.meshes) {
            mMeshes.push_back(&mesh);
            mCount += mesh.getNumVertex();
        }
    }

    std::size_t size() const { return mCount; }

    template <class Fn>
    void forEach(Fn fn) const
    {
        std::size_t index = 0;
        for (IfcMesh const* mesh : mMeshes) {
            std::vector<double> const& p = mesh->positions;
            for (std::size_t i = 0; i + 2 < p.size(); i += 3)
                fn(index++, CKVPoint3D(p[i], p[i + 1], p[i + 2]));
        }
    }

    CKVPoint3D at(std::size_t index) const
    {
        for (IfcMesh const* mesh : mMeshes) {
            std::size_t const n = mesh->getNumVertex();
            if (index < n)
                return CKVPoint3D(mesh->positions[3 * index], mesh->positions[3 * index + 1],
                                  mesh->positions[3 * index + 2]);
            index -= n;
        }
        return CKVPoint3D();
    }

private:
    std::vector<IfcMesh const*> mMeshes;
    std::size_t mCount = 0;
};

CKVVector3D toVector(CKVPoint3D const& p)
{
    return CKVVector3D(p.x, p.y, p.z);
}

// Three vertices of the reference that span it as widely as possible, so
// that the frame they define is well conditioned: the one farthest from the
// centroid, the one farthest from that, and the one farthest from the line
// through both. False for a shape that is flat along a line or a point.
bool chooseAnchors(VertexList const& vertices, std::size_t anchors[3])
{
    CKVVector3D sum;
    vertices.forEach([&](std::size_t, CKVPoint3D const& p) { sum += toVector(p); });
    CKVVector3D const centroid = sum / static_cast<double>(vertices.size());

    double best = -1.0;
    vertices.forEach([&](std::size_t i, CKVPoint3D const& p) {
        double const d = (toVector(p) - centroid).lengthSqrd();
        if (d > best) {
            best = d;
            anchors[0] = i;
        }
    });
    CKVVector3D const a = toVector(vertices.at(anchors[0]));
    best = -1.0;
    vertices.forEach([&](std::size_t i, CKVPoint3D const& p) {
        double const d = (toVector(p) - a).lengthSqrd();
        if (d > best) {
            best = d;
            anchors[1] = i;
        }
    });
    double const span = std::sqrt(best);
    CKVVector3D const axis = toVector(vertices.at(anchors[1])) - a;
    best = -1.0;
    vertices.forEach([&](std::size_t i, CKVPoint3D const& p) {
        double const d = (toVector(p) - a).crossProduct(axis).lengthSqrd();
        if (d > best) {
            best = d;
            anchors[2] = i;
        }
    });
    // |cross| is the distance from the line times the span. The third anchor
    // must stand off the line by a useful fraction of the span.
    double const offLine = span > 0.0 ? std::sqrt(best) / span : 0.0;
    return span > 1.0e-9 && offLine > 1.0e-6 * span;
}

// The orthonormal frame of three points: origin at the first, x towards the
// second, z normal to the plane of all three.
bool frameOf(CKVPoint3D const& a, CKVPoint3D const& b, CKVPoint3D const& c, CKVMatrix3D& frame)
{
    CKVVector3D x = b - a;
    CKVVector3D z = x.crossProduct(c - a);
    if (x.isZeroLength(1.0e-12) || z.isZeroLength(1.0e-18))
        return false;
    x.normalize(0.0);
    z.normalize(0.0);
    CKVVector3D const y = z.crossProduct(x);
    frame.setCoordSystem(x, y, z, a);
    return true;
}

double meshArea(IfcMesh const& mesh)
{
    double area = 0.0;
    std::vector<double> const& p = mesh.positions;
    std::vector<unsigned int> const& t = mesh.triangles;
    for (std::size_t i = 0; i + 2 < t.size(); i += 3) {
        CKVVector3D const a(p[3 * t[i]], p[3 * t[i] + 1], p[3 * t[i] + 2]);
        CKVVector3D const b(p[3 * t[i + 1]], p[3 * t[i + 1] + 1], p[3 * t[i + 1] + 2]);
        CKVVector3D const c(p[3 * t[i + 2]], p[3 * t[i + 2] + 1], p[3 * t[i + 2] + 2]);
        area += 0.5 * (b - a).crossProduct(c - a).length();
    }
    return area;
}

} // namespace

IfcShapeMatcher::IfcShapeMatcher(double tolerance) : mTolerance(tolerance) {}

std::string IfcShapeMatcher::topologyKey(IfcProductGeometry const& product)
{
    std::string key;
    for (IfcMesh const& mesh : product.meshes) {
        key += std::to_string(mesh.getColourKey());
        key += ':';
        key += std::to_string(mesh.getNumVertex());
        key += '/';
        key += std::to_string(mesh.getNumTriangle());
        key += ';';
    }
    return key;
}

bool IfcShapeMatcher::match(IfcProductGeometry const& reference, IfcProductGeometry const& other,
                            CKVMatrix3D& placement) const
{
    if (topologyKey(reference) != topologyKey(other))
        return false;

    VertexList const from(reference);
    VertexList const to(other);
    std::size_t anchors[3] = {0, 0, 0};
    if (from.size() < 3 || !chooseAnchors(from, anchors))
        return false;

    CKVMatrix3D fromFrame;
    CKVMatrix3D toFrame;
    if (!frameOf(from.at(anchors[0]), from.at(anchors[1]), from.at(anchors[2]), fromFrame) ||
        !frameOf(to.at(anchors[0]), to.at(anchors[1]), to.at(anchors[2]), toFrame))
        return false;
    CKVMatrix3D fromInverse;
    if (!fromFrame.inverse(fromInverse))
        return false;
    CKVMatrix3D const motion = toFrame * fromInverse;

    double const limit = mTolerance * mTolerance;
    bool fits = true;
    from.forEach([&](std::size_t i, CKVPoint3D const& p) {
        if (fits && (toVector(motion.transformPoint(p)) - toVector(to.at(i))).lengthSqrd() > limit)
            fits = false;
    });
    if (!fits)
        return false;

    // Same vertices; the surfaces agree when the triangles are the same or,
    // cut differently, cover the same area.
    for (std::size_t m = 0; m < reference.meshes.size(); ++m) {
        IfcMesh const& a = reference.meshes[m];
        IfcMesh const& b = other.meshes[m];
        if (a.triangles == b.triangles)
            continue;
        double const areaA = meshArea(a);
        double const areaB = meshArea(b);
        if (std::abs(areaA - areaB) > 1.0e-4 * std::max(areaA, 1.0e-6))
            return false;
    }
    placement = motion;
    return true;
}

} // namespace Kelvor
