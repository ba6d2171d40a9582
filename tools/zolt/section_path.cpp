#include "tools/zolt/section_path.h"

#include <algorithm>
#include <utility>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/text.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

constexpr size_t kLongestName = 255;
// What the library keeps of a name above another, and hashes of all names together.
constexpr size_t kKeptName = 63;
constexpr size_t kHashedNames = 519;

constexpr char kSeparators[] = ":\\";

StandardSection const *StandardOf(int32_t id) {
  auto const sections = StandardSections();
  auto const found = std::ranges::find(sections, id, &StandardSection::id);
  return found == sections.end() ? nullptr : &*found;
}

bool LeadTo(std::span<std::string const> names, StandardSection const *section) {
  for (size_t i = names.size(); i-- > 0 && section != nullptr;) {
    if (!SameName(names[i], section->name)) return false;
    if (section->parent == 0) return i == 0;
    section = StandardOf(section->parent);
  }
  return false;
}

StandardSection const *StandardAt(std::span<std::string const> names) {
  for (StandardSection const &section : StandardSections())
    if (LeadTo(names, &section)) return &section;
  return nullptr;
}

std::vector<std::string> NamesOf(StandardSection const *section) {
  std::vector<std::string> names;
  for (; section != nullptr; section = StandardOf(section->parent))
    names.insert(names.begin(), section->name);
  return names;
}

// The id that the library makes for a section below others, without opening any of them.
int32_t HashOf(std::span<std::string const> names) {
  if (names.empty()) return 0;
  std::string joined;
  for (size_t i = names.size() - 1; i-- > 0;) joined += names[i].substr(0, kKeptName);
  joined += names.back();
  if (names.size() > 1) joined.resize(std::min(joined.size(), kHashedNames));
  return SectionNameHash(joined.c_str());
}

std::string Letters(int32_t id) {
  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8) {
    letters.push_back(static_cast<char>(static_cast<uint32_t>(id) >> shift & 0xFF));
  }
  return letters;
}

bool AllPrintable(std::string_view letters) {
  return std::ranges::all_of(letters, [](char c) { return c > ' ' && c <= '~'; });
}

SectionPath WithLetters(std::string_view operand) {
  std::vector<std::string> known;
  for (StandardSection const &section : StandardSections()) {
    std::string const letters = Letters(section.id);
    if (letters == operand.substr(1)) return SectionPath(NamesOf(&section));
    if (AllPrintable(letters)) known.push_back("@" + letters);
  }
  Refuse(std::string(operand), "no section has this id", DidYouMean(operand, known));
}

}  // namespace

SectionPath::SectionPath(std::vector<std::string> names) : names_(std::move(names)) {
  id_ = HashOf(names_);
  standard_ = names_.empty();
  for (size_t count = names_.size(); count > 0; count--) {
    StandardSection const *const section = StandardAt(std::span(names_).first(count));
    if (section == nullptr) continue;
    // The spelling that the table has.
    std::ranges::move(NamesOf(section), names_.begin());
    if (count == names_.size()) {
      id_ = section->id;
      standard_ = true;
    }
    return;
  }
}

SectionPath SectionPath::FromOperand(std::string_view operand) {
  std::string const shown(operand);
  if (operand.starts_with('@')) return WithLetters(operand);
  bool const fromTop = operand.find_first_of(kSeparators) == 0;
  if (fromTop) operand.remove_prefix(1);
  if (fromTop && operand.empty()) return {};
  std::vector<std::string> names = SplitPath(operand, shown);
  if (names.size() == 1 && !fromTop) {
    SectionPath standard = StandardSectionNamed(names[0]);
    if (!standard.top()) return standard;
  }
  for (std::string const &name : names) {
    if (name.size() > kLongestName) Refuse(shown, "a section's name has at most 255 bytes");
  }
  return SectionPath(std::move(names));
}

SectionPath SectionPath::Below(std::string const &name) const {
  std::vector<std::string> names = names_;
  names.push_back(name);
  return SectionPath(std::move(names));
}

SectionPath SectionPath::Above(size_t count) const {
  return SectionPath({names_.begin(), names_.begin() + static_cast<ptrdiff_t>(count)});
}

std::string SectionPath::Key() const {
  std::string key;
  for (std::string const &name : names_) key += Folded(name) + '\0';
  return key;
}

std::string SectionPath::Text() const {
  // A bare name may stand for a section that lies deeper.
  bool const ambiguous = names_.size() == 1 && StandardSectionNamed(names_[0]).names().size() > 1;
  std::string text = top() || ambiguous ? ":" : "";
  for (std::string const &name : names_) {
    if (&name != &names_.front()) text += ':';
    text += ToUtf8(name);
  }
  return text;
}

std::vector<std::string> SplitPath(std::string_view path, std::string const &subject) {
  std::vector<std::string> names;
  for (;;) {
    size_t const end = path.find_first_of(kSeparators);
    names.push_back(ToLocal(path.substr(0, end)));
    if (names.back().empty()) Refuse(subject, "a name in the path is empty");
    if (end == std::string_view::npos) return names;
    path.remove_prefix(end + 1);
  }
}

SectionPath StandardSectionNamed(std::string_view name) {
  for (StandardSection const &section : StandardSections())
    if (SameName(name, section.name)) return SectionPath(NamesOf(&section));
  return {};
}

}  // namespace zolt::tool
