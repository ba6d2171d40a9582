#ifndef ZOLT41_TOOLS_ZOLT_INTERRUPTION_H_
#define ZOLT41_TOOLS_ZOLT_INTERRUPTION_H_

#include <string>

namespace zolt::tool {

// What is left behind when the user, or the system, ends the tool by SIGINT, SIGTERM or SIGHUP: the
// folder with all files in it goes (one at most; "" for none), and so does a line of progress that
// was drawn. The tool then ends by that signal.
void RemoveWhenInterrupted(std::string const &folder);
void ClearLineWhenInterrupted(bool drawn);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_INTERRUPTION_H_
