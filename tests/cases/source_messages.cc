#include "source_messages.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <stdexcept>

namespace {

// A piece of source: a string literal (its text as the compiler takes it), a word, or any other
// character.
struct Token {
  enum class Kind { kLiteral, kWord, kOther };
  Kind kind;
  std::string text;
  int line;

  bool Is(const char* wanted) const { return kind != Kind::kLiteral && text == wanted; }
};

using Tokens = std::vector<Token>;

bool IsWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Cuts a source into tokens; comments are left out. Knows what occurs in the plug-in: no raw
// strings, and of the escapes those of a single character.
class Lexer {
 public:
  explicit Lexer(const std::string& source) : source_(source) {}

  Tokens Run() {
    while (position_ < source_.size()) Step();
    return std::move(tokens_);
  }

 private:
  void Step() {
    const char c = source_[position_];
    if (source_.compare(position_, 2, "//") == 0) {
      position_ = std::min(source_.find('\n', position_), source_.size());
    } else if (c == '"') {
      AddLiteral();
    } else if (c == '\'') {
      SkipCharacter();
    } else if (IsWordCharacter(c)) {
      AddWord();
    } else {
      if (c == '\n') ++line_;
      if (std::isspace(static_cast<unsigned char>(c)) == 0) Add(Token::Kind::kOther, {c});
      ++position_;
    }
  }

  void AddLiteral() {
    std::string text;
    for (++position_; source_.at(position_) != '"'; ++position_) {
      if (source_[position_] == '\\')
        text.push_back(Unescaped(source_.at(++position_)));
      else
        text.push_back(source_[position_]);
    }
    ++position_;
    // The compiler joins neighbours.
    const bool joins = !tokens_.empty() && tokens_.back().kind == Token::Kind::kLiteral;
    if (joins)
      tokens_.back().text += text;
    else
      Add(Token::Kind::kLiteral, text);
  }

  static char Unescaped(char c) { return c == 'n' ? '\n' : c == 't' ? '\t' : c; }

  void SkipCharacter() {
    for (++position_; source_.at(position_) != '\''; ++position_) {
      if (source_[position_] == '\\') ++position_;
    }
    ++position_;
  }

  // Numbers as well, with their digit separators.
  void AddWord() {
    const bool is_number = std::isdigit(static_cast<unsigned char>(source_[position_])) != 0;
    const size_t begin = position_;
    while (position_ < source_.size() &&
           (IsWordCharacter(source_[position_]) || (is_number && source_[position_] == '\''))) {
      ++position_;
    }
    Add(Token::Kind::kWord, source_.substr(begin, position_ - begin));
  }

  void Add(Token::Kind kind, const std::string& text) { tokens_.push_back({kind, text, line_}); }

  const std::string& source_;
  size_t position_ = 0;
  int line_ = 1;
  Tokens tokens_;
};

// What is behind position `begin`, up to a token `end` outside of brackets.
Tokens Expression(const Tokens& tokens, size_t begin, const char* end) {
  int depth = 0;
  Tokens expression;
  for (size_t i = begin; i < tokens.size(); ++i) {
    if (depth == 0 && tokens[i].Is(end)) return expression;
    if (tokens[i].Is("(") || tokens[i].Is("{") || tokens[i].Is("[")) ++depth;
    if (tokens[i].Is(")") || tokens[i].Is("}") || tokens[i].Is("]")) --depth;
    expression.push_back(tokens[i]);
  }
  throw std::runtime_error("an expression does not end");
}

class Collector {
 public:
  Collector(const std::string& file, const std::string& source)
      : file_(file), tokens_(Lexer(source).Run()) {
    for (size_t i = 0; i + 4 < tokens_.size(); ++i) {  // kName[] = "text"
      if (tokens_[i].text.starts_with('k') && At(i + 1, "[") && At(i + 2, "]") && At(i + 3, "=") &&
          tokens_[i + 4].kind == Token::Kind::kLiteral) {
        constants_[tokens_[i].text] = tokens_[i + 4].text;
      }
    }
  }

  std::vector<SourceMessage> Run() {
    for (size_t i = 0; i < tokens_.size(); ++i) {
      if (At(i, "error_")) TakeUseOfError(i);
      if (tokens_[i].Is("confd_trans_seterr")) TakeCall(i);
      const bool other_call = tokens_[i].kind == Token::Kind::kWord &&
                              tokens_[i].text.starts_with("confd_trans_seterr") &&
                              tokens_[i].text != "confd_trans_seterr";
      if (other_call) Fail(i, "another way to set the error text");
    }
    return messages_;
  }

