// Programs and shared libraries as files: what their sections say.
#ifndef TESTS_SUPPORT_ELF_FILE_H_
#define TESTS_SUPPORT_ELF_FILE_H_

#include <elf.h>
#include <link.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tests {

class ElfFile {
 public:
  explicit ElfFile(const std::filesystem::path& path) : file_(path, std::ios::binary) {}

  bool is_elf() { return std::memcmp(At<ElfW(Ehdr)>(0).e_ident, ELFMAG, SELFMAG) == 0; }

  /// Headers of the sections of this type (SHT_DYNSYM and so on).
  std::vector<ElfW(Shdr)> Sections(ElfW(Word) type) {
    std::vector<ElfW(Shdr)> sections;
    const auto header = At<ElfW(Ehdr)>(0);
    for (size_t i = 0; i < header.e_shnum; ++i) {
      const auto section = Section(i);
      if (section.sh_type == type) sections.push_back(section);
    }
    return sections;
  }

  /// The entries of a section that is a table.
  template <typename Entry>
  std::vector<Entry> Entries(const ElfW(Shdr) & table) {
    std::vector<Entry> entries;
    for (size_t offset = 0; offset < table.sh_size; offset += sizeof(Entry)) {
      entries.push_back(At<Entry>(table.sh_offset + offset));
    }
    return entries;
  }

  /// A text that an entry of `table` names by its offset.
  std::string Text(const ElfW(Shdr) & table, size_t offset) {
    file_.seekg(static_cast<std::streamoff>(Section(table.sh_link).sh_offset + offset));
    std::string text;
    std::getline(file_, text, '\0');
    return text;
  }

 private:
  ElfW(Shdr) Section(size_t index) {
    const auto header = At<ElfW(Ehdr)>(0);
    return At<ElfW(Shdr)>(header.e_shoff + index * header.e_shentsize);
  }

  // All zeros where the file is too short.
  template <typename T>
  T At(size_t offset) {
    T value{};
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(offset));
    file_.read(reinterpret_cast<char*>(&value), sizeof(value));
    return value;
  }

  std::ifstream file_;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_ELF_FILE_H_
