#ifndef ZOLT41_TESTS_SUPPORT_CHILD_H_
#define ZOLT41_TESTS_SUPPORT_CHILD_H_

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>

namespace zolt::testing {

// Another process, forked from this one, that runs a function and ends with its result. It can say
// lines, and wait for lines said to it. Whatever is left of it is killed at the end.
class Child {
 public:
  class Pipe {
   public:
    Pipe(int in, int out) : in_(in), out_(out) {}
    void Say(std::string const &line) const;
    // The next line without its end, or "" at the end of the other process or after 60 seconds.
    std::string Hear();
    // For a process that becomes another program: the pipe is its standard input and output.
    void BecomeStandard() const;

   private:
    int in_;
    int out_;
    std::string buffer_;
  };

  explicit Child(std::function<int(Pipe &)> const &run);
  ~Child();
  Child(Child const &) = delete;
  Child &operator=(Child const &) = delete;

  Pipe &pipe() { return pipe_; }
  pid_t id() const { return id_; }
  void Signal(int number) const;
  // Says that no more lines come.
  void EndInput();
  // Waits for the end. The exit code, or minus the signal's number. -1000 after 60 seconds.
  int Wait();

 private:
  pid_t id_;
  int in_;
  int out_;
  Pipe pipe_;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_CHILD_H_
