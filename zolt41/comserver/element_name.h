#ifndef ZOLT41_COMSERVER_ELEMENT_NAME_H_
#define ZOLT41_COMSERVER_ELEMENT_NAME_H_

#include <string>
#include <string_view>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// Names of storages, streams and properties: a byte here is the character of the same number there,
// whatever the code page, so that every name has its way there and back.

// False if there is a character above U+00FF.
bool NarrowName(OLECHAR const *wide, std::string *narrow);

std::u16string WideName(std::string_view narrow);

// The wide name in memory that the client frees with CoTaskMemFree; null without memory.
LPOLESTR NameForClient(std::string_view narrow);
LPOLESTR NameForClient(std::u16string_view wide);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_ELEMENT_NAME_H_
