#ifndef ZOLT41_COMSERVER_STORAGE_ENUM_H_
#define ZOLT41_COMSERVER_STORAGE_ENUM_H_

#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/registry/registry.h"

namespace zolt {

// Gives a walk over the elements of a section: its subkeys as storages, then its values, those of
// REG_BINARY as streams and the others as properties. A record has the name, which the client frees
// with CoTaskMemFree, the type and, of a value, the size; no times, which are not kept.
HRESULT WalkElements(IStorage *storage, HKEY key, IEnumSTATSTG **out);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_STORAGE_ENUM_H_
