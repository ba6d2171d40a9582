#include "zolt41/comserver/pref_manager.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/platform/com/memory_stream.h"
#include "zolt41/platform/system/global_block.h"
#include "zolt41/prefs/stores.h"

namespace zolt {
namespace {

constexpr uint32_t kHeadSize = 56;
constexpr uint32_t kLargestImage = std::numeric_limits<int32_t>::max() + kHeadSize;

// A stream over zeros of that size; null without memory.
ComPtr<IStream> ZeroStream(uint32_t size) {
  ComPtr<IStream> stream;
  HGLOBAL const block = GlobalAlloc(GMEM_MOVEABLE | GMEM_DISCARDABLE | GMEM_ZEROINIT, size);
  if (block != nullptr && CreateStreamOnHGlobal(block, 1, stream.Place()) != S_OK) {
    GlobalFree(block);
  }
  return stream;
}

// Of the bytes that the stream was made for, what there is now: who wrote may have moved or cut the
// block.
std::unique_ptr<CallCard> CardFrom(IStream *stream, uint32_t size) {
  HGLOBAL block = nullptr;
  GetHGlobalFromStream(stream, &block);
  auto const there = static_cast<uint32_t>(std::min<uint64_t>(size, GlobalSize(block)));
  auto card = std::make_unique<CallCard>(CardFormatNone);
  if (there > kHeadSize) {
    auto const *const image = static_cast<char const *>(GlobalLock(block));
    card->Set(image + kHeadSize, static_cast<int32_t>(there - kHeadSize));
  }
  card->SetModified(0);
  return card;
}

}  // namespace

PrefManager::PrefManager() : store_(GetUserPrefs()) {}

void PrefManager::Select(int32_t kind, TYPrefs *store, std::unique_ptr<CallCard> card) {
  kind_ = kind;
  store_ = store;
  card_ = std::move(card);
}

HRESULT PrefManager::SelectStore(IUnknown *source, int32_t kind) {
  if ((kind == kCardStore) != (source != nullptr)) return E_INVALIDARG;
  if (kind == kCardStore) return Guarded([&] { return SelectCard(source); });
  if (kind != kUserStore && kind != kSystemStore) return E_FAIL;
  Select(kind, kind == kUserStore ? GetUserPrefs() : GetSystemPrefs(), nullptr);
  return S_OK;
}

// The old card goes when the new one stands: the source may ask this object for something.
HRESULT PrefManager::SelectCard(IUnknown *source) {
  ComPtr<IPersistStreamInit> image;
  ULARGE_INTEGER size = {};
  if (FAILED(source->QueryInterface(IID_IPersistStreamInit, image.VoidPlace())) ||
      FAILED(image->GetSizeMax(&size)) || size.LowPart < kHeadSize ||
      size.LowPart > kLargestImage) {
    return E_FAIL;
  }
  ComPtr<IStream> const stream = ZeroStream(size.LowPart);
  if (!stream) return E_FAIL;
  image->Save(stream.get(), 0);
  auto card = CardFrom(stream.get(), size.LowPart);
  TYPrefs *const prefs = card->Prefs();
  Select(kCardStore, prefs, std::move(card));
  return S_OK;
}

HRESULT PrefManager::OpenRootStorage(ULONG /*mode*/, IStorage **out) {
  if (out == nullptr) return E_INVALIDARG;
  return SectionObject::Make({store_, 0, 0, nullptr, kind_}, IID_IStorage,
                             reinterpret_cast<void **>(out));
}

}  // namespace zolt
