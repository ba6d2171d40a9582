#ifndef ZOLT41_TOOLS_ZOLT_ERROR_CAPTURE_H_
#define ZOLT41_TOOLS_ZOLT_ERROR_CAPTURE_H_

#include <string>

namespace zolt::tool {

// Keeps what other programs write to this process's standard error, for as long as this lives. If
// that cannot be had all goes its usual way.
class ErrorCapture {
 public:
  ErrorCapture();
  ~ErrorCapture();
  ErrorCapture(ErrorCapture const &) = delete;
  ErrorCapture &operator=(ErrorCapture const &) = delete;

  // The first line with something in it, as UTF-8; "" if there is none.
  std::string FirstLine() const;

 private:
  int usual_;
  int file_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_ERROR_CAPTURE_H_
