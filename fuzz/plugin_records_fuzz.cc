// What a plug-in can write to the pipe of the results: the number of calls, the size of the pieces
// in which the rest arrives, then bytes that may be records.
#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "byte_reader.h"
#include "confd_lib.h"
#include "plugin_protocol.h"
#include "record_stream.h"
#include "require.h"

namespace {

using fuzz::Require;

struct Reading {
  std::vector<ipvald::Record> records;
  std::string error;  // of what follows them
  bool has_rest = false;
};

Reading Read(std::string_view bytes, size_t piece) {
  Reading reading;
  ipvald::RecordReader reader;
  try {
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
      reader.Append(bytes.substr(0, piece));
      while (auto record = reader.Next()) reading.records.push_back(std::move(*record));
    }
  } catch (const std::runtime_error& error) {
    reading.error = error.what();
  }
  reading.has_rest = reader.has_rest();
  return reading;
}

std::string EncodeAll(const std::vector<ipvald::Record>& records) {
  std::string bytes;
  for (const ipvald::Record& record : records) bytes += Encode(record);
  return bytes;
}

void CheckReading(std::string_view bytes, size_t piece, const Reading& reading) {
  const Reading whole = Read(bytes, std::max<size_t>(bytes.size(), 1));
  const std::string encoded = EncodeAll(reading.records);
  Require(EncodeAll(whole.records) == encoded && whole.error == reading.error,
          "pieces make no difference: " + std::to_string(piece));
  Require(bytes.starts_with(encoded), "what is read is what was written");
  Require(!reading.error.empty() || reading.has_rest == (encoded.size() < bytes.size()),
          "what is not read is an error or not complete");
}

bool IsAccepted(const ipvald::EndRecord& end) {
  return end.result == CONFD_OK || end.result == CONFD_VALIDATION_WARN;
}

// Of a run at any time.
void CheckRun(const ipvald::PluginRun& run, uint32_t calls) {
  Require(run.ended.size() <= calls, "no more answers than calls");
  for (size_t i = 0; i < run.ended.size(); ++i) {
    Require(run.ended[i].call == i, "answers come in order");
    Require(IsAccepted(run.ended[i]) || i + 1 == run.ended.size(), "a refusal is the last answer");
  }
  if (!run.in_call) return;
  Require(*run.in_call == run.ended.size() && *run.in_call < calls, "the call is one of the task");
  Require(run.ended.empty() || IsAccepted(run.ended.back()), "no call behind a refusal");
}

void CheckProtocol(const std::vector<ipvald::Record>& records, uint32_t calls) {
  ipvald::PluginProtocol protocol(calls);
  for (const ipvald::Record& record : records) {
    const std::string failure_before = protocol.run().failure;
    const size_t ended_before = protocol.run().ended.size();
    protocol.Take(record);
    const ipvald::PluginRun& run = protocol.run();
    CheckRun(run, calls);
    if (!failure_before.empty()) {
      Require(run.failure == failure_before && run.ended.size() == ended_before,
              "nothing is taken behind a failure");
    }
    if (!protocol.is_done()) continue;
    const bool refused = !run.ended.empty() && !IsAccepted(run.ended.back());
    Require(run.failure.empty() && !run.in_call && !protocol.unusable(), "done is done");
    Require(refused || run.ended.size() == calls, "done when all calls are answered");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 4096) return 0;  // dozens of records; sizes near the bounds have unit tests
  fuzz::ByteReader choices({data, size});
  const auto calls = static_cast<uint32_t>(choices.Below(5));
  const size_t piece = choices.Byte() + size_t{1};
  const size_t choice_bytes = std::min<size_t>(size, 2);
  const std::string_view bytes(reinterpret_cast<const char*>(data) + choice_bytes,
                               size - choice_bytes);
  const Reading reading = Read(bytes, piece);
  CheckReading(bytes, piece, reading);
  CheckProtocol(reading.records, calls);
  return 0;
}
