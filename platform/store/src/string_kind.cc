#include "store/string_kind.h"

#include <libyang/plugins_types.h>
#include <sys/socket.h>

#include <cstring>
#include <string_view>

namespace store {
namespace {

bool BeginsWith(const char* id, std::string_view beginning) {
  return strncmp(id, beginning.data(), beginning.size()) == 0;
}

}  // namespace

bool HasTypeId(const lysc_type* type, const char* id) { return BeginsWith(type->plugin->id, id); }

StringKind KindOf(const lysc_type* type) {
  struct Known {
    std::string_view id;
    StringKind kind;
  };
  static constexpr Known kKnown[] = {
      {kTextType, StringKind::kText},
      {kIpv4AndPlenType, StringKind::kIpv4AndLength},
      {kIpv6AndPlenType, StringKind::kIpv6AndLength},
      {kHexListType, StringKind::kHexList},
      {"libyang 2 - ipv4-address", StringKind::kIpv4},
      {"libyang 2 - ipv6-address", StringKind::kIpv6},
      {"libyang 2 - ipv4-prefix", StringKind::kIpv4Prefix},
      {"libyang 2 - ipv6-prefix", StringKind::kIpv6Prefix},
  };
  for (const Known& known : kKnown) {
    if (BeginsWith(type->plugin->id, known.id)) return known.kind;
  }
  return StringKind::kOther;
}

int FamilyOf(StringKind kind) {
  const bool is_ipv4 = kind == StringKind::kIpv4 || kind == StringKind::kIpv4Prefix ||
                       kind == StringKind::kIpv4AndLength;
  return is_ipv4 ? AF_INET : AF_INET6;
}

}  // namespace store
