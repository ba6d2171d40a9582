#ifndef ZOLT41_TOOLS_ZOLT_ARGUMENTS_H_
#define ZOLT41_TOOLS_ZOLT_ARGUMENTS_H_

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/zolt/options.h"

namespace zolt::tool {

// The words of a command line, parted into options and operands.
//
// Options may stand anywhere before "--": -L user, -Luser, -qL user, --wait=3, --wait 3. A lone
// dash, and a dash followed by a digit, begin an operand; so does a dash before several letters
// where the verb takes names behind a sign. Of an option that is given twice the last one counts,
// but for those of which a verb takes several. The words must live as long as this.
class Arguments {
 public:
  // `words` without the program's name. Throws a usage error.
  explicit Arguments(std::span<char const *const> words);

  bool Has(OptionId id) const { return given_.Has(id); }
  // Empty if the option is not given.
  std::string_view Value(OptionId id) const { return values_[static_cast<size_t>(id)]; }
  // Every one of an option that may be given several times, in order.
  std::vector<std::string_view> Values(OptionId id) const;
  std::span<std::string_view const> operands() const { return operands_; }

 private:
  bool TakesSignedNames() const;
  void Take(Option const &option, std::string_view value);
  size_t TakeLong(std::span<char const *const> rest);
  size_t TakeShort(std::span<char const *const> rest);

  OptionSet given_;
  std::array<std::string_view, static_cast<size_t>(OptionId::count)> values_;
  std::vector<std::pair<OptionId, std::string_view>> all_;
  std::vector<std::string_view> operands_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_ARGUMENTS_H_
