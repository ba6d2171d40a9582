#ifndef ZOLT41_TOOLS_ZOLT_SECTION_PATH_H_
#define ZOLT41_TOOLS_ZOLT_SECTION_PATH_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zolt::tool {

// Where a section lies: the names from the top down, in the code page of the stores. No names: the
// top of the tree itself.
class SectionPath {
 public:
  SectionPath() = default;
  explicit SectionPath(std::vector<std::string> names);

  // From an operand: names with ':' or a backslash between them, with one before them or not; a
  // bare name of a standard section; four letters of a standard section's id behind '@'; or a lone
  // ':' for the top. Throws a usage error.
  static SectionPath FromOperand(std::string_view operand);

  std::span<std::string const> names() const { return names_; }
  int32_t id() const { return id_; }
  bool top() const { return names_.empty(); }
  // It is open in every process, under the id that is its own.
  bool standard() const { return standard_; }

  SectionPath Below(std::string const &name) const;
  // The first `count` names.
  SectionPath Above(size_t count) const;

  // The same for two paths that lead to one section, which have only their case apart.
  std::string Key() const;

  // As an operand that gives this section; UTF-8.
  std::string Text() const;

 private:
  std::vector<std::string> names_;
  int32_t id_ = 0;
  bool standard_ = true;
};

// The components of a path, which ':' and backslashes part. Throws a usage error about `subject`
// if one is empty.
std::vector<std::string> SplitPath(std::string_view path, std::string const &subject);

// The full path of the standard section of which `name` is the last name, or the top if there is
// none.
SectionPath StandardSectionNamed(std::string_view name);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_SECTION_PATH_H_
