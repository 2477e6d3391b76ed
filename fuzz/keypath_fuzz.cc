// Paths as the plug-in and hosts write them, against a configuration whose names are made to be
// misread: with quotes, braces, blanks, slashes, percent signs.
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "confd/call_count.h"
#include "confd/keypath.h"
#include "confd/transaction.h"
#include "confd_maapi.h"
#include "require.h"
#include "store/error.h"
#include "store/snapshot.h"
#include "support/data_model.h"

namespace {

using fuzz::Require;

// Every place that a key can have in the data model: one key, several, a string behind numbers.
constexpr const char* kConfiguration = R"({
  "velmor-config:config": {"interface": {
    "velmor-ip-app:l3": [
      {"name": "7", "vrf": "red", "lower-layer-if": {"vlan": 20},
       "ipv4": {"address": {"ip": "10.0.0.1/24", "secondary": [{"ip": "10.0.1.1/24"}]}},
       "ipv6": {"address": [{"ip": "2001:db8::1/64"}], "nd": {"ra": {"max-interval": 600}}}},
      {"name": "", "vrf": "red"}, {"name": "wan 1"}, {"name": " 7"}, {"name": "7 "},
      {"name": "a}b", "vrf": "x}y"}, {"name": "a}"}, {"name": "}"}, {"name": "{"},
      {"name": "a}/b"}, {"name": "a/b"}, {"name": "/"}, {"name": "it's"}, {"name": "50%"},
      {"name": "%s"}, {"name": "\""}, {"name": "\"7\""}, {"name": "19\"rack"}, {"name": "a\\b"},
      {"name": "a\\"}, {"name": "\\\""}, {"name": "tab\there"}, {"name": "line\nend"},
      {"name": "line\rstart"}, {"name": "\" \""}, {"name": "Größe"}],
    "velmor-ip-app:loopback": [{"name": "0", "ipv4": {"address": [{"ip": "10.0.2.1/32"}]}}],
    "velmor-ip-app:mgmt": [{"name": "a b c"}]}},
  "velmor-internal:internal": {
    "vrf-config": {"indexTOstring": [{"index": 1, "vname": "red"}]},
    "ospf-interface-l3": [
      {"compound-id": 1, "area": "0.0.0.0", "if-name": "l3-7", "if-address": "10.0.0.1",
       "ospf-pm-ip-netmask": 24},
      {"compound-id": 1, "area": "0.0.0.0", "if-name": "l3-wan 1", "if-address": "10.0.0.2"},
      {"compound-id": 1, "area": "0.0.0.0", "if-name": "", "if-address": "10.0.0.3"},
      {"compound-id": 1, "area": "0.0.0.0", "if-name": "\"", "if-address": "10.0.0.4"},
      {"compound-id": 1, "area": "0.0.0.0", "if-name": "a}/b", "if-address": "10.0.0.5"},
      {"compound-id": 1, "area": "0.0.0.0", "if-name": "\\", "if-address": "10.0.0.6"}],
    "ospfv3-interface-l3": [
      {"process": 10, "area": "0.0.0.1", "ospfv3-pm-if-name": "x}"},
      {"process": 10, "area": "0.0.0.1", "ospfv3-pm-if-name": "\"x\""}]},
  "velmor-static-route:rtmStaticRtEntry-global": [
    {"fte-index": 0, "network": "0a:00:00:00", "prefix-length": 8, "next-hop": "c0:00:02:01",
     "interface-name": "l3-7"}]
})";

// A transaction on that configuration, open for the life of the process.
struct Store {
  std::shared_ptr<const store::Snapshot> configuration =
      store::Snapshot::FromText(tests::DataModel(), kConfiguration);
  confd::Database datastore{configuration};
  int thandle = datastore.StartTransaction(configuration);
  int sock = datastore.OpenSocket();

  Store() { datastore.Attach(sock, thandle); }

  bool Exists(const std::string& path) const {
    const int result = maapi_exists(sock, thandle, "%s", path.c_str());
    Require(result == 1 || result == 0 || result == CONFD_ERR, "maapi_exists says yes, no, error");
    return result == 1;
  }

