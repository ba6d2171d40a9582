#include "zolt41/rolodex/sequential_writer.h"

#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt {
namespace {

constexpr size_t kBuffer = size_t{256} * 1024;

}  // namespace

void SequentialWriter::WriteOut(std::string_view bytes) {
  uint32_t done = 0;
  auto const count = static_cast<uint32_t>(bytes.size());
  if (!good_) return;
  good_ = WriteFileAt(handle_, position_, bytes.data(), count, &done) != 0;
  if (good_ && done < count) SetFailure(Failure::full, "");
  good_ = good_ && done == count;
  position_ += done;
}

void SequentialWriter::Add(std::string_view bytes) {
  if (waiting_.size() + bytes.size() > kBuffer) {
    WriteOut(waiting_);
    waiting_.clear();
  }
  if (bytes.size() > kBuffer) {
    WriteOut(bytes);
  } else {
    waiting_ += bytes;
  }
}

bool SequentialWriter::Finish() {
  WriteOut(waiting_);
  waiting_.clear();
  return good_;
}

}  // namespace zolt
