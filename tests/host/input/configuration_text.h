// Configurations from texts, for tests of what is read and what is refused.
#ifndef TESTS_HOST_INPUT_CONFIGURATION_TEXT_H_
#define TESTS_HOST_INPUT_CONFIGURATION_TEXT_H_

#include <memory>
#include <ostream>
#include <string>

#include "configuration_file.h"
#include "support/data_model.h"

inline std::shared_ptr<const store::Snapshot> ParseText(const std::string& text) {
  return ipvald::ParseConfiguration(tests::DataModel(), "input", text).snapshot;
}

/// The error of reading `text`, whose file is called "input"; "accepted" when there is none.
inline std::string ErrorOfText(const std::string& text) {
  try {
    ParseText(text);
  } catch (const ipvald::InputError& error) {
    return error.what();
  }
  return "accepted";
}

/// A text and what ErrorOfText says of it.
struct TextErrorCase {
  const char* name;
  std::string text;
  std::string error;
};

inline std::ostream& operator<<(std::ostream& out, const TextErrorCase& row) {
  return out << row.name;
}

/// A configuration in XML whose L3 interface holds `leaves`, which begin on line 4.
inline std::string XmlWithL3(const std::string& leaves) {
  return "<config xmlns=\"urn:velmor:yang:config\">\n<interface>\n"
         "<l3 xmlns=\"urn:velmor:yang:ip-app\">\n" +
         leaves + "</l3>\n</interface>\n</config>\n";
}

/// The same in JSON; `members` begin on line 4.
inline std::string JsonWithL3(const std::string& members) {
  return "{\"velmor-config:config\": {\n\"interface\": {\n\"velmor-ip-app:l3\": [{\n" + members +
         "}]\n}\n}}\n";
}

#endif  // TESTS_HOST_INPUT_CONFIGURATION_TEXT_H_
