#include "apps/ifc/IfcGeometryExtractor.h"
#include "apps/ifc/IfcImporter.h"
#include "apps/ifc/IfcModelReader.h"
#include "apps/ifc/IfcPartBuilder.h"
#include "apps/ifc/IfcSceneBuilder.h"
#include "apps/ifc/IfcShapeIndex.h"
#include "apps/ifc/IfcShapeMatcher.h"

#include "AppTestFiles.h"
#include "MemoryBackendTest.h"

#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVTransformState.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <unistd.h>

using namespace Kelvor;
using apptest::tempPath;
using apptest::writeFile;

namespace {

char const* const kHausPath = "/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc";

class IfcImportTest : public apptest::MemoryBackendTest
{
};

bool exists(char const* path)
{
    return ::access(path, R_OK) == 0;
}

// One geometry of the scene with the material of the node that holds it.
struct DrawnGeometry
{
    CKVSceneNode const* owner = nullptr; // the product or shape node
    CKVBasicMaterial const* material = nullptr;
    CKVBufferGeometry* geometry = nullptr;
};

std::vector<DrawnGeometry> collect(IfcScene const& scene)
{
    std::vector<DrawnGeometry> out;
    for (unsigned int i = 0; i < scene.root->getNumChildNode(); ++i) {
        CKVSceneNode const* owner = scene.root->getChildNode(i);
        for (unsigned int c = 0; c < owner->getNumChildNode(); ++c) {
            CKVSceneNode const* colour = owner->getChildNode(c);
            auto const* state = static_cast<CKVMaterialState const*>(colour->getStateSet()->getState(CKVSceneNodeState::kMaterial));
            for (unsigned int r = 0; r < colour->getNumRenderObject(); ++r) {
                CKVRenderObject* object = colour->getRenderObject(r);
                if (object->isKindOf(CKVBufferGeometry::desc()))
                    out.push_back({owner, state ? state->getMaterial() : nullptr, static_cast<CKVBufferGeometry*>(object)});
            }
        }
    }
    return out;
}

CKVMatrix3D nodeMatrix(CKVSceneNode const* node)
{
    auto const* state = static_cast<CKVTransformState const*>(node->getStateSet()->getState(CKVSceneNodeState::kTransform));
    return state ? state->getMatrix() : CKVMatrix3D();
}

// The world box of what one logic buffer draws: the part's vertices, or the
// shared part's vertices through the instance matrix, then the owner node.
CKVBndBox worldBox(DrawnGeometry const& drawn, CKVLogicBufferGeometry const& buffer)
{
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers;
    drawn.geometry->getLogicBuffers(buffers);
    CKVMatrix3D matrix = nodeMatrix(drawn.owner);
    CKVLogicBufferGeometry const* part = &buffer;
    if (buffer.isInstance()) {
        matrix = matrix * buffer.getInstanceMatrix();
        for (auto const& b : buffers)
            part = b->isInstance() ? part : b.get();
    }
    CKVBndBox box;
    std::vector<float> const& p = part->getVertexData(CKVVertexBufferAttribute::kVertex);
    for (std::size_t i = 0; i + 2 < p.size(); i += 3)
        box.addPoint(matrix.transformPoint(CKVPoint3D(p[i], p[i + 1], p[i + 2])));
    return box;
}

void expectBox(CKVBndBox const& box, CKVPoint3D const& lo, CKVPoint3D const& hi, char const* what)
{
    double const tol = 1.0e-4;
    EXPECT_NEAR(box.minPt().x, lo.x, tol) << what;
    EXPECT_NEAR(box.minPt().y, lo.y, tol) << what;
    EXPECT_NEAR(box.minPt().z, lo.z, tol) << what;
    EXPECT_NEAR(box.maxPt().x, hi.x, tol) << what;
    EXPECT_NEAR(box.maxPt().y, hi.y, tol) << what;
    EXPECT_NEAR(box.maxPt().z, hi.z, tol) << what;
}

// Two products mapping one shape (a 1 x 2 x 3 box off its own origin, so
// that a wrong rotation shows), turned by 90 degrees and by atan(4/3), and a
// glass pane of its own with 88 % transparency.
std::string const kMappedBoxesIfc4 = R"(ISO-10303-21;
HEADER;
FILE_DESCRIPTION(('ViewDefinition [ReferenceView]'),'2;1');
FILE_NAME('boxes.ifc','2024-01-01T00:00:00',(''),(''),'','','');
FILE_SCHEMA(('IFC4'));
ENDSEC;
DATA;
#1=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);
#2=IFCUNITASSIGNMENT((#1));
#3=IFCCARTESIANPOINT((0.,0.,0.));
#4=IFCAXIS2PLACEMENT3D(#3,$,$);
#5=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#4,$);
#6=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',$,'Boxes',$,$,$,$,(#5),#2);
#7=IFCDIRECTION((0.,0.,1.));
#8=IFCCARTESIANPOINT((1.,0.));
#9=IFCAXIS2PLACEMENT2D(#8,$);
#10=IFCRECTANGLEPROFILEDEF(.AREA.,$,#9,1.,2.);
#11=IFCEXTRUDEDAREASOLID(#10,#4,#7,3.);
#12=IFCCOLOURRGB($,0.8,0.2,0.2);
#13=IFCSURFACESTYLERENDERING(#12,0.,$,$,$,$,$,$,.NOTDEFINED.);
#14=IFCSURFACESTYLE('Red',.BOTH.,(#13));
#15=IFCPRESENTATIONSTYLEASSIGNMENT((#14));
#16=IFCSTYLEDITEM(#11,(#15),$);
#17=IFCSHAPEREPRESENTATION(#5,'Body','SweptSolid',(#11));
#18=IFCREPRESENTATIONMAP(#4,#17);
#19=IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$,#3,$,$);
#20=IFCMAPPEDITEM(#18,#19);
#21=IFCSHAPEREPRESENTATION(#5,'Body','MappedRepresentation',(#20));
#22=IFCPRODUCTDEFINITIONSHAPE($,$,(#21));
#23=IFCCARTESIANPOINT((10.,0.,0.));
#24=IFCDIRECTION((0.,1.,0.));
#25=IFCAXIS2PLACEMENT3D(#23,#7,#24);
#26=IFCLOCALPLACEMENT($,#25);
#27=IFCBUILDINGELEMENTPROXY('2O2Fr$t4X7Zf8NOew3FLOH',$,'Box A',$,$,#26,#22,$,$);
#30=IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$,#3,$,$);
#31=IFCMAPPEDITEM(#18,#30);
#32=IFCSHAPEREPRESENTATION(#5,'Body','MappedRepresentation',(#31));
#33=IFCPRODUCTDEFINITIONSHAPE($,$,(#32));
#34=IFCCARTESIANPOINT((0.,5.,0.));
#35=IFCDIRECTION((0.6,0.8,0.));
#36=IFCAXIS2PLACEMENT3D(#34,#7,#35);
#37=IFCLOCALPLACEMENT($,#36);
#38=IFCBUILDINGELEMENTPROXY('3cUkl32yn9qRSPvBJVyWYp',$,'Box B',$,$,#37,#33,$,$);
#40=IFCCARTESIANPOINT((0.,0.));
#41=IFCAXIS2PLACEMENT2D(#40,$);
#42=IFCRECTANGLEPROFILEDEF(.AREA.,$,#41,4.,0.1);
#43=IFCEXTRUDEDAREASOLID(#42,#4,#7,2.);
#44=IFCCOLOURRGB($,0.6,0.8,0.9);
#45=IFCSURFACESTYLERENDERING(#44,0.88,$,$,$,$,$,$,.NOTDEFINED.);
#46=IFCSURFACESTYLE('Glass',.BOTH.,(#45));
#47=IFCPRESENTATIONSTYLEASSIGNMENT((#46));
#48=IFCSTYLEDITEM(#43,(#47),$);
#49=IFCSHAPEREPRESENTATION(#5,'Body','SweptSolid',(#43));
#50=IFCPRODUCTDEFINITIONSHAPE($,$,(#49));
#51=IFCCARTESIANPOINT((20.,0.,0.));
#52=IFCAXIS2PLACEMENT3D(#51,$,$);
#53=IFCLOCALPLACEMENT($,#52);
#54=IFCWINDOW('1hOSvn6df7F8_7GcBWlR72',$,'Pane',$,$,#53,#50,$,2.,4.,.WINDOW.,.SINGLE_PANEL.,$);
ENDSEC;
END-ISO-10303-21;
)";

