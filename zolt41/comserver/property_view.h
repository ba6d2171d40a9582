#ifndef ZOLT41_COMSERVER_PROPERTY_VIEW_H_
#define ZOLT41_COMSERVER_PROPERTY_VIEW_H_

#include <map>
#include <string>

#include "zolt41/comserver/section_face.h"
#include "zolt41/platform/com/ole_storage.h"

namespace zolt {

// The face of a section as a set of properties: its texts, read and written as VT_I4, VT_BSTR or
// VT_BOOL, as the caller's variant says. A property is named, or told by its id, SectionNameHash of
// the name, among the values that the section had when it was opened.
//
// STG_E_INVALIDPOINTER for a null argument. What cannot be resolved, an unknown id or a null name,
// is passed over, and so is what has another type; a name with a character above U+00FF ends the
// call with STG_E_INVALIDNAME. What the stores do with a write is not told.
class SectionPropertyStorage final : public SectionFace<IPropertyStorage> {
 public:
  explicit SectionPropertyStorage(SectionObject &owner) : SectionFace(owner) {}
  ~SectionPropertyStorage() = default;

  // Notes the names of the values; false if they cannot be listed, or one has 260 bytes or more.
  bool FillNames();

  HRESULT ReadMultiple(ULONG count, PROPSPEC const specs[], PROPVARIANT variants[]) override;
  HRESULT WriteMultiple(ULONG count, PROPSPEC const specs[], PROPVARIANT const variants[],
                        PROPID firstId) override;
  HRESULT DeleteMultiple(ULONG count, PROPSPEC const specs[]) override;
  HRESULT ReadPropertyNames(ULONG count, PROPID const ids[], LPOLESTR names[]) override;
  HRESULT Enum(IEnumSTATPROPSTG **out) override;

  HRESULT WritePropertyNames(ULONG, PROPID const[], OLECHAR const *const[]) override {
    return E_NOTIMPL;
  }
  HRESULT DeletePropertyNames(ULONG, PROPID const[]) override { return E_NOTIMPL; }
  HRESULT Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT Revert() override { return E_NOTIMPL; }
  HRESULT SetTimes(FILETIME const *, FILETIME const *, FILETIME const *) override {
    return E_NOTIMPL;
  }
  HRESULT SetClass(REFCLSID) override { return E_NOTIMPL; }
  HRESULT Stat(STATPROPSETSTG *out) override {
    return out == nullptr ? STG_E_INVALIDPOINTER : E_NOTIMPL;
  }

 private:
  OLECHAR const *NameOf(PROPSPEC const &spec) const;
  template <typename Work>
  HRESULT ForEach(ULONG count, PROPSPEC const specs[], Work const &work) const;

  std::map<PROPID, std::u16string> names_;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_PROPERTY_VIEW_H_