 private:
  bool At(size_t i, const char* text) const { return i < tokens_.size() && tokens_[i].Is(text); }

  void TakeUseOfError(size_t i) {
    if (At(i + 1, "=") && !At(i + 2, "=")) {
      TakeExpression(i, Expression(tokens_, i + 2, ";"));
      return;
    }
    const bool is_declared = At(i + 1, ";") && i > 0 && At(i - 1, "string");
    const bool is_read = At(i + 1, ".") && (At(i + 2, "c_str") || At(i + 2, "empty"));
    if (!is_declared && !is_read) Fail(i, "a use of error_ that is not understood");
  }

  void TakeExpression(size_t i, const Tokens& expression) {
    SourceMessage message{
        .place = Place(i), .pieces = {}, .begins_open = false, .ends_open = false};
    bool open = false;
    for (const Token& token : expression) {
      const auto constant = constants_.find(token.text);
      const bool is_constant = token.kind == Token::Kind::kWord && constant != constants_.end();
      if (token.kind == Token::Kind::kLiteral || is_constant) {
        if (message.pieces.empty()) message.begins_open = open;
        if (!message.pieces.empty() && !open) Fail(i, "two literals and nothing between them");
        message.pieces.push_back(is_constant ? constant->second : token.text);
        open = false;
      } else if (!token.Is("+")) {
        open = true;
      }
    }
    message.ends_open = open;
    if (message.pieces.empty()) Fail(i, "a message without a literal");
    messages_.push_back(message);
  }

  // confd_trans_seterr(tctx, format, ...). A text that comes from a checker is taken where that
  // sets it.
  void TakeCall(size_t i) {
    const Tokens arguments = Expression(tokens_, i + 2, ")");
    std::vector<std::string> literals;
    for (const Token& token : arguments) {
      if (token.kind == Token::Kind::kLiteral) literals.push_back(token.text);
    }
    const bool passes_on = std::any_of(arguments.begin(), arguments.end(),
                                       [](const Token& token) { return token.Is("error_"); });
    if (literals.size() == 1 && literals[0] == "%s" && passes_on) return;
    if (literals.size() == 2 && literals[0] == "%s") {
      literals.erase(literals.begin());
    }
    if (literals.size() != 1 || literals[0] == "%s") Fail(i, "a call that is not understood");
    TakeFormat(i, literals[0]);
  }

  void TakeFormat(size_t i, const std::string& format) {
    SourceMessage message{.place = Place(i),
                          .pieces = {},
                          .begins_open = format.starts_with('%'),
                          .ends_open = format.size() >= 2 && format[format.size() - 2] == '%'};
    for (size_t begin = 0; begin <= format.size();) {
      const size_t conversion = std::min(format.find('%', begin), format.size());
      if (conversion > begin) message.pieces.push_back(format.substr(begin, conversion - begin));
      begin = conversion + 2;  // only those of one letter occur
    }
    messages_.push_back(message);
  }

  std::string Place(size_t i) const { return file_ + ":" + std::to_string(tokens_[i].line); }

  [[noreturn]] void Fail(size_t i, const std::string& what) const {
    throw std::runtime_error(Place(i) + ": " + what);
  }

  const std::string file_;
  const Tokens tokens_;
  std::map<std::string, std::string> constants_;
  std::vector<SourceMessage> messages_;
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const SourceMessage& message) {
  out << message.place << ": ";
  if (message.begins_open) out << "...";
  for (size_t i = 0; i < message.pieces.size(); ++i) {
    out << (i == 0 ? "" : "...") << message.pieces[i];
  }
  return out << (message.ends_open ? "..." : "");
}

std::vector<SourceMessage> CollectMessages(const std::string& file, const std::string& source) {
  return Collector(file, source).Run();
}

// The first piece is taken at the front and the last one at the end where nothing is filled in
// there; every other where it comes first.
bool IsMadeBy(const SourceMessage& message, const std::string& text) {
  const std::vector<std::string>& pieces = message.pieces;
  size_t position = 0;
  for (size_t i = 0; i < pieces.size(); ++i) {
    const bool is_last = i + 1 == pieces.size() && !message.ends_open;
    size_t found = text.find(pieces[i], position);
    if (is_last && text.size() >= pieces[i].size()) found = text.size() - pieces[i].size();
    if (found == std::string::npos || found < position) return false;
    if (text.compare(found, pieces[i].size(), pieces[i]) != 0) return false;
    if (i == 0 && !message.begins_open && found != 0) return false;
    position = found + pieces[i].size();
  }
  return true;
}
