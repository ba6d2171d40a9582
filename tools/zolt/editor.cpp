#include "tools/zolt/editor.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace zolt::tool {

void EditedText::Edit() {
  char const *editor = getenv("VISUAL");
  if (editor == nullptr || *editor == '\0') editor = getenv("EDITOR");
  if (editor == nullptr || *editor == '\0') editor = "vi";
  std::string const command = std::string(editor) + " \"$1\"";
  std::string const path = file();
  pid_t const process = fork();
  if (process < 0) throw SystemFailure("editor", errno);
  if (process == 0) {
    execl("/bin/sh", "sh", "-c", command.c_str(), "sh", path.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw ToolError(kFailed, "io", editor, "did not end well", "nothing is changed");
  }
}

}  // namespace zolt::tool
