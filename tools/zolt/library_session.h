#ifndef ZOLT41_TOOLS_ZOLT_LIBRARY_SESSION_H_
#define ZOLT41_TOOLS_ZOLT_LIBRARY_SESSION_H_

#include "tools/zolt/arguments.h"
#include "tools/zolt/settings.h"

namespace zolt::tool {

// The library between its start and its end, in the home and the tree that the options name.
class LibrarySession {
 public:
  LibrarySession(Arguments const &arguments, Settings const &settings);
  ~LibrarySession();
  LibrarySession(LibrarySession const &) = delete;
  LibrarySession &operator=(LibrarySession const &) = delete;
};

// Says whose store is written, where that is not plain: under sudo.
void SayWhoseStore(Settings const &settings);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_LIBRARY_SESSION_H_
