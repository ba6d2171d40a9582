#ifndef ZOLT41_COMSERVER_SECTION_FACE_H_
#define ZOLT41_COMSERVER_SECTION_FACE_H_

#include "zolt41/comserver/section_object.h"

namespace zolt {

// One interface of a section. The section owns it, and counts for it.
template <typename Interface>
class SectionFace : public Interface {
 public:
  HRESULT QueryInterface(REFIID iid, void **out) override {
    return owner_.QueryInterface(iid, out);
  }
  ULONG AddRef() override { return owner_.AddRef(); }
  ULONG Release() override { return owner_.Release(); }

  SectionFace(SectionFace const &) = delete;
  SectionFace &operator=(SectionFace const &) = delete;

 protected:
  explicit SectionFace(SectionObject &owner) : owner_(owner) {}
  ~SectionFace() = default;

  SectionObject &owner() const { return owner_; }

 private:
  SectionObject &owner_;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_SECTION_FACE_H_
