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

// Text that may go to a program as one argument: it does not begin like an option, and holds no
// control character.
bool IsPlainArgument(std::string_view text);

// Starts a program with these arguments, its name first, never through a shell, with `input` as
// its standard input, and waits for its end, but no longer than `milliseconds`. Gives the exit
// code; 0 for one that goes on, which is then left to itself; -1 if it could not be started or was
// ended by a signal.
int RunCommand(std::string const &program, std::vector<std::string> const &arguments,
               std::string_view input, int milliseconds);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_DESKTOP_COMMAND_H_
