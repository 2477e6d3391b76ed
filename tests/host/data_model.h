// The data model for tests of the host, loaded once for the whole program.
#ifndef TESTS_HOST_DATA_MODEL_H_
#define TESTS_HOST_DATA_MODEL_H_

#include <memory>

#include "confd/store.h"

inline std::shared_ptr<const confd::Schema> DataModel() {
  static const std::shared_ptr<const confd::Schema> schema =
      confd::Schema::Load(IPAV_SOURCE_DIR "/yang");
  return schema;
}

#endif  // TESTS_HOST_DATA_MODEL_H_
