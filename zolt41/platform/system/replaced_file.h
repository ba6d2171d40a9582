#ifndef ZOLT41_PLATFORM_SYSTEM_REPLACED_FILE_H_
#define ZOLT41_PLATFORM_SYSTEM_REPLACED_FILE_H_

#include <string>

struct stat;

namespace zolt {

// What is needed where a new file takes the place of another one.

// Where an open file lies; empty if that cannot be told.
std::string PathOf(int descriptor);
// Of a path: the directory with its slash, and the name in it.
std::string DirectoryOf(std::string const &path);
std::string NameOf(std::string const &path);
// Of a new file that stands beside it for a while: a dot, the name, and `ending`. A name that would
// be too long so is cut between two characters, with room for `room` bytes behind it.
std::string HiddenBeside(std::string const &path, std::string const &ending, size_t room = 0);

// Whether a new file can be as the open one, whose status this gives: it is this user's, and has
// neither other names nor an access list.
bool CanBeReplaced(int descriptor, struct stat *status);
// Gives a new file the group and the mode of the old one, and no access list, which its folder may
// have given it. False if that may not be, with errno telling why.
bool MakeLike(int descriptor, struct stat const &old);
// A new name is on the disk. What fails has no effect: the name is there all the same.
void SyncDirectoryOf(std::string const &path);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_REPLACED_FILE_H_
