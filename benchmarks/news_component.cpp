#include "benchmarks/news_component.h"

#include "benchmarks/components.h"
#include "benchmarks/heard.h"
#include "benchmarks/watchers.h"

namespace zolt::bench {
namespace {

// Lives in WatchComponent, so nobody counts.
class Sink : public IPropertyNotifySink {
 public:
  HRESULT QueryInterface(REFIID iid, void **out) override {
    *out = iid == IID_IPropertyNotifySink ? this : nullptr;
    return *out == nullptr ? E_NOINTERFACE : S_OK;
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }

  // It is not told what has changed.
  HRESULT OnChanged(DISPID) override {
    heard_.NoteExpected();
    return S_OK;
  }
  HRESULT OnRequestEdit(DISPID) override { return S_OK; }

 private:
  Heard heard_ = Heard::OfThisWatcher();
};

}  // namespace

void WatchComponent() {
  DllRegisterServer();
  IPrefManager *const manager = CreateManager();
  IStorage *root = nullptr;
  Require(manager->OpenRootStorage(0, &root) == S_OK, "the root did not open");
  IStorage *const section = Storage(root, u"News");
  IConnectionPointContainer *container = nullptr;
  section->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void **>(&container));
  IConnectionPoint *point = nullptr;
  container->FindConnectionPoint(IID_IPropertyNotifySink, &point);
  Sink sink;
  DWORD_PTR cookie = 0;
  Require(point->Advise(&sink, &cookie) == S_OK, "a sink was not connected");
  uint32_t const thread = GetCurrentThreadId();
  ReadyUntil([thread] { PostThreadMessageA(thread, WM_QUIT, 0, 0); });
  MSG message;
  while (GetMessageA(&message, 0, 0, 0) > 0) DispatchMessageA(&message);
  point->Unadvise(cookie);
  for (IUnknown *object :
       std::initializer_list<IUnknown *>{point, container, section, root, manager}) {
    object->Release();
  }
}

}  // namespace zolt::bench
