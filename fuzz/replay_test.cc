// Runs a fuzz target over its corpus and over what it found, one test for each file.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

// Where the inputs are kept; the second folder is there only when the target has found something.
const fs::path kFolders[] = {IPAV_SOURCE_DIR "/fuzz/corpus/" IPAV_FUZZ_TARGET,
                             IPAV_SOURCE_DIR "/fuzz/regressions/" IPAV_FUZZ_TARGET};

std::vector<fs::path> Inputs() {
  std::vector<fs::path> inputs;
  for (const fs::path& folder : kFolders) {
    if (!fs::is_directory(folder)) continue;
    for (const auto& entry : fs::directory_iterator(folder)) inputs.push_back(entry.path());
  }
  std::sort(inputs.begin(), inputs.end());
  return inputs;
}

std::string TestName(const testing::TestParamInfo<fs::path>& input) {
  std::string name = input.param.parent_path().parent_path().filename().string() + "_" +
                     input.param.filename().string();
  const auto is_odd = [](unsigned char c) { return std::isalnum(c) == 0; };
  std::replace_if(name.begin(), name.end(), is_odd, '_');
  return name;
}

class Replay : public testing::TestWithParam<fs::path> {};

TEST_P(Replay, HoldsEveryProperty) {
  std::ifstream stream(GetParam(), std::ios::binary);
  ASSERT_TRUE(stream) << GetParam();
  const std::string input{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_NO_THROW(
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size()));
}

// An empty corpus would be a suite without tests, which GoogleTest fails.
INSTANTIATE_TEST_SUITE_P(Inputs, Replay, testing::ValuesIn(Inputs()), TestName);

}  // namespace
