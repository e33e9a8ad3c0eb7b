#include "scene/CKVTextGeometryImp.h"

#include "TarnwickCommon/Common.h"
#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/KVMatrixConvert.h"

#include <osgDB/Registry>
#include <osgText/Font>

#include <mutex>
#include <new>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVTextGeometryImp, CKVTextGeometry)

char const* const CKVTextGeometryImp::kDefaultFont = "fonts/simhei.ttf";

CKVTextGeometry* createTextGeometryImp()
{
    return new (std::nothrow) CKVTextGeometryImp();
}

namespace {

// Font names are relative to the resource directory, so it joins the file
// search once; fonts elsewhere on the search path still resolve.
void addResourceDirectoryToSearchPath()
{
    static std::once_flag once;
    std::call_once(once, [] {
        CKVAString directory;
        if (!Common::getResourceDirectory(directory) || directory.isEmpty())
            return;
        osgDB::FilePathList& paths = osgDB::Registry::instance()->getDataFilePathList();
        std::string const path = directory.c_str();
        for (std::string const& existing : paths) {
            if (existing == path)
                return;
        }
        paths.push_back(path);
    });
}

// The tolerance of the direction tests, 1e-6 in single precision widened.
double const kDirectionTolerance = static_cast<double>(1.0e-6f);

} // namespace

osg::ref_ptr<osgText::Font> CKVTextGeometryImp::readFont(char const* name)
{
    if (!name || !*name)
        return nullptr;
    addResourceDirectoryToSearchPath();
    return osgText::readRefFontFile(name);
}

CKVTextGeometryImp::CKVTextGeometryImp()
    : mText(new CKVOSGText2D(this))
{
    osg::ref_ptr<osgText::Font> font = readFont(kDefaultFont);
    mText->setFontResolution(256, 256);
    mText->setFont(font);
    mText->setDataVariance(osg::Object::DYNAMIC);
    mText->setDrawMode(osgText::Text::TEXT);
    mText->setAxisAlignment(osgText::Text::XY_PLANE);
    mText->setCharacterSize(1000.0f);
}

CKVTextGeometryImp::~CKVTextGeometryImp()
{
    if (mText.valid())
        mText->clearHostGeometry();
}

CKVBndBox CKVTextGeometryImp::computeBoundingBox() const
{
    CKVBndBox box;
    if (!mText.valid())
        return box;
    osg::BoundingBox const bound = mText->computeBoundingBox();
    if (!bound.valid())
        return box;
    box.addPoint(CKVPoint3D(bound.xMin(), bound.yMin(), bound.zMin()));
    box.addPoint(CKVPoint3D(bound.xMax(), bound.yMax(), bound.zMax()));
    return box;
}

void CKVTextGeometryImp::setText(wchar_t const* text)
{
    CKVTextGeometry::setText(text);
    if (mText.valid())
        mText->setText(getText());
}

void CKVTextGeometryImp::setFontFile(char const* path)
{
    CKVTextGeometry::setFontFile(path);
    if (!mText.valid())
        return;
    osg::ref_ptr<osgText::Font> font = readFont(path);
    if (font.valid())
        mText->setFont(font);
}

void CKVTextGeometryImp::setFontSize(float size)
{
    CKVTextGeometry::setFontSize(size);
    if (mText.valid())
        mText->setCharacterSize(size);
}

void CKVTextGeometryImp::setPosition(CKVPoint3D const& position)
{
    CKVTextGeometry::setPosition(position);
    if (mText.valid())
        mText->setPosition(osg::Vec3(float(position.x), float(position.y), float(position.z)));
}

bool CKVTextGeometryImp::setDirection(CKVVector3D const& direction, CKVVector3D const& normal)
{
    if (direction.isZeroLength(kDirectionTolerance) || normal.isZeroLength(kDirectionTolerance))
        return false;
    if (!Math::isZero(direction.dotProduct(normal), kDirectionTolerance))
        return false;
    if (!CKVTextGeometry::setDirection(direction, normal))
        return false;
    if (!mText.valid())
        return true;

    CKVVector3D x = direction;
    CKVVector3D z = normal;
    CKVVector3D y = z.crossProduct(x);
    x.normalize();
    y.normalize();
    z.normalize();
    CKVMatrix3D frame;
    frame.setCoordSystem(x, y, z, CKVPoint3D());
    osg::Quat rotation;
    rotation.set(toOsgMatrix(frame));
    mText->setRotation(rotation);
    return true;
}

} // namespace Kelvor
