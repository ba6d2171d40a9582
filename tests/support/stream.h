#ifndef ZOLT41_TESTS_SUPPORT_STREAM_H_
#define ZOLT41_TESTS_SUPPORT_STREAM_H_

#include <gtest/gtest.h>

#include <string>

#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/ole_storage.h"

namespace zolt::testing {

// At most `count` bytes from where the stream stands.
inline std::string Read(ComPtr<IStream> const &stream, ULONG count) {
  std::string bytes(count, '?');
  ULONG read = 99;
  EXPECT_EQ(stream->Read(bytes.data(), count, &read), S_OK);
  return bytes.substr(0, read);
}

inline void Write(ComPtr<IStream> const &stream, std::string const &bytes) {
  ULONG written = 99;
  EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
  EXPECT_EQ(written, bytes.size());
}

inline HRESULT Seek(ComPtr<IStream> const &stream, int64_t move, DWORD origin,
                    uint64_t *place = nullptr) {
  ULARGE_INTEGER at = {.QuadPart = 99};
  HRESULT const result = stream->Seek({.QuadPart = move}, origin, &at);
  if (place != nullptr) *place = at.QuadPart;
  return result;
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_STREAM_H_
