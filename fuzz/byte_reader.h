// Reads choices out of the bytes of a fuzzer.
#ifndef FUZZ_BYTE_READER_H_
#define FUZZ_BYTE_READER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace fuzz {

/// One byte after the other; zeros when there are no more.
class ByteReader {
 public:
  explicit ByteReader(std::span<const uint8_t> bytes) : rest_(bytes) {}

  bool empty() const { return rest_.empty(); }

  uint8_t Byte() {
    if (rest_.empty()) return 0;
    const uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }

  /// A number below `count`.
  size_t Below(size_t count) { return Byte() % count; }

  template <typename T, size_t N>
  const T& Of(const std::array<T, N>& choices) {
    return choices[Below(N)];
  }

  /// The next `count` bytes, or as many as there are, as a reader of their own.
  ByteReader Part(size_t count) {
    const size_t length = count < rest_.size() ? count : rest_.size();
    const ByteReader part(rest_.first(length));
    rest_ = rest_.subspan(length);
    return part;
  }

 private:
  std::span<const uint8_t> rest_;
};

}  // namespace fuzz

#endif  // FUZZ_BYTE_READER_H_