// A wall curved on a 5 m radius, 0.3 m thick, with a window whose opening is
// as deep as the wall and faces the centre, as authoring tools write it:
// flat, it does not reach through the curved faces.
std::string const kCurvedWallIfc = R"(ISO-10303-21;
HEADER;
FILE_DESCRIPTION(('ViewDefinition [CoordinationView]'),'2;1');
FILE_NAME('curved-wall-window.ifc','2024-01-01T00:00:00',(''),(''),'','','');
FILE_SCHEMA(('IFC2X3'));
ENDSEC;
DATA;
#1=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);
#2=IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.);
#3=IFCUNITASSIGNMENT((#1,#2));
#4=IFCCARTESIANPOINT((0.,0.,0.));
#5=IFCDIRECTION((0.,0.,1.));
#6=IFCDIRECTION((1.,0.,0.));
#7=IFCAXIS2PLACEMENT3D(#4,#5,#6);
#8=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#7,$);
#9=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',$,'Curved wall',$,$,$,$,(#8),#3);
#10=IFCLOCALPLACEMENT($,#7);
#20=IFCCARTESIANPOINT((0.,0.));
#21=IFCAXIS2PLACEMENT2D(#20,$);
#22=IFCCIRCLE(#21,5.3);
#23=IFCCIRCLE(#21,5.);
#24=IFCTRIMMEDCURVE(#22,(IFCPARAMETERVALUE(0.)),(IFCPARAMETERVALUE(1.5707963267949)),.T.,.PARAMETER.);
#25=IFCCARTESIANPOINT((0.,5.3));
#26=IFCCARTESIANPOINT((0.,5.));
#27=IFCPOLYLINE((#25,#26));
#28=IFCTRIMMEDCURVE(#23,(IFCPARAMETERVALUE(1.5707963267949)),(IFCPARAMETERVALUE(0.)),.F.,.PARAMETER.);
#29=IFCCARTESIANPOINT((5.,0.));
#30=IFCCARTESIANPOINT((5.3,0.));
#31=IFCPOLYLINE((#29,#30));
#32=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#24);
#33=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#27);
#34=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#28);
#35=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#31);
#36=IFCCOMPOSITECURVE((#32,#33,#34,#35),.F.);
#37=IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,'Wall plan',#36);
#38=IFCEXTRUDEDAREASOLID(#37,#7,#5,3.);
#39=IFCSHAPEREPRESENTATION(#8,'Body','SweptSolid',(#38));
#40=IFCPRODUCTDEFINITIONSHAPE($,$,(#39));
#41=IFCWALL('2O2Fr$t4X7Zf8NOew3FLOH',$,'Curved wall',$,$,#10,#40,$);
#50=IFCCARTESIANPOINT((3.5355339,3.5355339,1.6));
#49=IFCDIRECTION((0.70710678,0.70710678,0.));
#51=IFCAXIS2PLACEMENT3D(#50,#49,#5);
#52=IFCLOCALPLACEMENT(#10,#51);
#53=IFCCARTESIANPOINT((0.,0.));
#54=IFCAXIS2PLACEMENT2D(#53,$);
#55=IFCRECTANGLEPROFILEDEF(.AREA.,$,#54,1.2,1.);
#56=IFCEXTRUDEDAREASOLID(#55,#7,#5,0.3);
#57=IFCSHAPEREPRESENTATION(#8,'Body','SweptSolid',(#56));
#58=IFCPRODUCTDEFINITIONSHAPE($,$,(#57));
#59=IFCOPENINGELEMENT('3cUkl32yn9qRSPvBJVyWYp',$,'Window opening',$,$,#52,#58,$);
#60=IFCRELVOIDSELEMENT('1hOSvn6df7F8_7GcBWlR72',$,$,$,#41,#59);
#61=IFCWINDOW('0c4Kc1Ou52Mgc2Hh7tX7cS',$,'Bay window',$,$,#52,$,$,1.2,1.);
#62=IFCRELFILLSELEMENT('2MhPzWFsT0NuJ8FXmPkHrs',$,$,$,#59,#61);
ENDSEC;
END-ISO-10303-21;
)";

