// The values of a property set: besides the simple ones texts, blocks, objects, and vectors of all
// these.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "zolt41/platform/com/com_alloc.h"
#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/com/variant.h"

namespace {

// What an element owns.
struct Owned {
  void (*free)(void *element);
  // Makes the bitwise copy at `element` one that owns its own. After a failure it owns nothing.
  HRESULT (*own)(void *element);
};

HRESULT OwnBytes(void **block, uint64_t size) {
  if (*block == nullptr) return S_OK;
  void *const copy = CoTaskMemAlloc(size);
  if (copy != nullptr && size != 0) std::memcpy(copy, *block, size);
  *block = copy;
  return copy == nullptr ? E_OUTOFMEMORY : S_OK;
}

template <typename Type>
Type &As(void *element) {
  return *static_cast<Type *>(element);
}

constexpr Owned kNothing = {[](void *) {}, [](void *) { return S_OK; }};

constexpr Owned kObject = {[](void *element) {
                             if (auto *object = As<IUnknown *>(element)) object->Release();
                           },
                           [](void *element) {
                             if (auto *object = As<IUnknown *>(element)) object->AddRef();
                             return S_OK;
                           }};

constexpr Owned kBstr = {[](void *element) { SysFreeString(As<BSTR>(element)); },
                         [](void *element) {
                           BSTR &text = As<BSTR>(element);
                           if (text == nullptr) return S_OK;
                           text = SysAllocStringByteLen(reinterpret_cast<char const *>(text),
                                                        SysStringByteLen(text));
                           return text == nullptr ? E_OUTOFMEMORY : S_OK;
                         }};

void FreeBlock(void *element) {
  CoTaskMemFree(As<void *>(element));
}

template <typename Character>
constexpr Owned kText = {FreeBlock, [](void *element) {
                           auto const *text = As<Character const *>(element);
                           if (text == nullptr) return S_OK;
                           uint64_t const length =
                               std::basic_string_view<Character>(text).size() + 1;
                           return OwnBytes(&As<void *>(element), length * sizeof(Character));
                         }};

constexpr Owned kGuid = {
    FreeBlock, [](void *element) { return OwnBytes(&As<void *>(element), sizeof(GUID)); }};

constexpr Owned kBlob = {[](void *element) { CoTaskMemFree(As<BLOB>(element).pBlobData); },
                         [](void *element) {
                           BLOB &blob = As<BLOB>(element);
                           void *data = blob.pBlobData;
                           HRESULT const result = OwnBytes(&data, blob.cbSize);
                           blob.pBlobData = static_cast<BYTE *>(data);
                           return result;
                         }};

constexpr Owned kClip = {[](void *element) { CoTaskMemFree(As<CLIPDATA>(element).pClipData); },
                         [](void *element) {
                           CLIPDATA &clip = As<CLIPDATA>(element);
                           void *data = clip.pClipData;
                           HRESULT const result = OwnBytes(&data, std::max(clip.cbSize, 4U) - 4);
                           clip.pClipData = static_cast<BYTE *>(data);
                           return result;
                         }};

constexpr Owned kClipPointer = {[](void *element) {
                                  auto *clip = As<CLIPDATA *>(element);
                                  if (clip != nullptr) kClip.free(clip);
                                  CoTaskMemFree(clip);
                                },
                                [](void *element) {
                                  HRESULT result = OwnBytes(&As<void *>(element), sizeof(CLIPDATA));
                                  auto *clip = As<CLIPDATA *>(element);
                                  if (clip == nullptr) return result;
                                  result = kClip.own(clip);
                                  if (result != S_OK) FreeBlock(element);
                                  return result;
                                }};

constexpr Owned kVariant = {
    [](void *element) { PropVariantClear(static_cast<PROPVARIANT *>(element)); },
    [](void *element) {
      PROPVARIANT const source = As<PROPVARIANT>(element);
      return PropVariantCopy(static_cast<PROPVARIANT *>(element), &source);
    }};

// What a type owns by itself, and as an element of a vector; null where it cannot be that.
struct Kind {
  VARTYPE type;
  Owned const *single;
  Owned const *element = nullptr;
  uint32_t elementSize = 0;
};

constexpr Kind kKinds[] = {
    {VT_EMPTY, &kNothing},
    {VT_NULL, &kNothing},
    {VT_INT, &kNothing},
    {VT_UINT, &kNothing},
    {VT_DECIMAL, &kNothing},
    {VT_I1, &kNothing, &kNothing, 1},
    {VT_UI1, &kNothing, &kNothing, 1},
    {VT_I2, &kNothing, &kNothing, 2},
    {VT_UI2, &kNothing, &kNothing, 2},
    {VT_BOOL, &kNothing, &kNothing, 2},
    {VT_I4, &kNothing, &kNothing, 4},
    {VT_UI4, &kNothing, &kNothing, 4},
    {VT_R4, &kNothing, &kNothing, 4},
    {VT_ERROR, &kNothing, &kNothing, 4},
    {VT_I8, &kNothing, &kNothing, 8},
    {VT_UI8, &kNothing, &kNothing, 8},
    {VT_R8, &kNothing, &kNothing, 8},
    {VT_CY, &kNothing, &kNothing, 8},
    {VT_DATE, &kNothing, &kNothing, 8},
    {VT_FILETIME, &kNothing, &kNothing, 8},
    {VT_BSTR, &kBstr, &kBstr, 8},
    {VT_LPSTR, &kText<char>, &kText<char>, 8},
    {VT_LPWSTR, &kText<char16_t>, &kText<char16_t>, 8},
    {VT_CLSID, &kGuid, &kNothing, sizeof(GUID)},
    {VT_CF, &kClipPointer, &kClip, sizeof(CLIPDATA)},
    {VT_VARIANT, nullptr, &kVariant, sizeof(PROPVARIANT)},
    {VT_BLOB, &kBlob},
    {VT_BLOB_OBJECT, &kBlob},
    {VT_UNKNOWN, &kObject},
    {VT_DISPATCH, &kObject},
    {VT_STREAM, &kObject},
    {VT_STREAMED_OBJECT, &kObject},
    {VT_STORAGE, &kObject},
    {VT_STORED_OBJECT, &kObject},
};

Kind const *Find(VARTYPE type, Owned const *Kind::*use) {
  for (Kind const &kind : kKinds) {
    if (kind.type == type) return kind.*use == nullptr ? nullptr : &kind;
  }
  return nullptr;
}

Kind const *SingleOf(VARTYPE type) {
  return Find(type, &Kind::single);
}

Kind const *ElementsOf(VARTYPE type) {
  if ((type & ~VT_TYPEMASK) != VT_VECTOR) return nullptr;
  return Find(static_cast<VARTYPE>(type & VT_TYPEMASK), &Kind::element);
}

void FreeElements(Kind const &kind, char *elements, ULONG count) {
  for (ULONG i = 0; i < count; i++) kind.element->free(elements + uint64_t{i} * kind.elementSize);
  CoTaskMemFree(elements);
}

// Makes the array at `variant`, which is a bitwise copy, its own.
HRESULT OwnElements(Kind const &kind, PROPVARIANT *variant) {
  void *block = variant->cac.pElems;
  HRESULT result = OwnBytes(&block, uint64_t{variant->cac.cElems} * kind.elementSize);
  if (block == nullptr) return result;
  auto *const elements = static_cast<char *>(block);
  for (ULONG i = 0; i < variant->cac.cElems; i++) {
    result = kind.element->own(elements + uint64_t{i} * kind.elementSize);
    if (result == S_OK) continue;
    FreeElements(kind, elements, i);
    return result;
  }
  variant->cac.pElems = elements;
  return S_OK;
}

}  // namespace

