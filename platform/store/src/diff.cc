#include "store/diff.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

#include "store/list_index.h"
#include "store/schema_node.h"

namespace store {
namespace {

bool IsPresenceContainer(const lysc_node* node) {
  return node->nodetype == LYS_CONTAINER && (node->flags & LYS_PRESENCE) != 0;
}

// Texts of one context are shared, so equal ones mostly have one address.
bool SameValue(const lyd_node* a, const lyd_node* b) {
  const char* x = lyd_get_value(a);
  const char* y = lyd_get_value(b);
  return x == y || std::strcmp(x, y) == 0;
}

// Whether two instances of one node hold the same, in the same order. False does not mean that
// there is a change: entries of a list may stand in another order that means nothing.
bool LookAlike(const lyd_node* a, const lyd_node* b) {
  if ((a->schema->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0) return SameValue(a, b);
  const lyd_node* x = lyd_child(a);
  const lyd_node* y = lyd_child(b);
  for (; x != nullptr && y != nullptr; x = x->next, y = y->next) {
    if (x->schema != y->schema || !LookAlike(x, y)) return false;
  }
  return x == nullptr && y == nullptr;
}

// For each number its place in `numbers`; which of them are not on a longest increasing run. These
// are the fewest entries that have to move to turn the running order into the candidate's.
std::vector<bool> OffLongestRun(const std::vector<size_t>& numbers) {
  std::vector<size_t> run_ends;  // positions of the smallest last number of a run of each length
  std::vector<size_t> before(numbers.size(), SIZE_MAX);
  for (size_t i = 0; i < numbers.size(); ++i) {
    const auto place =
        std::lower_bound(run_ends.begin(), run_ends.end(), numbers[i],
                         [&](size_t position, size_t value) { return numbers[position] < value; });
    if (place != run_ends.begin()) before[i] = *(place - 1);
    if (place == run_ends.end()) {
      run_ends.push_back(i);
    } else {
      *place = i;
    }
  }
  std::vector<bool> off(numbers.size(), true);
  if (!run_ends.empty()) {
    for (size_t i = run_ends.back(); i != SIZE_MAX; i = before[i]) off[i] = false;
  }
  return off;
}

// Walks both configurations side by side, in schema order. A null node stands for "absent".
class DiffWalk {
 public:
  DiffWalk(const Snapshot& running, const Snapshot& candidate, bool presence_containers,
           const std::function<VisitResult(const Change&)>& visit)
      : running_(running),
        candidate_(candidate),
        presence_containers_(presence_containers),
        visit_(visit) {}

  void Children(const lysc_node* schema, const lyd_node* old_parent, const lyd_node* new_parent) {
    for (const lysc_node* child : candidate_.schema().Children(schema)) {
      if (IsListLike(child)) {
        List(child, schema, old_parent, new_parent);
      } else {
        Node(schema != nullptr && old_parent == nullptr ? nullptr
                                                        : running_.Child(old_parent, child),
             schema != nullptr && new_parent == nullptr ? nullptr
                                                        : candidate_.Child(new_parent, child));
      }
      if (stopped_ || skipping_) return;
    }
  }

  void List(const lysc_node* list, const lysc_node* parent_schema, const lyd_node* old_parent,
            const lyd_node* new_parent) {
    static const std::vector<const lyd_node*> kNone;
    const bool top = parent_schema == nullptr;
    const bool in_old = top || old_parent != nullptr;
    const bool in_new = top || new_parent != nullptr;
    const auto& old_entries = in_old ? running_.List(old_parent, list).entries() : kNone;
    const auto& new_entries = in_new ? candidate_.List(new_parent, list).entries() : kNone;
    if (lysc_is_userordered(list)) {
      UserOrderedEntries(list, old_parent, old_entries, new_parent, new_entries);
    } else {
      SortedEntries(old_entries, new_entries);
    }
  }

  void Node(const lyd_node* old_node, const lyd_node* new_node) {
    if (old_node == nullptr && new_node == nullptr) return;
    const lysc_node* schema = (new_node != nullptr ? new_node : old_node)->schema;
    if (schema->nodetype == LYS_LEAF) {
      Leaf(old_node, new_node);
    } else if (IsPresenceContainer(schema)) {
      Instance(old_node, new_node, presence_containers_);
    } else if (schema->nodetype == LYS_CONTAINER) {
      if (old_node != nullptr && new_node != nullptr && LookAlike(old_node, new_node)) return;
      Children(schema, old_node, new_node);
    }
  }

  // A list entry, or a presence container.
  void Instance(const lyd_node* old_node, const lyd_node* new_node, bool report_modified) {
    if (new_node == nullptr) {
      Emit({ChangeKind::kDeleted, old_node, nullptr});
      return;
    }
    if (old_node == nullptr) {
      const VisitResult answer = Emit({ChangeKind::kCreated, nullptr, new_node});
      if (!stopped_ && !skipping_ && answer == VisitResult::kRecurse) {
        Children(new_node->schema, nullptr, new_node);
      }
      return;
    }
    if (LookAlike(old_node, new_node)) return;
    if (report_modified)
      unreported_.push_back({{ChangeKind::kModified, old_node, new_node}, depth_});
    ++depth_;
    Children(new_node->schema, old_node, new_node);
    --depth_;
    if (!unreported_.empty() && unreported_.back().depth == depth_) unreported_.pop_back();
    if (skipping_ && depth_ == skip_to_depth_) skipping_ = false;
  }

 private:
  struct Entered {
    Change change;
    size_t depth;  // of the instance, before it was entered
  };

  void Leaf(const lyd_node* old_node, const lyd_node* new_node) {
    if (new_node == nullptr) {
      Emit({ChangeKind::kDeleted, old_node, nullptr});
    } else if (old_node == nullptr || !SameValue(old_node, new_node)) {
      const bool is_empty =
          reinterpret_cast<const lysc_node_leaf*>(new_node->schema)->type->basetype ==
          LY_TYPE_EMPTY;
      Emit({is_empty ? ChangeKind::kCreated : ChangeKind::kValueSet, old_node, new_node});
    }
  }

  void SortedEntries(const std::vector<const lyd_node*>& old_entries,
                     const std::vector<const lyd_node*>& new_entries) {
    auto a = old_entries.begin();
    auto b = new_entries.begin();
    while ((a != old_entries.end() || b != new_entries.end()) && !stopped_ && !skipping_) {
      int order = 0;
      if (a == old_entries.end()) {
        order = 1;
      } else if (b == new_entries.end()) {
        order = -1;
      } else {
        order = CompareEntries(*a, *b);
      }
      Instance(order <= 0 ? *a : nullptr, order >= 0 ? *b : nullptr, true);
      if (order <= 0) ++a;
      if (order >= 0) ++b;
    }
  }

  // Deleted entries first, then the candidate's order.
  void UserOrderedEntries(const lysc_node* list, const lyd_node* old_parent,
                          const std::vector<const lyd_node*>& old_entries,
                          const lyd_node* new_parent,
                          const std::vector<const lyd_node*>& new_entries) {
    std::unordered_map<const lyd_node*, size_t> new_position;
    std::vector<size_t>
        kept;  // candidate positions of the running entries that stay, in running order
    for (const lyd_node* old_entry : old_entries) {
      const lyd_node* new_entry =
          new_entries.empty() ? nullptr
                              : candidate_.List(new_parent, list).Find(JoinedKey(old_entry));
      if (new_entry == nullptr) {
        Instance(old_entry, nullptr, true);
        if (stopped_ || skipping_) return;
      } else {
        if (new_position.empty()) {
          for (size_t i = 0; i < new_entries.size(); ++i) new_position[new_entries[i]] = i;
        }
        kept.push_back(new_position.at(new_entry));
      }
    }
    const std::vector<bool> kept_moved = OffLongestRun(kept);
    std::vector<bool> moved(new_entries.size(), false);
    for (size_t i = 0; i < kept.size(); ++i) moved[kept[i]] = kept_moved[i];
    for (size_t i = 0; i < new_entries.size() && !stopped_ && !skipping_; ++i) {
      const lyd_node* new_entry = new_entries[i];
      const lyd_node* old_entry = old_entries.empty()
                                      ? nullptr
                                      : running_.List(old_parent, list).Find(JoinedKey(new_entry));
      if (moved[i]) {
        const lyd_node* after = i == 0 ? nullptr : new_entries[i - 1];
        const VisitResult answer = Emit({ChangeKind::kMovedAfter, old_entry, new_entry, after});
        if (stopped_ || skipping_) return;
        if (answer == VisitResult::kContinue) continue;
      }
      Instance(old_entry, new_entry, true);
    }
  }

  // Reports the modified entries above the change that were not yet reported, then the change
  // itself.
  VisitResult Emit(const Change& change) {
    const std::vector<Entered> above = std::move(unreported_);
    unreported_.clear();
    for (const Entered& entered : above) {
      const VisitResult answer = visit_(entered.change);
      if (answer == VisitResult::kStop) {
        stopped_ = true;
        return answer;
      }
      if (answer == VisitResult::kContinue) {
        // The rest of this entry is not wanted: unwind to where it was entered.
        skipping_ = true;
        skip_to_depth_ = entered.depth;
        return answer;
      }
    }
    const VisitResult answer = visit_(change);
    if (answer == VisitResult::kStop) stopped_ = true;
    return answer;
  }

  const Snapshot& running_;
  const Snapshot& candidate_;
  const bool presence_containers_;
  const std::function<VisitResult(const Change&)>& visit_;
  std::vector<Entered> unreported_;  // modified entries that were entered without a change so far
  size_t depth_ = 0;                 // changed instances entered
  size_t skip_to_depth_ = 0;
  bool skipping_ = false;
  bool stopped_ = false;
};

}  // namespace

void VisitChanges(const Snapshot& running, const Snapshot& candidate,
                  const std::function<VisitResult(const Change&)>& visit) {
  DiffWalk(running, candidate, true, visit).Children(nullptr, nullptr, nullptr);
}

void VisitChangesBelow(const Snapshot& running, const Place& running_place,
                       const Snapshot& candidate, const Place& candidate_place,
                       bool presence_containers,
                       const std::function<VisitResult(const Change&)>& visit) {
  DiffWalk walk(running, candidate, presence_containers, visit);
  const lysc_node* schema = candidate_place.schema;
  if (schema == nullptr) {
    walk.Children(nullptr, nullptr, nullptr);
  } else if (candidate_place.without_keys) {
    walk.List(schema, DataParent(schema), running_place.parent, candidate_place.parent);
  } else if (schema->nodetype == LYS_LIST) {
    if (running_place.node == nullptr && candidate_place.node == nullptr) return;
    walk.Instance(running_place.node, candidate_place.node, true);
  } else {
    walk.Node(running_place.node, candidate_place.node);
  }
}

}  // namespace store
