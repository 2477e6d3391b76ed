// What a host or a test needs in order to drive the stand-in: load the data model, hold
// configurations, open transactions, watch the calls. The plug-in never includes this header: a
// device offers nothing of it.
//
// Life of the objects: Schema <- Snapshot <- Datastore. Everything here is single-threaded.
#ifndef CONFD_STORE_H_
#define CONFD_STORE_H_

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "confd_dp.h"
#include "confd_lib.h"

struct ly_ctx;
struct lyd_node;
struct lysc_node;

namespace confd {

/// The data model or a configuration cannot be used. what() is one line; line() is where libyang
/// saw it, 0 if unknown.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& what, uint64_t line = 0)
      : std::runtime_error(what), line_(line) {}
  uint64_t line() const { return line_; }

 private:
  uint64_t line_;
};

/// One path of a tailf:dependency statement, resolved.
struct Dependency {
  const lysc_node* node;
  bool absolute;  // written as an absolute path: a change there concerns every instance
};

/// One tailf:validate statement, attached to `node`.
struct ValidationPoint {
  std::string id;
  std::string opaque;  // name under which the plug-in knows the point
  bool call_once = false;
  int priority = 0;
  std::vector<Dependency> dependencies;
  const lysc_node* node = nullptr;
};

/// The compiled data model with its tags and validation points. Immutable.
class Schema {
 public:
  /// Loads every module in `yang_dir`. Of the schemas that are alive, the one loaded last names the
  /// tags for confd_hash2str and confd_pp_kpath.
  /// @throws Error  no module there, one does not compile, two names have one tag, a path or the
  /// keys of a list do not fit a keypath, or a dependency names no node.
  static std::shared_ptr<const Schema> Load(const std::filesystem::path& yang_dir);

  virtual ~Schema() = default;
  virtual ly_ctx* context() const = 0;

  /// In schema order of their nodes, then statement order.
  virtual const std::vector<ValidationPoint>& validation_points() const = 0;

  /// Tag and namespace numbers of a node.
  virtual xml_tag tag(const lysc_node* node) const = 0;
};

/// Path of a schema node without keys, such as "/config/interface/l3".
std::string SchemaPath(const lysc_node* node);

/// One configuration: an immutable data tree that satisfies the data model, with an index over its
/// lists.
class Snapshot {
 public:
  /// An empty configuration, with the containers and defaults that are always there.
  static std::shared_ptr<const Snapshot> Empty(std::shared_ptr<const Schema> schema);

  /// Parses and validates XML (text begins with '<') or JSON. For tests and programs that hold
  /// text.
  /// @throws Error  text does not parse or does not satisfy the data model.
  static std::shared_ptr<const Snapshot> FromText(std::shared_ptr<const Schema> schema,
                                                  const std::string& text);

  /// Takes a tree that lyd_validate_all accepted; owned from here on.
  static std::shared_ptr<const Snapshot> FromTree(std::shared_ptr<const Schema> schema,
                                                  lyd_node* tree);
  virtual ~Snapshot() = default;

  virtual const Schema& schema() const = 0;
  virtual const lyd_node* tree() const = 0;

  /// Instances of `node` at or below `ancestor` (anywhere when null), in walk order: key order, or
  /// configuration order for a list that the user orders.
  virtual std::vector<const lyd_node*> Instances(const lysc_node* node,
                                                 const lyd_node* ancestor) const = 0;

  /// The node of this tree with the same path and keys as `node` of another snapshot, or null.
  virtual const lyd_node* Counterpart(const lyd_node* node) const = 0;
};

/// One change between two snapshots. `running` is null for a created node, `candidate` for a
/// deleted one. `after` is the entry behind which a moved entry now stands, null when it is the
/// first.
struct Change {
  confd_iter_op op;
  const lyd_node* running;
  const lyd_node* candidate;
  const lyd_node* after = nullptr;

  const lyd_node* node() const { return candidate != nullptr ? candidate : running; }
};

/// Walks the changes from `running` to `candidate` in the order and with the rules of
/// maapi_diff_iterate with ITER_WANT_P_CONTAINER: presence containers are reported.
void VisitChanges(const Snapshot& running, const Snapshot& candidate,
                  const std::function<confd_iter_ret(const Change&)>& visit);