// Möller and Trumbore: does the segment from `a` to `b` cross the triangle?
bool crosses(double const* p, double const* q, double const* r, CKVPoint3D const& a, CKVPoint3D const& b)
{
    CKVVector3D const e1(q[0] - p[0], q[1] - p[1], q[2] - p[2]);
    CKVVector3D const e2(r[0] - p[0], r[1] - p[1], r[2] - p[2]);
    CKVVector3D const d = b - a;
    CKVVector3D const h = d.crossProduct(e2);
    double const det = e1.dotProduct(h);
    if (std::fabs(det) < 1e-12)
        return false;
    CKVVector3D const s(a.x - p[0], a.y - p[1], a.z - p[2]);
    double const u = s.dotProduct(h) / det;
    CKVVector3D const qv = s.crossProduct(e1);
    double const v = d.dotProduct(qv) / det;
    double const t = e2.dotProduct(qv) / det;
    return u >= 0.0 && v >= 0.0 && u + v <= 1.0 && t >= 0.0 && t <= 1.0;
}

// Box A and box B aggregate each other below the project.
std::string const kBoxesAggregateEachOther = "#60=IFCRELAGGREGATES('0Loop000000000000000a1',$,$,$,#6,(#27));\n"
                                              "#61=IFCRELAGGREGATES('0Loop000000000000000a2',$,$,$,#27,(#38));\n"
                                              "#62=IFCRELAGGREGATES('0Loop000000000000000a3',$,$,$,#38,(#27));\n";

} // namespace

