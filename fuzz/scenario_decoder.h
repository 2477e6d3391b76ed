// Bytes as a scenario: two configurations of a small device, and what the daemon shall ask the
// plug-in about them.
#ifndef FUZZ_SCENARIO_DECODER_H_
#define FUZZ_SCENARIO_DECODER_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fuzz {

/// What is wrong with the arguments of a call.
enum class Fault { kNone, kNoKeypath, kNoValue, kNoTransaction, kNoSocket, kNoContext };

/// One call of `validate`.
struct CallPlan {
  std::string opaque;  ///< name of a point, or nearly one
  bool fitting;        ///< the keypath is one that the data model gives this point
  unsigned keypath;    ///< which of them, or which node of the candidate; any number
  Fault fault = Fault::kNone;
};

/// Configurations are JSON and satisfy the data model, whatever the bytes.
struct Scenario {
  std::string running;
  std::string candidate;
  bool is_large = false;               ///< so many entries that calls take long
  bool has_short_output_name = false;  ///< of a route of the candidate: reading it throws
  std::vector<CallPlan> calls;
};

/// Each eight bytes are one record: its kind, then choices from small pools, so that names,
/// addresses and VRFs meet often. A record says on which side it is, and VLANs and VRFs have a
/// value for each side.
Scenario DecodeScenario(std::span<const uint8_t> bytes);

}  // namespace fuzz

#endif  // FUZZ_SCENARIO_DECODER_H_
