#ifndef ZOLT41_EXAMPLES_COMPONENT_HELPERS_H_
#define ZOLT41_EXAMPLES_COMPONENT_HELPERS_H_

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "zolt41/zolt41.h"

// A reference that is given back at the end.
template <typename Interface>
class Pointer {
 public:
  Pointer() = default;
  ~Pointer() {
    if (object_ != nullptr) object_->Release();
  }
  Pointer(Pointer const &) = delete;
  Pointer &operator=(Pointer const &) = delete;

  Interface **operator&() { return &object_; }
  void **Void() { return reinterpret_cast<void **>(&object_); }
  Interface *operator->() const { return object_; }
  Interface *get() const { return object_; }

 private:
  Interface *object_ = nullptr;
};

// The 16-bit text as UTF-8; a byte of a name is the character of its number.
inline std::string Utf8(std::u16string_view text) {
  std::string bytes;
  for (char16_t const letter : text) {
    if (letter < 0x80) {
      bytes += static_cast<char>(letter);
    } else if (letter < 0x800) {
      bytes += static_cast<char>(0xC0 | letter >> 6);
      bytes += static_cast<char>(0x80 | (letter & 0x3F));
    } else {
      bytes += static_cast<char>(0xE0 | letter >> 12);
      bytes += static_cast<char>(0x80 | (letter >> 6 & 0x3F));
      bytes += static_cast<char>(0x80 | (letter & 0x3F));
    }
  }
  return bytes;
}

// The UTF-8 text with 16-bit characters; empty if it is none, or has characters beyond those.
inline std::u16string Wide(std::string_view text) {
  std::u16string wide;
  while (!text.empty()) {
    unsigned const first = static_cast<unsigned char>(text[0]);
    size_t const length = first < 0x80 ? 1 : first < 0xE0 ? 2 : 3;
    if ((first >= 0x80 && first < 0xC2) || first >= 0xF0 || text.size() < length) return {};
    unsigned letter = length == 1 ? first : first & (0x3F >> (length - 1));
    for (size_t i = 1; i < length; i++) {
      unsigned const next = static_cast<unsigned char>(text[i]);
      if ((next & 0xC0) != 0x80) return {};
      letter = letter << 6 | (next & 0x3F);
    }
    wide += static_cast<char16_t>(letter);
    text.remove_prefix(length);
  }
  return wide;
}

// Says what could not be done, and gives what the process ends with.
inline int Complain(char const *what, HRESULT result) {
  std::fprintf(stderr, "%s: 0x%08X\n", what, static_cast<unsigned>(result));
  return 1;
}

// Opens the root of the user's preferences, knowing nothing but the name of the class. False, and
// says why, if that fails.
inline bool OpenPreferences(IPrefManager **manager, IStorage **root) {
  CLSID id = {};
  HRESULT result = CLSIDFromProgID(u"Brindle.PrefManager", &id);
  if (SUCCEEDED(result)) {
    result = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IPrefManager,
                              reinterpret_cast<void **>(manager));
  }
  if (SUCCEEDED(result)) result = (*manager)->OpenRootStorage(STGM_READWRITE, root);
  if (SUCCEEDED(result)) return true;
  std::fprintf(stderr, "no preferences: 0x%08X; is the class registered?\n",
               static_cast<unsigned>(result));
  return false;
}

// The property as text; empty if there is none.
inline std::string TextOf(IPropertyStorage *properties, char16_t *name) {
  PROPSPEC spec = {};
  spec.ulKind = PRSPEC_LPWSTR;
  spec.lpwstr = name;
  PROPVARIANT value = {};
  value.vt = VT_BSTR;
  if (FAILED(properties->ReadMultiple(1, &spec, &value))) return "";
  std::string text = Utf8({value.bstrVal, SysStringLen(value.bstrVal)});
  PropVariantClear(&value);
  return text;
}

// What is in a storage, one element after the other; the record's name is good during the call.
inline void ForEachElement(IStorage *storage, std::function<void(STATSTG const &)> const &show) {
  Pointer<IEnumSTATSTG> elements;
  if (FAILED(storage->EnumElements(0, nullptr, 0, &elements))) return;
  STATSTG element = {};
  while (elements->Next(1, &element, nullptr) == S_OK) {
    show(element);
    CoTaskMemFree(element.pwcsName);
  }
}

#endif  // ZOLT41_EXAMPLES_COMPONENT_HELPERS_H_
