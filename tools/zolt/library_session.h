#ifndef ZOLT41_TOOLS_ZOLT_LIBRARY_SESSION_H_
#define ZOLT41_TOOLS_ZOLT_LIBRARY_SESSION_H_

#include <string>

#include "tools/zolt/arguments.h"
#include "tools/zolt/settings.h"

namespace zolt::tool {

// Settles what the options name: home, tree, how long to wait. To be called before anything is
// asked of the library; reading needs no more than this, and makes nothing.
void PrepareLibrary(Arguments const &arguments, Settings const &settings);

// Opens the top of a store's tree where it exists. 0 if it does not; ZOLTLastFailure tells why, if
// there is more to tell. The caller closes it.
HKEY OpenTop(Level const &level);

// The library between its start and its end, which makes the tree and its standard sections where
// they are missing. After PrepareLibrary.
class LibrarySession {
 public:
  LibrarySession();
  ~LibrarySession();
  LibrarySession(LibrarySession const &) = delete;
  LibrarySession &operator=(LibrarySession const &) = delete;
};

// The store of one level alone, handed out to the process: much less than the whole library, for
// sections that exist. After PrepareLibrary, and not beside a LibrarySession.
class StoreSession {
 public:
  explicit StoreSession(Level const &level);
  ~StoreSession();
  StoreSession(StoreSession const &) = delete;
  StoreSession &operator=(StoreSession const &) = delete;

 private:
  Level const &level_;
  WinPrefs store_;
};

// Where the library keeps the user's stores.
std::string UserHome();

// Says whose store is written, where that is not plain: under sudo.
void SayWhoseStore(Settings const &settings, Level const &level);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_LIBRARY_SESSION_H_
