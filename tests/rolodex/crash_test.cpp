// What a crash leaves at any moment is found again: the files are built anew as they stood after
// each call that changed one, and after a part of it, and opened.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "tests/rolodex/random_steps.h"
#include "tests/support/file_shim.h"
#include "tests/support/temp_home.h"

namespace zolt::testing {
namespace {

constexpr size_t kPage = 4096;
constexpr uint32_t kRedoMagic = 0x6F646552;

bool Slow() {
  return std::getenv("ZOLT_SLOW") != nullptr;
}

// How many bytes of a write a crash may leave done. A kill ends it between two pages of the file;
// what is new at the end of a file may be cut anywhere, as by a full disk.
std::vector<size_t> CutsOf(FileStep const &step, size_t fileSize) {
  std::vector<size_t> cuts;
  auto const position = static_cast<size_t>(step.position);
  size_t const size = step.bytes.size();
  // Some of many pages, the first and the last among them.
  size_t const pages = std::max<size_t>(size / kPage / 8, 1);
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

class CrashTest : public ::testing::Test {
 protected:
  CrashTest() : path_(home_.path() + "/book"), crashed_(home_.path() + "/crashed") {}

  // Opens what is on the disk as a file of its own. "" if nothing is lost, else what is.
  std::string Look(Disk const &disk, Cards const &before, Cards const &after) {
    looks_++;
    FileShim const noSync;
    WriteContent(crashed_, disk.at(path_));
    Book book;
    if (book.Open(crashed_.c_str(), 0) != 0) return "it does not open";
    Cards const found = book.All();
    std::string wrong = Between(found, before, after);
    if (book.Ids().size() != found.size()) wrong += " a card is there twice";
    // It is in order again, and can be worked with.
    if (book.Add(BodyOf(100, 'z')) == 0) wrong += " it cannot be changed";
    book.Close();
    if (book.Open(crashed_.c_str(), 1) != 0) wrong += " it is not clean";
    return wrong;
  }

  // A second crash, while opening sets right what the first one left.
  void LookAtRecovery(Disk disk, Cards const &before, Cards const &after) {
    WriteContent(crashed_, disk.at(path_));
    std::optional<FileShim> shim(std::in_place);
    Book book;
    book.Open(crashed_.c_str(), 0);
    book.Close();
    std::vector<FileStep> steps = shim->steps();
    shim.reset();
    for (FileStep &step : steps) {
      if (step.path == crashed_) step.path = path_;
      if (step.bytes == crashed_) step.bytes = path_;
    }
    recovers_ = true;
    LookAtAll(steps, &disk, before, after);
    recovers_ = false;
  }

  // All that a crash during the steps of one operation can leave. Applies them to the disk.
  void LookAtAll(std::vector<FileStep> const &steps, Disk *disk, Cards const &before,
                 Cards const &after) {
    for (FileStep const &step : steps) {
      if (step.kind == FileStep::write && step.path == path_) {
        for (size_t const cut : CutsOf(step, (*disk)[path_].size())) {
          Disk torn = *disk;
          Do({FileStep::write, path_, step.position, step.bytes.substr(0, cut)}, &torn);
          Note(Look(torn, before, after));
        }
      }
      Do(step, disk);
      Note(Look(*disk, before, after));
      if (looks_ % 16 == 0 && !control_ && !recovers_) LookAtRecovery(*disk, before, after);
    }
  }

  void LookAtSubsets(Disk const &synced, std::vector<FileStep> const &pending, Cards const &before,
                     Cards const &after) {
    for (size_t chosen = 0; chosen < pending.size(); chosen++) {
      Disk alone = synced;
      Disk others = synced;
      Disk half = synced;
      for (size_t i = 0; i < pending.size(); i++) {
        FileStep step = pending[i];
        if (i != chosen) {
          Do(step, &others);
          continue;
        }
        Do(step, &alone);
        // Of a write what lies in other sectors than the first.
        size_t const first = 512 - static_cast<size_t>(step.position) % 512;
        if (step.kind != FileStep::write || step.bytes.size() <= first) continue;
        step.position += static_cast<int64_t>(first);
        step.bytes.erase(0, first);
        Do(step, &half);
      }
      for (Disk const &disk : {alone, others, half}) Note(Look(disk, before, after));
    }
  }

  void Note(std::string const &wrong) {
    if (wrong.empty()) return;
    losses_++;
    if (!control_) ADD_FAILURE() << wrong;
  }

  // A random sequence of operations, looked at everywhere.
  void Run(uint32_t seed, int count, bool inPlace) {
    SCOPED_TRACE(seed);
    Disk disk;
    RandomSteps steps(seed);
    Book book;
    std::optional<FileShim> shim(std::in_place);
    Rolodex::Create(path_.c_str());
    disk[path_] = ContentOf(path_);
    book.Open(path_.c_str(), 0);
    for (int i = 0; i < count && !HasFailure(); i++) {
      SCOPED_TRACE(i);
      Cards const before = steps.cards();
      CardStep const step = steps.Next();
      if (!shim) shim.emplace();
      shim->set_noNewFiles(inPlace);
      shim->steps().clear();
      step.run(&book);
      if (i % 12 == 11) {
        book.Close();
        book.Open(path_.c_str(), 0);
      }
      std::vector<FileStep> done = shim->steps();
      shim.reset();
      if (control_) std::erase_if(done, IsRedoBlock);
      LookAtAll(done, &disk, before, step.after);
    }
    shim.emplace();
    book.Close();
  }

  FilesInMemory const inMemory_;
  TempHome home_;
  std::string path_;
  std::string crashed_;
  bool control_ = false;  // without redo blocks
  bool recovers_ = false;
  int losses_ = 0;
  int looks_ = 0;
};

// Long trials are several tests, each with its share of the seeds.
constexpr uint32_t kShares = 16;

class CrashSequenceTest : public CrashTest, public ::testing::WithParamInterface<uint32_t> {
 protected:
  template <typename Trial>
  static void ForSeeds(uint32_t count, Trial const &trial) {
    for (uint32_t seed = 1 + GetParam(); seed <= count && !HasFailure(); seed += kShares) {
      SCOPED_TRACE(seed);
      trial(seed);
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Shares, CrashSequenceTest, ::testing::Range(0U, kShares));

TEST_P(CrashSequenceTest, NothingIsLostAtAnyStep) {
  uint32_t const sequences = Slow() ? 30000 : 300;
  ForSeeds(sequences, [this](uint32_t seed) { Run(seed, 24, seed / kShares % 2 == 0); });
  EXPECT_GT(looks_, 100 * static_cast<int>(sequences / kShares));
}

TEST_F(CrashTest, NothingIsLostBetweenTheBatchesOfACompaction) {
  std::optional<FileShim> shim(std::in_place);
  Rolodex::Create(path_.c_str());
  Book book;
  ASSERT_EQ(book.Open(path_.c_str(), 0), 0);
  for (uint32_t i = 0; i < 26; i++) book.Add(BodyOf(140'000 + 1000 * i, 'x'));
  for (uint32_t id = 2; id <= 26; id += 3) book.DeleteCard(id);
  Cards const cards = book.All();
  Disk disk = {{path_, ContentOf(path_)}};
  shim->set_noNewFiles(true);
  shim->steps().clear();
  ASSERT_EQ(book.Compact(1), 1);
  std::vector<FileStep> const done = shim->steps();
  shim.reset();
  EXPECT_GE(std::ranges::count_if(done, IsRedoBlock), 3);
  LookAtAll(done, &disk, cards, cards);
  EXPECT_EQ(book.All(), cards);
}

TEST_F(CrashTest, NothingIsLostInAConversion) {
  for (uint32_t seed = 1; seed <= (Slow() ? 500 : 10); seed++) {
    SCOPED_TRACE(seed);
    RandomSteps steps(seed);
    std::optional<FileShim> shim(std::in_place);
    Rolodex::Create(path_.c_str());
    Book book;
    book.Open(path_.c_str(), 0);
    for (int i = 0; i < 30; i++) steps.Next().run(&book);
    book.Close();
    Disk disk = {{path_, BigEndian(ContentOf(path_))}};
    WriteContent(path_, disk[path_]);
    shim->steps().clear();
    ASSERT_EQ(book.Open(path_.c_str(), 0), 0);
    std::vector<FileStep> const done = shim->steps();
    shim.reset();
    book.Close();
    EXPECT_GT(done.size(), 4U);
    LookAtAll(done, &disk, steps.cards(), steps.cards());
  }
}

// A power cut keeps of what was not synced any part: here each write alone, all but it, and halves.
TEST_P(CrashSequenceTest, DurableOperationsOutliveThePower) {
  ForSeeds(Slow() ? 5000 : 50, [this](uint32_t seed) {
    RandomSteps steps(seed);
    std::optional<FileShim> shim(std::in_place);
    Rolodex::Create(path_.c_str());
    Disk disk = {{path_, ContentOf(path_)}};
    Book book;
    ASSERT_EQ(book.OpenDurable(path_.c_str()), 0);
    std::vector<FileStep> pending;
    for (int i = 0; i < 20 && !HasFailure(); i++) {
      SCOPED_TRACE(i);
      Cards const before = steps.cards();
      CardStep const step = steps.Next();
      if (!shim) shim.emplace();
      shim->set_noNewFiles(true);
      shim->steps().clear();
      step.run(&book);
      std::vector<FileStep> const done = shim->steps();
      shim.reset();
      for (FileStep const &change : done) {
        if (change.kind == FileStep::sync) {
          for (FileStep const &one : pending) Do(one, &disk);
          pending.clear();
          continue;
        }
        pending.push_back(change);
        LookAtSubsets(disk, pending, before, step.after);
      }
      Note(Look(disk, step.after, step.after));
    }
    shim.emplace();
    book.Close();
  });
}

// The same trial finds losses where it should.
TEST_F(CrashTest, WithoutRedoBlocksCardsAreLost) {
  control_ = true;
  for (uint32_t seed = 1; seed <= 20; seed++) Run(seed, 24, seed % 2 == 0);
  EXPECT_GT(losses_, 20);
}

}  // namespace
}  // namespace zolt::testing
