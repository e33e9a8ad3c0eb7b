#include "apps/ifc/IfcOpeningDeepener.h"

#include <ifcpp/IFC4/include/IfcAxis2Placement3D.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcExtrudedAreaSolid.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcOpeningElement.h>
#include <ifcpp/IFC4/include/IfcPositiveLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcProductRepresentation.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentationItem.h>
#include <ifcpp/model/BuildingModel.h>

#include <array>
#include <cmath>
#include <set>

namespace Kelvor {

namespace {

using Vector = std::array<double, 3>;

// How far past each side of its host an opening is carried, in its own
// depths.
constexpr double kOvershoot = 1.0;

double dot(Vector const& a, Vector const& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

bool normalise(Vector& v)
{
    double const length = std::sqrt(dot(v, v));
    if (!(length > 0.0))
        return false;
    for (double& c : v)
        c /= length;
    return true;
}

bool readDirection(shared_ptr<IfcDirection> const& direction, Vector& out)
{
    if (!direction || direction->m_DirectionRatios.size() < 3)
        return false;
    for (int i = 0; i < 3; ++i) {
        if (!direction->m_DirectionRatios[i])
            return false;
        out[i] = direction->m_DirectionRatios[i]->m_value;
    }
    return normalise(out);
}

// The extrusion lengthened to (1 + 2 * kOvershoot) depths and started one
// overshoot earlier along its direction, through a placement of its own
// (placements and points are often shared with other items).
bool deepenSolid(IfcExtrudedAreaSolid& solid)
{
    Vector along{};
    if (!solid.m_Depth || !(solid.m_Depth->m_value > 0.0) || !readDirection(solid.m_ExtrudedDirection, along))
        return false;
    Vector x{1.0, 0.0, 0.0};
    Vector z{0.0, 0.0, 1.0};
    Vector location{0.0, 0.0, 0.0};
    shared_ptr<IfcAxis2Placement3D> const& position = solid.m_Position;
    if (position) {
        readDirection(position->m_Axis, z);
        readDirection(position->m_RefDirection, x);
        if (position->m_Location) {
            std::vector<shared_ptr<IfcLengthMeasure>> const& coordinates = position->m_Location->m_Coordinates;
            for (std::size_t i = 0; i < coordinates.size() && i < 3; ++i)
                location[i] = coordinates[i] ? coordinates[i]->m_value : 0.0;
        }
    }
    double const xz = dot(x, z);
    for (int i = 0; i < 3; ++i)
        x[i] -= xz * z[i];
    if (!normalise(x))
        return false;
    Vector const y{z[1] * x[2] - z[2] * x[1], z[2] * x[0] - z[0] * x[2], z[0] * x[1] - z[1] * x[0]};

    double const depth = solid.m_Depth->m_value;
    double const back = kOvershoot * depth;
    shared_ptr<IfcCartesianPoint> start = make_shared<IfcCartesianPoint>();
    for (int i = 0; i < 3; ++i) {
        double const offset = (x[i] * along[0] + y[i] * along[1] + z[i] * along[2]) * back;
        start->m_Coordinates.push_back(make_shared<IfcLengthMeasure>(location[i] - offset));
    }
    shared_ptr<IfcAxis2Placement3D> moved = make_shared<IfcAxis2Placement3D>();
    moved->m_Location = start;
    if (position) {
        moved->m_Axis = position->m_Axis;
        moved->m_RefDirection = position->m_RefDirection;
    }
    solid.m_Position = moved;
    solid.m_Depth = make_shared<IfcPositiveLengthMeasure>(depth + 2.0 * back);
    return true;
}

} // namespace

unsigned int IfcOpeningDeepener::deepen(BuildingModel& model)
{
    unsigned int count = 0;
    std::set<IfcExtrudedAreaSolid*> done;
    for (auto const& entry : model.getMapIfcEntities()) {
        shared_ptr<IfcOpeningElement> opening = dynamic_pointer_cast<IfcOpeningElement>(entry.second);
        if (!opening || opening->m_HasFillings_inverse.empty() || !opening->m_Representation)
            continue;
        bool deepened = false;
        for (shared_ptr<IfcRepresentation> const& representation : opening->m_Representation->m_Representations) {
            if (!representation)
                continue;
            for (shared_ptr<IfcRepresentationItem> const& item : representation->m_Items) {
                shared_ptr<IfcExtrudedAreaSolid> solid = dynamic_pointer_cast<IfcExtrudedAreaSolid>(item);
                if (solid && done.insert(solid.get()).second && deepenSolid(*solid))
                    deepened = true;
            }
        }
        count += deepened ? 1u : 0u;
    }
    return count;
}

} // namespace Kelvor
