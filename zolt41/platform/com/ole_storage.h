#ifndef ZOLT41_PLATFORM_COM_OLE_STORAGE_H_
#define ZOLT41_PLATFORM_COM_OLE_STORAGE_H_

#include <cstdint>

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/variant.h"
#include "zolt41/platform/system/api.h"

// Structured storage: streams, storages and property sets, and what persists itself in a stream.

inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001);
inline constexpr HRESULT STG_E_FILENOTFOUND = static_cast<HRESULT>(0x80030002);
inline constexpr HRESULT STG_E_PATHNOTFOUND = static_cast<HRESULT>(0x80030003);
inline constexpr HRESULT STG_E_TOOMANYOPENFILES = static_cast<HRESULT>(0x80030004);
inline constexpr HRESULT STG_E_ACCESSDENIED = static_cast<HRESULT>(0x80030005);
inline constexpr HRESULT STG_E_INVALIDHANDLE = static_cast<HRESULT>(0x80030006);
inline constexpr HRESULT STG_E_INSUFFICIENTMEMORY = static_cast<HRESULT>(0x80030008);
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009);
inline constexpr HRESULT STG_E_NOMOREFILES = static_cast<HRESULT>(0x80030012);
inline constexpr HRESULT STG_E_SEEKERROR = static_cast<HRESULT>(0x80030019);
inline constexpr HRESULT STG_E_WRITEFAULT = static_cast<HRESULT>(0x8003001D);
inline constexpr HRESULT STG_E_READFAULT = static_cast<HRESULT>(0x8003001E);
inline constexpr HRESULT STG_E_SHAREVIOLATION = static_cast<HRESULT>(0x80030020);
inline constexpr HRESULT STG_E_LOCKVIOLATION = static_cast<HRESULT>(0x80030021);
inline constexpr HRESULT STG_E_FILEALREADYEXISTS = static_cast<HRESULT>(0x80030050);
inline constexpr HRESULT STG_E_INVALIDPARAMETER = static_cast<HRESULT>(0x80030057);
inline constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070);
inline constexpr HRESULT STG_E_INVALIDNAME = static_cast<HRESULT>(0x800300FC);
inline constexpr HRESULT STG_E_INVALIDFLAG = static_cast<HRESULT>(0x800300FF);
inline constexpr HRESULT STG_E_NOTCURRENT = static_cast<HRESULT>(0x80030101);
inline constexpr HRESULT STG_E_REVERTED = static_cast<HRESULT>(0x80030102);
inline constexpr HRESULT STG_E_CANTSAVE = static_cast<HRESULT>(0x80030103);

inline constexpr DWORD STGM_DIRECT = 0;
inline constexpr DWORD STGM_READ = 0;
inline constexpr DWORD STGM_WRITE = 1;
inline constexpr DWORD STGM_READWRITE = 2;
inline constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x10;
inline constexpr DWORD STGM_SHARE_DENY_WRITE = 0x20;
inline constexpr DWORD STGM_SHARE_DENY_READ = 0x30;
inline constexpr DWORD STGM_SHARE_DENY_NONE = 0x40;
inline constexpr DWORD STGM_FAILIFTHERE = 0;
inline constexpr DWORD STGM_CREATE = 0x1000;
inline constexpr DWORD STGM_TRANSACTED = 0x10000;
inline constexpr DWORD STGM_CONVERT = 0x20000;
inline constexpr DWORD STGM_PRIORITY = 0x40000;
inline constexpr DWORD STGM_NOSCRATCH = 0x100000;
inline constexpr DWORD STGM_DELETEONRELEASE = 0x4000000;
inline constexpr DWORD STGM_SIMPLE = 0x8000000;

inline constexpr DWORD STGTY_STORAGE = 1;
inline constexpr DWORD STGTY_STREAM = 2;
inline constexpr DWORD STGTY_LOCKBYTES = 3;
inline constexpr DWORD STGTY_PROPERTY = 4;

inline constexpr DWORD STATFLAG_DEFAULT = 0;
inline constexpr DWORD STATFLAG_NONAME = 1;
inline constexpr DWORD STATFLAG_NOOPEN = 2;

inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;

inline constexpr DWORD STGC_DEFAULT = 0;
inline constexpr DWORD STGC_OVERWRITE = 1;
inline constexpr DWORD STGC_ONLYIFCURRENT = 2;
inline constexpr DWORD STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4;

inline constexpr ULONG PRSPEC_LPWSTR = 0;
inline constexpr ULONG PRSPEC_PROPID = 1;

struct STATSTG {
  LPOLESTR pwcsName;
  DWORD type;
  ULARGE_INTEGER cbSize;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};
static_assert(sizeof(STATSTG) == 80);

struct PROPSPEC {
  ULONG ulKind;
  union {
    PROPID propid;
    LPOLESTR lpwstr;
  };
};
static_assert(sizeof(PROPSPEC) == 16);

struct STATPROPSTG {
  LPOLESTR lpwstrName;
  PROPID propid;
  VARTYPE vt;
};
static_assert(sizeof(STATPROPSTG) == 16);

struct STATPROPSETSTG {
  FMTID fmtid;
  CLSID clsid;
  DWORD grfFlags;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD dwOSVersion;
};

// Names, ended by a null pointer.
using SNB = LPOLESTR *;