TEST_F(IfcImportTest, Ifc4MappedShapeIsDrawnOnceWithAnInstanceAtEachPlacement)
{
    std::string const path = tempPath("boxes.ifc");
    writeFile(path, kMappedBoxesIfc4);
    std::string const locale = std::setlocale(LC_ALL, nullptr);
    IfcImporter importer;
    IfcScene scene;
    ASSERT_TRUE(importer.import(path, scene)) << importer.getError();
    std::remove(path.c_str());
    // Number parsing elsewhere in the viewer depends on the locale.
    EXPECT_EQ(locale, std::setlocale(LC_ALL, nullptr));

    IfcImportSummary const& summary = importer.getSummary();
    EXPECT_EQ(summary.schema, "IFC4");
    EXPECT_EQ(summary.products, 3u);
    EXPECT_EQ(summary.distinctShapes, 2u);
    EXPECT_EQ(summary.sharedShapes, 1u);
    EXPECT_EQ(summary.instances, 2u);
    // Boxes are 12 triangles; the shared one is stored once.
    EXPECT_EQ(summary.triangles, 36u);
    EXPECT_EQ(summary.storedTriangles, 24u);
    EXPECT_EQ(scene.products.size(), 3u);

    std::map<std::string, CKVBndBox> boxes;
    std::map<std::string, CKVBasicMaterial const*> materials;
    for (DrawnGeometry const& drawn : collect(scene)) {
        drawn.geometry->updatePhysicalBuffer();
        std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers;
        drawn.geometry->getLogicBuffers(buffers);
        for (auto const& buffer : buffers) {
            IfcProductInfo const* info = scene.products.find(buffer.get());
            if (!info)
                continue;
            EXPECT_EQ(scene.products.find(buffer->getDrawable()), info);
            boxes[info->name].addBndBox(worldBox(drawn, *buffer));
            materials[info->name] = drawn.material;
        }
    }
    ASSERT_EQ(boxes.size(), 3u);
    // Box x in [0.5, 1.5], y in [-1, 1]; A turned 90 degrees and moved to
    // (10, 0), B turned to x = (0.6, 0.8) and moved to (0, 5).
    expectBox(boxes["Box A"], CKVPoint3D(9, 0.5, 0), CKVPoint3D(11, 1.5, 3), "Box A");
    expectBox(boxes["Box B"], CKVPoint3D(-0.5, 4.8, 0), CKVPoint3D(1.7, 6.8, 3), "Box B");
    expectBox(boxes["Pane"], CKVPoint3D(18, -0.05, 0), CKVPoint3D(22, 0.05, 2), "Pane");

    unsigned char r, g, b, a;
    ASSERT_TRUE(materials["Box A"] && materials["Pane"]);
    EXPECT_EQ(materials["Box A"], materials["Box B"]);
    materials["Box A"]->getRGBA(r, g, b, a);
    EXPECT_EQ(r, 204);
    EXPECT_EQ(a, 255);
    materials["Pane"]->getRGBA(r, g, b, a);
    EXPECT_EQ(a, 31); // 12 % opaque
    EXPECT_TRUE(materials["Pane"]->getSortTransparency());

    IfcProductInfo const* pane = scene.products.findByGlobalId("1hOSvn6df7F8_7GcBWlR72");
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->typeName, "IfcWindow");
    EXPECT_EQ(pane->entityId, 54u);
}

