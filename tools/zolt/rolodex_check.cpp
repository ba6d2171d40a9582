#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <deque>
#include <nlohmann/json.hpp>

#include "tools/zolt/book_cards.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr int32_t kNoDatabase = -1;

struct Look {
  RolodexReport report;
  std::vector<CardFinding> cards;
};

char const *WordOf(CardState state) {
  switch (state) {
    case CardState::sound:
      return "sound";
    case CardState::cut:
      return "cut";
    case CardState::lost:
      break;
  }
  return "lost";
}

ToolError CheckFailure(std::string const &path, int32_t code) {
  bool const failed = code != kNoDatabase && ZOLTLastFailure(nullptr, 0) != 0;
  if (failed) return BookFailure(path);
  // Perhaps too short for one.
  return {kDamaged, "damaged", path, "is no card database, or of another version"};
}

Look LookAt(std::string const &path, Call const &call) {
  Look look;
  Progress progress(call.settings, "looking");
  auto context = std::pair(&look.cards, &progress);
  auto const tell = [](void *to, CardFinding const &finding) {
    auto const &[cards, shown] = *static_cast<decltype(context) *>(to);
    cards->push_back(finding);
    shown->Step();
  };
  int32_t const code = TryWithin(call.settings.wait, [&] {
    look.cards.clear();
    return CheckRolodex(path.c_str(), tell, &context, &look.report);
  });
  if (code != 0) throw CheckFailure(path, code);
  return look;
}

void Show(std::string const &path, Look const &look, Call const &call) {
  if (call.settings.json) {
    Json document = {{"schema", 1},
                     {"file", path},
                     {"clean", look.report.clean},
                     {"sound", look.report.sound},
                     {"cut", look.report.cut},
                     {"lost", look.report.lost},
                     {"cards", Json::array()}};
    for (CardFinding const &card : look.cards) {
      document["cards"].push_back({{"state", WordOf(card.state)},
                                   {"whole", card.whole},
                                   {"id", card.id},
                                   {"position", card.position},
                                   {"size", card.size},
                                   {"name", ToUtf8(card.names[0])}});
    }
    document["pieces"] = PiecesOf(path);
    call.out.Write(document.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    return;
  }
  Table table(call.settings, call.out, 3);
  for (CardFinding const &card : look.cards) {
    table.Add({WordOf(card.state), std::to_string(card.id), ToUtf8(card.names[0]),
               "byte " + std::to_string(card.position), card.whole ? "whole" : "not whole"});
  }
  table.Finish();
}

std::string FreeName(std::string const &path, char const *ending) {
  for (int number = 1;; number++) {
    std::string name = path + ending + std::to_string(number);
    if (!IsThere(name)) return name;
  }
}

// The book, and the pieces that the opening of a damaged one put aside.
std::vector<std::string> SourcesOf(std::string const &path, Call const &call) {
  std::vector<std::string> sources = {path};
  for (std::string_view const operand : call.operands) sources.emplace_back(operand);
  return sources;
}

struct stat StatusOf(std::string const &path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) throw SystemFailure(path, errno);
  return status;
}

// The rights of the old file, as far as the user may give them.
void TakeRights(std::string const &made, struct stat const &old) {
  mode_t mode = old.st_mode & 07777;
  uid_t const owner = geteuid() == 0 ? old.st_uid : static_cast<uid_t>(-1);
  if (chown(made.c_str(), owner, old.st_gid) != 0) mode &= ~mode_t{07070};
  if (chmod(made.c_str(), mode) != 0) throw SystemFailure(made, errno);
}

// Puts the new file in the old one's place, which keeps what it is under another name.
void Exchange(std::string const &made, std::string const &path, std::string const &kept) {
  TakeRights(made, StatusOf(path));
  if (link(path.c_str(), kept.c_str()) != 0) throw SystemFailure(kept, errno);
  if (rename(made.c_str(), path.c_str()) != 0) throw SystemFailure(path, errno);
}

// Nobody may write to the sources meanwhile.
int Repair(std::vector<std::string> const &sources, Call const &call) {
  std::string const &path = sources.front();
  std::string const book = RealPath(path);
  std::vector<char const *> names(sources.size());
  std::ranges::transform(sources, names.begin(), [](auto const &source) { return source.c_str(); });
  std::string const kept = FreeName(book, ".damaged-");
  std::string const made = FreeName(book, ".repaired-");
  uint32_t cards = 0;
  {
    Progress const progress(call.settings, "repairing");
    int32_t const code = TryWithin(call.settings.wait, [&] {
      return RepairRolodex(names.data(), static_cast<uint32_t>(names.size()), made.c_str(), &cards);
    });
    if (code != 0) throw CheckFailure(path, code);
  }
  try {
    Exchange(made, book, kept);
  } catch (ToolError const &) {
    unlink(made.c_str());
    throw;
  }
  if (!call.settings.quiet && !call.settings.json) {
    WriteError("zolt: " + Escape(path) + ": has " + std::to_string(cards) +
               " cards; the old file is " + Escape(kept));
  }
  return kDone;
}

void Tell(std::string const &path, RolodexReport const &report) {
  WriteError("zolt: " + Escape(path) + ": " + std::to_string(report.sound) + " sound, " +
             std::to_string(report.cut) + " cut, " + std::to_string(report.lost) + " lost" +
             (report.clean ? "" : "; it was not closed"));
  for (std::string const &piece : PiecesOf(path))
    WriteError("zolt: " + Escape(piece) +
               ": cut off when the book was opened; zolt rolodex check "
               "--repair " +
               Escape(piece) + " brings back what it has");
}

int Check(Call const &call) {
  bool const repair = call.arguments.Has(OptionId::repair);
  if (!repair && !call.operands.empty()) Refuse("", "pieces go with --repair");
  std::string const path = BookPath(call);
  std::vector<std::string> const sources = SourcesOf(path, call);
  for (std::string const &source : sources) StatusOf(source);
  bool const writes = repair && !call.settings.dryRun;
  std::deque<WriteBar> bars;
  for (std::string const &source : sources)
    if (writes) bars.emplace_back(source, call.settings.wait);
  Look const look = LookAt(path, call);
  Show(path, look, call);
  bool const lost = look.report.cut + look.report.lost > 0;
  bool const sound = !lost && look.report.clean && call.operands.empty();
  if (writes && !sound) return Repair(sources, call);
  if (!call.settings.quiet && !call.settings.json) Tell(path, look.report);
  if (lost) return kDamaged;
  return look.report.clean ? kDone : kNo;
}

}  // namespace

Verb const kRolodexCheck = {
    .group = "rolodex",
    .name = "check",
    .operands = "[PIECE...]",
    .summary = "say what is damaged in a book, and mend it",
    .options = {OptionId::file, OptionId::repair},
    .least = 0,
    .most = kAnyNumber,
    .run = Check,
    .description =
        "Only reads, and lists every card: sound, cut (it or its place is damaged), or lost (it\n"
        "is whole, and opening would not find it). 0 if all are sound, 1 if the book was not\n"
        "closed, which opening mends, 4 if cards are cut or lost. With --repair every whole card\n"
        "goes into a new book, with those of the pieces NAME.lost-N that are named; the old file\n"
        "stays beside it as NAME.damaged-N.",
    .examples = "  zolt rolodex check\n  zolt rolodex check --repair contacts.rolodex.lost-1\n",
};

}  // namespace zolt::tool
