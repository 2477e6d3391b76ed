#include "value.h"

#include <arpa/inet.h>
#include <libyang/plugins_types.h>

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "calls.h"
#include "confd/store.h"
#include "libyang_plugins.h"
#include "schema.h"

namespace confd {
namespace {

int64_t outstanding_values = 0;

bool OwnsBuffer(confd_vtype type) {
  return type == C_BUF || type == C_BINARY || type == C_HEXSTR || type == C_BITBIG;
}

// Heap copy with a NUL behind it, as received data has.
unsigned char* CopyBytes(const void* bytes, size_t size) {
  auto* copy = static_cast<unsigned char*>(malloc(size + 1));
  if (copy == nullptr) abort();
  if (size > 0) memcpy(copy, bytes, size);
  copy[size] = 0;
  ++outstanding_values;
  return copy;
}

confd_value_t BufferValue(confd_vtype type, const void* bytes, size_t size) {
  confd_value_t value{};
  value.type = type;
  value.val.buf.ptr = CopyBytes(bytes, size);
  value.val.buf.size = static_cast<unsigned>(size);
  return value;
}

template <typename T>
const T* Stored(const lyd_value& value) {
  const void* memory = sizeof(T) > LYD_VALUE_FIXED_MEM_SIZE
                           ? value.dyn_mem
                           : static_cast<const void*>(value.fixed_mem);
  return static_cast<const T*>(memory);
}

// Behind a union stands the value of the member type that matched.
const lyd_value& MemberValue(const lyd_node* leaf) {
  const lyd_value* value = &reinterpret_cast<const lyd_node_term*>(leaf)->value;
  while (value->realtype->basetype == LY_TYPE_UNION) value = &value->subvalue->value;
  return *value;
}

const lysc_type* DeclaredType(const lysc_node* leaf) {
  return (leaf->nodetype == LYS_LEAF) ? reinterpret_cast<const lysc_node_leaf*>(leaf)->type
                                      : reinterpret_cast<const lysc_node_leaflist*>(leaf)->type;
}

const char* ValueText(const lyd_node* leaf) { return lyd_get_value(leaf); }

bool HasTypeId(const lysc_type* type, std::string_view id) {
  return strncmp(type->plugin->id, id.data(), id.size()) == 0;
}

confd_vtype StringType(const lysc_type* type) {
  struct Known {
    std::string_view id;
    confd_vtype type;
  };
  static constexpr Known kKnown[] = {
      {kIpv4AndPlenType, C_IPV4_AND_PLEN},
      {kIpv6AndPlenType, C_IPV6_AND_PLEN},
      {kHexListType, C_BINARY},
      {"libyang 2 - ipv4-address", C_IPV4},
      {"libyang 2 - ipv6-address", C_IPV6},
      {"libyang 2 - ipv4-prefix", C_IPV4PREFIX},
      {"libyang 2 - ipv6-prefix", C_IPV6PREFIX},
  };
  if (HasTypeId(type, "libyang 2 - string")) return C_BUF;
  for (const Known& known : kKnown) {
    if (HasTypeId(type, known.id)) return known.type;
  }
  return C_NOEXISTS;  // date-and-time and others whose ConfD type is not carried
}

template <int kFamily, typename Address>
uint8_t ParsePrefix(std::string_view text, Address* address) {
  const size_t slash = text.rfind('/');
  const std::string address_text(text.substr(0, slash));
  inet_pton(kFamily, address_text.c_str(), address);
  unsigned length = 0;
  std::from_chars(text.data() + slash + 1, text.data() + text.size(), length);
  return static_cast<uint8_t>(length);
}

// As snprintf with "%s", which takes longer.
int CopyOut(char* buf, int bufsiz, const std::string& text) {
  const size_t size = strlen(text.c_str());
  if (bufsiz > 0) {
    const size_t copied = std::min(size, static_cast<size_t>(bufsiz) - 1);
    memcpy(buf, text.data(), copied);
    buf[copied] = '\0';
  }
  return static_cast<int>(size);
}

int HexDigit(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

confd_value_t HexListValue(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 3) {
    bytes.push_back(static_cast<char>(HexDigit(text[i]) * 16 + HexDigit(text[i + 1])));
  }
  return BufferValue(C_BINARY, bytes.data(), bytes.size());
}

confd_value_t StringValue(const lyd_node* leaf, const lysc_type* type) {
  const std::string_view text = ValueText(leaf);
  confd_value_t value{};
  value.type = StringType(type);
  switch (value.type) {
    case C_IPV4:
      inet_pton(AF_INET, std::string(text.substr(0, text.find('%'))).c_str(), &value.val.ip);
      return value;
    case C_IPV6:
      inet_pton(AF_INET6, std::string(text.substr(0, text.find('%'))).c_str(), &value.val.ip6);
      return value;
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      value.val.ipv4prefix.len = ParsePrefix<AF_INET>(text, &value.val.ipv4prefix.ip);
      return value;
    case C_IPV6PREFIX:
    case C_IPV6_AND_PLEN:
      value.val.ipv6prefix.len = ParsePrefix<AF_INET6>(text, &value.val.ipv6prefix.ip6);
      return value;
    case C_BINARY:
      return HexListValue(text);
    case C_BUF:
      return BufferValue(C_BUF, text.data(), text.size());
    default:
      return value;
  }
}

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

int ComparePrefixes(const confd_value_t& a, const confd_value_t& b) {
  const bool v4 = a.type == C_IPV4_AND_PLEN || a.type == C_IPV4PREFIX;
  const int address = v4 ? memcmp(&a.val.ipv4prefix.ip, &b.val.ipv4prefix.ip, sizeof(in_addr))
                         : memcmp(&a.val.ipv6prefix.ip6, &b.val.ipv6prefix.ip6, sizeof(in6_addr));
  if (address != 0) return Sign(address);
  return v4 ? CompareNumbers(a.val.ipv4prefix.len, b.val.ipv4prefix.len)
            : CompareNumbers(a.val.ipv6prefix.len, b.val.ipv6prefix.len);
}

// Neither value owns memory for the types that are compared here; hex lists order as their
// lower-case text does.
int CompareStrings(const lyd_node* a, const lyd_node* b, const lysc_type* type) {
  const confd_vtype value_type = StringType(type);
  int order = 0;
  if (value_type != C_BUF && value_type != C_BINARY && value_type != C_NOEXISTS) {
    const confd_value_t x = StringValue(a, type);
    const confd_value_t y = StringValue(b, type);
    if (value_type == C_IPV4) {
      // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): a C_IPV4 value owns no memory
      order = Sign(memcmp(&x.val.ip, &y.val.ip, sizeof(in_addr)));
    } else if (value_type == C_IPV6) {
      order = Sign(memcmp(&x.val.ip6, &y.val.ip6, sizeof(in6_addr)));
    } else {
      order = ComparePrefixes(x, y);
    }
  }
  // One address in two zones is two values.
  return order != 0 ? order : CompareText(ValueText(a), ValueText(b));
}

// Whether any text is its own canonical form.
bool IsPlainString(const lysc_type* type) {
  if (type->basetype != LY_TYPE_STRING || !HasTypeId(type, "libyang 2 - string")) return false;
  const auto* string_type = reinterpret_cast<const lysc_type_str*>(type);
  return string_type->length == nullptr && string_type->patterns == nullptr;
}

// Whether the type is the hex list of tailf-common, whose pattern says no more than what a hex list
// is.
bool IsPlainHexList(const lysc_type* type) {
  if (type->basetype != LY_TYPE_STRING || !HasTypeId(type, kHexListType)) return false;
  const auto* string_type = reinterpret_cast<const lysc_type_str*>(type);
  return string_type->length == nullptr && LY_ARRAY_COUNT(string_type->patterns) == 1;
}

template <typename Number>
bool InRange(const lysc_range* range, Number number) {
  if (range == nullptr) return true;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(range->parts, i) {
    const auto& part = range->parts[i];
    if constexpr (std::is_signed_v<Number>) {
      if (part.min_64 <= number && number <= part.max_64) return true;
    } else {
      if (part.min_u64 <= number && number <= part.max_u64) return true;
    }
  }
  return false;
}

template <typename Number>
std::optional<std::string> CanonicalNumber(const lysc_type* type, std::string_view text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (!InRange(reinterpret_cast<const lysc_type_num*>(type)->range, number)) return std::nullopt;
  return std::to_string(number);
}

std::string HexText(const confd_buf_t& buf, const char* separator) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (unsigned i = 0; i < buf.size; ++i) {
    if (i > 0) text += separator;
    text.push_back(kDigits[buf.ptr[i] >> 4]);
    text.push_back(kDigits[buf.ptr[i] & 15]);
  }
  return text;
}

std::string BitsText(uint64_t bits) {
  char text[16 + sizeof("bits<>")];
  snprintf(text, sizeof(text), "bits<%" PRIx64 ">", bits);
  return text;
}

std::string NameText(uint32_t hash, const char* unknown) {
  const char* name = confd_hash2str(hash);
  return name != nullptr ? name : std::string(unknown) + "<" + std::to_string(hash) + ">";
}

std::string Decimal64Text(const confd_decimal64& number) {
  if (number.fraction_digits < 1 || number.fraction_digits > 18) {
    return "invalid64<" + std::to_string(number.value) + ">";
  }
  const bool negative = number.value < 0;
  std::string digits = std::to_string(negative ? 0 - static_cast<uint64_t>(number.value)
                                               : static_cast<uint64_t>(number.value));
  if (digits.size() <= number.fraction_digits) {
    digits.insert(0, number.fraction_digits + 1 - digits.size(), '0');
  }
  digits.insert(digits.size() - number.fraction_digits, 1, '.');
  while (digits.back() == '0' && digits[digits.size() - 2] != '.') digits.pop_back();
  if (negative) digits.insert(digits.begin(), '-');
  return digits;
}

}  // namespace