  // Whether the path is there when it is itself the format.
  int ExistsAsFormat(const std::string& path) const {
    return maapi_exists(sock, thandle, path.c_str());
  }

  // The value's type and text, or nothing when there is none to read.
  std::optional<std::string> Value(const std::string& path) const {
    confd_value_t value;
    CONFD_SET_NOEXISTS(&value);
    if (maapi_get_elem(sock, thandle, &value, "%s", path.c_str()) != CONFD_OK) {
      Require(value.type == C_NOEXISTS, "a failed read writes nothing");
      return std::nullopt;
    }
    char text[512];
    confd_pp_value(text, sizeof(text), &value);
    const std::string result = std::to_string(value.type) + " " + text;
    confd_free_value(&value);
    return result;
  }
};

// Nothing when the path names nothing that is there.
std::unique_ptr<confd::Keypath> Resolve(const Store& store, const std::string& path) {
  try {
    return std::make_unique<confd::Keypath>(*store.configuration, path);
  } catch (const store::Error&) {
    return nullptr;
  }
}

// Same tags and, by their values, same keys.
bool IsSamePlace(const confd_hkeypath_t* a, const confd_hkeypath_t* b) {
  if (a->len != b->len) return false;
  for (int i = 0; i < a->len; ++i) {
    for (int k = 0; k < MAXKEYLEN; ++k) {
      const confd_value_t* x = &a->v[i][k];
      const confd_value_t* y = &b->v[i][k];
      if (x->type != y->type) return false;
      if (x->type == C_NOEXISTS) break;
      char x_text[512];
      char y_text[512];
      confd_pp_value(x_text, sizeof(x_text), x);
      confd_pp_value(y_text, sizeof(y_text), y);
      if (std::string_view(x_text) != y_text) return false;
    }
  }
  return true;
}

// What a path is that is passed as the format: "%%" is "%", and any other "%" has no argument.
std::optional<std::string> WithoutPercentTwice(const std::string& path) {
  std::string text;
  for (size_t i = 0; i < path.size(); ++i) {
    text.push_back(path[i]);
    if (path[i] != '%') continue;
    if (i + 1 == path.size() || path[i + 1] != '%') return std::nullopt;
    ++i;
  }
  return text;
}

void CheckFormat(const Store& store, const std::string& path) {
  if (path.starts_with('%')) return;  // no path begins so, and arguments would be read
  const auto text = WithoutPercentTwice(path);
  const int result = store.ExistsAsFormat(path);
  Require(text ? (result == 1) == store.Exists(*text) : result == CONFD_ERR,
          "a path as the format is read without arguments: " + path);
}

void CheckPath(const Store& store, const std::string& path) {
  const auto resolved = Resolve(store, path);
  Require(store.Exists(path) == (resolved != nullptr), "exists when it resolves: " + path);
  if (resolved == nullptr) {
    Require(!store.Value(path), "nothing to read where nothing is: " + path);
    return;
  }
  const std::string text = resolved->text();
  const auto again = Resolve(store, text);
  Require(again != nullptr, "resolves as printed: " + path + " as " + text);
  Require(again->text() == text, "prints alike: " + path + " as " + text);
  Require(IsSamePlace(resolved->get(), again->get()), "same place: " + path + " as " + text);
  Require(store.Value(path) == store.Value(text), "same value: " + path + " as " + text);
  Require(maapi_exists(store.sock, store.thandle, "%h", resolved->get()) == 1,
          "a keypath is a path: " + text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 512) return 0;  // several times the longest path of the data model
  static const Store store;
  const int64_t values_before = confd::OutstandingValues();
  // Callers pass C strings.
  const std::string path = std::string(reinterpret_cast<const char*>(data), size).c_str();
  CheckPath(store, path);
  CheckFormat(store, path);
  Require(confd::OutstandingValues() == values_before, "values are released: " + path);
  return 0;
}
