#ifndef ZOLT41_COMSERVER_PREF_MANAGER_INTERFACE_H_
#define ZOLT41_COMSERVER_PREF_MANAGER_INTERFACE_H_

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/system/api.h"

// The class "Preference Manager", also "Brindle.PrefManager" and "Brindle.PrefManager.1": the
// preferences of a user, of the system or of a card as structured storage. docs/components.md shows
// what comes out of it.

inline constexpr CLSID CLSID_PrefManager = {
    0x5ED2DD58, 0x7638, 0x11D3, {0x8F, 0xD3, 0x00, 0xA0, 0x24, 0x59, 0xFA, 0x0F}};
inline constexpr IID IID_IPrefManager = {
    0x5ED2DD6C, 0x7638, 0x11D3, {0x8F, 0xD3, 0x00, 0xA0, 0x24, 0x59, 0xFA, 0x0F}};

// What an object of the class answers beside IUnknown.
struct ZOLT_API IPrefManager : IUnknown {
  // Gives E_NOTIMPL.
  virtual HRESULT Reserved(ULONG unused) = 0;

  // Chooses the store, which is the user's at first: 1 the user's, 2 the system's, both with a null
  // source; 0 the preferences in a card, which `source` saves as IPersistStreamInit: 56 bytes of
  // head, which are skipped, then the property list. They are a copy taken now, and last until
  // something else is chosen or the object ends; nothing opened from them may be used longer.
  //
  // E_INVALIDARG for 0 without a source, and for another kind with one; E_FAIL for a kind that
  // there is not, for a source that is no IPersistStreamInit or cannot tell its size, and for a
  // size below 56 or above 2^31 + 55. Then the choice before stands. What comes of Save is not
  // looked at.
  virtual HRESULT SelectStore(IUnknown *source, int32_t kind) = 0;

  // Gives a new object over the root of the store; its events come on the calling thread. `mode`
  // has no effect. E_INVALIDARG without `out`; E_FAIL if it cannot be opened.
  virtual HRESULT OpenRootStorage(ULONG mode, IStorage **out) = 0;
};

#endif  // ZOLT41_COMSERVER_PREF_MANAGER_INTERFACE_H_
