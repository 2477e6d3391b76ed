// Keypaths for a host or a test that calls a plug-in. A device offers nothing of it.
#ifndef CONFD_KEYPATH_H_
#define CONFD_KEYPATH_H_

#include <memory>
#include <string>

#include "confd_lib.h"
#include "store/schema.h"
#include "store/snapshot.h"

namespace confd {

/// A keypath that owns its values.
class Keypath {
 public:
  /// Path of a data node.
  Keypath(const store::Schema& schema, const lyd_node* node);
  /// Path of the list `list` without keys, below `parent` (null for a top-level list).
  Keypath(const store::Schema& schema, const lyd_node* parent, const lysc_node* list);
  /// Path of what `path` names in a configuration, in the text form of MAAPI paths.
  /// @throws Error  it names nothing, or nothing that is there.
  Keypath(const store::Snapshot& configuration, const std::string& path);
  /// An empty one, to be set.
  Keypath();
  ~Keypath();
  Keypath(const Keypath&) = delete;
  Keypath& operator=(const Keypath&) = delete;

  /// Makes it the path of another data node, which costs less than a new one.
  void Set(const store::Schema& schema, const lyd_node* node);

  confd_hkeypath_t* get() { return path_.get(); }

  /// Text form, for example /config/interface/l3{7}/ipv6/nd/ra.
  std::string text() const;

 private:
  std::unique_ptr<confd_hkeypath_t> path_;
};

}  // namespace confd

#endif  // CONFD_KEYPATH_H_
