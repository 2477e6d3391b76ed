// A folder with a data model: what it gives, and the line for one that gives none.
#include "data_model.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "input_error.h"

namespace ipvald {
namespace {

class Folder : public testing::Test {
 protected:
  Folder() {
    std::string pattern = testing::TempDir() + "data-model-XXXXXX";
    path_ = mkdtemp(pattern.data());
  }
  ~Folder() override { std::filesystem::remove_all(path_); }

  // The error of loading the folder, which holds one module when `text` is not empty.
  std::string ErrorWith(const std::string& text) {
    if (!text.empty()) std::ofstream(path_ / "module.yang") << text;
    try {
      EXPECT_NE(LoadDataModel(path_), nullptr);
    } catch (const InputError& error) {
      return error.what();
    }
    return "loaded";
  }

  std::filesystem::path path_;
};

const std::string kHead = "module module {\n namespace \"urn:module\";\n prefix m;\n";

TEST_F(Folder, WithAModuleIsLoaded) {
  EXPECT_EQ(ErrorWith(kHead + " leaf a { type string; }\n}\n"), "loaded");
}

TEST_F(Folder, WithoutModules) { EXPECT_EQ(ErrorWith(""), "no YANG module in " + path_.string()); }

TEST_F(Folder, Missing) {
  std::filesystem::remove(path_);
  EXPECT_EQ(ErrorWith(""),
            "cannot read the YANG folder " + path_.string() + ": No such file or directory");
}

TEST_F(Folder, NamedOnTwoLines) {
  try {
    LoadDataModel(path_ / "a\nb");
    ADD_FAILURE() << "loaded";
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(),
              "cannot read the YANG folder " + path_.string() + "/a b: No such file or directory");
  }
}

TEST_F(Folder, WithAnUnknownType) {
  EXPECT_EQ(ErrorWith(kHead + " leaf a { type nothing; }\n}\n"),
            "YANG module module: Referenced type \"nothing\" not found.");
}

TEST_F(Folder, WithATruncatedModule) {
  const std::string error = ErrorWith(kHead);
  EXPECT_TRUE(error.starts_with("YANG module module: ")) << error;
  EXPECT_EQ(error.find('\n'), std::string::npos);
}

// The model that is installed with the program.
TEST(InstalledModel, HasValidationPoints) {
  EXPECT_FALSE(LoadDataModel(IPAV_SOURCE_DIR "/yang")->validation_points().empty());
}

}  // namespace
}  // namespace ipvald
