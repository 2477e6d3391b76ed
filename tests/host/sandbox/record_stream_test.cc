// Records as bytes: what is written is read again, in pieces of any size, and damage is seen.
#include "record_stream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace ipvald {
namespace {

EndRecord FullEnd() {
  EndRecord end;
  end.call = 3;
  end.result = -1;
  end.text = std::string("text with \0 and \xff", 17);
  end.microseconds = 1234567890123;
  end.datastore_calls = 42;
  end.log = {"first", "", "third"};
  end.faults = {{2, "Function", "file.cc", 12, "fault"}, {0, "", "", -1, ""}};
  return end;
}

const std::vector<Record> kAll = {
    StageRecord{"lib_init"},
    StageRecord{""},
    BeginRecord{0},
    BeginRecord{4294967295},
    EndRecord{},
    FullEnd(),
    UnusableRecord{"reason"},
    FailedRecord{"exception"},
    DoneRecord{7},
};

std::string EncodeAll() {
  std::string bytes;
  for (const Record& record : kAll) bytes += Encode(record);
  return bytes;
}

class Pieces : public testing::TestWithParam<size_t> {};

TEST_P(Pieces, GiveTheSameRecords) {
  const std::string bytes = EncodeAll();
  RecordReader reader;
  std::vector<std::string> read;  // encoded again, as records have no comparison
  for (size_t at = 0; at < bytes.size(); at += GetParam()) {
    reader.Append(std::string_view(bytes).substr(at, GetParam()));
    while (const auto record = reader.Next()) read.push_back(Encode(*record));
  }
  ASSERT_EQ(read.size(), kAll.size());
  for (size_t i = 0; i < kAll.size(); ++i) EXPECT_EQ(read[i], Encode(kAll[i])) << i;
  EXPECT_FALSE(reader.has_rest());
}

INSTANTIATE_TEST_SUITE_P(Sizes, Pieces, testing::Values(1, 2, 3, 5, 7, 64, 100000));

TEST(RecordReader, FieldsComeBack) {
  RecordReader reader;
  reader.Append(Encode(FullEnd()));
  const auto record = reader.Next();
  ASSERT_TRUE(record);
  const auto& end = std::get<EndRecord>(*record);
  const EndRecord expected = FullEnd();
  EXPECT_EQ(end.call, expected.call);
  EXPECT_EQ(end.result, expected.result);
  EXPECT_EQ(end.text, expected.text);
  EXPECT_EQ(end.microseconds, expected.microseconds);
  EXPECT_EQ(end.datastore_calls, expected.datastore_calls);
  EXPECT_EQ(end.log, expected.log);
  EXPECT_EQ(end.faults, expected.faults);
}

TEST(RecordReader, EveryPrefixIsIncomplete) {
  for (const Record& record : kAll) {
    const std::string bytes = Encode(record);
    for (size_t length = 0; length < bytes.size(); ++length) {
      RecordReader reader;
      reader.Append(std::string_view(bytes).substr(0, length));
      EXPECT_FALSE(reader.Next()) << length;
      EXPECT_EQ(reader.has_rest(), length > 0);
    }
  }
}

template <typename Number>
std::string Bytes(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

std::string Framed(const std::string& body) {
  return Bytes(static_cast<uint32_t>(body.size())) + body;
}

const std::string kStage(1, '\0');
const std::string kEnd(1, '\2');
const std::string kDone(1, '\5');

// The fields of an end record up to the flag of its text.
const std::string kEndBeforeText = kEnd + Bytes(uint32_t{0}) + Bytes(int32_t{0});
const std::string kEndBeforeLog =
    kEndBeforeText + std::string(1, '\0') + Bytes(uint64_t{0}) + Bytes(uint64_t{0});

struct DamageCase {
  const char* name;
  std::string bytes;
  const char* error;
};

std::ostream& operator<<(std::ostream& out, const DamageCase& row) { return out << row.name; }

const DamageCase kDamages[] = {
    {"NoKind", Framed(""), "a result record is too short"},
    {"UnknownKind", Framed("\x06"), "a result record is of an unknown kind"},
    {"LargestKind", Framed("\xff"), "a result record is of an unknown kind"},
    {"FieldMissing", Framed(kDone), "a result record is too short"},
    {"FieldCutOff", Framed(kDone + "\1\1\1"), "a result record is too short"},
    {"ByteBehind", Framed(kDone + Bytes(uint32_t{0}) + "x"), "a result record is too long"},
    {"TextLongerThanRecord", Framed(kStage + Bytes(uint32_t{5}) + "four"),
     "a result record is too short"},
    {"TextOfLargestLength", Framed(kStage + Bytes(UINT32_MAX) + "four"),
     "a result record is too short"},
    {"TextShorterThanRecord", Framed(kStage + Bytes(uint32_t{3}) + "four"),
     "a result record is too long"},
    {"FlagOfTwo", Framed(kEndBeforeText + "\2" + Bytes(uint32_t{0})),
     "a flag in a result record is neither 0 nor 1"},
    {"MoreLinesThanBytes", Framed(kEndBeforeLog + Bytes(UINT32_MAX)),
     "a result record is too short"},
    {"MoreFaultsThanBytes",
     Framed(kEndBeforeLog + Bytes(uint32_t{0}) + Bytes(UINT32_MAX) + std::string(24, '\0')),
     "a result record is too short"},
    {"TooLarge", Bytes(uint32_t{(64 << 20) + 1}), "a result record is too large"},
    {"LargestLength", Bytes(UINT32_MAX), "a result record is too large"},
};

class Damage : public testing::TestWithParam<DamageCase> {};

TEST_P(Damage, IsSeen) {
  RecordReader reader;
  reader.Append(Encode(BeginRecord{1}) + GetParam().bytes);
  EXPECT_TRUE(reader.Next()) << "what is in front is whole";
  try {
    reader.Next();
    FAIL() << "nothing was seen";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), GetParam().error);
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, Damage, testing::ValuesIn(kDamages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(RecordReader, LargestRecordIsRead) {
  // Length, kind and the length of the text take nine bytes, of which the record has five.
  const std::string text((64u << 20) - 5, 'x');
  RecordReader reader;
  reader.Append(Encode(FailedRecord{text}));
  const auto record = reader.Next();
  ASSERT_TRUE(record);
  EXPECT_EQ(std::get<FailedRecord>(*record).reason.size(), text.size());
  RecordReader other;
  other.Append(Encode(FailedRecord{text + "x"}));
  EXPECT_THROW(other.Next(), std::runtime_error);
}

// Number of records like `record` that are taken before they are too large together.
int TakenBeforeTooLarge(const Record& record) {
  const std::string bytes = Encode(record);
  RecordReader reader;
  for (int taken = 0;; ++taken) {
    reader.Append(bytes);
    try {
      if (!reader.Next()) return -1;
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "the result records are too large together");
      return taken;
    }
  }
}

TEST(RecordReader, AllRecordsTogetherAreBounded) {
  EXPECT_EQ(TakenBeforeTooLarge(FailedRecord{std::string(32 << 20, 'x')}), 4);
  EXPECT_EQ(TakenBeforeTooLarge(FailedRecord{std::string((32 << 20) + 1, 'x')}), 3);
}

TEST(RecordReader, EmptyLinesCountAsTheMemoryThatTheyTake) {
  EndRecord end;
  end.log.resize((128u << 20) / sizeof(std::string) / 2);
  EXPECT_EQ(TakenBeforeTooLarge(end), 2);
  end.log.emplace_back();
  EXPECT_EQ(TakenBeforeTooLarge(end), 1);
}

}  // namespace
}  // namespace ipvald
