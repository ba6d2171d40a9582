#ifndef ZOLT41_COMSERVER_PROPERTY_VALUE_H_
#define ZOLT41_COMSERVER_PROPERTY_VALUE_H_

#include <cstdint>

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/variant.h"
#include "zolt41/prefs/typed_prefs.h"

namespace zolt {

// A property is a text of the store, read as what the caller asks for: VT_I4, VT_BSTR or VT_BOOL.

// `*variant` says the wanted type, and holds the value to take if no store has the property; of a
// text at most 255 bytes of it. Becomes the value, with a text of its own; the former text stays
// the caller's. Of another type it becomes VT_EMPTY. E_OUTOFMEMORY, and VT_EMPTY, without memory.
HRESULT ReadProperty(TYPrefs *store, uint32_t section, char const *name, PROPVARIANT *variant);

// Writes to the store itself. A null text is the empty one; a boolean other than VARIANT_TRUE is
// false; another type is passed over.
HRESULT WriteProperty(TYPrefs *store, uint32_t section, char const *name,
                      PROPVARIANT const &variant);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_PROPERTY_VALUE_H_
