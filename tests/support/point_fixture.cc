#include "support/point_fixture.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string_view>

#include "confd/call_count.h"
#include "support/data_model.h"

namespace tests {
namespace {

template <typename Function>
void Look(void* handle, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(handle, name));
  if (function == nullptr) throw std::runtime_error(dlerror());
}

}  // namespace

Module OpenModule() {
  Module loaded{};
  loaded.handle = dlopen(IPAV_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  if (loaded.handle == nullptr) throw std::runtime_error(dlerror());
  Look(loaded.handle, "lib_init", loaded.lib_init);
  Look(loaded.handle, "get_validation_point", loaded.get_validation_point);
  Look(loaded.handle, "validate", loaded.validate);
  Look(loaded.handle, "lib_finish", loaded.lib_finish);
  return loaded;
}

const Module& LoadedModule() {
  static const Module module = OpenModule();
  return module;
}

PointTest::PointTest() : values_before_(confd::OutstandingValues()) {
  framework::SetLogEnabled(true);
  RenewConfig();
}

PointTest::~PointTest() {
  EndTransaction();
  LoadedModule().lib_finish(&config_);
  EXPECT_EQ(confd::OutstandingValues(), values_before_) << "values not released";
  framework::TakeFaults();
  framework::TakeLogLines();
}

void PointTest::Configure(const std::string& running, const std::string& candidate) {
  EndTransaction();
  candidate_ = store::Snapshot::FromText(DataModel(), candidate);
  datastore_.emplace(store::Snapshot::FromText(DataModel(), running));
  daemon_ = {datastore_->OpenSocket(), datastore_->OpenSocket()};
  thandle_ = datastore_->StartTransaction(candidate_);
  datastore_->Attach(daemon_.maapi_socket, thandle_);
}

void PointTest::EndTransaction() {
  if (!datastore_) return;
  EXPECT_EQ(datastore_->FinishTransaction(thandle_), 0) << "cursors left open";
  datastore_.reset();
}

void PointTest::RenewConfig() {
  if (config_ != nullptr) LoadedModule().lib_finish(&config_);
  LoadedModule().lib_init(&config_);
  registry_.Register("ip_app_validation", config_);
}

void PointTest::Fill(confd_trans_ctx* context) {
  context->thandle = thandle_;
  context->vcb_opaque = &daemon_;
  context->v_opaque = &registry_;
}

std::string PointTest::Validate(const std::string& opaque, const std::string& path) {
  confd::Keypath keypath(*candidate_, path);
  return Validate(opaque, keypath);
}

std::string PointTest::Validate(const std::string& opaque, confd::Keypath& keypath) {
  confd::TransactionContext context;
  std::string opaque_text = opaque;
  Fill(context.get());
  context.get()->validate_opaque = opaque_text.data();
  confd_value_t value{};
  CONFD_SET_XMLTAG(&value, 0, 0);

  // Also when an exception passes.
  struct WatchEnd {
    PointTest* test;
    ~WatchEnd() {
      confd::WatchCalls(nullptr);
      test->disturbed_call_ = -1;
    }
  };
  calls_.clear();
  const WatchEnd end{this};
  confd::WatchCalls([this](const confd::Call& call) {
    const bool disturbed = static_cast<int>(calls_.size()) == disturbed_call_;
    calls_.push_back(call.path.empty() ? call.function
                                       : std::string(call.function) + " " + call.path);
    return disturbed ? request_ : confd::CallAction::kProceed;
  });
  const int result = LoadedModule().validate(context.get(), keypath.get(), &value);
  if (result == 0) {
    EXPECT_FALSE(context.has_error()) << "accepted, but with the text " << context.error();
    return "accepted";
  }
  EXPECT_EQ(result, -1);
  return context.has_error() ? context.error() : "refused";
}

}  // namespace tests
