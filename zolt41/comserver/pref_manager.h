#ifndef ZOLT41_COMSERVER_PREF_MANAGER_H_
#define ZOLT41_COMSERVER_PREF_MANAGER_H_

#include <memory>

#include "zolt41/cardfile/call_card.h"
#include "zolt41/comserver/pref_manager_interface.h"
#include "zolt41/comserver/section_object.h"
#include "zolt41/comserver/server_refs.h"
#include "zolt41/platform/com/ref_counted.h"

namespace zolt {

// The class itself: which store is looked at, and the card that the store may lie in. What it hands
// out holds no reference on it.
class PrefManager final : public RefCounted<IPrefManager, IID_IPrefManager> {
 public:
  PrefManager();

  HRESULT Reserved(ULONG) override { return E_NOTIMPL; }
  HRESULT SelectStore(IUnknown *source, int32_t kind) override;
  HRESULT OpenRootStorage(ULONG mode, IStorage **out) override;

 private:
  ~PrefManager() override = default;

  HRESULT SelectCard(IUnknown *source);
  void Select(int32_t kind, TYPrefs *store, std::unique_ptr<CallCard> card);

  ServerReference server_;
  int32_t kind_ = kUserStore;
  TYPrefs *store_;
  std::unique_ptr<CallCard> card_;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_PREF_MANAGER_H_