void PropVariantInit(PROPVARIANT *variant) {
  if (variant != nullptr) *variant = PROPVARIANT{};
}

HRESULT PropVariantClear(PROPVARIANT *variant) {
  if (variant == nullptr) return S_OK;
  PROPVARIANT old = *variant;
  PropVariantInit(variant);
  if (Kind const *kind = SingleOf(old.vt)) {
    kind->single->free(&old.cVal);
  } else if (Kind const *elements = ElementsOf(old.vt)) {
    FreeElements(*elements, old.cac.pElems, old.cac.pElems == nullptr ? 0 : old.cac.cElems);
  } else {
    return STG_E_INVALIDPARAMETER;
  }
  return S_OK;
}

HRESULT PropVariantCopy(PROPVARIANT *target, PROPVARIANT const *source) {
  if (target == nullptr || source == nullptr) return E_INVALIDARG;
  PROPVARIANT copy = *source;
  Kind const *const kind = SingleOf(copy.vt);
  Kind const *const elements = ElementsOf(copy.vt);
  PropVariantInit(target);
  if (kind == nullptr && elements == nullptr) return STG_E_INVALIDPARAMETER;
  HRESULT const result =
      kind != nullptr ? kind->single->own(&copy.cVal) : OwnElements(*elements, &copy);
  if (result != S_OK) return result;
  *target = copy;
  return S_OK;
}

HRESULT FreePropVariantArray(ULONG count, PROPVARIANT *variants) {
  if (variants == nullptr) return count == 0 ? S_OK : E_INVALIDARG;
  HRESULT result = S_OK;
  for (ULONG i = 0; i < count; i++) {
    if (HRESULT const bad = PropVariantClear(&variants[i]); bad != S_OK) result = bad;
  }
  return result;
}
