#ifndef ZOLT41_TOOLS_ZOLT_OUTPUT_H_
#define ZOLT41_TOOLS_ZOLT_OUTPUT_H_

#include <string>
#include <string_view>

namespace zolt::tool {

// Makes sure that the three standard descriptors are open, so that no file that is opened later
// takes the place of one of them. Those that were closed stay unusable.
void HoldStandardDescriptors();

// Data on their way to a descriptor. A failed write throws; a reader that is gone ends the process
// by SIGPIPE, without a word.
class Output {
 public:
  Output(int descriptor, std::string name);
  Output(Output const &) = delete;
  Output &operator=(Output const &) = delete;
  ~Output() = default;

  int descriptor() const { return descriptor_; }
  bool terminal() const { return terminal_; }
  void Write(std::string_view bytes);
  // Writes what is left, for a reader who waits for it.
  void Flush();
  // Writes what is left and closes the descriptor; what was not finished is lost.
  void Finish();

 private:
  int descriptor_;
  std::string name_;
  bool terminal_;
  std::string waiting_;
};

// Ends the process as a write to a pipe without a reader does.
[[noreturn]] void EndByBrokenPipe();

// One line, which has no line end yet, to standard error in one piece. A failure is ignored.
void WriteError(std::string line);
// The same for a line that is not ended.
void WriteErrorText(std::string_view text);

bool ErrorIsTerminal();

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_OUTPUT_H_