inline constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr IID IID_IStorage = {0x0B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IStream = {0x0C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumSTATSTG = {0x0D, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersist = {0x010C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPropertyStorage = {0x0138, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumSTATPROPSTG = {0x0139, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersistStreamInit = {
    0x7FD52380, 0x4E07, 0x101B, {0xAE, 0x2D, 0x08, 0x00, 0x2B, 0x2E, 0xC7, 0x13}};

struct ZOLT_API ISequentialStream : IUnknown {
  virtual HRESULT Read(void *buffer, ULONG count, ULONG *read) = 0;
  virtual HRESULT Write(void const *buffer, ULONG count, ULONG *written) = 0;
};

struct ZOLT_API IStream : ISequentialStream {
  virtual HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER *newPosition) = 0;
  virtual HRESULT SetSize(ULARGE_INTEGER newSize) = 0;
  virtual HRESULT CopyTo(IStream *target, ULARGE_INTEGER count, ULARGE_INTEGER *read,
                         ULARGE_INTEGER *written) = 0;
  virtual HRESULT Commit(DWORD flags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) = 0;
  virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) = 0;
  virtual HRESULT Stat(STATSTG *out, DWORD flags) = 0;
  virtual HRESULT Clone(IStream **out) = 0;
};

using LPSTREAM = IStream *;

struct ZOLT_API IEnumSTATSTG : IUnknown {
  virtual HRESULT Next(ULONG count, STATSTG *records, ULONG *fetched) = 0;
  virtual HRESULT Skip(ULONG count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumSTATSTG **out) = 0;
};
using LPENUMSTATSTG = IEnumSTATSTG *;

struct ZOLT_API IStorage : IUnknown {
  virtual HRESULT CreateStream(OLECHAR const *name, DWORD mode, DWORD reserved1, DWORD reserved2,
                               IStream **out) = 0;
  virtual HRESULT OpenStream(OLECHAR const *name, void *reserved1, DWORD mode, DWORD reserved2,
                             IStream **out) = 0;
  virtual HRESULT CreateStorage(OLECHAR const *name, DWORD mode, DWORD reserved1, DWORD reserved2,
                                IStorage **out) = 0;
  virtual HRESULT OpenStorage(OLECHAR const *name, IStorage *priority, DWORD mode, SNB exclude,
                              DWORD reserved, IStorage **out) = 0;
  virtual HRESULT CopyTo(DWORD excludedIds, IID const *excluded, SNB exclude, IStorage *target) = 0;
  virtual HRESULT MoveElementTo(OLECHAR const *name, IStorage *target, OLECHAR const *newName,
                                DWORD flags) = 0;
  virtual HRESULT Commit(DWORD flags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT EnumElements(DWORD reserved1, void *reserved2, DWORD reserved3,
                               IEnumSTATSTG **out) = 0;
  virtual HRESULT DestroyElement(OLECHAR const *name) = 0;
  virtual HRESULT RenameElement(OLECHAR const *name, OLECHAR const *newName) = 0;
  virtual HRESULT SetElementTimes(OLECHAR const *name, FILETIME const *created,
                                  FILETIME const *accessed, FILETIME const *modified) = 0;
  virtual HRESULT SetClass(REFCLSID id) = 0;
  virtual HRESULT SetStateBits(DWORD bits, DWORD mask) = 0;
  virtual HRESULT Stat(STATSTG *out, DWORD flags) = 0;
};

using LPSTORAGE = IStorage *;

struct ZOLT_API IEnumSTATPROPSTG : IUnknown {
  virtual HRESULT Next(ULONG count, STATPROPSTG *records, ULONG *fetched) = 0;
  virtual HRESULT Skip(ULONG count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumSTATPROPSTG **out) = 0;
};
using LPENUMSTATPROPSTG = IEnumSTATPROPSTG *;

struct ZOLT_API IPropertyStorage : IUnknown {
  virtual HRESULT ReadMultiple(ULONG count, PROPSPEC const specs[], PROPVARIANT variants[]) = 0;
  virtual HRESULT WriteMultiple(ULONG count, PROPSPEC const specs[], PROPVARIANT const variants[],
                                PROPID firstId) = 0;
  virtual HRESULT DeleteMultiple(ULONG count, PROPSPEC const specs[]) = 0;
  virtual HRESULT ReadPropertyNames(ULONG count, PROPID const ids[], LPOLESTR names[]) = 0;
  virtual HRESULT WritePropertyNames(ULONG count, PROPID const ids[],
                                     OLECHAR const *const names[]) = 0;
  virtual HRESULT DeletePropertyNames(ULONG count, PROPID const ids[]) = 0;
  virtual HRESULT Commit(DWORD flags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT Enum(IEnumSTATPROPSTG **out) = 0;
  virtual HRESULT SetTimes(FILETIME const *created, FILETIME const *accessed,
                           FILETIME const *modified) = 0;
  virtual HRESULT SetClass(REFCLSID id) = 0;
  virtual HRESULT Stat(STATPROPSETSTG *out) = 0;
};

struct ZOLT_API IPersist : IUnknown {
  virtual HRESULT GetClassID(CLSID *out) = 0;
};

struct ZOLT_API IPersistStreamInit : IPersist {
  virtual HRESULT IsDirty() = 0;
  virtual HRESULT Load(IStream *stream) = 0;
  virtual HRESULT Save(IStream *stream, BOOL clearDirty) = 0;
  virtual HRESULT GetSizeMax(ULARGE_INTEGER *size) = 0;
  virtual HRESULT InitNew() = 0;
};

#endif  // ZOLT41_PLATFORM_COM_OLE_STORAGE_H_
