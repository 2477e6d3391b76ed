#include "libyang_plugins.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <libyang/libyang.h>
#include <libyang/plugins_exts.h>
#include <libyang/plugins_types.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "right_form.h"
#include "store/address_text.h"
#include "store/error.h"
#include "store/hex_list.h"
#include "store/string_kind.h"

namespace store {
namespace {

constexpr const char* kModule = "tailf-common";
constexpr const char* kRevision = "2024-01-01";
constexpr const char* kBlanks = " \t\r\n";

// --- The extension tailf:validate
// -----------------------------------------------------------------------------------

LY_ERR KeepSubstatements(lysp_ctx* /*context*/, lysp_ext_instance* /*extension*/) {
  return LY_SUCCESS;
}

// Copies what the statement says: the parsed tree is gone once the module is compiled.
LY_ERR CompileValidate(lysc_ctx* /*context*/, const lysp_ext_instance* parsed,
                       lysc_ext_instance* compiled) {
  auto* statement = new ValidateStatement;
  for (const lysp_stmt* sub = parsed->child; sub != nullptr; sub = sub->next) {
    const char* colon = std::strchr(sub->stmt, ':');
    const std::string_view keyword = colon == nullptr ? sub->stmt : colon + 1;
    const std::string_view argument = sub->arg == nullptr ? "" : sub->arg;
    if (keyword == "opaque") {
      statement->opaque = argument;
    } else if (keyword == "call-once") {
      statement->call_once = argument == "true";
    } else if (keyword == "priority") {
      std::from_chars(argument.data(), argument.data() + argument.size(), statement->priority);
    } else if (keyword == "dependency") {
      statement->dependencies.emplace_back(argument);
    }
  }
  compiled->compiled = statement;
  return LY_SUCCESS;
}

void FreeValidate(const ly_ctx* /*context*/, lysc_ext_instance* compiled) {
  delete static_cast<ValidateStatement*>(compiled->compiled);
}

// --- Types
// ----------------------------------------------------------------------------------------------------------

// "ADDRESS/LENGTH" with the address in its canonical text; host bits are kept.
std::optional<std::string> CanonicalAddressAndLength(std::string_view text, int family) {
  const size_t slash = text.rfind('/');
  if (slash == std::string_view::npos) return std::nullopt;
  const std::string address(text.substr(0, slash));
  const std::string_view digits = text.substr(slash + 1);
  unsigned length = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
  const unsigned full_length = family == AF_INET ? 32 : 128;
  const bool has_leading_zero = digits.size() > 1 && digits.front() == '0';
  if (error != std::errc() || end != digits.data() + digits.size() || length > full_length ||
      has_leading_zero) {
    return std::nullopt;
  }
  in6_addr bytes;
  if (inet_pton(family, address.c_str(), &bytes) != 1) return std::nullopt;
  return AddressText(family, &bytes) + "/" + std::to_string(length);
}

// A type whose texts libyang knows nothing about.
struct TextType {
  const char* what;  // for messages
  std::optional<std::string> (*canonicalize)(std::string_view text);
  std::string (*right_form)(const std::string& text);  // for a text that is no value
};

// What is wrong with `text`: the data model's own words where it has some, and the right form.
LY_ERR NoValue(const TextType& text_type, const lysc_type* type, const std::string& text,
               ly_err_item** err) {
  const lysc_pattern* const* patterns = reinterpret_cast<const lysc_type_str*>(type)->patterns;
  std::string message = "Not an " + std::string(text_type.what) + ".";
  if (LY_ARRAY_COUNT(patterns) > 0 && patterns[0]->emsg != nullptr) message = patterns[0]->emsg;
  const size_t first = text.find_first_not_of(kBlanks);
  const std::string trimmed =
      first == text.npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
  if (trimmed != text && text_type.canonicalize(trimmed)) {
    message.append(" No blanks may stand around ").append(trimmed).append(".");
  }
  const std::string right_form = text_type.right_form(text);
  if (!right_form.empty()) message.append(" ").append(right_form);
  return ly_err_new(err, LY_EVALID, LYVE_DATA, nullptr, nullptr, "%s", message.c_str());
}

// Whether a type derived from one of tailf-common's restricts it further. The patterns of the three
// say no more than what their canonical texts are, but matching them costs more than all the rest.
bool IsRestricted(const lysc_type* type) {
  const auto* text_type = reinterpret_cast<const lysc_type_str*>(type);
  const LY_ARRAY_COUNT_TYPE patterns = LY_ARRAY_COUNT(text_type->patterns);
  const bool is_ipv6 = std::strcmp(type->plugin->id, kIpv6AndPlenType) == 0;
  return text_type->length != nullptr || patterns > (is_ipv6 ? 2 : 1);
}

// Stores a value in its canonical text, so that equal values are equal keys; restrictions of the
// type are checked on it.
LY_ERR StoreCanonical(const TextType& text_type, const ly_ctx* ctx, const lysc_type* type,
                      const void* value, size_t value_length, uint32_t options,
                      LY_VALUE_FORMAT format, void* prefix_data, uint32_t hints,
                      const lysc_node* ctx_node, lyd_value* storage, lys_glob_unres* unres,
                      ly_err_item** err) {
  const std::string text(static_cast<const char*>(value), value_length);
  const std::optional<std::string> canonical = text_type.canonicalize(text);
  if ((options & LYPLG_TYPE_STORE_DYNAMIC) != 0) {
    free(const_cast<void*>(value));
    options &= ~static_cast<uint32_t>(LYPLG_TYPE_STORE_DYNAMIC);
  }
  if (!canonical) return NoValue(text_type, type, text, err);
  if (IsRestricted(type)) {
    return lyplg_type_store_string(ctx, type, canonical->data(), canonical->size(), options, format,
                                   prefix_data, hints, ctx_node, storage, unres, err);
  }
  *storage = lyd_value{};
  storage->realtype = type;
  const LY_ERR result =
      lyplg_type_check_hints(hints, text.data(), text.size(), LY_TYPE_STRING, nullptr, err);
  if (result != LY_SUCCESS) return result;
  return lydict_insert(ctx, canonical->data(), canonical->size(), &storage->_canonical);
}

constexpr TextType kIpv4AndPlen = {
    "IPv4 address with prefix length",
    [](std::string_view text) { return CanonicalAddressAndLength(text, AF_INET); },
    [](const std::string& text) { return RightAddressAndLength(text, AF_INET); }};

constexpr TextType kIpv6AndPlen = {
    "IPv6 address with prefix length",
    [](std::string_view text) { return CanonicalAddressAndLength(text, AF_INET6); },
    [](const std::string& text) { return RightAddressAndLength(text, AF_INET6); }};

constexpr TextType kHexList = {"octet list", CanonicalHexList, RightHexList};

// The callback of a type plug-in.
template <const TextType& kTextType>
LY_ERR Store(const ly_ctx* ctx, const lysc_type* type, const void* value, size_t value_length,
             uint32_t options, LY_VALUE_FORMAT format, void* prefix_data, uint32_t hints,
             const lysc_node* ctx_node, lyd_value* storage, lys_glob_unres* unres,
             ly_err_item** err) {
  return StoreCanonical(kTextType, ctx, type, value, value_length, options, format, prefix_data,
                        hints, ctx_node, storage, unres, err);
}

lyplg_type TypePlugin(const char* id, lyplg_type_store_clb store) {
  lyplg_type plugin{};
  plugin.id = id;
  plugin.store = store;
  plugin.compare = lyplg_type_compare_simple;
  plugin.print = lyplg_type_print_simple;
  plugin.duplicate = lyplg_type_dup_simple;
  plugin.free = lyplg_type_free_simple;
  plugin.lyb_data_len = -1;
  return plugin;
}

lyplg_ext ValidatePlugin() {
  lyplg_ext plugin{};
  plugin.id = "store - validate";
  plugin.parse = KeepSubstatements;
  plugin.compile = CompileValidate;
  plugin.cfree = FreeValidate;
  return plugin;
}

}  // namespace
}  // namespace store

