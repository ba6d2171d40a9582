#include <sys/stat.h>

#include <cerrno>

#include "tools/zolt/book_cards.h"
#include "tools/zolt/card_documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

off_t SizeOf(std::string const &path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) throw SystemFailure(path, errno);
  return status.st_size;
}

// Whether the file became smaller.
bool CloseGaps(Call const &call) {
  Book book(call, Book::Access::write);
  off_t const before = SizeOf(book.path());
  bool const moved = book.rolodex().Compact(1) != 0;
  if (!moved) book.CheckDone();
  book.Close();
  return SizeOf(book.path()) < before;
}

bool HasGaps(Call const &call) {
  Book const book(call, Book::Access::read);
  RolodexReport report;
  if (CheckRolodex(book.path().c_str(), nullptr, nullptr, &report) != 0)
    throw BookFailure(book.path());
  return report.freeRecords > 0;
}

int Compact(Call const &call) {
  bool changes = false;
  {
    Progress const progress(call.settings, "compacting");
    changes = call.settings.dryRun ? HasGaps(call) : CloseGaps(call);
  }
  std::string const path = BookPath(call);
  if (call.settings.json) {
    call.out.Write("{\"schema\":1,\"file\":" + JsonText(path) +
                   ",\"size\":" + std::to_string(SizeOf(path)) +
                   ",\"changed\":" + (changes ? "true" : "false") + "}\n");
  } else if (!call.settings.quiet) {
    WriteError("zolt: " + Escape(path) + ": " + (changes ? Done(call, "compacted") : "no gaps"));
  }
  return CodeOfChange(call, changes);
}

}  // namespace

Verb const kRolodexCompact = {
    .group = "rolodex",
    .name = "compact",
    .operands = "",
    .summary = "close the gaps of a book",
    .options = {OptionId::file},
    .least = 0,
    .most = 0,
    .run = Compact,
    .description = "Makes the file as small as its cards allow.",
    .examples = "  zolt rolodex compact\n",
};

}  // namespace zolt::tool