TEST_F(IfcImportTest, HausKeepsItsProductsAndFindsItsRepeatedShapes)
{
    if (!exists(kHausPath))
        GTEST_SKIP() << kHausPath << " is missing (package assimp-testmodels)";

    std::vector<double> fractions;
    std::set<std::string> phases;
    IfcImporter importer;
    importer.setProgressCallback([&](double fraction, char const* phase) {
        fractions.push_back(fraction);
        phases.insert(phase);
    });
    IfcScene scene;
    ASSERT_TRUE(importer.import(kHausPath, scene)) << importer.getError();
    IfcImportSummary const& summary = importer.getSummary();
    std::printf("%s\n", summary.toString().c_str());

    EXPECT_EQ(summary.schema, "IFC2X3");
    EXPECT_EQ(summary.products, 117u);
    EXPECT_NEAR(summary.triangles, 36222.0, 36222.0 * 0.01);
    // The file maps 7 shapes 58 times. Comparing geometry finds more: two
    // window maps hold the same window, and unmapped copies join in (a 42nd
    // rafter, the ridge purlin, kitchen cabinets, two spaces, two walls,
    // two joists).
    EXPECT_EQ(summary.sharedShapes, 10u);
    EXPECT_EQ(summary.instances, 70u);
    EXPECT_EQ(summary.distinctShapes, summary.products - summary.instances + summary.sharedShapes);
    EXPECT_LT(summary.storedTriangles, summary.triangles);

    ASSERT_FALSE(fractions.empty());
    for (std::size_t i = 1; i < fractions.size(); ++i)
        ASSERT_LE(fractions[i - 1], fractions[i]) << "progress went back at report " << i;
    EXPECT_DOUBLE_EQ(fractions.back(), 1.0);
    EXPECT_TRUE(phases.count("Parsing") && phases.count("Creating geometry") && phases.count("Building scene"));

    // Every product: its IFC type, a valid and unique GlobalId.
    std::set<std::string> ids;
    std::map<std::string, int> types;
    for (std::size_t i = 0; i < scene.products.size(); ++i) {
        IfcProductInfo const& info = scene.products.at(i);
        ++types[info.typeName];
        EXPECT_EQ(info.globalId.size(), 22u) << info.typeName << " #" << info.entityId;
        EXPECT_EQ(info.globalId.find_first_not_of(
                      "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$"),
                  std::string::npos);
        ids.insert(info.globalId);
    }
    EXPECT_EQ(ids.size(), scene.products.size());
    EXPECT_EQ(types["IfcSpace"], 7);
    EXPECT_EQ(types["IfcWindow"], 11);

    // Every drawn buffer leads back to a product, as a pick would find it;
    // glass is translucent and depth-sorted.
    std::set<std::string> reached;
    std::set<std::string> glazedWindows;
    for (DrawnGeometry const& drawn : collect(scene)) {
        ASSERT_NE(drawn.material, nullptr);
        drawn.geometry->updatePhysicalBuffer();
        unsigned char r, g, b, a;
        drawn.material->getRGBA(r, g, b, a);
        if (a < 255) {
            EXPECT_TRUE(drawn.material->getSortTransparency());
        }

        unsigned int const instances = drawn.geometry->getVertexIndex()->getNumInstance();
        unsigned int const picks = instances > 0 ? instances : 1u;
        for (unsigned int i = 0; i < picks; ++i) {
            CKVLogicBufferGeometry const* hit = drawn.geometry->queryLogicBuffer(i, 0);
            ASSERT_NE(hit, nullptr);
            IfcProductInfo const* info = scene.products.find(hit);
            ASSERT_NE(info, nullptr);
            reached.insert(info->globalId);
            if (info->typeName == "IfcWindow" && a == 31)
                glazedWindows.insert(info->globalId);
        }
    }
    EXPECT_EQ(reached.size(), scene.products.size());
    EXPECT_EQ(glazedWindows.size(), 11u);

    // The 41 rafters mapped from one shape, and a 42nd modelled alike, are
    // instances of one geometry.
    std::map<CKVBufferGeometry const*, std::set<std::string>> rafters;
    for (DrawnGeometry const& drawn : collect(scene)) {
        std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers;
        drawn.geometry->getLogicBuffers(buffers);
        for (auto const& buffer : buffers) {
            IfcProductInfo const* info = scene.products.find(buffer.get());
            if (info && buffer->isInstance() && info->name.compare(0, 8, "Sparren-") == 0)
                rafters[drawn.geometry].insert(info->name);
        }
    }
    ASSERT_FALSE(rafters.empty());
    for (auto const& entry : rafters)
        EXPECT_EQ(entry.second.size(), 42u);
}

