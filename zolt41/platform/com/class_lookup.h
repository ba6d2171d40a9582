#ifndef ZOLT41_PLATFORM_COM_CLASS_LOOKUP_H_
#define ZOLT41_PLATFORM_COM_CLASS_LOOKUP_H_

#include <string>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// The id as it stands in the registry.
std::string ClassIdText(REFCLSID id);

// The unnamed text of a key among the classes; empty if there is none.
std::string TextOfClassKey(std::string const &path);

// The path of the module that a class is registered with; empty if it is not. Of the user's classes
// the key is kept open, so that the next look at it costs no more than a cached read.
std::string ModuleOfClass(REFCLSID id);

// Closes what is kept open.
void ForgetClasses();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_CLASS_LOOKUP_H_
