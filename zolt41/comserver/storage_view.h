#ifndef ZOLT41_COMSERVER_STORAGE_VIEW_H_
#define ZOLT41_COMSERVER_STORAGE_VIEW_H_

#include "zolt41/comserver/section_face.h"
#include "zolt41/platform/com/ole_storage.h"

namespace zolt {

// The face of a section as a storage: the sections in it are storages, and its values streams. What
// exists is looked up and made in the user's tree, whatever store the section is of; the bytes of
// a stream come from that store. What is made or destroyed here is told to nobody.
//
// STG_E_INVALIDPARAMETER for a null name or a reserved argument that is set, STG_E_INVALIDPOINTER
// for a null out pointer, STG_E_INVALIDNAME for a character above U+00FF. docs/components.md has
// the results of each method.
class SectionStorage final : public SectionFace<IStorage> {
 public:
  explicit SectionStorage(SectionObject &owner) : SectionFace(owner) {}
  ~SectionStorage() = default;

  HRESULT CreateStream(OLECHAR const *name, DWORD mode, DWORD reserved1, DWORD reserved2,
                       IStream **out) override;
  HRESULT OpenStream(OLECHAR const *name, void *reserved1, DWORD mode, DWORD reserved2,
                     IStream **out) override;
  HRESULT CreateStorage(OLECHAR const *name, DWORD mode, DWORD reserved1, DWORD reserved2,
                        IStorage **out) override;
  HRESULT OpenStorage(OLECHAR const *name, IStorage *priority, DWORD mode, SNB exclude,
                      DWORD reserved, IStorage **out) override;
  HRESULT EnumElements(DWORD reserved1, void *reserved2, DWORD reserved3,
                       IEnumSTATSTG **out) override;
  HRESULT DestroyElement(OLECHAR const *name) override;

  HRESULT CopyTo(DWORD, IID const *, SNB, IStorage *) override { return E_NOTIMPL; }
  HRESULT MoveElementTo(OLECHAR const *, IStorage *, OLECHAR const *, DWORD) override {
    return E_NOTIMPL;
  }
  HRESULT Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT Revert() override { return E_NOTIMPL; }
  HRESULT RenameElement(OLECHAR const *, OLECHAR const *) override { return E_NOTIMPL; }
  HRESULT SetElementTimes(OLECHAR const *, FILETIME const *, FILETIME const *,
                          FILETIME const *) override {
    return E_NOTIMPL;
  }
  HRESULT SetClass(REFCLSID) override { return E_NOTIMPL; }
  HRESULT SetStateBits(DWORD, DWORD) override { return E_NOTIMPL; }
  HRESULT Stat(STATSTG *, DWORD) override { return E_NOTIMPL; }

 private:
  HRESULT OpenValue(char const *name, DWORD mode, IStream **out);
  HRESULT OpenBelow(char const *name, IStorage **out);
  bool HasSubkey(char const *name) const;
  bool MakeEmptyValue(char const *name) const;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_STORAGE_VIEW_H_
