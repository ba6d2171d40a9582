// What a crash leaves at any moment is found again: the files are built anew as they stood after
// each call that changed one, and after a part of it, and opened.

#include "tests/rolodex/random_steps.h"
#include "tests/support/file_shim.h"

namespace zolt::testing {
namespace {

constexpr size_t kPage = 4096;
constexpr uint32_t kRedoMagic = 0x6F646552;

// How many bytes of a write a crash may leave done. A kill ends it between two pages of the file;
// what is new at the end of a file may be cut anywhere, as by a full disk.
std::vector<size_t> CutsOf(FileStep const &step, size_t fileSize) {
  std::vector<size_t> cuts;
  auto const position = static_cast<size_t>(step.position);
  size_t const size = step.bytes.size();
  // Some of many pages, the first and the last among them.
  size_t const pages = std::max<size_t>(size / kPage / Often(10), 1);
  size_t const first = (position / kPage + 1) * kPage;
  for (size_t page = first; page < position + size; page += pages * kPage)
    cuts.push_back(page - position);
  size_t const last = (position + size - 1) / kPage * kPage;
  if (last >= first && cuts.back() != last - position) cuts.push_back(last - position);
  if (position + size > fileSize || !cuts.empty())
    for (size_t const cut : {size_t{1}, size / 3, size / 2, size - 1})
      if (cut > 0 && cut < size) cuts.push_back(cut);
  return cuts;
}

bool IsRedoBlock(FileStep const &step) {
  size_t const size = step.bytes.size();
  return step.kind == FileStep::write && size > 20 && NumberAt(step.bytes, size - 4) == kRedoMagic;
}

// What a work does to files, which can be kept from making new ones.
template <typename Work>
std::vector<FileStep> StepsOf(bool inPlace, Work const &work) {
  FileShim shim;
  shim.set_noNewFiles(inPlace);
  work();
  return shim.steps();
}

class CrashTest : public BookTest {
 protected:
  // Opens a copy. No card may be lost, and the file must be in order again.
  void Look(std::string const &content, Cards const &before, Cards const &after) {
    looks_++;
    FileShim const noSync;
    WriteContent(crashed_, content);
    Book book;
    if (book.Open(crashed_.c_str(), 0) != 0) return Note("it does not open");
    Cards const found = book.All();
    std::string wrong = Between(found, before, after);
    if (book.AllIds().size() != found.size()) wrong += " a card is there twice";
    if (book.Add(BodyOf(100, 'z')) == 0) wrong += " it cannot be changed";
    book.Close();
    if (book.Open(crashed_.c_str(), 1) != 0) wrong += " it is not clean";
    if (!wrong.empty()) Note(wrong);
  }

  // A second crash, while opening sets right what the first one left.
  void LookAtRecovery(std::string const &content, Cards const &before, Cards const &after) {
    WriteContent(crashed_, content);
    auto const steps = StepsOf(false, [&] { Book().Open(crashed_.c_str(), 0); });
    Disk disk = {{crashed_, content}};
    LookAtAll(crashed_, steps, &disk, before, after);
  }

  // All that a crash during the steps of one operation can leave. Applies them to the disk.
  void LookAtAll(std::string const &path, std::vector<FileStep> const &steps, Disk *disk,
                 Cards const &before, Cards const &after) {
    for (FileStep const &step : steps) {
      if (step.kind == FileStep::write && step.path == path) {
        for (size_t const cut : CutsOf(step, (*disk)[path].size())) {
          Disk torn = *disk;
          Do({FileStep::write, path, step.position, step.bytes.substr(0, cut)}, &torn);
          Look(torn.at(path), before, after);
        }
      }
      Do(step, disk);
      Look(disk->at(path), before, after);
      if (looks_ % 16 == 0 && !control_ && path == path_)
        LookAtRecovery(disk->at(path), before, after);
    }
  }
  void LookAtSubsets(Disk const &synced, std::vector<FileStep> const &pending, Cards const &before,
                     Cards const &after) {
    for (size_t chosen = 0; chosen < pending.size(); chosen++) {
      Disk alone = synced;
      Disk others = synced;
      Disk half = synced;
      Disk torn = synced;
      for (size_t i = 0; i < pending.size(); i++) {
        FileStep step = pending[i];
        if (i != chosen) {
          Do(step, &others);
          Do(step, &torn);
          continue;
        }
        Do(step, &alone);
        if (step.kind != FileStep::write) continue;
        // What lies in other sectors than the first, and what lies in that beside all others.
        size_t const first =
            std::min(512 - static_cast<size_t>(step.position) % 512, step.bytes.size());
        Do({step.kind, step.path, step.position, step.bytes.substr(0, first)}, &torn);
        // The size of a file can be there before what it has at its end.
        std::string &content = torn[step.path];
        content.resize(
            std::max(content.size(), static_cast<size_t>(step.position) + step.bytes.size()));
        step.position += static_cast<int64_t>(first);
        step.bytes.erase(0, first);
        if (!step.bytes.empty()) Do(step, &half);
      }
      for (Disk const &disk : {alone, others, half, torn}) Look(disk.at(path_), before, after);
    }
  }
  void Note(std::string const &wrong) {
    losses_++;
    if (!control_) ADD_FAILURE() << wrong;
  }

