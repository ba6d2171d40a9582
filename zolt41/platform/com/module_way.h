#ifndef ZOLT41_PLATFORM_COM_MODULE_WAY_H_
#define ZOLT41_PLATFORM_COM_MODULE_WAY_H_

#include <string>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// Follows a path from the root name by name, and link by link, to the file that it leads to, which
// `*place` then names without a link. S_OK if nobody but the user or root could have put something
// else in its place: the file, and each folder and link on the way, belongs to one of them, and
// others can write neither the file nor the folders. A folder in which only owners can replace what
// is theirs, such as the system's one for temporary files, will do.
//
// E_ACCESSDENIED, with the first of them that is not so in `*place`, and for a path that is not
// absolute or leads to no file; CO_E_DLLNOTFOUND if there is nothing.
HRESULT FollowModulePath(std::string const &path, std::string *place);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_MODULE_WAY_H_
