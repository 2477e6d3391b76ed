// The project's data model.
#ifndef TESTS_SUPPORT_DATA_MODEL_H_
#define TESTS_SUPPORT_DATA_MODEL_H_

#include <memory>

#include "store/schema.h"

namespace tests {

/// Loaded at the first use, and alive to the end of the program. The symbols that ConfD prints are
/// those of the model that was loaded last: a test of several models loads its own.
inline const std::shared_ptr<const store::Schema>& DataModel() {
  static const std::shared_ptr<const store::Schema> schema =
      store::Schema::Load(IPAV_SOURCE_DIR "/yang");
  return schema;
}

}  // namespace tests

#endif  // TESTS_SUPPORT_DATA_MODEL_H_
