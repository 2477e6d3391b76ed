// The data model for tests of the host, loaded once for the whole program.
#ifndef TESTS_HOST_DATA_MODEL_H_
#define TESTS_HOST_DATA_MODEL_H_

#include <memory>

#include "store/schema.h"

inline std::shared_ptr<const store::Schema> DataModel() {
  static const std::shared_ptr<const store::Schema> schema =
      store::Schema::Load(IPAV_SOURCE_DIR "/yang");
  return schema;
}

#endif  // TESTS_HOST_DATA_MODEL_H_
