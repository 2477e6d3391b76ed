// Reads a configuration from a file: bytes, format, NETCONF wrapper, parse, schema validation.
#ifndef HOST_INPUT_CONFIGURATION_FILE_H_
#define HOST_INPUT_CONFIGURATION_FILE_H_

#include <memory>
#include <string>

#include "input_text.h"
#include "store/schema.h"
#include "store/snapshot.h"

namespace ipvald {

/// A configuration and the text that it was read from.
struct Configuration {
  std::shared_ptr<const store::Snapshot> snapshot;
  SourceText source;  // without a byte order mark; empty for a configuration that no file holds
};

/// Reads the configuration in `file`, "-" for standard input. XML or JSON, told apart by the first
/// byte that is not blank, in UTF-8, with or without a byte order mark, bare or in a NETCONF <data>
/// or <config> wrapper (RFC 6241) or in its JSON counterpart {"data": {...}}.
/// @throws InputError  the file cannot be read, does not parse, or does not satisfy the data model
Configuration ReadConfiguration(const std::shared_ptr<const store::Schema>& schema,
                                const std::string& file);

/// The same for text in memory; `name` stands for the file in messages.
Configuration ParseConfiguration(const std::shared_ptr<const store::Schema>& schema,
                                 const std::string& name, std::string text);

}  // namespace ipvald

#endif  // HOST_INPUT_CONFIGURATION_FILE_H_
