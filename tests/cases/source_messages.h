// The texts for operators that a source of the plug-in makes.
#ifndef TESTS_CASES_SOURCE_MESSAGES_H_
#define TESTS_CASES_SOURCE_MESSAGES_H_

#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// One expression that makes a text: its string literals in their order, with what the code fills
/// in between them and at the ends left open.
struct SourceMessage {
  std::string place;  // "file:line"
  /// At least one. Two neighbours have something filled in between them.
  std::vector<std::string> pieces;
  bool begins_open = false;
  bool ends_open = false;
};

std::ostream& operator<<(std::ostream& out, const SourceMessage& message);

/// The expressions behind `error_ =`, and the formats of confd_trans_seterr with a literal among
/// their arguments. A constant kName counts as the literal that the same source gives it.
///
/// @param file  name to report
/// @throws std::runtime_error  a text is made in a way that is not understood, so that one could be
///                             missed: the text begins with the place
std::vector<SourceMessage> CollectMessages(const std::string& file, const std::string& source);

/// Whether `text`, a message as a document writes it, has all pieces in their order and places.
bool IsMadeBy(const SourceMessage& message, const std::string& text);

#endif  // TESTS_CASES_SOURCE_MESSAGES_H_
