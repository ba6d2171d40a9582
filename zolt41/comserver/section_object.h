#ifndef ZOLT41_COMSERVER_SECTION_OBJECT_H_
#define ZOLT41_COMSERVER_SECTION_OBJECT_H_

#include <cstdint>
#include <memory>

#include "zolt41/comserver/server_refs.h"
#include "zolt41/notify/pref_notify.h"
#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/ref_counted.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/prefs/typed_prefs.h"

namespace zolt {

class SectionConnectionPoint;
class SectionPointContainer;
class SectionPropertyStorage;
class SectionStorage;

// Which preferences are looked at.
enum StoreKind : int32_t { kCardStore = 0, kUserStore = 1, kSystemStore = 2 };

// What a section object is made for.
struct SectionTarget {
  TYPrefs *store;    // values are read from it and written to it; it must live longer
  int32_t id;        // 0 for a root
  int32_t parent;    // the id of the section that it lies in, or 0
  char const *name;  // null for a root, which is not registered
  int32_t kind;      // a StoreKind, as far as it is one
};

// A section as a component: the identity of its faces, which have no count of their own, and the
// subscriber that passes changes on to the sinks. It belongs to the thread that made it, which gets
// the events in its message loop. It holds no reference on the section above it.
class SectionObject final : public IUnknown, public CPrefNotify {
 public:
  // Makes an object and asks it for an interface. E_FAIL if the section cannot be opened: no key,
  // or a value name of 260 bytes or more. Then nothing is left of it, and `*out` is null.
  static HRESULT Make(SectionTarget const &target, REFIID iid, void **out);

  HRESULT QueryInterface(REFIID iid, void **out) override;
  ULONG AddRef() override { return references_.Add(); }
  ULONG Release() override;

  // For the section map: false if the object has no reference any more.
  bool AddToLiving() { return references_.AddToLiving(); }

  TYPrefs *store() const { return store_; }
  int32_t id() const { return id_; }
  int32_t kind() const { return kind_; }
  // The section's key in the user's tree, whatever the kind.
  HKEY key() const { return key_; }

  void OnKeyChanged() override { Tell(); }
  void OnKeyRemoved() override { Tell(); }
  void OnKeyCreated() override { Tell(); }

 private:
  explicit SectionObject(SectionTarget const &target);
  ~SectionObject() override;

  bool Initialise(SectionTarget const &target);
  bool OpenKey(SectionTarget const &target);
  void Tell();
  void End();

  ServerReference server_;
  TYPrefs *store_;
  int32_t id_;
  int32_t kind_;
  uintptr_t record_ = 0;  // its own registration, or 0
  HKEY key_ = 0;
  RefCount references_;
  std::unique_ptr<SectionPointContainer> container_;
  std::unique_ptr<SectionPropertyStorage> properties_;
  std::unique_ptr<SectionStorage> storage_;
  SectionConnectionPoint *point_ = nullptr;  // the container holds it
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_SECTION_OBJECT_H_
