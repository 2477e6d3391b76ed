// The module as its users see it: exactly its exports, and the names that the data model uses.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/data_model.h"
#include "support/elf_file.h"
#include "validation_points.h"

namespace {

// Names that the dynamic symbol table defines for others.
std::set<std::string> ExportedNames(tests::ElfFile& file) {
  std::set<std::string> names;
  for (const auto& table : file.Sections(SHT_DYNSYM)) {
    for (const auto& symbol : file.Entries<ElfW(Sym)>(table)) {
      if (symbol.st_shndx != SHN_UNDEF) names.insert(file.Text(table, symbol.st_name));
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
  tests::ElfFile plugin(IPAV_PLUGIN);
  EXPECT_EQ(ExportedNames(plugin), expected);
}

TEST(Module, TableAndDataModelHaveTheSameNames) {
  std::set<std::string> in_table;
  for (const auto& row : ip_application::config_valid::validation_point_table)
    in_table.insert(row.name);
  std::set<std::string> in_model;
  for (const store::ValidationPoint& point : tests::DataModel()->validation_points()) {
    in_model.insert(point.opaque);
  }
  EXPECT_EQ(in_table.size(), 11u);
  EXPECT_EQ(in_model, in_table);
}

}  // namespace
