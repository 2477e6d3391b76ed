#include "json_reader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

namespace ipvald {
namespace {

constexpr std::string_view kDigits = "0123456789";

// RFC 7950, section 14, as far as one escape can tell.
bool IsYangCharacter(uint32_t unit) {
  if (unit < 0x20) return unit == '\t' || unit == '\n' || unit == '\r';
  return unit < 0xfffe;
}

bool IsHighSurrogate(uint32_t unit) { return unit >= 0xd800 && unit <= 0xdbff; }
bool IsLowSurrogate(uint32_t unit) { return unit >= 0xdc00 && unit <= 0xdfff; }

std::string Utf8(uint32_t character) {
  const auto tail = [character](int shift) {
    return static_cast<char>(0x80 | (character >> shift & 0x3f));
  };
  if (character < 0x80) return {static_cast<char>(character)};
  if (character < 0x800) return {static_cast<char>(0xc0 | character >> 6), tail(0)};
  if (character < 0x10000) {
    return {static_cast<char>(0xe0 | character >> 12), tail(6), tail(0)};
  }
  return {static_cast<char>(0xf0 | character >> 18), tail(12), tail(6), tail(0)};
}

class JsonReader {
 public:
  JsonReader(const SourceText& source, JsonHandler& handler, TextEdits& edits)
      : source_(source), text_(source.text), handler_(handler), edits_(edits) {}

  void Read() {
    SkipBlanks();
    Value();
    while (!open_.empty()) {
      SkipBlanks();
      if (open_.back().is_object) {
        NextMember();
      } else {
        NextElement();
      }
    }
    SkipBlanks();
    if (at_ < text_.size()) throw Error("text after the end of the configuration");
  }

 private:
  struct Open {
    bool is_object;
    size_t begin;
    bool is_filled = false;
  };

  InputError Error(std::string_view message) const { return source_.ErrorAt(at_, message); }

  InputError Unexpected(const std::string& expected) const {
    if (at_ >= text_.size()) return EndsInside();
    const std::string_view rest = std::string_view(text_).substr(at_);
    if (rest.starts_with("//") || rest.starts_with("/*") || rest.starts_with("#")) {
      return Error("JSON has no comments");
    }
    if (rest.front() == '\'') return Error("a string stands in double quotes, not in single ones");
    const std::string_view shown = rest.substr(0, rest.find_first_of(" \t\r\n,:{}[]\"", 1));
    return Error(expected + " is expected before " + std::string(shown.substr(0, kShownLength)));
  }

  InputError EndsInside() const {
    if (open_.empty()) return Error("the text ends before a value");
    const Open& open = open_.back();
    return Error(std::string("the text ends inside ") +
                 (open.is_object ? "an object" : "an array") + ", which begins on line " +
                 std::to_string(source_.LineAt(open.begin)));
  }

  // The next byte, 0 at the end: the text holds none.
  char Peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  bool Take(char wanted) {
    if (Peek() != wanted) return false;
    ++at_;
    return true;
  }

  void SkipBlanks() {
    while (at_ < text_.size() && kBlanks.find(text_[at_]) != kBlanks.npos) ++at_;
  }

  void NextMember() {
    const size_t before = at_;
    if (Take('}')) return Close(before);
    if (open_.back().is_filled) TakeComma('}');
    open_.back().is_filled = true;
    if (Peek() != '"') throw Unexpected("the name of a member, in double quotes,");
    const size_t offset = at_;
    const std::string_view name = String();
    SkipBlanks();
    // Before the name is judged: without a colon a quote may be missing, and the name be none.
    if (!Take(':')) throw Unexpected("a colon");
    handler_.Member(name, offset);
    SkipBlanks();
    Value();
  }

  void NextElement() {
    const size_t before = at_;
    if (Take(']')) return Close(before);
    if (open_.back().is_filled) TakeComma(']');
    open_.back().is_filled = true;
    Value();
  }

  void TakeComma(char closing) {
    const std::string bracket(1, closing);
    if (!Take(',')) throw Unexpected("a comma or " + bracket);
    SkipBlanks();
    if (Peek() == closing) throw Error("comma before " + bracket);
  }

  void Close(size_t offset) {
    const bool is_object = open_.back().is_object;
    open_.pop_back();
    if (is_object) {
      handler_.EndObject(offset);
    } else {
      handler_.EndArray(offset);
    }
  }

  void Value() {
    const size_t offset = at_;
    const char c = Peek();
    if (c == '{' || c == '[') {
      if (open_.size() == kMaxJsonDepth) throw Error("objects and arrays are too deep");
      ++at_;
      open_.push_back({c == '{', offset});
      if (c == '{') {
        handler_.BeginObject(offset);
      } else {
        handler_.BeginArray(offset);
      }
    } else if (c == '"') {
      handler_.Scalar(JsonKind::kString, String(), offset);
    } else if (c == '-' || (c >= '0' && c <= '9')) {
      const std::string_view number = Number();
      RequireEndOfWord();
      handler_.Scalar(JsonKind::kNumber, number, offset);
    } else {
      Word(offset);
    }
  }

