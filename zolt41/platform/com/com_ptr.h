#ifndef ZOLT41_PLATFORM_COM_COM_PTR_H_
#define ZOLT41_PLATFORM_COM_COM_PTR_H_

#include <utility>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// Owns one reference on an object, or none.
template <typename Interface>
class ComPtr {
 public:
  ComPtr() = default;
  explicit ComPtr(Interface *object) : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  ComPtr(ComPtr const &other) : ComPtr(other.object_) {}
  ComPtr(ComPtr &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~ComPtr() { Reset(); }
  ComPtr &operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // Releases what it has, and is null before the object can come back here.
  void Reset() {
    if (Interface *const object = std::exchange(object_, nullptr)) object->Release();
  }
  // Gives the reference to the caller.
  Interface *Detach() { return std::exchange(object_, nullptr); }

  // Where a call puts a reference; nothing must be held before.
  Interface **Place() { return &object_; }
  void **VoidPlace() { return reinterpret_cast<void **>(&object_); }

  Interface *get() const { return object_; }
  Interface *operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Interface *object_ = nullptr;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_COM_PTR_H_
