#include "data_model.h"

#include "input_error.h"
#include "one_line.h"

namespace ipvald {

std::shared_ptr<const confd::Schema> LoadDataModel(const std::string& directory) {
  try {
    return confd::Schema::Load(directory);
  } catch (const confd::Error& error) {
    throw InputError(OneLine(error.what()));
  }
}

}  // namespace ipvald
