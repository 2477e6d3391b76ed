#include "triggers.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "confd/keypath.h"

namespace ipvald {
namespace {

bool IsAncestorOrSelf(const lysc_node* ancestor, const lysc_node* node) {
  for (; node != nullptr; node = lysc_data_parent(node)) {
    if (node == ancestor) return true;
  }
  return false;
}

bool OnOneLine(const lysc_node* a, const lysc_node* b) {
  return IsAncestorOrSelf(a, b) || IsAncestorOrSelf(b, a);
}

// Lowest data node that is `a` or above it, and `b` or above it; null when there is none.
const lysc_node* LowestCommonAncestor(const lysc_node* a, const lysc_node* b) {
  while (a != nullptr && !IsAncestorOrSelf(a, b)) a = lysc_data_parent(a);
  return a;
}

// From `node` up to `ancestor`, which is above it or itself.
int StepsUp(const lysc_node* node, const lysc_node* ancestor) {
  int steps = 0;
  for (; node != ancestor; node = lysc_data_parent(node)) ++steps;
  return steps;
}

// The schema node whose instances are called: the point's own, or the parent of a list that is
// called as a whole (null for a top-level list, which has one call).
const lysc_node* CalledNode(const store::ValidationPoint& point) {
  return point.call_once ? lysc_data_parent(point.node) : point.node;
}

// The calls of one point, collected while the changes pass by.
class PointCalls {
 public:
  // Which called instances a change of one schema node concerns.
  struct Concern {
    // Those below the lowest node that the called node and a dependency have in common; everything
    // when null.
    const lysc_node* common;
    // Steps from the changed node up to the common one; none when the changed node lies above it
    // and takes its place.
    int steps_up;
    bool is_cause;
  };

  explicit PointCalls(const store::ValidationPoint& point)
      : point_(point), called_(CalledNode(point)), dependencies_(point.dependencies) {
    const bool is_leaf = (point.node->nodetype & LYD_NODE_TERM) != 0;
    if (is_leaf && !dependencies_.empty()) dependencies_.push_back({point.node, false});
  }

  // One for each dependency that a change of a `changed` node touches.
  std::vector<Concern> ConcernsOf(const lysc_node* changed) const {
    if (dependencies_.empty()) return {{nullptr, 0, false}};
    std::vector<Concern> concerns;
    for (const store::Dependency& dependency : dependencies_) {
      if (!OnOneLine(changed, dependency.node)) continue;
      const lysc_node* common =
          dependency.absolute ? nullptr : LowestCommonAncestor(called_, dependency.node);
      const bool is_below = IsAncestorOrSelf(common, changed);
      concerns.push_back({common, is_below ? StepsUp(changed, common) : 0, true});
    }
    return concerns;
  }

  void Add(const store::Change& change, const Concern& concern, const store::Snapshot& candidate) {
    const Cause cause = concern.is_cause ? Cause(change) : std::nullopt;
    if (concern.common == nullptr) {
      AddInstances(nullptr, cause, candidate);
      return;
    }
    const lyd_node* anchor = change.node();
    for (int i = 0; i < concern.steps_up; ++i) anchor = lyd_parent(anchor);
    if (change.candidate == nullptr) anchor = CounterpartOf(anchor, candidate);
    if (anchor != nullptr) AddInstances(anchor, cause, candidate);
  }

  // Appends the calls in instance order.
  void Take(const store::Snapshot& candidate, std::vector<TriggeredCall>& calls) const {
    if (causes_.empty()) return;
    if (called_ == nullptr) {
      calls.push_back({{&point_, nullptr, nullptr}, causes_.begin()->second});
      return;
    }
    for (const lyd_node* node : InOrder(candidate)) {
      const auto& cause = causes_.at(node);
      calls.push_back(
          {{&point_, point_.call_once ? nullptr : node, point_.call_once ? node : nullptr}, cause});
    }
  }

 private:
  using Cause = std::optional<store::Change>;

