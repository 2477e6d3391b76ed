#include "judge.h"

#include <libyang/libyang.h>

#include <stdexcept>
#include <utility>

#include "confd/call_count.h"
#include "ip_app_validation/ip_app_validation.h"
#include "require.h"
#include "store/diff.h"
#include "support/data_model.h"

// In a program with the leak sanitizer: what is allocated between the two is no leak.
// NOLINTBEGIN(bugprone-reserved-identifier): names of the sanitizer's interface
extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));
// NOLINTEND(bugprone-reserved-identifier)

namespace fuzz {
namespace {

constexpr char kContextName[] = "ip_app_validation";

// Whether the point takes the keypath without ending the process. What a point takes from its
// keypath has the type that the data model gives it; other nodes' keypaths may have another one.
bool IsTaken(const std::string& opaque, const confd_hkeypath_t& keypath) {
  const auto type = [&keypath](int element) { return keypath.v[element][0].type; };
  if (opaque.starts_with("validate_ipv6_nd_ra")) return type(3) == C_BUF && type(4) == C_XMLTAG;
  if (opaque.starts_with("lower_layer")) return type(1) == C_BUF;
  if (opaque.starts_with("intf_vrf")) {
    return type(0) == C_XMLTAG && (keypath.len != 6 || type(4) == C_XMLTAG);
  }
  const bool reads_kind = opaque.starts_with("ipv4_addr_va") || opaque.starts_with("ipv6_addr_va");
  return !reads_kind || type(0) == C_XMLTAG;
}

// A refusal may be silent when an argument is missing or no point has that name.
bool MayBeSilent(const CallPlan& plan) {
  const bool is_cut = !plan.opaque.ends_with("_validation") && !plan.opaque.ends_with("_again") &&
                      !plan.opaque.ends_with("_interval") && !plan.opaque.ends_with("_lifetime");
  return is_cut || (plan.fault != Fault::kNone && plan.fault != Fault::kNoContext);
}

// Leaks do not count in its life, if they are allowed.
class LeaksAllowed {
 public:
  explicit LeaksAllowed(bool allowed) : active_(allowed && __lsan_disable != nullptr) {
    if (active_) __lsan_disable();
  }
  ~LeaksAllowed() {
    if (active_) __lsan_enable();
  }
  LeaksAllowed(const LeaksAllowed&) = delete;
  LeaksAllowed& operator=(const LeaksAllowed&) = delete;

 private:
  bool active_;
};

}  // namespace

TransactionOnDevice::TransactionOnDevice(std::shared_ptr<const store::Snapshot> running,
                                         std::shared_ptr<const store::Snapshot> candidate,
                                         bool may_throw)
    : values_before_(confd::OutstandingValues()),
      candidate_(std::move(candidate)),
      datastore_(std::move(running)),
      daemon_{datastore_.OpenSocket(), datastore_.OpenSocket()},
      thandle_(datastore_.StartTransaction(candidate_)),
      may_throw_(may_throw) {
  datastore_.Attach(daemon_.maapi_socket, thandle_);
  static const auto empty = store::Snapshot::Empty(tests::DataModel());
  store::VisitChanges(*empty, *candidate_, [this](const store::Change& change) {
    if (change.candidate != nullptr) nodes_.push_back(change.candidate);
    return store::VisitResult::kRecurse;
  });
}

// One of the keypaths with which the data model has the point called.
std::unique_ptr<confd::Keypath> TransactionOnDevice::FittingKeypath(const CallPlan& plan) const {
  std::vector<const store::ValidationPoint*> statements;
  for (const store::ValidationPoint& point : tests::DataModel()->validation_points()) {
    if (plan.opaque.starts_with(point.opaque)) statements.push_back(&point);
  }
  if (statements.empty()) return AnyKeypath(plan);
  const store::ValidationPoint& point = *statements[plan.keypath % statements.size()];
  const lysc_node* list = point.call_once ? point.node : nullptr;
  const lysc_node* called = list != nullptr ? lysc_data_parent(list) : point.node;
  const auto instances = candidate_->Instances(called, nullptr);
  if (instances.empty()) return nullptr;
  const lyd_node* node = instances[plan.keypath / statements.size() % instances.size()];
  return list != nullptr ? std::make_unique<confd::Keypath>(*tests::DataModel(), node, list)
                         : std::make_unique<confd::Keypath>(*tests::DataModel(), node);
}

std::unique_ptr<confd::Keypath> TransactionOnDevice::AnyKeypath(const CallPlan& plan) const {
  if (nodes_.empty()) return nullptr;
  auto keypath =
      std::make_unique<confd::Keypath>(*tests::DataModel(), nodes_[plan.keypath % nodes_.size()]);
  return IsTaken(plan.opaque, *keypath->get()) ? std::move(keypath) : nullptr;
}

std::optional<PlannedCall> TransactionOnDevice::Plan(const CallPlan& plan) {
  auto keypath = plan.fitting ? FittingKeypath(plan) : AnyKeypath(plan);
  if (keypath == nullptr) return std::nullopt;
  keypaths_.push_back(std::move(keypath));
  return PlannedCall{plan, keypaths_.back()->get()};
}

void TransactionOnDevice::Finish() {
  keypaths_.clear();
  Require(datastore_.FinishTransaction(thandle_) == exceptions_, "cursors are destroyed");
  Require(confd::OutstandingValues() == values_before_ + 2 * exceptions_, "values are released");
}

Judge::Judge() {
  Require(lib_init(&config_) == 0 && config_ != nullptr, "lib_init makes a Config");
  registry_.Register(kContextName, config_);
}

Judge::~Judge() { lib_finish(&config_); }

std::string Judge::Ask(TransactionOnDevice& transaction, const PlannedCall& call) {
  const CallPlan& plan = call.plan;
  framework::ContextRegistry no_registry;
  framework::Daemon no_daemon;
  std::string opaque = plan.opaque;
  confd::TransactionContext context;
  context.get()->thandle = transaction.thandle();
  context.get()->vcb_opaque = plan.fault == Fault::kNoSocket ? &no_daemon : &transaction.daemon();
  context.get()->v_opaque = plan.fault == Fault::kNoContext ? &no_registry : &registry_;
  context.get()->validate_opaque = opaque.data();
  confd_value_t value{};
  CONFD_SET_XMLTAG(&value, 0, 0);

  int result = 0;
  try {
    const LeaksAllowed leaks(transaction.may_throw());
    result = validate(plan.fault == Fault::kNoTransaction ? nullptr : context.get(),
                      plan.fault == Fault::kNoKeypath ? nullptr : call.keypath,
                      plan.fault == Fault::kNoValue ? nullptr : &value);
  } catch (const std::out_of_range& exception) {
    // The other two documented ones, std::invalid_argument and boost::system::system_error, need
    // a key of OSPFv2 that is no number or no address, and the data model has none.
    Require(transaction.may_throw(), std::string("no reason to throw: ") + exception.what());
    Require(!context.has_error(), "an exception sets no text");
    transaction.CountException();
    return std::string("exception ") + exception.what();
  }
  framework::TakeLogLines();
  framework::TakeFaults();
  Require(result == 0 || result == -1, "0 or -1, not " + std::to_string(result));
  if (result == 0) {
    Require(!context.has_error(), "accepted without a text, not with " + context.error());
    return "accepted";
  }
  Require(context.has_error() != MayBeSilent(plan), plan.opaque + ": a text with every refusal");
  return context.has_error() ? "refused: " + context.error() : "refused";
}

}  // namespace fuzz
