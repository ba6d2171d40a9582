#ifndef ZOLT41_COMSERVER_PROPERTY_ENUM_H_
#define ZOLT41_COMSERVER_PROPERTY_ENUM_H_

#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/registry/registry.h"

namespace zolt {

// Gives a walk over all values of a section, of any type. A record has the name, which the client
// frees with CoTaskMemFree, and its id; the type is VT_EMPTY, since no value has one by itself.
HRESULT WalkProperties(IPropertyStorage *properties, HKEY key, IEnumSTATPROPSTG **out);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_PROPERTY_ENUM_H_
