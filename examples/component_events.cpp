// Hears changes of one section through the component interfaces, in a program whose main loop is a
// plain epoll, and prints what is different:
//
//   component_events Conferencing Audio
//
//   g++ -std=c++20 component_events.cpp $(pkg-config --cflags --libs zolt41)
//
// The class must be registered: zolt register.

#include <list>
#include <map>

#include "component_helpers.h"
#include "epoll_loop.h"

namespace {

using Values = std::map<std::string, std::string>;

Values ValuesOf(IStorage *section) {
  Values values;
  Pointer<IPropertyStorage> properties;
  section->QueryInterface(IID_IPropertyStorage, properties.Void());
  ForEachElement(section, [&](STATSTG const &element) {
    if (element.type != STGTY_PROPERTY) return;
    values[Utf8(element.pwcsName)] = TextOf(properties.get(), element.pwcsName);
  });
  return values;
}

// A sink learns that something has changed in the section; what it was, it sees by comparing. It
// lives in main, so nobody counts.
class Sink : public IPropertyNotifySink {
 public:
  explicit Sink(IStorage *section) : section_(section), values_(ValuesOf(section)) {}

  HRESULT QueryInterface(REFIID iid, void **out) override {
    if (out == nullptr) return E_INVALIDARG;
    bool const known = iid == IID_IUnknown || iid == IID_IPropertyNotifySink;
    *out = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }

  HRESULT OnChanged(DISPID) override {
    Values now = ValuesOf(section_);
    for (auto const &[name, value] : now) {
      auto const before = values_.find(name);
      if (before != values_.end() && before->second == value) continue;
      std::printf("%s = %s\n", name.c_str(), value.c_str());
    }
    for (auto const &[name, value] : values_) {
      if (!now.contains(name)) std::printf("%s is gone\n", name.c_str());
    }
    std::fflush(stdout);
    values_ = std::move(now);
    return S_OK;
  }
  HRESULT OnRequestEdit(DISPID) override { return S_OK; }

 private:
  IStorage *section_;
  Values values_;
};

int Listen(int count, char **names) {
  Pointer<IPrefManager> manager;
  Pointer<IStorage> root;
  if (!OpenPreferences(&manager, &root)) return 1;
  // The sections above are held open for as long as the one below them is used.
  std::list<Pointer<IStorage>> sections;
  IStorage *section = root.get();
  for (int i = 0; i < count; i++) {
    std::u16string const name = Wide(names[i]);
    HRESULT const opened =
        name.empty() ? E_INVALIDARG
                     : section->CreateStorage(name.c_str(), 0, 0, 0, &sections.emplace_back());
    if (FAILED(opened)) return Complain(names[i], opened);
    section = sections.back().get();
  }
  Pointer<IConnectionPointContainer> container;
  Pointer<IConnectionPoint> point;
  section->QueryInterface(IID_IConnectionPointContainer, container.Void());
  container->FindConnectionPoint(IID_IPropertyNotifySink, &point);
  Sink sink(section);
  DWORD_PTR cookie = 0;
  HRESULT const connected = point->Advise(&sink, &cookie);
  if (FAILED(connected)) return Complain("no changes can be heard", connected);
  ListenUntilInputEnds();
  point->Unadvise(cookie);
  return 0;
}

}  // namespace

int main(int count, char **arguments) {
  CoInitialize(nullptr);
  int const result = Listen(count - 1, arguments + 1);
  CoUninitialize();
  return result;
}
