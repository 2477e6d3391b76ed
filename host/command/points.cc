#include "points.h"

#include "data_model.h"
#include "exit_status.h"
#include "report_json.h"
#include "report_text.h"
#include "standard_output.h"

namespace ipvald {

int RunPoints(const Options& options) {
  const auto schema = LoadDataModel(options.yang);
  const auto& points = schema->validation_points();
  Print(options.format == Format::kJson ? JsonPoints(points) : TextPoints(points));
  return kDone;
}

}  // namespace ipvald
