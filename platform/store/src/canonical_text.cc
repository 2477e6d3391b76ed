#include "store/canonical_text.h"

#include <libyang/plugins_types.h>

#include <charconv>
#include <type_traits>

#include "store/hex_list.h"
#include "store/stored_value.h"
#include "store/string_kind.h"

namespace store {
namespace {

// Whether any text is its own canonical form.
bool IsPlainString(const lysc_type* type) {
  if (type->basetype != LY_TYPE_STRING || !HasTypeId(type, kTextType)) return false;
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

}  // namespace

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

}  // namespace store
