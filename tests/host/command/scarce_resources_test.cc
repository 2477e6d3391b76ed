// Too few descriptors or too little memory: the message says so, and blames no file, folder or
// plug-in for it.
#include <gtest/gtest.h>

#include <string>

#include "support/run_program.h"

namespace {

const std::string kAccepted = IPAV_SOURCE_DIR "/examples/ra-accepted.json";

/// Runs ipvald under a limit of the shell.
ProgramResult Limited(const std::string& limit, const std::string& arguments) {
  return RunProgram({"/bin/sh", "-c", "ulimit " + limit + "; exec " IPAV_IPVALD " " + arguments});
}

ProgramResult Unlimited(const std::string& arguments) { return Limited("-c 0", arguments); }

void ExpectResult(const ProgramResult& result, int status, const std::string& out,
                  const std::string& err) {
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, err);
}

// Whether a program could not even be started: what the loader says is not ipvald's.
bool EndedByTheLoader(const ProgramResult& result) { return result.status == 127; }

// Descriptors.

const std::string kCommands[] = {"points",
                                 "check " + kAccepted,
                                 "check -",
                                 "check --running " + kAccepted + " " + kAccepted,
                                 "check /nonexistent",
                                 "points --yang /nonexistent",
                                 "--help"};

TEST(Descriptors, TooFewAreNamed) {
  for (const std::string& command : kCommands) {
    for (int limit = 4; limit <= 18; ++limit) {
      SCOPED_TRACE(command + " with " + std::to_string(limit));
      const ProgramResult result = Limited("-n " + std::to_string(limit), command);
      ExpectResult(
          result, 2, "",
          "ipvald: too few file descriptors: " + std::to_string(limit) + " allowed (ulimit -n)\n");
    }
  }
}

TEST(Descriptors, ForTheLoaderAreOutOfReach) {
  EXPECT_TRUE(EndedByTheLoader(Limited("-n 3", "points")));
}

TEST(Descriptors, EnoughChangeNothing) {
  for (const std::string& command :
       {std::string("points"), "check " + kAccepted, std::string("check /nonexistent"),
        std::string("points --yang /nonexistent"), std::string("check " IPAV_SOURCE_DIR)}) {
    const ProgramResult expected = Unlimited(command);
    for (int limit = 19; limit <= 40; ++limit) {
      SCOPED_TRACE(command + " with " + std::to_string(limit));
      ExpectResult(Limited("-n " + std::to_string(limit), command), expected.status, expected.out,
                   expected.err);
    }
  }
}

TEST(Descriptors, ThatTheCallerHoldsOpenAreTooFewAsWell) {
  ExpectResult(Limited("-n 19; exec 4</dev/null", "points"), 2, "",
               "ipvald: too few file descriptors: 19 allowed (ulimit -n)\n");
}

// Memory.

constexpr int kTiny = 3000;     // KiB of address space, less than the loader needs
constexpr int kStep = 250;      // KiB
constexpr int kEnough = 80000;  // KiB

TEST(Memory, IsEnoughOrNamed) {
  for (const std::string& command : {std::string("points"), "check " + kAccepted}) {
    const ProgramResult expected = Unlimited(command);
    ASSERT_EQ(expected.status, 0);
    int told = 0;
    bool begun = false;  // the loader had enough
    bool enough = false;
    for (int limit = kTiny; limit <= kEnough; limit += enough ? 16 * kStep : kStep) {
      SCOPED_TRACE(command + " with " + std::to_string(limit) + " KiB");
      const ProgramResult result = Limited("-v " + std::to_string(limit), command);
      if (!begun && EndedByTheLoader(result)) continue;
      begun = true;
      enough = enough || result.status == 0;
      if (enough) {
        ExpectResult(result, 0, expected.out, "");
      } else {
        // In the process of the plug-in the limit is named, too.
        EXPECT_TRUE(result.err == "ipvald: out of memory\n" ||
                    result.err == "ipvald: out of memory (ulimit -v): Cannot allocate memory\n")
            << result.err;
        ExpectResult(result, 2, "", result.err);
        ++told;
      }
    }
    EXPECT_GT(told, 10) << command;
    EXPECT_TRUE(enough) << command;
  }
}

// A large configuration needs more than the program itself.
TEST(Memory, ForALargeConfigurationIsEnoughOrNamed) {
  std::string text = R"({"velmor-config:config": {"interface": {"velmor-ip-app:loopback": [)";
  for (int i = 0; i < 5000; ++i) {
    text += (i == 0 ? "{\"name\": \"" : ",{\"name\": \"") + std::to_string(i) + "\"}";
  }
  text += "]}}}";
  int told = 0;
  for (int limit = 50000; limit <= 80000; limit += 2000) {
    SCOPED_TRACE(limit);
    const ProgramResult result = RunProgram(
        {"/bin/sh", "-c", "ulimit -v " + std::to_string(limit) + "; exec " IPAV_IPVALD " check -"},
        {.standard_input = text});
    if (result.status == 0) {
      ExpectResult(result, 0, "accepted\n", "");
    } else {
      EXPECT_EQ(result.err.rfind("ipvald: out of memory", 0), 0u) << result.err;
      ExpectResult(result, 2, "", result.err);
      ++told;
    }
  }
  EXPECT_GT(told, 0);
  EXPECT_LT(told, 16);
}

}  // namespace
