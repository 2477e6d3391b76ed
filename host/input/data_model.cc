#include "data_model.h"

#include "input_error.h"
#include "one_line.h"
#include "store/error.h"

namespace ipvald {

std::shared_ptr<const store::Schema> LoadDataModel(const std::string& directory) {
  try {
    return store::Schema::Load(directory);
  } catch (const store::Error& error) {
    throw InputError(OneLine(error.what()));
  }
}

}  // namespace ipvald
