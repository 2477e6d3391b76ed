#include "value.h"

#include <arpa/inet.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "confd/call_count.h"
#include "store/address_text.h"
#include "store/hex_list.h"
#include "store/stored_value.h"
#include "store/string_kind.h"
#include "store/tags.h"

namespace confd {
namespace {

int64_t outstanding_values = 0;

// Heap copy with a NUL behind it, as received data has.
unsigned char* CopyBytes(const void* bytes, size_t size) {
  auto* copy = static_cast<unsigned char*>(malloc(size + 1));
  if (copy == nullptr) abort();
  if (size > 0) memcpy(copy, bytes, size);
  copy[size] = 0;
  ++outstanding_values;
  return copy;
}

confd_value_t CopiedBuffer(confd_vtype type, const void* bytes, size_t size) {
  confd_value_t value{};
  value.type = type;
  value.val.buf.ptr = CopyBytes(bytes, size);
  value.val.buf.size = static_cast<unsigned>(size);
  return value;
}

// The type that a device's schema gives to a string type of this kind.
confd_vtype TypeOf(store::StringKind kind) {
  switch (kind) {
    case store::StringKind::kText:
      return C_BUF;
    case store::StringKind::kIpv4:
      return C_IPV4;
    case store::StringKind::kIpv6:
      return C_IPV6;
    case store::StringKind::kHexList:
      return C_BINARY;
    case store::StringKind::kIpv4Prefix:
      return C_IPV4PREFIX;
    case store::StringKind::kIpv6Prefix:
      return C_IPV6PREFIX;
    case store::StringKind::kIpv4AndLength:
      return C_IPV4_AND_PLEN;
    case store::StringKind::kIpv6AndLength:
      return C_IPV6_AND_PLEN;
    case store::StringKind::kOther:
      break;
  }
  return C_NOEXISTS;  // the ConfD type is not carried
}

confd_value_t StringValue(const lyd_node* leaf, const lysc_type* type) {
  const std::string_view text = store::ValueText(leaf);
  confd_value_t value{};
  value.type = TypeOf(store::KindOf(type));
  switch (value.type) {
    case C_IPV4:
      store::ReadAddress(AF_INET, text, &value.val.ip);
      return value;
    case C_IPV6:
      store::ReadAddress(AF_INET6, text, &value.val.ip6);
      return value;
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      value.val.ipv4prefix.len =
          store::ReadAddressAndLength(AF_INET, text, &value.val.ipv4prefix.ip);
      return value;
    case C_IPV6PREFIX:
    case C_IPV6_AND_PLEN:
      value.val.ipv6prefix.len =
          store::ReadAddressAndLength(AF_INET6, text, &value.val.ipv6prefix.ip6);
      return value;
    case C_BINARY: {
      const std::string bytes = store::HexListBytes(text);
      return CopiedBuffer(C_BINARY, bytes.data(), bytes.size());
    }
    case C_BUF:
      return CopiedBuffer(C_BUF, text.data(), text.size());
    default:
      return value;
  }
}

}  // namespace

int64_t OutstandingValues() { return outstanding_values; }

confd_value_t BufferValue(confd_vtype type, const void* bytes, size_t size) {
  return CopiedBuffer(type, bytes, size);
}

void FreeOwned(confd_value_t* value) {
  if (!OwnsBuffer(value->type)) return;
  free(value->val.buf.ptr);
  --outstanding_values;
  value->type = C_NOEXISTS;
}

void ReplaceByOtherType(confd_value_t* value) {
  static constexpr char kText[] = "of another type";
  static constexpr int32_t kNumber = 424242;
  const bool is_text = value->type == C_BUF;
  FreeOwned(value);
  if (is_text) {
    CONFD_SET_INT32(value, kNumber);
  } else {
    *value = BufferValue(C_BUF, kText, sizeof(kText) - 1);
  }
}

confd_value_t TagValue(store::NodeTag tag) {
  confd_value_t value{};
  CONFD_SET_XMLTAG(&value, tag.tag, tag.ns);
  return value;
}

confd_value_t LeafValue(const lyd_node* leaf) {
  const lyd_value& stored = store::MemberValue(leaf);
  confd_value_t value{};
  value.type = C_NOEXISTS;
  switch (stored.realtype->basetype) {
    case LY_TYPE_INT8:
      CONFD_SET_INT8(&value, stored.int8);
      break;
    case LY_TYPE_INT16:
      CONFD_SET_INT16(&value, stored.int16);
      break;
    case LY_TYPE_INT32:
      CONFD_SET_INT32(&value, stored.int32);
      break;
    case LY_TYPE_INT64:
      CONFD_SET_INT64(&value, stored.int64);
      break;
    case LY_TYPE_UINT8:
      CONFD_SET_UINT8(&value, stored.uint8);
      break;
    case LY_TYPE_UINT16:
      CONFD_SET_UINT16(&value, stored.uint16);
      break;
    case LY_TYPE_UINT32:
      CONFD_SET_UINT32(&value, stored.uint32);
      break;
    case LY_TYPE_UINT64:
      CONFD_SET_UINT64(&value, stored.uint64);
      break;
    case LY_TYPE_BOOL:
      CONFD_SET_BOOL(&value, stored.boolean != 0 ? CONFD_TRUE : CONFD_FALSE);
      break;
    case LY_TYPE_ENUM:
      CONFD_SET_ENUM_VALUE(&value, stored.enum_item->value);
      break;
    case LY_TYPE_DEC64:
      value.type = C_DECIMAL64;
      value.val.d64.value = stored.dec64;
      value.val.d64.fraction_digits =
          reinterpret_cast<const lysc_type_dec*>(stored.realtype)->fraction_digits;
      break;
    case LY_TYPE_IDENT:
      value.type = C_IDENTITYREF;
      value.val.idref.ns = store::TagOf(stored.ident->module->ns);
      value.val.idref.id = store::TagOf(stored.ident->name);
      break;
    case LY_TYPE_BINARY: {
      const auto* binary = store::Stored<lyd_value_binary>(stored);
      return CopiedBuffer(C_BINARY, binary->data, binary->size);
    }
    case LY_TYPE_EMPTY:
      if (lysc_is_key(leaf->schema) || stored.realtype != store::DeclaredType(leaf->schema)) {
        CONFD_SET_EMPTY(&value);
        break;
      }
      return TagValue({store::TagOf(leaf->schema->name), store::TagOf(leaf->schema->module->ns)});
    case LY_TYPE_STRING:
      return StringValue(leaf, stored.realtype);
    default:
      break;
  }
  return value;
}

}  // namespace confd
