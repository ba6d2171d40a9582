#ifndef ZOLT41_TOOLS_ZOLT_ERRORS_H_
#define ZOLT41_TOOLS_ZOLT_ERRORS_H_

#include <exception>
#include <string>
#include <utility>

namespace zolt::tool {

// What the process ends with.
enum ExitCode : int {
  kDone = 0,
  kNo = 1,       // no such value, an expectation failed
  kUsage = 2,    // wrong usage
  kFailed = 3,   // not permitted, or an I/O error
  kDamaged = 4,  // damaged data, or data of a newer version
  kLocked = 5,   // locked or timed out
};

// Ends a verb. Texts are UTF-8 as they came, not escaped.
class ToolError : public std::exception {
 public:
  ToolError(ExitCode exitCode, char const *errorKind, std::string about, std::string text,
            std::string help = "")
      : code(exitCode),
        kind(errorKind),
        subject(std::move(about)),
        message(std::move(text)),
        hint(std::move(help)) {}

  ExitCode code;
  char const *kind;     // one word for programs
  std::string subject;  // the thing concerned, or ""
  std::string message;
  std::string hint;  // what would help, or ""
};

// How a failure of the library is told, by the result of ZOLTLastFailure.
struct FailureWords {
  ExitCode code;
  char const *kind;
  char const *message;
  char const *hint;
};
FailureWords const &WordsOf(int failure);

// Wrong usage.
[[noreturn]] void Refuse(std::string subject, std::string message, std::string hint = "");

// The calling thread's last failure in a store. If the library knows of none, an I/O error of
// `subject`.
ToolError StoreFailure(std::string subject);

// A failure of the system, by errno.
ToolError SystemFailure(std::string subject, int error);

// Writes the one line on standard error.
void Report(ToolError const &error, bool json, bool colour);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_ERRORS_H_