TEST_F(IfcImportTest, BrokenFilesFailWithAReasonAndAnEmptyScene)
{
    struct Case
    {
        std::string path;
        char const* reason;
    };
    std::vector<Case> cases = {{tempPath("missing.ifc"), "not found"}, {::testing::TempDir(), "not a regular file"}};
    auto addFile = [&cases](char const* name, std::string const& content, char const* reason) {
        cases.push_back({tempPath(name), reason});
        writeFile(cases.back().path, content);
    };
    addFile("notes.ifc", "These are meeting notes, not a model.\n", "not an IFC file");
    addFile("empty.ifc", "", "empty");
    addFile("part.stp",
            "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n",
            "not an IFC file");
    addFile("garbage.ifc",
            "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\nthis is no entity\n"
            "#1=IFCNOSUCHTHING(1,2);\nENDSEC;\nEND-ISO-10303-21;\n",
            "no IFC entities");
    addFile("cut_boxes.ifc", kMappedBoxesIfc4.substr(0, kMappedBoxesIfc4.size() / 2), "truncated");
    // A decomposition loop: the geometry converter would recurse without end.
    std::string looped = kMappedBoxesIfc4;
    looped.insert(looped.find("ENDSEC;", looped.find("DATA;")), kBoxesAggregateEachOther);
    addFile("loop.ifc", looped, "contains itself");
    if (exists(kHausPath)) {
        std::string const haus = apptest::readWhole(kHausPath);
        addFile("half_haus.ifc", haus.substr(0, haus.size() / 2), "truncated");
    }

    for (Case const& c : cases) {
        IfcImporter importer;
        IfcScene scene;
        EXPECT_FALSE(importer.import(c.path, scene)) << c.path;
        EXPECT_NE(importer.getError().find(c.reason), std::string::npos)
            << c.path << ": '" << importer.getError() << "' should say " << c.reason;
        EXPECT_FALSE(scene.root.valid());
        if (c.path != ::testing::TempDir())
            std::remove(c.path.c_str());
    }
}

TEST_F(IfcImportTest, BuildingWithoutBackendFactoriesFails)
{
    IfcModelReader reader;
    IfcModel model;
    ASSERT_TRUE(reader.readContent(kMappedBoxesIfc4, model)) << reader.getError();
    std::vector<IfcProductGeometry> products;
    IfcGeometryExtractor extractor;
    ASSERT_TRUE(extractor.extract(model, products)) << extractor.getError();
    IfcShapeIndex shapes;
    shapes.build(products);

    CKVRenderCallback::unregCreateBufferGeometry();
    IfcSceneBuilder builder;
    IfcScene scene;
    EXPECT_FALSE(builder.build(products, shapes.getShapes(), scene));
    EXPECT_NE(builder.getError().find("buffer geometry"), std::string::npos) << builder.getError();
    EXPECT_FALSE(scene.root.valid());
    EXPECT_EQ(scene.products.size(), 0u);
}

namespace {

// A unit cube: eight corners, twelve triangles, wound counter-clockwise
// seen from outside.
IfcMesh cube()
{
    IfcMesh mesh;
    mesh.rgba = {{0.5f, 0.5f, 0.5f, 1.0f}};
    for (int i = 0; i < 8; ++i)
        mesh.positions.insert(mesh.positions.end(), {double(i & 1), double((i >> 1) & 1), double((i >> 2) & 1)});
    mesh.triangles = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                      2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};
    return mesh;
}

IfcProductGeometry productOf(IfcMesh mesh)
{
    IfcProductGeometry product;
    product.meshes.push_back(std::move(mesh));
    return product;
}