std::string AddressText(int family, const void* address) {
  if (family == AF_INET) {  // inet_ntop would print it with sprintf
    const auto* bytes = static_cast<const uint8_t*>(address);
    return std::to_string(bytes[0]) + "." + std::to_string(bytes[1]) + "." +
           std::to_string(bytes[2]) + "." + std::to_string(bytes[3]);
  }
  char text[INET6_ADDRSTRLEN];
  return inet_ntop(family, address, text, sizeof(text));
}

int64_t OutstandingValues() { return outstanding_values; }

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

confd_value_t TagValue(xml_tag tag) {
  confd_value_t value{};
  CONFD_SET_XMLTAG(&value, tag.tag, tag.ns);
  return value;
}

confd_value_t LeafValue(const lyd_node* leaf) {
  const lyd_value& stored = MemberValue(leaf);
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
      value.val.idref.ns = TagOf(stored.ident->module->ns);
      value.val.idref.id = TagOf(stored.ident->name);
      break;
    case LY_TYPE_BINARY: {
      const auto* binary = Stored<lyd_value_binary>(stored);
      return BufferValue(C_BINARY, binary->data, binary->size);
    }
    case LY_TYPE_EMPTY:
      if (lysc_is_key(leaf->schema) || stored.realtype != DeclaredType(leaf->schema)) {
        CONFD_SET_EMPTY(&value);
        break;
      }
      return TagValue({TagOf(leaf->schema->name), TagOf(leaf->schema->module->ns)});
    case LY_TYPE_STRING:
      return StringValue(leaf, stored.realtype);
    default:
      break;
  }
  return value;
}

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
        const int order = CompareNumbers<int>(StringType(x.realtype), StringType(y.realtype));
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
  return type->basetype == LY_TYPE_STRING && StringType(type) == C_BUF;
}

