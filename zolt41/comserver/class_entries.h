#ifndef ZOLT41_COMSERVER_CLASS_ENTRIES_H_
#define ZOLT41_COMSERVER_CLASS_ENTRIES_H_

#include <string>
#include <vector>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

inline constexpr char kProgId[] = "Brindle.PrefManager";
inline constexpr char kNumberedProgId[] = "Brindle.PrefManager.1";

// A text of the registration.
struct ClassEntry {
  std::string path;  // below "Software\Classes"
  char const *name;  // null for the key's unnamed value
  std::string text;
};

// All of them, in the order in which they are entered; without those of the module for an empty
// path.
std::vector<ClassEntry> ClassEntries(std::string const &module);

// How the class is entered among the machine's classes or the user's; makes nothing. See
// ZOLTServerRegistration for the results.
HRESULT ReadRegistration(bool machine, std::string *module);

// The result for a failure of the registry.
HRESULT RegistrationResult(int32_t failure);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_CLASS_ENTRIES_H_