  // Counterpart of a node of the running configuration; the deletion of many entries asks for the
  // same few again.
  const lyd_node* CounterpartOf(const lyd_node* node, const store::Snapshot& candidate) {
    const auto [found, is_new] = counterparts_.try_emplace(node);
    if (is_new) found->second = candidate.Counterpart(node);
    return found->second;
  }

  // Adds every called instance at or below `anchor`, anywhere when it is null, unless that was done
  // before.
  void AddInstances(const lyd_node* anchor, const Cause& cause, const store::Snapshot& candidate) {
    // Changes of one entry come one behind the other.
    if (!anchors_.empty() && anchor == last_anchor_) return;
    last_anchor_ = anchor;
    if (!anchors_.insert(anchor).second) return;
    if (called_ == nullptr) {
      causes_.try_emplace(nullptr, cause);
    } else if (anchor != nullptr && anchor->schema == called_) {
      causes_.try_emplace(anchor, cause);
    } else {
      for (const lyd_node* node : candidate.Instances(called_, anchor))
        causes_.try_emplace(node, cause);
    }
  }

  std::vector<const lyd_node*> InOrder(const store::Snapshot& candidate) const {
    if (causes_.size() == 1) return {causes_.begin()->first};
    std::vector<const lyd_node*> ordered = candidate.Instances(called_, nullptr);
    const auto is_not_called = [this](const lyd_node* node) { return causes_.count(node) == 0; };
    ordered.erase(std::remove_if(ordered.begin(), ordered.end(), is_not_called), ordered.end());
    return ordered;
  }

  const store::ValidationPoint& point_;
  const lysc_node* called_;
  std::vector<store::Dependency> dependencies_;
  std::unordered_map<const lyd_node*, const lyd_node*> counterparts_;
  std::unordered_set<const lyd_node*> anchors_;
  const lyd_node* last_anchor_ = nullptr;
  std::unordered_map<const lyd_node*, Cause> causes_;  // by called instance
};

using ConcernedPointList = std::vector<std::pair<PointCalls*, PointCalls::Concern>>;

ConcernedPointList ConcernedPoints(std::vector<PointCalls>& points, const lysc_node* changed) {
  ConcernedPointList concerned;
  for (PointCalls& point : points) {
    for (const PointCalls::Concern& concern : point.ConcernsOf(changed)) {
      concerned.emplace_back(&point, concern);
    }
  }
  return concerned;
}

const char* VerbOf(store::ChangeKind kind) {
  switch (kind) {
    case store::ChangeKind::kCreated:
      return "created ";
    case store::ChangeKind::kDeleted:
      return "deleted ";
    case store::ChangeKind::kMovedAfter:
      return "moved ";
    default:
      return "changed ";
  }
}

}  // namespace

std::vector<TriggeredCall> FindTriggeredCalls(const store::Snapshot& running,
                                              const store::Snapshot& candidate) {
  std::vector<PointCalls> points;
  for (const store::ValidationPoint& point : candidate.schema().validation_points()) {
    points.emplace_back(point);
  }
  std::unordered_map<const lysc_node*, ConcernedPointList> concerned_by;
  store::VisitChanges(running, candidate, [&](const store::Change& change) {
    // A modified entry is only the way to a change below it.
    if (change.kind == store::ChangeKind::kModified) return store::VisitResult::kRecurse;
    const lysc_node* changed = change.node()->schema;
    const auto [concerned, is_new] = concerned_by.try_emplace(changed);
    if (is_new) concerned->second = ConcernedPoints(points, changed);
    for (const auto& [point, concern] : concerned->second) point->Add(change, concern, candidate);
    return store::VisitResult::kRecurse;
  });

  std::vector<size_t> order(points.size());
  std::iota(order.begin(), order.end(), size_t{0});
  const auto& declared = candidate.schema().validation_points();
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return declared[a].priority < declared[b].priority; });
  std::vector<TriggeredCall> calls;
  for (const size_t i : order) points[i].Take(candidate, calls);
  return calls;
}

std::string ReasonOf(const store::Schema& schema, const TriggeredCall& call) {
  if (!call.cause) return "called at every validation";
  return VerbOf(call.cause->kind) + confd::Keypath(schema, call.cause->node()).text();
}

}  // namespace ipvald
