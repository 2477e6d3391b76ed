// What the reader of JSON tells of a text, in which order and of which bytes.
#include "json_reader.h"

#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>

namespace ipvald {
namespace {

// Writes down what it is told: "{0" and "}5" for an object from byte 0 to byte 5, likewise for an
// array, "name@3" for a member, the kind, text and offset of anything else.
class Recorder : public JsonHandler {
 public:
  void BeginObject(size_t offset) override { Add("{", offset); }
  void EndObject(size_t offset) override { Add("}", offset); }
  void BeginArray(size_t offset) override { Add("[", offset); }
  void EndArray(size_t offset) override { Add("]", offset); }
  void Member(std::string_view name, size_t offset) override {
    Add(std::string(name) + "@", offset);
  }
  void Scalar(JsonKind kind, std::string_view text, size_t offset) override {
    const char* const kKinds[] = {"string", "number", "true", "false", "null"};
    Add(std::string(kKinds[static_cast<size_t>(kind)]) + "(" + std::string(text) + ")", offset);
  }

  std::string told;

 private:
  void Add(const std::string& what, size_t offset) {
    told += (told.empty() ? "" : " ") + what + std::to_string(offset);
  }
};

// What is told of `text`, with the error at the end.
std::string Told(const std::string& text) {
  const SourceText source{"input", text};
  Recorder recorder;
  TextEdits edits;
  try {
    ReadJson(source, recorder, edits);
  } catch (const InputError& error) {
    recorder.told += std::string(recorder.told.empty() ? "" : " ") + error.what();
  }
  return recorder.told;
}

struct EventCase {
  const char* name;
  std::string text;
  std::string told;
};

std::ostream& operator<<(std::ostream& out, const EventCase& row) { return out << row.name; }

const EventCase kEvents[] = {
    {"String", "\"a\"", "string(a)0"},
    {"Number", "-1.5e+3", "number(-1.5e+3)0"},
    {"Words", "[true,false,null]", "[0 true(true)1 false(false)6 null(null)12 ]16"},
    {"BlanksAround", " \t\r\n{ } \n", "{4 }6"},
    {"EmptyMember", "{\"\":\"\"}", "{0 @1 string()4 }6"},
    {"MemberBeforeItsValue", "{ \"a\" :\n1 }", "{0 a@2 number(1)8 }10"},
    {"SecondMember", "{\"a\":1,\n\"b\":2}", "{0 a@1 number(1)5 b@8 number(2)12 }13"},
    {"SameMemberTwice", "{\"a\":1,\"a\":2}", "{0 a@1 number(1)5 a@7 number(2)11 }12"},
    {"ObjectInArray", "[{},[]]", "[0 {1 }2 [4 ]5 ]6"},
    {"EscapesAreRead", "{\"\\u0061\":\"\\n\\\"\"}", "{0 a@1 string(\n\")10 }16"},
    {"PairOfSurrogatesIsOneCharacter", "\"\\uD83D\\uDE00\"", "string(\xf0\x9f\x98\x80)0"},
    {"StringsAreNotJoined", "[\"a\\n\",\"b\"]", "[0 string(a\n)1 string(b)7 ]10"},
    // What is well-formed is told before the fault.
    {"Nothing", "", "input:1: the text ends before a value"},
    {"OnlyBlanks", "\n\n", "input:3: the text ends before a value"},
    {"EndsInAnArray", "\n[1\n",
     "[1 number(1)2 input:3: the text ends inside an array, which begins on line 2"},
    {"EndsBehindAComma", "[1,",
     "[0 number(1)1 input:1: the text ends inside an array, which begins on line 1"},
    {"EndsBehindAMember", "{\"a\"",
     "{0 input:1: the text ends inside an object, which begins on line 1"},
    {"EndsBehindAColon",
     "{\"a\":", "{0 a@1 input:1: the text ends inside an object, which begins on line 1"},
    {"EndsInAString", "[\n\"a",
     "[0 input:2: the text ends inside a string, which begins on line 2"},
    {"EndsInAnEscape", "[\"a\\",
     "[0 input:1: the text ends inside a string, which begins on line 1"},
    {"ArrayClosedAsObject", "[1}", "[0 number(1)1 input:1: a comma or ] is expected before }"},
    {"ObjectClosedAsArray", "{\"a\":1]",
     "{0 a@1 number(1)5 input:1: a comma or } is expected before ]"},
    {"NoCommaInArray", "[1 2]", "[0 number(1)1 input:1: a comma or ] is expected before 2"},
    {"WordGoesOn", "[truex]", "[0 input:1: a comma or ] is expected before x"},
    {"WordInUpperCase", "[True]",
     "[0 input:1: a value (text stands in double quotes) is expected before True"},
    {"ByteOrderMark", "\xef\xbb\xbf{}", "input:1: a value is expected before \xef\xbb\xbf"},
    {"SecondValue", "{}\n[]", "{0 }1 input:2: text after the end of the configuration"},
    {"CommentInAnArray", "[1, # one\n2]", "[0 number(1)1 input:1: JSON has no comments"},
    {"LongUnexpectedText", "[" + std::string(21, 'x'),
     "[0 input:1: a value (text stands in double quotes) is expected before " +
         std::string(20, 'x')},
};

class Events : public testing::TestWithParam<EventCase> {};

TEST_P(Events, AreTold) { EXPECT_EQ(Told(GetParam().text), GetParam().told); }

INSTANTIATE_TEST_SUITE_P(Texts, Events, testing::ValuesIn(kEvents),
                         [](const auto& row) { return std::string(row.param.name); });

std::string Nested(size_t depth, const char* begin, const char* end) {
  std::string text;
  for (size_t i = 0; i < depth; ++i) text += begin;
  for (size_t i = 0; i < depth; ++i) text += end;
  return text;
}

TEST(Depth, EndsAtTheLimit) {
  const std::string too_deep = "input:1: objects and arrays are too deep";
  EXPECT_EQ(kMaxJsonDepth, 200u);
  EXPECT_TRUE(Told(Nested(200, "[", "]")).ends_with(" ]399"));
  EXPECT_TRUE(Told(Nested(201, "[", "]")).ends_with(" [199 " + too_deep));
  EXPECT_TRUE(Told(Nested(100, "[{\"a\":", "}]"))
                  .ends_with(" "
                             "input:1: a value is expected before }"));
  EXPECT_TRUE(Told("[" + Nested(100, "{\"a\":[", "]}") + "]").ends_with(too_deep));
  // It is open ones that count.
  EXPECT_EQ(Told("[" + Nested(199, "[", "]") + "," + Nested(199, "[", "]") + "]").find("input"),
            std::string::npos);
}

struct EditCase {
  const char* name;
  std::string text;
  std::string edited;
};

std::ostream& operator<<(std::ostream& out, const EditCase& row) { return out << row.name; }

const EditCase kEdits[] = {
    {"PairInAName", R"({"\ud83d\ude00":1})", "{\"\xf0\x9f\x98\x80\":1}"},
    {"PairsInAValue", R"(["a\uD83D\uDE00b","\ud800\udc00"])",
     "[\"a\xf0\x9f\x98\x80"
     "b\",\"\xf0\x90\x80\x80\"]"},
    {"OtherEscapes", R"(["\u00e4\n\\ud83d"])", R"(["\u00e4\n\\ud83d"])"},
};

class Edits : public testing::TestWithParam<EditCase> {};

TEST_P(Edits, AreOfSurrogatesAlone) {
  const SourceText source{"input", GetParam().text};
  Recorder recorder;
  TextEdits edits;
  ReadJson(source, recorder, edits);
  EXPECT_EQ(edits.Apply(source.text), GetParam().edited);
}

INSTANTIATE_TEST_SUITE_P(Texts, Edits, testing::ValuesIn(kEdits),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(HandlersException, PassesThrough) {
  struct Throwing : Recorder {
    void BeginArray(size_t) override { throw std::out_of_range("handler"); }
  };
  const SourceText source{"input", "{\"a\":[1,x"};
  Throwing handler;
  TextEdits edits;
  EXPECT_THROW(ReadJson(source, handler, edits), std::out_of_range);
  EXPECT_EQ(handler.told, "{0 a@1");
}

}  // namespace
}  // namespace ipvald