std::optional<std::string> CanonicalText(const lysc_node* leaf, std::string_view text) {
  const lysc_type* type = DeclaredType(leaf);
  if (type->basetype == LY_TYPE_LEAFREF) {
    type = reinterpret_cast<const lysc_type_leafref*>(type)->realtype;
  }
  // Integers are decimal in a path; libyang would also take hexadecimal and octal texts.
  switch (type->basetype) {
    case LY_TYPE_INT8:
      return CanonicalNumber<int8_t>(type, text);
    case LY_TYPE_INT16:
      return CanonicalNumber<int16_t>(type, text);
    case LY_TYPE_INT32:
      return CanonicalNumber<int32_t>(type, text);
    case LY_TYPE_INT64:
      return CanonicalNumber<int64_t>(type, text);
    case LY_TYPE_UINT8:
      return CanonicalNumber<uint8_t>(type, text);
    case LY_TYPE_UINT16:
      return CanonicalNumber<uint16_t>(type, text);
    case LY_TYPE_UINT32:
      return CanonicalNumber<uint32_t>(type, text);
    case LY_TYPE_UINT64:
      return CanonicalNumber<uint64_t>(type, text);
    default:
      break;
  }
  if (IsPlainString(type)) return std::string(text);
  if (IsPlainHexList(type)) return CanonicalHexList(text);
  const std::string terminated(text);
  const char* canonical = nullptr;
  const ly_ctx* context = leaf->module->ctx;
  const LY_ERR result = lyd_value_validate(context, leaf, terminated.c_str(), terminated.size(),
                                           nullptr, nullptr, &canonical);
  // Incomplete: of the right type, and whether a referred node exists does not matter for a key.
  if (result != LY_SUCCESS && result != LY_EINCOMPLETE) {
    ly_err_clean(const_cast<ly_ctx*>(context), nullptr);
    return std::nullopt;
  }
  std::string owned = canonical;
  lydict_remove(context, canonical);
  return owned;
}

