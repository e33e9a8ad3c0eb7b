#include "TarnwickRender/CKVOperator.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVOperator, CKVSharedObject)

CKVOperator::CKVOperator() = default;

CKVOperator::~CKVOperator() = default;

void CKVOperator::tick(unsigned int) {}
void CKVOperator::onLButtonDown(CKVEvent const&) {}
void CKVOperator::onLButtonUp(CKVEvent const&) {}
void CKVOperator::onLButtonDblClk(CKVEvent const&) {}
void CKVOperator::onMButtonDown(CKVEvent const&) {}
void CKVOperator::onMButtonUp(CKVEvent const&) {}
void CKVOperator::onMButtonDblClk(CKVEvent const&) {}
void CKVOperator::onRButtonDown(CKVEvent const&) {}
void CKVOperator::onRButtonUp(CKVEvent const&) {}
void CKVOperator::onRButtonDblClk(CKVEvent const&) {}
void CKVOperator::onMouseMove(CKVEvent const&) {}
void CKVOperator::onMouseWheel(CKVEvent const&) {}
void CKVOperator::onKeyDown(CKVEvent const&) {}
void CKVOperator::onKeyUp(CKVEvent const&) {}

} // namespace Kelvor
