#ifndef ZOLT41_TOOLS_ZOLT_EDITOR_H_
#define ZOLT41_TOOLS_ZOLT_EDITOR_H_

#include <string>
#include <utility>

#include "tools/zolt/errors.h"
#include "tools/zolt/scratch_folder.h"

namespace zolt::tool {

// A text that the user changes in the editor that VISUAL, or else EDITOR, names, a command for a
// shell; else in vi.
class EditedText {
 public:
  explicit EditedText(std::string name) : name_(std::move(name)) {}

  std::string file() const { return scratch_.File(name_); }
  // Throws if the editor does not end well; what it left is not used.
  void Edit();
  // Does something with what came out. If that throws, the file stays, and the failure's hint says
  // where.
  template <typename Use>
  auto Apply(Use use) {
    try {
      return use();
    } catch (ToolError &error) {
      scratch_.Keep();
      error.hint += (error.hint.empty() ? "" : "; ") + ("your text is kept in " + file());
      throw;
    }
  }

 private:
  ScratchFolder scratch_;
  std::string name_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_EDITOR_H_
