// The folder with the data model, as a user names it.
#ifndef HOST_INPUT_DATA_MODEL_H_
#define HOST_INPUT_DATA_MODEL_H_

#include <memory>
#include <string>

#include "store/schema.h"

namespace ipvald {

/// The data model in `directory`, with its validation points.
/// @throws InputError  it cannot be used, with the file where that shows
std::shared_ptr<const store::Schema> LoadDataModel(const std::string& directory);

}  // namespace ipvald

#endif  // HOST_INPUT_DATA_MODEL_H_
