#ifndef ZOLT41_PLATFORM_COM_REF_COUNTED_H_
#define ZOLT41_PLATFORM_COM_REF_COUNTED_H_

#include <atomic>
#include <initializer_list>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// The count of a component's references.
class RefCount {
 public:
  explicit RefCount(ULONG first = 0) : count_(first) {}

  ULONG Add() { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }

  // At 0 the object ends, and what its end calls may take and give back references on it without
  // ending it once more.
  ULONG Drop() {
    ULONG const left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) count_.store(kEnding, std::memory_order_relaxed);
    return left;
  }

  // For whoever finds the object without having a reference: false if it has none at all.
  bool AddToLiving() {
    ULONG count = count_.load(std::memory_order_relaxed);
    while (count != 0 && count < kEnding / 2) {
      if (count_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) return true;
    }
    return false;
  }

 private:
  static constexpr ULONG kEnding = 0x80000000;

  std::atomic<ULONG> count_;
};

// An interface that an object answers with; the face is null while the object has it not, before it
// is ready and in its end.
struct Answer {
  IID const &iid;
  IUnknown *face;
};

// QueryInterface as a list. The first interface that matches gets the reference.
inline HRESULT AnswerWith(REFIID iid, void **out, std::initializer_list<Answer> answers) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  for (Answer const &answer : answers) {
    if (answer.iid != iid || answer.face == nullptr) continue;
    answer.face->AddRef();
    *out = answer.face;
    return S_OK;
  }
  return E_NOINTERFACE;
}

// An object with one interface besides IUnknown, which ends with its last reference.
template <typename Interface, IID const &Id>
class RefCounted : public Interface {
 public:
  HRESULT QueryInterface(REFIID iid, void **out) override {
    return AnswerWith(iid, out, {{IID_IUnknown, this}, {Id, this}});
  }
  ULONG AddRef() override { return references_.Add(); }
  ULONG Release() override {
    ULONG const left = references_.Drop();
    if (left == 0) delete this;
    return left;
  }

  RefCounted(RefCounted const &) = delete;
  RefCounted &operator=(RefCounted const &) = delete;

 protected:
  explicit RefCounted(ULONG first = 0) : references_(first) {}
  virtual ~RefCounted() = default;

 private:
  RefCount references_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_REF_COUNTED_H_
