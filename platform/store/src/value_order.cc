#include "value_order.h"

#include <netinet/in.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "store/address_text.h"
#include "store/stored_value.h"
#include "store/string_kind.h"

namespace store {
namespace {

int Sign(int difference) { return difference < 0 ? -1 : difference > 0 ? 1 : 0; }

template <typename T>
int CompareNumbers(T a, T b) {
  return a < b ? -1 : a > b ? 1 : 0;
}

int CompareBytes(const void* a, size_t a_size, const void* b, size_t b_size) {
  const size_t common = std::min(a_size, b_size);
  const int difference = common == 0 ? 0 : memcmp(a, b, common);
  return difference != 0 ? Sign(difference) : CompareNumbers(a_size, b_size);
}

int CompareText(std::string_view a, std::string_view b) {
  return CompareBytes(a.data(), a.size(), b.data(), b.size());
}

// An address, in network byte order, and the length of its prefix where the text has one.
struct Address {
  in6_addr bytes{};
  uint8_t length = 0;
};

Address ReadAs(StringKind kind, std::string_view text) {
  Address address;
  if (kind == StringKind::kIpv4 || kind == StringKind::kIpv6) {
    ReadAddress(FamilyOf(kind), text, &address.bytes);
  } else {
    address.length = ReadAddressAndLength(FamilyOf(kind), text, &address.bytes);
  }
  return address;
}

// Hex lists order as their lower-case text does.
int CompareStrings(const lyd_node* a, const lyd_node* b, const lysc_type* type) {
  const StringKind kind = KindOf(type);
  int order = 0;
  if (kind != StringKind::kText && kind != StringKind::kHexList && kind != StringKind::kOther) {
    const Address x = ReadAs(kind, ValueText(a));
    const Address y = ReadAs(kind, ValueText(b));
    const size_t size = FamilyOf(kind) == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
    order = Sign(memcmp(&x.bytes, &y.bytes, size));
    if (order == 0) order = CompareNumbers(x.length, y.length);
  }
  // One address in two zones is two values.
  return order != 0 ? order : CompareText(ValueText(a), ValueText(b));
}

}  // namespace

int CompareLeafValues(const lyd_node* a, const lyd_node* b) {
  const lyd_value& x = MemberValue(a);
  const lyd_value& y = MemberValue(b);
  // Values of different members of a union are ordered by the member's type.
  if (x.realtype->basetype != y.realtype->basetype) {
    return CompareNumbers<int>(x.realtype->basetype, y.realtype->basetype);
  }
  switch (x.realtype->basetype) {
    case LY_TYPE_INT8:
      return CompareNumbers(x.int8, y.int8);
    case LY_TYPE_INT16:
      return CompareNumbers(x.int16, y.int16);
    case LY_TYPE_INT32:
      return CompareNumbers(x.int32, y.int32);
    case LY_TYPE_INT64:
      return CompareNumbers(x.int64, y.int64);
    case LY_TYPE_UINT8:
      return CompareNumbers(x.uint8, y.uint8);
    case LY_TYPE_UINT16:
      return CompareNumbers(x.uint16, y.uint16);
    case LY_TYPE_UINT32:
      return CompareNumbers(x.uint32, y.uint32);
    case LY_TYPE_UINT64:
      return CompareNumbers(x.uint64, y.uint64);
    case LY_TYPE_DEC64:
      return CompareNumbers(x.dec64, y.dec64);
    case LY_TYPE_BOOL:
      return CompareNumbers(x.boolean, y.boolean);
    case LY_TYPE_ENUM:
      return CompareNumbers(x.enum_item->value, y.enum_item->value);
    case LY_TYPE_BINARY: {
      const auto* p = Stored<lyd_value_binary>(x);
      const auto* q = Stored<lyd_value_binary>(y);
      return CompareBytes(p->data, p->size, q->data, q->size);
    }
    case LY_TYPE_STRING: {
      if (x.realtype != y.realtype) {
        const int order = CompareNumbers(KindOf(x.realtype), KindOf(y.realtype));
        if (order != 0) return order;
      }
      return CompareStrings(a, b, x.realtype);
    }
    default:
      return CompareText(ValueText(a), ValueText(b));
  }
}

bool OrdersAsText(const lysc_node* leaf) {
  const lysc_type* type = DeclaredType(leaf);
  return type->basetype == LY_TYPE_STRING && KindOf(type) == StringKind::kText;
}

}  // namespace store