  // A random sequence of operations, looked at everywhere.
  void Run(uint32_t seed, bool inPlace) {
    Begin();
    Disk disk = {{path_, Content()}};
    RandomSteps steps(seed);
    for (int i = 0; i < 24 && !HasFailure(); i++) {
      SCOPED_TRACE(i);
      Cards const before = steps.cards();
      CardStep const step = steps.Next();
      std::vector<FileStep> done = StepsOf(inPlace, [&] {
        step.run(&book_);
        if (i % 12 == 11) Reopen();
      });
      if (control_) std::erase_if(done, IsRedoBlock);
      LookAtAll(path_, done, &disk, before, steps.cards());
    }
  }
  std::string const crashed_ = home_.path() + "/crashed";
  bool control_ = false;  // without redo blocks
  int losses_ = 0;
  int looks_ = 0;
};

using CrashSequenceTest = Sharing<CrashTest>;

INSTANTIATE_TEST_SUITE_P(Shares, CrashSequenceTest, ::testing::Range(0U, kShares));

TEST_P(CrashSequenceTest, NothingIsLostAtAnyStep) {
  ForSeeds(Often(300), [this](uint32_t seed) { Run(seed, seed / kShares % 2 == 0); });
  EXPECT_GT(looks_, 100 * static_cast<int>(Often(300) / kShares));
}

TEST_F(CrashTest, NothingIsLostBetweenTheBatchesOfACompaction) {
  for (uint32_t i = 0; i < 26; i++) book_.Add(BodyOf(140'000 + 1000 * i, 'x'));
  for (uint32_t id = 2; id <= 26; id += 3) book_.DeleteCard(id);
  Cards const cards = book_.All();
  Disk disk = {{path_, Content()}};
  auto const steps = StepsOf(true, [&] { EXPECT_EQ(book_.Compact(1), 1); });
  EXPECT_GE(std::ranges::count_if(steps, IsRedoBlock), 3);
  LookAtAll(path_, steps, &disk, cards, cards);
  EXPECT_EQ(book_.All(), cards);
}

TEST_F(CrashTest, NothingIsLostInAConversion) {
  for (uint32_t seed = 1; seed <= Often(10); seed++) {
    SCOPED_TRACE(seed);
    Begin();
    RandomSteps steps(seed);
    for (int i = 0; i < 30; i++) steps.Next().run(&book_);
    book_.Close();
    Put(BigEndian(Content()));
    Disk disk = {{path_, Content()}};
    auto const done = StepsOf(seed % 2 == 0, [&] { EXPECT_EQ(Open(), 0); });
    EXPECT_GT(done.size(), 4U);
    LookAtAll(path_, done, &disk, steps.cards(), steps.cards());
  }
}

// A power cut keeps of what was not synced any part: here each write alone, all but it, and parts.
TEST_P(CrashSequenceTest, DurableOperationsOutliveThePower) {
  ForSeeds(Often(50), [this](uint32_t seed) {
    Begin();
    book_.Close();
    Disk disk = {{path_, Content()}};
    ASSERT_EQ(book_.OpenDurable(path_.c_str()), 0);
    RandomSteps steps(seed);
    std::vector<FileStep> pending;
    for (int i = 0; i < 20 && !HasFailure(); i++) {
      SCOPED_TRACE(i);
      Cards const before = steps.cards();
      CardStep const step = steps.Next();
      for (FileStep const &change : StepsOf(true, [&] { step.run(&book_); })) {
        if (change.kind == FileStep::sync) {
          for (FileStep const &one : pending) Do(one, &disk);
          pending.clear();
          continue;
        }
        pending.push_back(change);
        LookAtSubsets(disk, pending, before, steps.cards());
      }
      Look(disk.at(path_), steps.cards(), steps.cards());
    }
  });
}

// The same trial finds losses where it should.
TEST_F(CrashTest, WithoutRedoBlocksCardsAreLost) {
  control_ = true;
  for (uint32_t seed = 1; seed <= 40 && losses_ <= 20; seed++) Run(seed, seed % 2 == 0);
  EXPECT_GT(losses_, 20);
}

}  // namespace
}  // namespace zolt::testing
