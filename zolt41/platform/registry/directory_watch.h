#ifndef ZOLT41_PLATFORM_REGISTRY_DIRECTORY_WATCH_H_
#define ZOLT41_PLATFORM_REGISTRY_DIRECTORY_WATCH_H_

#include <sys/stat.h>

#include <string>

namespace zolt {

// Tells with one call of the system that nothing in a directory was made, removed or renamed since
// it was last looked at, by the directory's times. Times are only as fine as the system's clock
// ticks, so a directory that changed within the last second is not vouched for.
class DirectoryWatch {
 public:
  DirectoryWatch() = default;
  ~DirectoryWatch() { Close(); }
  DirectoryWatch(DirectoryWatch const &) = delete;
  DirectoryWatch &operator=(DirectoryWatch const &) = delete;

  // Without success nothing is ever vouched for.
  void Open(std::string const &directory);
  void Close();

  // False where the caller has to look for itself; then Begin comes before that look, and Settle
  // after it if all was as it should be.
  bool Unchanged() const;
  void Begin();
  void Settle() { settled_ = old_; }

 private:
  int descriptor_ = -1;
  struct stat seen_ {};
  bool old_ = false;      // what was seen had stood for a while
  bool settled_ = false;  // and everything was in place
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_DIRECTORY_WATCH_H_
