// Walks the user's preferences through the component interfaces and prints them.
//
//   g++ -std=c++20 component_tree.cpp $(pkg-config --cflags --libs zolt41)
//
// The class must be registered: zolt register.

#include "component_helpers.h"

namespace {

void Print(IStorage *storage, int depth) {
  Pointer<IPropertyStorage> properties;
  storage->QueryInterface(IID_IPropertyStorage, properties.Void());
  ForEachElement(storage, [&](STATSTG const &element) {
    std::string const name =
        std::string(2 * static_cast<size_t>(depth), ' ') + Utf8(element.pwcsName);
    if (element.type == STGTY_STORAGE) {
      std::printf("%s\n", name.c_str());
      Pointer<IStorage> below;
      if (SUCCEEDED(storage->OpenStorage(element.pwcsName, nullptr, 0, nullptr, 0, &below))) {
        Print(below.get(), depth + 1);
      }
    } else if (element.type == STGTY_STREAM) {
      std::printf("%s: %u bytes\n", name.c_str(), element.cbSize.LowPart);
    } else {
      std::string const text = TextOf(properties.get(), element.pwcsName);
      std::printf("%s = %s\n", name.c_str(), text.c_str());
    }
  });
}

int PrintAll() {
  Pointer<IPrefManager> manager;
  Pointer<IStorage> root;
  if (!OpenPreferences(&manager, &root)) return 1;
  Print(root.get(), 0);
  return 0;
}

}  // namespace

int main() {
  CoInitialize(nullptr);
  int const result = PrintAll();
  CoFreeUnusedLibraries();
  CoUninitialize();
  return result;
}
