#include "zolt41/comserver/point_container.h"

#include "zolt41/comserver/connection_enum.h"
#include "zolt41/platform/com/com_ptr.h"

namespace zolt {

SectionPointContainer::~SectionPointContainer() {
  points_.ReleaseAll();
}

bool SectionPointContainer::Add(SectionConnectionPoint *point) {
  if (points_.Add(point) == nullptr) return false;
  point->AddRef();
  return true;
}

HRESULT SectionPointContainer::EnumConnectionPoints(IEnumConnectionPoints **out) {
  return WalkConnectionPoints(points_, out);
}

HRESULT SectionPointContainer::FindConnectionPoint(REFIID iid, IConnectionPoint **out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  for (uint32_t i = 0; i < points_.capacity(); i++) {
    ComPtr<IConnectionPoint> point;
    IID own = {};
    if (points_.At(i) == nullptr ||
        points_.At(i)->QueryInterface(IID_IConnectionPoint, point.VoidPlace()) != S_OK ||
        point->GetConnectionInterface(&own) != S_OK || own != iid) {
      continue;
    }
    *out = point.Detach();
    return S_OK;
  }
  return CONNECT_E_NOCONNECTION;
}

}  // namespace zolt
