// Everything that drives the stand-in.
#ifndef CONFD_STORE_H_
#define CONFD_STORE_H_

#include "confd/call_count.h"
#include "confd/keypath.h"
#include "confd/transaction.h"
#include "store/diff.h"
#include "store/error.h"
#include "store/schema.h"
#include "store/schema_node.h"
#include "store/snapshot.h"
#include "store/tags.h"

namespace confd {

using store::Change;
using store::ChangeKind;
using store::Dependency;
using store::Error;
using store::Schema;
using store::SchemaPath;
using store::Snapshot;
using store::TagOf;
using store::TagTable;
using store::ValidationPoint;
using store::VisitChanges;
using store::VisitResult;

}  // namespace confd

#endif  // CONFD_STORE_H_