  void Word(size_t offset) {
    struct Literal {
      std::string_view text;
      JsonKind kind;
    };
    static constexpr std::array<Literal, 3> kLiterals = {
        {{"true", JsonKind::kTrue}, {"false", JsonKind::kFalse}, {"null", JsonKind::kNull}}};
    for (const Literal& literal : kLiterals) {
      if (text_.compare(at_, literal.text.size(), literal.text) != 0) continue;
      at_ += literal.text.size();
      RequireEndOfWord();
      handler_.Scalar(literal.kind, literal.text, offset);
      return;
    }
    const bool looks_like_text = std::isalpha(static_cast<unsigned char>(Peek())) != 0;
    throw Unexpected(looks_like_text ? "a value (text stands in double quotes)" : "a value");
  }

  // A number or literal ends here, and does not go on as something that it is not.
  void RequireEndOfWord() const {
    if (at_ < text_.size() &&
        std::string_view(",]} \t\r\n").find(text_[at_]) == std::string::npos) {
      throw Unexpected(open_.back().is_object ? "a comma or }" : "a comma or ]");
    }
  }

  std::string_view Number() {
    const size_t begin = at_;
    Take('-');
    const bool starts_with_zero = Peek() == '0';
    if (!Digits()) throw Unexpected("a digit");
    const size_t digits = at_ - begin - (text_[begin] == '-' ? 1 : 0);
    if (starts_with_zero && digits > 1) {
      at_ = begin;
      throw Error("a number does not begin with a zero");
    }
    if (Take('.') && !Digits()) throw Unexpected("a digit");
    if (Take('e') || Take('E')) {
      if (!Take('+')) Take('-');
      if (!Digits()) throw Unexpected("a digit");
    }
    return std::string_view(text_).substr(begin, at_ - begin);
  }

  bool Digits() {
    const size_t begin = at_;
    at_ = std::min(text_.find_first_not_of(kDigits, at_), text_.size());
    return at_ > begin;
  }

  // The text of the string that begins here. Lives until the next one is read.
  std::string_view String() {
    const size_t begin = ++at_;
    SkipPlain(begin);
    if (Take('"')) return std::string_view(text_).substr(begin, at_ - 1 - begin);
    decoded_.assign(text_, begin, at_ - begin);
    for (;;) {
      if (Take('"')) return decoded_;
      decoded_ += Escape(begin);
      const size_t plain = at_;
      SkipPlain(begin);
      decoded_.append(text_, plain, at_ - plain);
    }
  }

  static const char* ControlCharacter(char c) {
    if (c == '\n' || c == '\r') return "the closing quote of a string is missing on this line";
    if (c == '\t') return "a tab in a string is written \\t";
    return "a control character is no character of a configuration";
  }

  // Goes to the next quote or backslash.
  void SkipPlain(size_t string_begin) {
    while (at_ < text_.size() && text_[at_] != '"' && text_[at_] != '\\') {
      if (static_cast<unsigned char>(text_[at_]) < 0x20) {
        throw Error(ControlCharacter(text_[at_]));
      }
      ++at_;
    }
    if (at_ < text_.size()) return;
    throw Error("the text ends inside a string, which begins on line " +
                std::to_string(source_.LineAt(string_begin - 1)));
  }

  std::string Escape(size_t string_begin) {
    const size_t begin = at_++;
    const char c = Peek();
    constexpr std::string_view kLetters = "\"\\/nrt";
    constexpr std::string_view kMeanings = "\"\\/\n\r\t";
    if (const size_t i = kLetters.find(c); c != '\0' && i != kLetters.npos) {
      ++at_;
      return {kMeanings[i]};
    }
    if (c == '\0') SkipPlain(string_begin);
    if (c == 'b' || c == 'f') {
      throw BadEscape(begin, at_ + 1, "is no character of a configuration");
    }
    if (!Take('u')) throw BadEscape(begin, at_ + 1, "is no escape of JSON");
    const uint32_t unit = HexUnit(begin);
    if (!IsYangCharacter(unit)) throw BadEscape(begin, at_, "is no character of a configuration");
    if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) return Utf8(unit);
    if (IsLowSurrogate(unit) || text_.compare(at_, 2, "\\u") != 0) {
      throw BadEscape(begin, at_, "is half of a pair of surrogates");
    }
    at_ += 2;
    const uint32_t low = HexUnit(begin);
    if (!IsLowSurrogate(low)) throw BadEscape(begin, at_, "is half of a pair of surrogates");
    std::string character = Utf8(0x10000 + ((unit - 0xd800) << 10) + (low - 0xdc00));
    edits_.Replace(begin, at_, character);
    return character;
  }

  uint32_t HexUnit(size_t escape_begin) {
    uint32_t unit = 0;
    for (int i = 0; i < 4; ++i) {
      const char c = Peek();
      const uint32_t letter = static_cast<uint32_t>(c | 0x20) - 'a';
      if (c >= '0' && c <= '9') {
        unit = unit << 4 | static_cast<uint32_t>(c - '0');
      } else if (letter < 6) {
        unit = unit << 4 | (letter + 10);
      } else {
        throw BadEscape(escape_begin, at_ + 1, "is not \\u and four hex digits");
      }
      ++at_;
    }
    return unit;
  }

  InputError BadEscape(size_t begin, size_t end, const std::string& message) const {
    return source_.ErrorAt(begin, text_.substr(begin, end - begin) + " " + message);
  }

  const SourceText& source_;
  const std::string& text_;
  JsonHandler& handler_;
  TextEdits& edits_;
  size_t at_ = 0;
  std::vector<Open> open_;
  std::string decoded_;
};

}  // namespace

void ReadJson(const SourceText& source, JsonHandler& handler, TextEdits& edits) {
  JsonReader(source, handler, edits).Read();
}

}  // namespace ipvald
