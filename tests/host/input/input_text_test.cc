// The bytes of a file, and what they are told to be before anything parses them.
#include "input_text.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>
#include <string>

namespace ipvald {
namespace {

using std::string_literals::operator""s;

std::string ErrorOf(const std::function<void()>& act) {
  try {
    act();
  } catch (const InputError& error) {
    return error.what();
  }
  return "none";
}

// Lines and offsets.

TEST(Line, IsCountedUpToTheByte) {
  const SourceText source{"file", "a\n\nb"};
  const size_t kLines[] = {1, 1, 2, 3, 3};  // the last one is the end of the text
  for (size_t offset = 0; offset < 5; ++offset) {
    EXPECT_EQ(source.LineAt(offset), kLines[offset]) << offset;
  }
  EXPECT_EQ(source.LineAt(1000), 3u) << "behind the end";
  EXPECT_EQ((SourceText{"file", ""}.LineAt(0)), 1u);
}

TEST(Error, TellsTheLineOfTheByte) {
  const SourceText source{"file", "a\nb"};
  EXPECT_STREQ(source.ErrorAt(2, "two\nlines").what(), "file:2: two lines");
}

// Formats.

struct FormatCase {
  const char* name;
  std::string text;
  std::string format;  // or the error
};

std::ostream& operator<<(std::ostream& out, const FormatCase& row) { return out << row.name; }

std::string Neither(const std::string& what, int line = 1) {
  return "file:" + std::to_string(line) + ": neither XML nor JSON: " + what;
}

const FormatCase kFormats[] = {
    {"Xml", "<", "xml"},
    {"Json", "{", "json"},
    {"BlanksBeforeXml", " \t\r\n<", "xml"},
    {"MarkAndBlanksBeforeJson", "\xef\xbb\xbf \n{", "json"},
    {"BlankBeforeTheMark", " \xef\xbb\xbf{", Neither("it begins with \"\xef\xbb\xbf{\"")},
    {"OtherBlank", "\f<", Neither("binary data")},
    {"OnlyMarkAndBlanks", "\xef\xbb\xbf\n", "file: the file is empty"},
    {"Bzip2", "BZh9", Neither("it is compressed by bzip2")},
    {"Xz", "\xfd\x37zXZ\0"s, Neither("it is compressed by xz")},
    {"BeginningOfXz", "\xfd\x37zXZ", Neither("binary data")},
    {"Utf32BigEndianMark", "\0\0\xfe\xff"s, Neither("it is in UTF-32, not in UTF-8")},
    {"Utf32OfXml", "<\0\0\0"s, Neither("it is in UTF-32, not in UTF-8")},
    {"Utf32OfJson", "\0\0\0{"s, Neither("it is in UTF-32, not in UTF-8")},
    {"Utf16OfJson", "{\0\"\0"s, Neither("it is in UTF-16, not in UTF-8")},
    {"Utf16BigEndianOfXml", "\0<\0c"s, Neither("it is in UTF-16, not in UTF-8")},
    {"ArrayOfObjects", "\n[ {", "file:2: a JSON array, but a configuration is an object, {...}"},
    {"ArrayOfNumbers", "[-1", "file:1: a JSON array, but a configuration is an object, {...}"},
    {"BracketAlone", "[", "file:1: a JSON array, but a configuration is an object, {...}"},
    {"SectionOfAWord", "[a]", Neither("it begins with \"[a]\"")},
    {"YamlDirective", "%YAML 1.2", Neither("it looks like YAML")},
    {"YamlQuotedKey", "\"a\": 1", Neither("it begins with \"\"a\": 1\"")},
    {"YamlKeyBehindBlankLines", "\n \n a:\n", Neither("it looks like YAML", 3)},
    {"ColonAlone", ":", Neither("it begins with \":\"")},
    {"NumberAndColon", "12:", Neither("it begins with \"12:\"")},
    {"ChunkOfOneDigit", "\n#1\n",
     "file:2: a NETCONF message in chunks (RFC 6242); leave out the lines that begin with #"},
    {"HashAlone", "#", Neither("it begins with \"#\"")},
    {"Comment", "#1a", Neither("it begins with \"#1a\"")},
    {"LastControl", "a\x1f", Neither("binary data")},
    {"Delete", "a\x7f", Neither("binary data")},
    {"FirstByteOfNoText", "a\xf8", Neither("binary data")},
    {"TabInTheLine", "a\tb", Neither("it begins with \"a b\"")},
    {"ControlBehindTheShownPart", std::string(40, 'a') + "\x01",
     Neither("it begins with \"" + std::string(40, 'a') + "...\"")},
    {"ShownWhole", std::string(40, 'a') + "\rb",
     Neither("it begins with \"" + std::string(40, 'a') + "\"")},
};

class Format : public testing::TestWithParam<FormatCase> {};

TEST_P(Format, IsToldByTheBeginning) {
  std::string format;
  const std::string error = ErrorOf(
      [&] { format = SniffFormat("file", GetParam().text) == InputFormat::kXml ? "xml" : "json"; });
  EXPECT_EQ(error == "none" ? format : error, GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(Beginnings, Format, testing::ValuesIn(kFormats),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ByteOrderMark, IsRemovedOnceFromTheBeginning) {
  const std::string mark = "\xef\xbb\xbf";
  const std::string kTexts[][2] = {{"", ""},
                                   {mark, ""},
                                   {mark + "a", "a"},
                                   {mark + mark, mark},
                                   {"a" + mark, "a" + mark},
                                   {"\xef\xbb", "\xef\xbb"}};
  for (const auto& [text, expected] : kTexts) {
    std::string changed = text;
    RemoveByteOrderMark(changed);
    EXPECT_EQ(changed, expected);
  }
}

// Characters.

struct Utf8Case {
  const char* name;
  std::string text;
  std::string error;
};

std::ostream& operator<<(std::ostream& out, const Utf8Case& row) { return out << row.name; }

const char kNotUtf8[] = "file:1: not UTF-8; convert the file, such as by iconv -t UTF-8";
const char kNoCharacter[] = "file:1: U+FFFE and U+FFFF are no characters of a configuration";

const Utf8Case kUtf8[] = {
    {"Empty", "", "none"},
    {"AllButNulOfAscii", "\x01\x1f\x7f", "none"},
    {"Nul", "a\0"s, "file:1: NUL byte in the text"},
    {"FirstAndLastOfTwoBytes", "\xc2\x80\xdf\xbf", "none"},
    {"FirstAndLastOfThreeBytes", "\xe0\xa0\x80\xef\xbf\xbd", "none"},
    {"BesideTheSurrogates", "\xed\x9f\xbf\xee\x80\x80", "none"},
    {"FirstAndLastOfFourBytes", "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", "none"},
    {"OtherNoncharacter", "\xf0\x9f\xbf\xbe", "none"},
    {"FirstNoCharacter", "\xef\xbf\xbe", kNoCharacter},
    {"SecondNoCharacter", "\xef\xbf\xbf", kNoCharacter},
    {"ContinuationAlone", "\x80", kNotUtf8},
    {"LastOverlongOfTwoBytes", "\xc1\xbf", kNotUtf8},
    {"LastOverlongOfThreeBytes", "\xe0\x9f\xbf", kNotUtf8},
    {"LastOverlongOfFourBytes", "\xf0\x8f\xbf\xbf", kNotUtf8},
    {"FirstSurrogate", "\xed\xa0\x80", kNotUtf8},
    {"LastSurrogate", "\xed\xbf\xbf", kNotUtf8},
    {"BehindTheLastCharacter", "\xf4\x90\x80\x80", kNotUtf8},
    {"LeadOfLargerNumbers", "\xf5\x80\x80\x80", kNotUtf8},
    {"CutBehindOneOfTwo", "\xc3", kNotUtf8},
    {"CutBehindTwoOfThree", "\xe2\x82", kNotUtf8},
    {"CutBehindThreeOfFour", "\xf0\x9f\x98", kNotUtf8},
    {"LeadInPlaceOfAContinuation", "\xe2\x82\xc3\xa4", kNotUtf8},
    {"LineOfTheFault", "\xc3\xa4\n\r\n\xff",
     "file:3: not UTF-8; convert the file, such as by iconv -t UTF-8"},
};

class Utf8 : public testing::TestWithParam<Utf8Case> {};

TEST_P(Utf8, IsChecked) {
  EXPECT_EQ(ErrorOf([] { CheckUtf8("file", GetParam().text); }), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Texts, Utf8, testing::ValuesIn(kUtf8),
                         [](const auto& row) { return std::string(row.param.name); });

// Files.

class File : public testing::Test {
 protected:
  File() {
    std::string pattern = testing::TempDir() + "input-text-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    name_ = folder_ / "file";
  }
  ~File() override { std::filesystem::remove_all(folder_); }

  // The text that is read of a file with `text`, or the error without the file's name.
  std::string Read(const std::string& text, size_t max_size = 100'000) {
    std::ofstream(name_) << text;
    std::string read;
    const std::string error = ErrorOf([&] { read = ReadInputText(name_, max_size); });
    return error == "none" ? read : error.substr(name_.size());
  }

  std::filesystem::path folder_;
  std::string name_;
};

TEST_F(File, IsReadToTheLastByte) {
  for (const std::string& text :
       {""s, "\0\xff\n"s, "<" + std::string(65535, 'x'), "<" + std::string(65536, 'x')}) {
    EXPECT_EQ(Read(text), text) << text.size();
  }
}

TEST_F(File, EndsAtTheLimit) {
  EXPECT_EQ(Read("abc", 3), "abc");
  EXPECT_EQ(Read("abcd", 3), ": larger than 0 MiB");
  constexpr size_t kMebibyte = size_t{1} << 20;
  EXPECT_EQ(Read("<" + std::string(2 * kMebibyte - 1, ' '), 2 * kMebibyte).size(), 2 * kMebibyte);
  EXPECT_EQ(Read("<" + std::string(2 * kMebibyte, ' '), 2 * kMebibyte), ": larger than 2 MiB");
}

// The fault of what is given up is told before its size.
TEST_F(File, OfAnotherKindIsGivenUpEarly) {
  EXPECT_EQ(Read(std::string(200'000, 'x')),
            ":1: neither XML nor JSON: it begins with \"" + std::string(40, 'x') + "...\"");
  EXPECT_EQ(Read("{" + std::string(200'000, ' ')), ": larger than 0 MiB");
  EXPECT_EQ(Read(std::string(200'000, ' ')), ": larger than 0 MiB") << "blanks tell nothing";
  EXPECT_EQ(Read("x"), "x") << "a small one is judged by whoever reads it";
}

TEST_F(File, CanBeStandardInput) {
  std::ofstream(name_) << "{}";
  const int previous = dup(STDIN_FILENO);
  ASSERT_NE(std::freopen(name_.c_str(), "r", stdin), nullptr);
  EXPECT_EQ(ReadInputText("-", 2), "{}");
  EXPECT_EQ(ReadInputText("-", 2), "") << "at its end, and not closed";
  close(STDIN_FILENO);
  EXPECT_EQ(ErrorOf([] { ReadInputText("-", 2); }), "standard input: Bad file descriptor");
  dup2(previous, STDIN_FILENO);
  close(previous);
}

TEST(FileWithoutName, IsMissing) {
  EXPECT_EQ(ErrorOf([] { ReadInputText("", 1); }), "\"\": No such file or directory");
}

}  // namespace
}  // namespace ipvald
