#include "zolt41/comserver/section_object.h"

#include <mutex>

#include "zolt41/comserver/point_container.h"
#include "zolt41/comserver/property_view.h"
#include "zolt41/comserver/section_map.h"
#include "zolt41/comserver/storage_view.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/prefs/pref_sections.h"
#include "zolt41/prefs/stores.h"

namespace zolt {
namespace {

uintptr_t Register(SectionTarget const &target) {
  if (target.name == nullptr) return 0;
  return target.parent != 0 ? RegisterPrefSection(target.id, target.parent, target.name)
                            : RegisterPrefSection(target.id, target.name);
}

}  // namespace

SectionObject::SectionObject(SectionTarget const &target)
    : CPrefNotify(1), store_(target.store), id_(target.id), kind_(target.kind) {}

SectionObject::~SectionObject() {
  std::lock_guard const guard(ServerLock());
  WinPrefs *const stores = GetSystemPrefs();
  if (record_ != 0 && stores != nullptr) stores->UnRegisterSection(id_, record_);
}

HRESULT SectionObject::Make(SectionTarget const &target, REFIID iid, void **out) {
  *out = nullptr;
  return Guarded([&]() -> HRESULT {
    auto *const made = new SectionObject(target);
    HRESULT const ready = Guarded([&] { return made->Initialise(target) ? S_OK : E_FAIL; });
    HRESULT const result = ready == S_OK ? made->QueryInterface(iid, out) : E_FAIL;
    if (result != S_OK) made->End();
    return result;
  });
}

bool SectionObject::OpenKey(SectionTarget const &target) {
  std::lock_guard const guard(ServerLock());
  KeepSectionObject(this);
  record_ = Register(target);
  if (target.name == nullptr || record_ != 0) key_ = SectionKey(id_, 0);
  return key_ != 0;
}

bool SectionObject::Initialise(SectionTarget const &target) {
  if (!OpenKey(target)) return false;
  container_ = std::make_unique<SectionPointContainer>(*this);
  properties_ = std::make_unique<SectionPropertyStorage>(*this);
  storage_ = std::make_unique<SectionStorage>(*this);
  if (!properties_->FillNames()) return false;
  ComPtr const point(new SectionConnectionPoint(container_.get(), IID_IPropertyNotifySink));
  if (!container_->Add(point.get())) return false;
  point_ = point.get();
  AddNotificationID(id_, 0, 0);
  AddNotificationObject(this);
  return true;
}

HRESULT SectionObject::QueryInterface(REFIID iid, void **out) {
  return AnswerWith(iid, out,
                    {{IID_IUnknown, this},
                     {IID_IStorage, storage_.get()},
                     {IID_IPropertyStorage, properties_.get()},
                     {IID_IConnectionPointContainer, container_.get()}});
}

ULONG SectionObject::Release() {
  ULONG const left = references_.Drop();
  if (left == 0) End();
  return left;
}

// Out of the map first: while messages are still on their way to this object, which then lives on
// for them, whoever opens the section gets another one.
void SectionObject::End() {
  {
    std::lock_guard const guard(ServerLock());
    DropSectionObject(this);
  }
  RemoveNotificationObject(this);
  if (point_ != nullptr) point_->LoseContainer();
  container_.reset();
  CPrefNotify::Release();
}

// A sink may end this object, so nothing of it is used behind the first call.
void SectionObject::Tell() {
  ComPtr<IEnumConnections> walk;
  if (point_->EnumConnections(walk.Place()) != S_OK) return;
  CONNECTDATA connection = {};
  while (walk->Next(1, &connection, nullptr) == S_OK) {
    ComPtr<IPropertyNotifySink> sink;
    if (connection.pUnk->QueryInterface(IID_IPropertyNotifySink, sink.VoidPlace()) == S_OK) {
      sink->OnChanged(DISPID_UNKNOWN);
    }
    sink.Reset();
    connection.pUnk->Release();
  }
}

}  // namespace zolt