/// A keypath that owns its values.
class Keypath {
 public:
  /// Path of a data node.
  Keypath(const Schema& schema, const lyd_node* node);
  /// Path of the list `list` without keys, below `parent` (null for a top-level list).
  Keypath(const Schema& schema, const lyd_node* parent, const lysc_node* list);
  /// Path of what `path` names in a configuration, in the text form of MAAPI paths.
  /// @throws Error  it names nothing, or nothing that is there.
  Keypath(const Snapshot& configuration, const std::string& path);
  /// An empty one, to be set.
  Keypath();
  ~Keypath();
  Keypath(const Keypath&) = delete;
  Keypath& operator=(const Keypath&) = delete;

  /// Makes it the path of another data node, which costs less than a new one.
  void Set(const Schema& schema, const lyd_node* node);

  confd_hkeypath_t* get() { return path_.get(); }

  /// Text form, for example /config/interface/l3{7}/ipv6/nd/ra.
  std::string text() const;

 private:
  std::unique_ptr<confd_hkeypath_t> path_;
};

/// One configuration database: a running configuration, at most a few open transactions on it, and
/// sockets. Handles are numbers unique in the process. Destroying the datastore ends its
/// transactions and closes its sockets.
class Datastore {
 public:
  explicit Datastore(std::shared_ptr<const Snapshot> running);
  ~Datastore();
  Datastore(const Datastore&) = delete;
  Datastore& operator=(const Datastore&) = delete;

  /// A socket for MAAPI or CDB calls, 0 or more.
  int OpenSocket();

  /// @returns the transaction handle for MAAPI calls.
  int StartTransaction(std::shared_ptr<const Snapshot> candidate);

  /// Gives `sock` access to the transaction, as maapi_attach does.
  void Attach(int sock, int thandle);

  /// Ends the transaction; sockets attached to it are detached and its cursors answer no more.
  /// @returns number of cursors still open on it; 0 when every walk was ended.
  int FinishTransaction(int thandle);

 private:
  int id_;
};

/// A transaction context ready for a validation callback; frees the error text.
class TransactionContext {
 public:
  TransactionContext() = default;
  ~TransactionContext();
  TransactionContext(const TransactionContext&) = delete;
  TransactionContext& operator=(const TransactionContext&) = delete;

  confd_trans_ctx* get() { return &ctx_; }

  /// Whether confd_trans_seterr was called since the last ClearError, and the text.
  bool has_error() const { return ctx_.error.str != nullptr; }
  std::string error() const { return has_error() ? ctx_.error.str : ""; }
  void ClearError();

 private:
  confd_trans_ctx ctx_{};
};

/// One call of a maapi_, cdb_ or confd_free_value function. `path` is the formatted path text,
/// empty where there is none.
struct Call {
  const char* function;
  std::string path;
};

/// What the call shall do.
///
/// kFail: return CONFD_ERR with CONFD_ERR_INTERNAL. A step of a cursor then holds no entry;
/// functions without a result proceed.
///
/// kWrongType: find a value of another type than the data model promises, an int32 where there is a
/// text and a text where there is anything else.
///   maapi_get_elem, cdb_get           give that value
///   typed reads (maapi_get_int8_elem  fail with CONFD_ERR_BADTYPE and leave their output alone, as
///   to cdb_get_int32)                 when the data model has another type
///   maapi_get_next                    gives an entry with one key of another type
///   maapi_diff_iterate,               report every change with one value of another type
///   maapi_keypath_diff_iterate
///   all others                        proceed
enum class CallAction { kProceed, kFail, kWrongType };

/// What a watcher wants of a call.
struct CallRequest {
  /// Implicit, so that a watcher may return the action alone.
  CallRequest(CallAction wanted, size_t which = 0) : action(wanted), position(which) {}

  CallAction action;
  /// Of the value that kWrongType changes, where there are several: of a key among the keys; in a
  /// report of a change 0 for the new value, i + 1 for the first value of element i of the keypath.
  /// Values that are not there stay so.
  size_t position;
};

/// Sees every call before it is carried out, and says what it shall do. An empty function switches
/// the watching off.
void WatchCalls(std::function<CallRequest(const Call&)> watcher);

/// Calls since the process began, not counting confd_free_value.
uint64_t CallCount();

/// Values with memory of their own that were handed to callers and not yet released.
int64_t OutstandingValues();

}  // namespace confd

#endif  // CONFD_STORE_H_
