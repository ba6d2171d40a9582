#ifndef ZOLT41_PLATFORM_DESKTOP_COMMAND_H_
#define ZOLT41_PLATFORM_DESKTOP_COMMAND_H_

#include <string>
#include <string_view>
#include <vector>

namespace zolt {

// The path of a program: in the absolute directories of PATH, then in `more`. Empty if there is
// none.
std::string FindProgram(char const *name, std::vector<std::string> const &more = {});

// A desktop is there to show something on.
bool HasDesktop();

// Control characters of a text in UTF-8, those of two bytes (U+0080 to U+009F) among them.
bool HasControls(std::string_view text);

// Text that may go to a program as one argument: it does not begin like an option, and holds no
// control character.
bool IsPlainArgument(std::string_view text);

struct Command {
  std::string program;                 // its path
  std::vector<std::string> arguments;  // its name first
  std::string_view input;              // what it reads from standard input
  int milliseconds;                    // how long to wait for its end
  bool tellsErrors;                    // its standard error is that of this process, else nothing
};

// What RunCommand gives beside exit codes.
inline constexpr int kNoCode = -1;  // it was not started, or ended by a signal
inline constexpr int kStillRuns = -2;

// Starts a program, never through a shell, and waits for its end. What it writes to standard output
// goes nowhere. Gives its exit code, 127 if the file is no program, or one of the numbers above;
// one that still runs is left to itself. How the client treats its own children makes no
// difference, and it does not meet this one, unless it adopts orphans and the program still runs.
int RunCommand(Command const &command);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_DESKTOP_COMMAND_H_
