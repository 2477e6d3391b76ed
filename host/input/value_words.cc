#include "value_words.h"

#include <libyang/libyang.h>
#include <libyang/plugins_types.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "store/libyang_fault.h"

namespace ipvald {
namespace {

// Types whose values libyang reads with the prefixes or the nodes of a whole configuration.
bool NeedsConfiguration(const lysc_type* type) {
  switch (type->basetype) {
    case LY_TYPE_IDENT:
    case LY_TYPE_INST:
      return true;
    case LY_TYPE_LEAFREF:
      return NeedsConfiguration(reinterpret_cast<const lysc_type_leafref*>(type)->realtype);
    case LY_TYPE_UNION: {
      const auto* members = reinterpret_cast<const lysc_type_union*>(type)->types;
      LY_ARRAY_COUNT_TYPE i;
      LY_ARRAY_FOR(members, i) {
        if (NeedsConfiguration(members[i])) return true;
      }
      return false;
    }
    default:
      return false;
  }
}

const lysc_type* TypeOf(const lysc_node* leaf) {
  const lysc_type* type = leaf->nodetype == LYS_LEAF
                              ? reinterpret_cast<const lysc_node_leaf*>(leaf)->type
                              : reinterpret_cast<const lysc_node_leaflist*>(leaf)->type;
  while (type->basetype == LY_TYPE_LEAFREF) {
    type = reinterpret_cast<const lysc_type_leafref*>(type)->realtype;
  }
  return type;
}

// What libyang calls a type of whole numbers.
struct NumberType {
  LY_DATA_TYPE basetype;
  bool is_unsigned;
  bool is_json_number;  // RFC 7951, section 6.1: numbers of 64 bits are strings
  const char* low;      // as far as the width goes
  const char* high;
};

const NumberType kNumberTypes[] = {
    {LY_TYPE_INT8, false, true, "-128", "127"},
    {LY_TYPE_INT16, false, true, "-32768", "32767"},
    {LY_TYPE_INT32, false, true, "-2147483648", "2147483647"},
    {LY_TYPE_INT64, false, false, "-9223372036854775808", "9223372036854775807"},
    {LY_TYPE_UINT8, true, true, "0", "255"},
    {LY_TYPE_UINT16, true, true, "0", "65535"},
    {LY_TYPE_UINT32, true, true, "0", "4294967295"},
    {LY_TYPE_UINT64, true, false, "0", "18446744073709551615"},
};

// Null for any other type.
const NumberType* NumberTypeOf(const lysc_type* type) {
  const auto* const found =
      std::find_if(std::begin(kNumberTypes), std::end(kNumberTypes),
                   [type](const NumberType& number) { return number.basetype == type->basetype; });
  return found == std::end(kNumberTypes) ? nullptr : found;
}

std::string FromTo(const std::string& low, const std::string& high) {
  return low == high ? low : "from " + low + " to " + high;
}

std::string NumberWords(const lysc_type* type, const NumberType& number) {
  const lysc_range* range = reinterpret_cast<const lysc_type_num*>(type)->range;
  std::string words = "a whole number ";
  if (range == nullptr) return words + FromTo(number.low, number.high);
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(range->parts, i) {
    const auto& part = range->parts[i];
    if (i > 0) words += " or ";
    words += number.is_unsigned ? FromTo(std::to_string(part.min_u64), std::to_string(part.max_u64))
                                : FromTo(std::to_string(part.min_64), std::to_string(part.max_64));
  }
  return words;
}

constexpr LY_ARRAY_COUNT_TYPE kShownWords = 12;  // of an enumeration

std::string EnumerationWords(const lysc_type* type) {
  const auto* enums = reinterpret_cast<const lysc_type_enum*>(type)->enums;
  std::string words;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(enums, i) {
    if (i == kShownWords) return words + " or another of " + std::to_string(LY_ARRAY_COUNT(enums));
    if (i > 0) words += i + 1 == LY_ARRAY_COUNT(enums) ? " or " : ", ";
    words += enums[i].name;
  }
  return words;
}

// libyang has types of its own for what ietf-inet-types defines.
std::string AddressWords(std::string_view plugin_id) {
  if (!plugin_id.starts_with("libyang")) return "";
  if (plugin_id.find("ipv4-address") != plugin_id.npos) return "an IPv4 address such as 192.0.2.1";
  if (plugin_id.find("ipv6-address") != plugin_id.npos)
    return "an IPv6 address such as 2001:db8::1";
  if (plugin_id.find("ipv4-prefix") != plugin_id.npos) return "a prefix such as 192.0.2.0/24";
  if (plugin_id.find("ipv6-prefix") != plugin_id.npos) return "a prefix such as 2001:db8::/32";
  return "";
}

// Empty for types whose values have no short description.
std::string Words(const lysc_type* type) {
  if (const NumberType* number = NumberTypeOf(type)) return NumberWords(type, *number);
  if (type->basetype == LY_TYPE_ENUM) return EnumerationWords(type);
  if (type->basetype == LY_TYPE_BOOL) return "true or false";
  if (type->basetype == LY_TYPE_EMPTY) return "no value";
  return AddressWords(type->plugin->id);
}

const char* ErrorMessageOf(const lysc_type* type) {
  if (NumberTypeOf(type) == nullptr) return nullptr;
  const lysc_range* range = reinterpret_cast<const lysc_type_num*>(type)->range;
  return range == nullptr ? nullptr : range->emsg;
}

}  // namespace

std::string ValueFault(const ly_ctx* context, const lysc_node* leaf, std::string_view text) {
  const lysc_type* type = TypeOf(leaf);
  if (NeedsConfiguration(type)) return "";
  // An exponent is worked out by the parser before the type sees the number.
  if (NumberTypeOf(type) != nullptr && text.find_first_of("eE") != text.npos) return "";
  const LY_ERR result =
      lyd_value_validate(context, leaf, text.data(), text.size(), nullptr, nullptr, nullptr);
  if (result == LY_SUCCESS || result == LY_EINCOMPLETE) return "";
  const std::string words = Words(type);
  if (words.empty()) {
    const std::string message(store::LastFault(context).message);
    return message.empty() ? ", which is no value of its type" : ": " + message;
  }
  const char* own = ErrorMessageOf(type);
  return ", but takes " + words + (own == nullptr ? "" : ": " + std::string(own));
}

std::string CanonicalValue(const ly_ctx* context, const lysc_node* leaf, std::string_view text) {
  if (NeedsConfiguration(TypeOf(leaf))) return std::string(text);
  const char* canonical = nullptr;
  const LY_ERR result =
      lyd_value_validate(context, leaf, text.data(), text.size(), nullptr, nullptr, &canonical);
  if (result != LY_SUCCESS || canonical == nullptr) return std::string(text);
  std::string value = canonical;
  lydict_remove(context, canonical);
  return value;
}

JsonForm JsonFormOf(const lysc_node* leaf) {
  const lysc_type* type = TypeOf(leaf);
  if (const NumberType* number = NumberTypeOf(type)) {
    return number->is_json_number ? JsonForm::kNumber : JsonForm::kString;
  }
  if (type->basetype == LY_TYPE_BOOL) return JsonForm::kBoolean;
  if (type->basetype == LY_TYPE_EMPTY) return JsonForm::kEmpty;
  if (type->basetype == LY_TYPE_UNION) return JsonForm::kAny;
  return JsonForm::kString;
}

std::string ValuesOf(const lysc_node* leaf) {
  const std::string words = Words(TypeOf(leaf));
  return words.empty() ? "a text" : words;
}

}  // namespace ipvald
