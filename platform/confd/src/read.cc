#include "read.h"

#include <string>

#include <libyang/libyang.h>

#include "errors.h"
#include "store/schema_node.h"

namespace confd {

int ReadExists(const store::Place& place) { return place.exists ? 1 : 0; }

int ReadInstanceCount(const store::Snapshot& configuration, const store::Place& place) {
  if (!place.without_keys) return Fail(CONFD_ERR_BADPATH, "not the path of a list");
  if (!place.exists) {
    return Fail(CONFD_ERR_NOEXISTS, store::SchemaPath(place.schema) + " has no parent here");
  }
  return static_cast<int>(configuration.List(place.parent, place.schema).entries().size());
}

int ReadValue(const store::Place& place, confd_value_t* value) {
  if (place.schema == nullptr || place.schema->nodetype != LYS_LEAF) {
    return Fail(CONFD_ERR_BADPATH, "not the path of a leaf");
  }
  if (place.node == nullptr) {
    return Fail(CONFD_ERR_NOEXISTS, store::SchemaPath(place.schema) + " does not exist here");
  }
  const confd_value_t read = LeafValue(place.node);
  if (read.type == C_NOEXISTS) {
    return Fail(CONFD_ERR_NOT_IMPLEMENTED,
                store::SchemaPath(place.schema) + " has a type not carried");
  }
  *value = read;
  return CONFD_OK;
}

int GiveValue(const store::Place& place, confd_value_t* value) {
  if (ReadValue(place, value) != CONFD_OK) return CONFD_ERR;
  if (WrongValue()) ReplaceByOtherType(value);
  return CONFD_OK;
}

int WrongType(const store::Place& place) {
  return Fail(CONFD_ERR_BADTYPE, store::SchemaPath(place.schema) + " has another type");
}

}  // namespace confd