// The mesh moved by `m`; vertex numbers and triangles stay.
IfcMesh moved(IfcMesh mesh, CKVMatrix3D const& m)
{
    for (std::size_t i = 0; i + 2 < mesh.positions.size(); i += 3) {
        CKVPoint3D const p = m.transformPoint(CKVPoint3D(mesh.positions[i], mesh.positions[i + 1], mesh.positions[i + 2]));
        mesh.positions[i] = p.x;
        mesh.positions[i + 1] = p.y;
        mesh.positions[i + 2] = p.z;
    }
    return mesh;
}

} // namespace

TEST(IfcShapeMatcherTest, MatchesRigidCopiesOnlyAndRecoversTheirPlacement)
{
    // Stretch the cube so that it has no symmetry a wrong frame could hide behind.
    IfcMesh base = moved(cube(), CKVMatrix3D::scaling(1.0, 2.0, 3.5));
    base.positions[0] -= 0.25;
    IfcProductGeometry const reference = productOf(base);
    CKVMatrix3D const motion = CKVMatrix3D::translation(CKVVector3D(120.0, -40.0, 3.0)) *
                               CKVMatrix3D::rotation(0.7, CKVVector3D(0.3, -0.2, 1.0).normal());

    IfcShapeMatcher const matcher;
    CKVMatrix3D placement;
    ASSERT_TRUE(matcher.match(reference, productOf(moved(base, motion)), placement));
    EXPECT_TRUE(placement.isEqualTo(motion, 1.0e-9));

    // The same vertices cut into other triangles of the same area: the
    // bottom face split along its other diagonal.
    IfcMesh recut = moved(base, motion);
    std::vector<unsigned int> const bottom = {0, 3, 1, 0, 2, 3};
    std::copy(bottom.begin(), bottom.end(), recut.triangles.begin());
    EXPECT_TRUE(matcher.match(reference, productOf(recut), placement));

    // Not copies: a mirror image, one vertex off by a millimetre, another
    // colour, a fold that changes the area, another vertex count.
    EXPECT_FALSE(matcher.match(reference, productOf(moved(base, CKVMatrix3D::scaling(-1.0, 1.0, 1.0))), placement));
    IfcMesh bent = moved(base, motion);
    bent.positions[10] += 0.001;
    EXPECT_FALSE(matcher.match(reference, productOf(bent), placement));
    IfcMesh painted = moved(base, motion);
    painted.rgba[0] = 0.9f;
    EXPECT_FALSE(matcher.match(reference, productOf(painted), placement));
    IfcMesh folded = base;
    folded.positions[2] += 0.5; // corner 0 leaves the bottom plane, so the two cuts differ
    IfcMesh foldedOther = folded;
    std::copy(bottom.begin(), bottom.end(), foldedOther.triangles.begin());
    EXPECT_FALSE(matcher.match(productOf(folded), productOf(foldedOther), placement));
    IfcMesh grown = base;
    grown.positions.insert(grown.positions.end(), {5.0, 5.0, 5.0});
    EXPECT_FALSE(matcher.match(reference, productOf(grown), placement));

    // The index groups the copies and keeps the odd one apart.
    std::vector<IfcProductGeometry> products = {reference, productOf(moved(base, motion)), productOf(bent),
                                                productOf(moved(base, CKVMatrix3D::translation(CKVVector3D(0, 9, 0))))};
    IfcShapeIndex index;
    index.build(products);
    ASSERT_EQ(index.getShapes().size(), 2u);
    EXPECT_EQ(index.getNumSharedShape(), 1u);
    EXPECT_EQ(index.getNumInstance(), 3u);
    ASSERT_EQ(index.getShapes()[0].uses.size(), 3u);
    EXPECT_EQ(index.getShapes()[0].uses[2].product, 3u);
    EXPECT_EQ(index.getShapes()[1].uses.front().product, 2u);
}

