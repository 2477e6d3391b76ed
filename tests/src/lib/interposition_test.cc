// A program that exports a client function of its own wins over the stand-in, as a device's
// libraries do.
#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "confd/keypath.h"
#include "confd/transaction.h"
#include "confd_maapi.h"
#include "framework/host.h"
#include "plugin.h"
#include "store/schema_node.h"
#include "store/snapshot.h"
#include "support/data_model.h"

namespace {

std::vector<std::string>& AskedFor() {
  static std::vector<std::string> formats;
  return formats;
}

}  // namespace

// Exported by -rdynamic, so that the module's calls end here.
extern "C" __attribute__((visibility("default"))) int maapi_exists(int, int, const char* fmt, ...) {
  AskedFor().emplace_back(fmt);
  return 0;
}

namespace {

TEST(Interposition, ProgramWinsOverTheStandIn) {
  const auto candidate = store::Snapshot::FromText(
      tests::DataModel(),
      R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[{"name":"7",
          "ipv6":{"nd":{"ra":{"max-interval":4,"min-interval":4}}}}]}}})");
  confd::Database datastore(store::Snapshot::Empty(tests::DataModel()));
  framework::Daemon daemon{datastore.OpenSocket(), datastore.OpenSocket()};
  framework::ContextRegistry registry;
  confd::TransactionContext context;
  context.get()->thandle = datastore.StartTransaction(candidate);
  datastore.Attach(daemon.maapi_socket, context.get()->thandle);
  context.get()->vcb_opaque = &daemon;
  context.get()->v_opaque = &registry;
  std::string opaque = "validate_ipv6_nd_ra_interval";
  context.get()->validate_opaque = opaque.data();

  const ipvald::Plugin plugin(IPAV_PLUGIN);
  void* config = nullptr;
  ASSERT_EQ(plugin.lib_init(&config), 0);
  registry.Register("ip_app_validation", config);

  const lysc_node* advertisements = nullptr;
  for (const auto& point : tests::DataModel()->validation_points()) {
    if (point.opaque == opaque &&
        store::SchemaPath(point.node) == "/config/interface/l3/ipv6/nd/ra") {
      advertisements = point.node;
    }
  }
  ASSERT_NE(advertisements, nullptr);
  const auto instances = candidate->Instances(advertisements, nullptr);
  ASSERT_EQ(instances.size(), 1u);
  confd::Keypath keypath(*tests::DataModel(), instances[0]);
  confd_value_t value{};
  CONFD_SET_NOEXISTS(&value);

  // The leaves are there and break the rule, but the program's own function says that they are not.
  EXPECT_EQ(plugin.validate(context.get(), keypath.get(), &value), 0);
  EXPECT_EQ(AskedFor(),
            (std::vector<std::string>{"/config/interface/l3{7}/ipv6/nd/ra/max-interval",
                                      "/config/interface/l3{7}/ipv6/nd/ra/min-interval"}));
  EXPECT_EQ(plugin.lib_finish(&config), 0);
}

}  // namespace
