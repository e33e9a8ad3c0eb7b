#include "TarnwickRender/CKVTextGeometry.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVTextGeometry, CKVRenderObject)

namespace {

// The tolerance of the text's direction tests: 1e-6 in single precision,
// which is what the label's rotation is built in.
double const kDirectionTolerance = static_cast<double>(1.0e-6f);

} // namespace

CKVTextGeometry::CKVTextGeometry() : mFontSize(1.0f), mDirection(CKVVector3D::kXAxis), mNormal(CKVVector3D::kZAxis)
{
}

CKVTextGeometry::~CKVTextGeometry() = default;

void CKVTextGeometry::getProgramParam(CKVProgramParam& param) const
{
    param.setType(CKVProgramParam::kText);
}

void CKVTextGeometry::setText(wchar_t const* text)
{
    mText = text ? text : L"";
}

void CKVTextGeometry::setFontFile(char const* path)
{
    mFontFile = path;
}

void CKVTextGeometry::setFontSize(float size)
{
    mFontSize = size;
}

void CKVTextGeometry::setPosition(CKVPoint3D const& position)
{
    mPosition = position;
}

bool CKVTextGeometry::setDirection(CKVVector3D const& direction, CKVVector3D const& normal)
{
    if (direction.isZeroLength(kDirectionTolerance) || normal.isZeroLength(kDirectionTolerance))
        return false;
    if (!Math::isZero(direction.dotProduct(normal), kDirectionTolerance))
        return false;
    mDirection = direction;
    mNormal = normal;
    return true;
}

void CKVTextGeometry::getDirection(CKVVector3D& direction, CKVVector3D& normal) const
{
    direction = mDirection;
    normal = mNormal;
}

} // namespace Kelvor