TEST(IfcPartBuilderTest, ShadesFacesFlatAroundTheOrigin)
{
    IfcMesh mesh = moved(cube(), CKVMatrix3D::translation(CKVVector3D(1000.0, 2000.0, 0.0)));
    mesh.triangles.insert(mesh.triangles.end(), {0, 0, 1}); // degenerate: dropped
    CKVLogicBufferGeometry part;
    ASSERT_TRUE(IfcPartBuilder::fill(mesh, CKVPoint3D(1000.5, 2000.5, 0.5), part));

    std::vector<float> const& p = part.getVertexData(CKVVertexBufferAttribute::kVertex);
    std::vector<float> const& n = part.getVertexData(CKVVertexBufferAttribute::kNormal);
    std::vector<unsigned int> const& t = part.getIndexData();
    // Each corner splits into one vertex per face it touches; the two
    // triangles of a face share theirs.
    EXPECT_EQ(p.size(), 24u * 3);
    EXPECT_EQ(n.size(), p.size());
    ASSERT_EQ(t.size(), 36u);
    for (float coordinate : p)
        EXPECT_FLOAT_EQ(std::fabs(coordinate), 0.5f);
    for (std::size_t i = 0; i < t.size(); i += 3) {
        CKVVector3D const a(p[3 * t[i]], p[3 * t[i] + 1], p[3 * t[i] + 2]);
        CKVVector3D const b(p[3 * t[i + 1]], p[3 * t[i + 1] + 1], p[3 * t[i + 1] + 2]);
        CKVVector3D const c(p[3 * t[i + 2]], p[3 * t[i + 2] + 1], p[3 * t[i + 2] + 2]);
        CKVVector3D const winding = (b - a).crossProduct(c - a).normal();
        for (int k = 0; k < 3; ++k) {
            CKVVector3D const normal(n[3 * t[i + k]], n[3 * t[i + k] + 1], n[3 * t[i + k] + 2]);
            EXPECT_TRUE(normal.isEqualTo(winding, 1.0e-6)) << "triangle " << i / 3;
            // Outward: the cube's centre is the origin.
            EXPECT_GT(normal.dotProduct(a), 0.0);
        }
    }
}

TEST_F(IfcImportTest, WindowOpeningsCutThroughACurvedWall)
{
    IfcModelReader reader;
    IfcModel model;
    ASSERT_TRUE(reader.readContent(kCurvedWallIfc, model)) << reader.getError();
    std::vector<IfcProductGeometry> products;
    IfcGeometryExtractor extractor;
    ASSERT_TRUE(extractor.extract(model, products)) << extractor.getError();
    ASSERT_EQ(products.size(), 1u);

    // Through the middle of the window, from inside the curve to outside.
    double const diagonal = std::sqrt(0.5);
    CKVPoint3D const inside(4.6 * diagonal, 4.6 * diagonal, 1.6);
    CKVPoint3D const outside(5.7 * diagonal, 5.7 * diagonal, 1.6);
    unsigned int hits = 0;
    for (IfcMesh const& mesh : products.front().meshes) {
        for (std::size_t i = 0; i + 2 < mesh.triangles.size(); i += 3) {
            hits += crosses(&mesh.positions[3 * mesh.triangles[i]], &mesh.positions[3 * mesh.triangles[i + 1]],
                            &mesh.positions[3 * mesh.triangles[i + 2]], inside, outside);
        }
    }
    EXPECT_EQ(hits, 0u) << "the window is covered by what is left of the wall";
}

TEST_F(IfcImportTest, DamagedFilesSayWhatWasSkippedAndRefusedOnesTheirSchema)
{
    if (!exists(kHausPath))
        GTEST_SKIP() << kHausPath << " is missing (package assimp-testmodels)";
    std::string haus = apptest::readWhole(kHausPath);
    {
        IfcImporter importer;
        IfcScene scene;
        ASSERT_TRUE(importer.import(kHausPath, scene)) << importer.getError();
        EXPECT_TRUE(importer.getSummary().notices().empty()) << importer.getSummary().notices().front();
    }
    // 200 bytes of noise in the middle of the geometry.
    haus.replace(haus.size() / 3, 200, 200, 'X');
    std::string const path = tempPath("damaged.ifc");
    writeFile(path, haus);
    IfcImporter importer;
    IfcScene scene;
    ASSERT_TRUE(importer.import(path, scene)) << importer.getError();
    std::remove(path.c_str());
    std::vector<std::string> const notices = importer.getSummary().notices();
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_NE(notices.front().find("damaged entities"), std::string::npos) << notices.front();
    EXPECT_NE(notices.front().find("the first: #"), std::string::npos) << notices.front();

    std::string unknown = kMappedBoxesIfc4;
    unknown.replace(unknown.find("'IFC4'"), 6, "'IFC4RC4'");
    IfcModelReader reader;
    IfcModel model;
    EXPECT_FALSE(reader.readContent(unknown, model));
    EXPECT_NE(reader.getError().find("IFC4RC4"), std::string::npos) << reader.getError();
}
