#pragma once

class BuildingModel; // IFC++

namespace Kelvor {

// Makes the openings that hold a window or a door reach through their host
// before the geometry is evaluated. Authoring tools give such an opening the
// depth of the wall; in a curved wall a flat opening that deep stays inside
// the curved faces, and the cut leaves a skin across the window. Extended by
// its own depth on either side it cuts through; the cut only ever applies
// to the opening's own host, so the overshoot touches nothing else.
class IfcOpeningDeepener
{
public:
    // The number of openings changed. Only extruded opening solids are
    // changed, each once.
    static unsigned int deepen(BuildingModel& model);
};

} // namespace Kelvor
