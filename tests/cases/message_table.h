// The tables of docs/checks.md as data.
#ifndef TESTS_CASES_MESSAGE_TABLE_H_
#define TESTS_CASES_MESSAGE_TABLE_H_

#include <ostream>
#include <set>
#include <string>
#include <vector>

/// A message that a point gives, and how to see it.
struct MessageRow {
  std::string point;
  std::string message;  // with placeholders
  std::vector<std::string> command;
  int line = 0;
};

/// A text that ipvald cannot show, and the test that does.
struct UnshownRow {
  std::string message;
  std::string test;  // Suite.Name
  std::string file;
  int line = 0;
};

std::ostream& operator<<(std::ostream& out, const MessageRow& row);
std::ostream& operator<<(std::ostream& out, const UnshownRow& row);

struct MessageTable {
  std::vector<std::string> points;  // of the overview, in its order
  std::vector<MessageRow> messages;
  std::vector<UnshownRow> unshown;
  std::set<std::string> placeholders;  // that are explained, with their brackets
};

/// Reads the tables. A table is known by its first line; the tables of messages stand below a
/// heading that is the name of a point.
///
/// @throws std::runtime_error  a row of one of these tables has another form; the text begins with
///                             the number of its line
MessageTable ReadMessageTable(const std::string& markdown);

/// The placeholders for which there is a pattern, with their brackets.
std::set<std::string> KnownPlaceholders();

/// Whether `text` is the message with something of the right form in place of every placeholder.
///
/// @throws std::runtime_error  the message has an unknown placeholder
bool Matches(const std::string& message, const std::string& text);

#endif  // TESTS_CASES_MESSAGE_TABLE_H_
