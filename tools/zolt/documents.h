#ifndef ZOLT41_TOOLS_ZOLT_DOCUMENTS_H_
#define ZOLT41_TOOLS_ZOLT_DOCUMENTS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/zolt/change.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/level.h"
#include "tools/zolt/listener.h"
#include "tools/zolt/output.h"
#include "tools/zolt/preference_text.h"
#include "tools/zolt/section_path.h"
#include "tools/zolt/store_update.h"
#include "tools/zolt/stored_value.h"

namespace zolt::tool {

// The JSON documents of the tool, in valid UTF-8, each ended by a line end but for that of an
// error.

// A value, or a section in its place, as one store of the chain has it.
struct Entry {
  SectionPath section;
  std::string name;    // in the code page of the stores
  Level const *level;  // null: no store has it, and this is the default that was asked for
  StoredValue value;
  bool isSection = false;
};

// What one store of a chain holds, and which kinds of reads it answers.
struct Holding {
  Level const *level;
  StoredValue value;
  bool answers;
  bool answersBytes;
};

// 0x and eight digits.
std::string IdText(int32_t id);

std::string EntryDocument(Entry const &entry);
std::string EntriesDocument(std::vector<Entry> const &entries);
std::string HoldingsDocument(SectionPath const &path, std::string const &name,
                             std::vector<Holding> const &holdings);
std::string ChangesDocument(SectionPath const &path, Level const &level,
                            std::vector<Change> const &changes);
// The values of sections as one document, and what an update changes; written value by value.
class ValuesDocument {
 public:
  explicit ValuesDocument(Output &out) : out_(out) {}
  void Add(TextSection const &section, Level const &level);
  void Finish();

 private:
  Output &out_;
  bool any_ = false;
};
void WriteUpdateDocument(StoreUpdate const &update, Level const &level, Output &out);

// The section is null where nobody knows to which one the id belongs.
std::string EventDocument(News const &news, std::optional<SectionPath> const &section);
// A value that is there when watching begins, as an event.
std::string InitialDocument(Entry const &entry);
std::string ErrorDocument(ToolError const &error);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_DOCUMENTS_H_