// libyang looks these names up in the library that lyplg_add names; each table ends with an empty
// record.
extern "C" {
extern uint32_t plugins_types_apiver__;
extern const lyplg_type_record plugins_types__[];
extern uint32_t plugins_extensions_apiver__;
extern const lyplg_ext_record plugins_extensions__[];

uint32_t plugins_types_apiver__ = LYPLG_TYPE_API_VERSION;
const lyplg_type_record plugins_types__[] = {
    {store::kModule, store::kRevision, "ipv4-address-and-prefix-length",
     store::TypePlugin(store::kIpv4AndPlenType, store::Store<store::kIpv4AndPlen>)},
    {store::kModule, store::kRevision, "ipv6-address-and-prefix-length",
     store::TypePlugin(store::kIpv6AndPlenType, store::Store<store::kIpv6AndPlen>)},
    {store::kModule, store::kRevision, "hex-list",
     store::TypePlugin(store::kHexListType, store::Store<store::kHexList>)},
    {}};

uint32_t plugins_extensions_apiver__ = LYPLG_EXT_API_VERSION;
const lyplg_ext_record plugins_extensions__[] = {
    {store::kModule, store::kRevision, "validate", store::ValidatePlugin()}, {}};
}

namespace store {

void RegisterLibyangPlugins() {
  Dl_info library;
  if (dladdr(&plugins_types_apiver__, &library) == 0 ||
      lyplg_add(library.dli_fname) != LY_SUCCESS) {
    throw Error("libyang does not accept the plug-ins for tailf-common");
  }
}

}  // namespace store
