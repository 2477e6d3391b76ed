#include "input_error.h"

#include "one_line.h"

namespace ipvald {

std::string DisplayName(const std::string& file) {
  if (file == "-") return "standard input";
  return file.empty() ? "\"\"" : OneLine(file);
}

InputError LocatedError(const std::string& name, size_t line, std::string_view message) {
  const std::string place = line == 0 ? name : name + ":" + std::to_string(line);
  return InputError(place + ": " + OneLine(message));
}

}  // namespace ipvald