std::string PrintValue(const confd_value_t& value) {
  switch (value.type) {
    case C_XMLTAG:
      return NameText(value.val.xmltag.tag, "tag");
    case C_STR:
      return value.val.c_s;
    case C_BUF:
      return {reinterpret_cast<const char*>(value.val.buf.ptr), value.val.buf.size};
    case C_INT8:
      return std::to_string(value.val.i8);
    case C_INT16:
      return std::to_string(value.val.i16);
    case C_INT32:
      return std::to_string(value.val.i32);
    case C_INT64:
      return std::to_string(value.val.i64);
    case C_UINT8:
      return std::to_string(value.val.u8);
    case C_UINT16:
      return std::to_string(value.val.u16);
    case C_UINT32:
      return std::to_string(value.val.u32);
    case C_UINT64:
      return std::to_string(value.val.u64);
    case C_BOOL:
      return value.val.boolean != 0 ? "true" : "false";
    case C_ENUM_VALUE:
      return "enum<" + std::to_string(value.val.enumvalue) + ">";
    case C_IPV4:
      return AddressText(AF_INET, &value.val.ip);
    case C_IPV6:
      return AddressText(AF_INET6, &value.val.ip6);
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      return AddressText(AF_INET, &value.val.ipv4prefix.ip) + "/" +
             std::to_string(value.val.ipv4prefix.len);
    case C_IPV6PREFIX:
    case C_IPV6_AND_PLEN:
      return AddressText(AF_INET6, &value.val.ipv6prefix.ip6) + "/" +
             std::to_string(value.val.ipv6prefix.len);
    case C_BINARY:
      return HexText(value.val.buf, "");
    case C_HEXSTR:
      return HexText(value.val.buf, ":");
    case C_BIT32:
      return BitsText(value.val.b32);
    case C_BIT64:
      return BitsText(value.val.b64);
    case C_BITBIG:
      return "bits<" + HexText(value.val.buf, "") + ">";
    case C_DQUAD:
      return AddressText(AF_INET, &value.val.dquad);
    case C_DECIMAL64:
      return Decimal64Text(value.val.d64);
    case C_IDENTITYREF:
      return NameText(value.val.idref.id, "idref");
    default:
      return "";
  }
}

std::string PrintKey(const confd_value_t& value) {
  // As a hex list is written; without separators the text could not be read back.
  std::string text = value.type == C_BINARY ? HexText(value.val.buf, ":") : PrintValue(value);
  if (!text.empty() && text.find_first_of(" \t\n\"{}") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted.push_back('\\');
    quoted.push_back(c);
  }
  return quoted + "\"";
}

}  // namespace confd

int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v) {
  return confd::CopyOut(buf, bufsiz, confd::PrintValue(*v));
}

void confd_free_value(confd_value_t* v) {
  confd::NoteRelease("confd_free_value");
  confd::FreeOwned(v);
}

confd_value_t* confd_value_dup_to(const confd_value_t* v, confd_value_t* newv) {
  switch (v->type) {
    case C_BUF:
    case C_BINARY:
    case C_HEXSTR:
    case C_BITBIG:
      *newv = confd::BufferValue(v->type, v->val.buf.ptr, v->val.buf.size);
      return newv;
    case C_STR:
      *newv = *v;
      newv->val.s = strdup(v->val.c_s);
      return newv;
    case C_LIST:
    case C_OBJECTREF:
    case C_OID:
    case C_QNAME:
      return nullptr;  // types that the stand-in never hands out
    default:
      *newv = *v;
      return newv;
  }
}

void confd_free_dup_to_value(confd_value_t* v) {
  if (v->type == C_STR) {
    free(v->val.s);
    v->type = C_NOEXISTS;
  } else {
    confd::FreeOwned(v);
  }
}

confd_value_t* confd_value_dup(const confd_value_t* v) {
  auto copy = std::make_unique<confd_value_t>();
  return confd_value_dup_to(v, copy.get()) == nullptr ? nullptr : copy.release();
}

void confd_free_dup_value(confd_value_t* v) {
  confd_free_dup_to_value(v);
  delete v;
}

int confd_val_eq(const confd_value_t* v1, const confd_value_t* v2) {
  const auto is_text = [](const confd_value_t* v) { return v->type == C_STR || v->type == C_BUF; };
  if (v1->type != v2->type && !(is_text(v1) && is_text(v2))) return 0;
  if (v1->type == C_XMLTAG) {
    return v1->val.xmltag.tag == v2->val.xmltag.tag && v1->val.xmltag.ns == v2->val.xmltag.ns;
  }
  switch (v1->type) {
    case C_IDENTITYREF:
      return v1->val.idref.ns == v2->val.idref.ns && v1->val.idref.id == v2->val.idref.id;
    case C_DOUBLE:
      return v1->val.d == v2->val.d;
    case C_BIT32:
      return v1->val.b32 == v2->val.b32;
    case C_BIT64:
      return v1->val.b64 == v2->val.b64;
    case C_NOEXISTS:
    case C_DEFAULT:
    case C_EMPTY:
      return 1;
    default:
      break;
  }
  // Equal values have equal texts; a type without a text is not carried, and nothing is known to be
  // equal.
  const std::string text = confd::PrintValue(*v1);
  if (text.empty() && !is_text(v1) && !confd::OwnsBuffer(v1->type)) return 0;
  return text == confd::PrintValue(*v2);
}
