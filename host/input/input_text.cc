#include "input_text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "descriptor_io.h"
#include "one_line.h"

namespace ipvald {
namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
constexpr size_t kChunk = 65536;        // bytes asked for by one read
constexpr size_t kShownBeginning = 40;  // bytes of an unknown text that a message shows
constexpr size_t kEarlyLook = 4096;     // bytes after which a big file of another kind is given up

// A descriptor that is closed again unless it is standard input.
class InputDescriptor {
 public:
  explicit InputDescriptor(const std::string& file)
      : fd_(file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~InputDescriptor() {
    if (fd_ > STDIN_FILENO) close(fd_);
  }
  InputDescriptor(const InputDescriptor&) = delete;
  InputDescriptor& operator=(const InputDescriptor&) = delete;

  int get() const { return fd_; }

 private:
  int fd_;
};

size_t FirstNonBlank(std::string_view text) {
  const size_t start = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  return text.find_first_not_of(kBlanks, start);
}

// Length of the UTF-8 character of several bytes at the beginning of `text`, 0 when there is none.
// Overlong forms, surrogates and numbers above U+10FFFF are none.
size_t Utf8Length(std::string_view text) {
  const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto is_continuation = [&](size_t i) {
    return i < text.size() && (byte(i) & 0xc0) == 0x80;
  };
  const unsigned char lead = byte(0);
  if (lead < 0xc2 || lead > 0xf4 || !is_continuation(1)) return 0;
  if (lead < 0xe0) return 2;
  const unsigned char second = byte(1);
  if (lead < 0xf0) {
    if ((lead == 0xe0 && second < 0xa0) || (lead == 0xed && second > 0x9f)) return 0;
    return is_continuation(2) ? 3 : 0;
  }
  if ((lead == 0xf0 && second < 0x90) || (lead == 0xf4 && second > 0x8f)) return 0;
  return is_continuation(2) && is_continuation(3) ? 4 : 0;
}

// What the first bytes of a file tell of it, as far as that is no text in UTF-8; null when nothing.
const char* KindOf(std::string_view text) {
  using std::string_view_literals::operator""sv;
  struct Kind {
    std::string_view begin;
    const char* words;
  };
  static constexpr Kind kKinds[] = {
      {"\x1f\x8b"sv, "it is compressed by gzip"},
      {"BZh"sv, "it is compressed by bzip2"},
      {"\xfd\x37zXZ\0"sv, "it is compressed by xz"},
      {"\x28\xb5\x2f\xfd"sv, "it is compressed by zstd"},
      {"PK\x03\x04"sv, "it is a ZIP archive"},
      {"\xff\xfe\0\0"sv, "it is in UTF-32, not in UTF-8"},
      {"\0\0\xfe\xff"sv, "it is in UTF-32, not in UTF-8"},
      {"<\0\0\0"sv, "it is in UTF-32, not in UTF-8"},
      {"{\0\0\0"sv, "it is in UTF-32, not in UTF-8"},
      {"\0\0\0<"sv, "it is in UTF-32, not in UTF-8"},
      {"\0\0\0{"sv, "it is in UTF-32, not in UTF-8"},
      {"\xff\xfe"sv, "it is in UTF-16, not in UTF-8"},
      {"\xfe\xff"sv, "it is in UTF-16, not in UTF-8"},
      {"<\0"sv, "it is in UTF-16, not in UTF-8"},
      {"{\0"sv, "it is in UTF-16, not in UTF-8"},
      {"\0<"sv, "it is in UTF-16, not in UTF-8"},
      {"\0{"sv, "it is in UTF-16, not in UTF-8"},
  };
  for (const Kind& kind : kKinds) {
    if (text.starts_with(kind.begin)) return kind.words;
  }
  return nullptr;
}

bool IsBinary(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && c != '\t') || byte == 0x7f || byte >= 0xf8;
  });
}

// Whether a text begins with a bracket and then a value or nothing, and not with a section such as
// [interface].
bool IsJsonArray(std::string_view text) {
  if (!text.starts_with('[')) return false;
  const size_t next = text.find_first_not_of(kBlanks, 1);
  return next == text.npos || std::string_view("{[]\"-0123456789").find(text[next]) != text.npos;
}

bool IsChunkHeader(std::string_view line) {
  return line.size() > 1 && line.front() == '#' &&
         line.find_first_not_of("0123456789", 1) == line.npos;
}

