// The module as its users see it: exactly its exports, and the names that the data model uses.
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <set>
#include <string>

#include "data_model.h"
#include "validation_points.h"

namespace {

std::string ReadModule() {
  std::ifstream file(IPAV_PLUGIN, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Copies an ELF structure out of the file, which need not be aligned for it.
template <typename T>
T At(const std::string& file, size_t offset) {
  T value{};
  std::memcpy(&value, file.data() + offset, sizeof(value));
  return value;
}

// Names that the dynamic symbol table of an ELF file defines for others.
std::set<std::string> ExportedNames(const std::string& file) {
  std::set<std::string> names;
  const auto header = At<ElfW(Ehdr)>(file, 0);
  const auto section = [&](size_t index) {
    return At<ElfW(Shdr)>(file, header.e_shoff + index * header.e_shentsize);
  };
  for (size_t i = 0; i < header.e_shnum; ++i) {
    const auto table = section(i);
    if (table.sh_type != SHT_DYNSYM) continue;
    const auto strings = section(table.sh_link);
    for (size_t offset = 0; offset < table.sh_size; offset += sizeof(ElfW(Sym))) {
      const auto symbol = At<ElfW(Sym)>(file, table.sh_offset + offset);
      if (symbol.st_shndx == SHN_UNDEF) continue;
      names.insert(file.data() + strings.sh_offset + symbol.st_name);
    }
  }
  return names;
}

TEST(Module, ExportsExactlyFifteenNames) {
  const std::set<std::string> expected = {
      "get_validation_point",
      "lib_finish",
      "lib_init",
      "validate",
      "validate_intf_l3_name",
      "validate_intf_vrf",
      "validate_ipv4_addr",
      "validate_ipv4_addr_cross_prot",
      "validate_ipv4_addr_route",
      "validate_ipv6_addr",
      "validate_ipv6_addr_route",
      "validate_ipv6_nd_ra_interval",
      "validate_ipv6_nd_ra_lifetime",
      "validate_lower_layer_cross_prot",
      "validate_route_l3_intf",
  };
  ASSERT_EQ(expected.size(), 15u);
  EXPECT_EQ(ExportedNames(ReadModule()), expected);
}

TEST(Module, TableAndDataModelHaveTheSameNames) {
  std::set<std::string> in_table;
  for (const auto& row : ip_application::config_valid::validation_point_table)
    in_table.insert(row.name);
  std::set<std::string> in_model;
  for (const confd::ValidationPoint& point : DataModel()->validation_points()) {
    in_model.insert(point.opaque);
  }
  EXPECT_EQ(in_table.size(), 11u);
  EXPECT_EQ(in_model, in_table);
}

}  // namespace
