#include "record_stream.h"

#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace ipvald {
namespace {

constexpr uint32_t kMaxRecordSize = uint32_t{64} << 20;  // bytes; anything larger is damage

class Encoder {
 public:
  template <typename Number>
  void Put(Number number) requires std::is_arithmetic_v<Number> {
    bytes_.append(reinterpret_cast<const char*>(&number), sizeof(number));
  }
  void Put(const std::string& text) {
    Put(static_cast<uint32_t>(text.size()));
    bytes_ += text;
  }
  void Put(const FaultRecord& fault) {
    Put(fault.level);
    Put(fault.function);
    Put(fault.file);
    Put(fault.line);
    Put(fault.message);
  }
  template <typename T>
  void Put(const std::optional<T>& value) {
    Put(static_cast<uint8_t>(value.has_value()));
    if (value) Put(*value);
  }
  template <typename T>
  void Put(const std::vector<T>& values) {
    Put(static_cast<uint32_t>(values.size()));
    for (const T& value : values) Put(value);
  }

  void Put(const StageRecord& record) { Put(record.stage); }
  void Put(const BeginRecord& record) { Put(record.call); }
  void Put(const EndRecord& record) {
    Put(record.call);
    Put(record.result);
    Put(record.text);
    Put(record.microseconds);
    Put(record.datastore_calls);
    Put(record.log);
    Put(record.faults);
  }
  void Put(const UnusableRecord& record) { Put(record.reason); }
  void Put(const FailedRecord& record) { Put(record.reason); }
  void Put(const DoneRecord& record) { Put(record.open_cursors); }

  std::string Take() { return std::move(bytes_); }

 private:
  std::string bytes_;
};

class Decoder {
 public:
  /// @param room  bytes that what is decoded may take; what it takes is subtracted
  Decoder(std::string_view bytes, size_t& room) : rest_(bytes), room_(room) {}

  template <typename Number>
  void Get(Number& number) requires std::is_arithmetic_v<Number> {
    std::memcpy(&number, Take(sizeof(number)).data(), sizeof(number));
  }
  void Get(std::string& text) {
    uint32_t size = 0;
    Get(size);
    const std::string_view taken = Take(size);
    Occupy(taken.size());
    text = taken;
  }
  void Get(FaultRecord& fault) {
    Get(fault.level);
    Get(fault.function);
    Get(fault.file);
    Get(fault.line);
    Get(fault.message);
  }
  template <typename T>
  void Get(std::optional<T>& value) {
    uint8_t present = 0;
    Get(present);
    if (present > 1) throw std::runtime_error("a flag in a result record is neither 0 nor 1");
    if (present != 0) Get(value.emplace());
  }
  template <typename T>
  void Get(std::vector<T>& values) {
    uint32_t size = 0;
    Get(size);
    // A false size runs out of bytes or of room before it runs out of memory.
    for (uint32_t i = 0; i < size; ++i) {
      Occupy(sizeof(T));
      Get(values.emplace_back());
    }
  }

  void Get(StageRecord& record) { Get(record.stage); }
  void Get(BeginRecord& record) { Get(record.call); }
  void Get(EndRecord& record) {
    Get(record.call);
    Get(record.result);
    Get(record.text);
    Get(record.microseconds);
    Get(record.datastore_calls);
    Get(record.log);
    Get(record.faults);
  }
  void Get(UnusableRecord& record) { Get(record.reason); }
  void Get(FailedRecord& record) { Get(record.reason); }
  void Get(DoneRecord& record) { Get(record.open_cursors); }

  bool at_end() const { return rest_.empty(); }

 private:
  void Occupy(size_t bytes) {
    if (bytes > room_) throw std::runtime_error("the result records are too large together");
    room_ -= bytes;
  }

  std::string_view Take(size_t size) {
    if (size > rest_.size()) throw std::runtime_error("a result record is too short");
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::string_view rest_;
  size_t& room_;
};

// The alternative number `kind` of Record, read from `decoder`.
template <size_t kIndex = 0>
Record DecodeAs(size_t kind, Decoder& decoder) {
  if constexpr (kIndex < std::variant_size_v<Record>) {
    if (kind != kIndex) return DecodeAs<kIndex + 1>(kind, decoder);
    std::variant_alternative_t<kIndex, Record> record;
    decoder.Get(record);
    return record;
  } else {
    throw std::runtime_error("a result record is of an unknown kind");
  }
}

}  // namespace

std::string Encode(const Record& record) {
  Encoder body;
  body.Put(static_cast<uint8_t>(record.index()));
  std::visit([&body](const auto& alternative) { body.Put(alternative); }, record);
  Encoder framed;
  framed.Put(body.Take());
  return framed.Take();
}

void RecordReader::Append(std::string_view bytes) {
  buffer_.erase(0, read_);
  read_ = 0;
  buffer_.append(bytes);
}

std::optional<Record> RecordReader::Next() {
  const std::string_view unread = std::string_view(buffer_).substr(read_);
  uint32_t size = 0;
  if (unread.size() < sizeof(size)) return std::nullopt;
  std::memcpy(&size, unread.data(), sizeof(size));
  if (size > kMaxRecordSize) throw std::runtime_error("a result record is too large");
  if (unread.size() < sizeof(size) + size) return std::nullopt;

  Decoder decoder(unread.substr(sizeof(size), size), room_);
  uint8_t kind = 0;
  decoder.Get(kind);
  Record record = DecodeAs(kind, decoder);
  if (!decoder.at_end()) throw std::runtime_error("a result record is too long");

  read_ += sizeof(size) + size;
  return record;
}

}  // namespace ipvald