// Whether the first line of a text is a document start, an entry or a key of YAML.
bool LooksLikeYaml(std::string_view line) {
  if (line == "---" || line.starts_with("%YAML") || line.starts_with("- ")) return true;
  const size_t colon = line.find(": ");
  const std::string_view key = line.substr(0, colon == line.npos ? line.size() - 1 : colon);
  const bool has_colon = colon != line.npos || line.ends_with(':');
  return has_colon && !key.empty() && key.find_first_of(" \t\"'(){}<>") == key.npos &&
         key.find_first_not_of("0123456789") != key.npos;
}

}  // namespace

size_t SourceText::LineAt(size_t offset) const {
  const auto end = text.begin() + static_cast<ptrdiff_t>(std::min(offset, text.size()));
  return 1 + static_cast<size_t>(std::count(text.begin(), end, '\n'));
}

InputError SourceText::ErrorAt(size_t offset, std::string_view message) const {
  return LocatedError(name, LineAt(offset), message);
}

std::string ReadInputText(const std::string& file, size_t max_size) {
  const std::string name = DisplayName(file);
  const InputDescriptor input(file);
  if (input.get() < 0) throw LocatedError(name, 0, std::strerror(errno));

  std::string text;
  struct stat about {};
  if (fstat(input.get(), &about) == 0 && S_ISREG(about.st_mode)) {
    text.reserve(std::min(static_cast<size_t>(about.st_size), max_size));
  }
  std::vector<char> chunk(kChunk);  // not on the stack, which may be small
  bool looked_early = false;
  for (;;) {
    const ssize_t got = ReadBlocking(input.get(), chunk.data(), chunk.size());
    if (got < 0) throw LocatedError(name, 0, std::strerror(errno));
    if (got == 0) return text;
    if (text.size() + static_cast<size_t>(got) > max_size) {
      throw LocatedError(name, 0, "larger than " + std::to_string(max_size >> 20) + " MiB");
    }
    text.append(chunk.data(), static_cast<size_t>(got));
    if (!looked_early && text.size() >= kEarlyLook) {
      if (FirstNonBlank(text) != std::string_view::npos) SniffFormat(name, text);
      looked_early = true;
    }
  }
}

InputFormat SniffFormat(const std::string& name, std::string_view text) {
  const size_t first = FirstNonBlank(text);
  if (first == std::string_view::npos) throw LocatedError(name, 0, "the file is empty");
  const size_t number = 1 + static_cast<size_t>(std::count(
                                text.begin(), text.begin() + static_cast<ptrdiff_t>(first), '\n'));
  if (const char* kind = KindOf(text)) {
    throw LocatedError(name, number, std::string("neither XML nor JSON: ") + kind);
  }
  if (text[first] == '<') return InputFormat::kXml;
  if (text[first] == '{') return InputFormat::kJson;
  if (IsJsonArray(text.substr(first))) {
    throw LocatedError(name, number, "a JSON array, but a configuration is an object, {...}");
  }
  const std::string_view line = text.substr(first, text.find_first_of("\r\n", first) - first);
  if (LooksLikeYaml(line))
    throw LocatedError(name, number, "neither XML nor JSON: it looks like YAML");
  if (IsChunkHeader(line)) {
    throw LocatedError(
        name, number,
        "a NETCONF message in chunks (RFC 6242); leave out the lines that begin with #");
  }
  if (IsBinary(line.substr(0, kShownBeginning)))
    throw LocatedError(name, number, "neither XML nor JSON: binary data");
  throw LocatedError(name, number,
                     "neither XML nor JSON: it begins with \"" + Cut(line, kShownBeginning) + "\"");
}

void RemoveByteOrderMark(std::string& text) {
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
}

void CheckUtf8(const std::string& name, std::string_view text) {
  size_t line = 1;
  for (size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (c == '\0') throw LocatedError(name, line, "NUL byte in the text");
    line += c == '\n';
    if (static_cast<unsigned char>(c) < 0x80) {
      ++i;
      continue;
    }
    const size_t length = Utf8Length(text.substr(i));
    if (length == 0) {
      throw LocatedError(name, line, "not UTF-8; convert the file, such as by iconv -t UTF-8");
    }
    if (const auto character = text.substr(i, length);
        character == "\xef\xbf\xbe" || character == "\xef\xbf\xbf") {
      throw LocatedError(name, line, "U+FFFE and U+FFFF are no characters of a configuration");
    }
    i += length;
  }
}

}  // namespace ipvald
