// A file that ends too early is never a configuration: no proper prefix of a valid one is read.
#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "configuration_text.h"
#include "json_configuration.h"
#include "support/data_model.h"
#include "xml_configuration.h"

namespace {

namespace fs = std::filesystem;

std::string ContentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<fs::path> Examples() {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(IPAV_SOURCE_DIR "/examples")) {
    const auto extension = entry.path().extension();
    if (extension == ".json" || extension == ".xml") files.push_back(entry.path());
  }
  return files;
}

// The configuration in `text` as XML, in one element, as a NETCONF server gives it.
std::string AsXml(const std::string& text) {
  char* printed = nullptr;
  lyd_print_mem(&printed, ParseText(text)->tree(), LYD_XML, LYD_PRINT_WITHSIBLINGS);
  const std::string elements = printed == nullptr ? "" : printed;
  free(printed);
  return "<data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">\n" + elements + "</data>\n";
}

// Whether `text` gets past all that is looked at before libyang, which has the last word.
bool IsWhole(const std::string& text) {
  using ipvald::SchemaWalk;
  const ipvald::SourceText source{"input", text};
  const ly_ctx* context = tests::DataModel()->context();
  try {
    if (ipvald::SniffFormat("input", text) == ipvald::InputFormat::kXml) {
      ipvald::XmlConfiguration(context, source, SchemaWalk::Depth::kStructure);
    } else {
      ipvald::JsonConfiguration(context, source, SchemaWalk::Depth::kStructure);
    }
  } catch (const ipvald::InputError&) {
    return false;
  }
  return true;
}

// All prefixes cost the square of the length, so of a long text only some between its two ends.
void ExpectNoPrefixIsWhole(const std::string& text) {
  constexpr size_t kLong = 8192;
  constexpr size_t kEnd = 128;
  constexpr size_t kStep = 4999;
  ASSERT_EQ(ErrorOfText(text), "accepted");
  ASSERT_TRUE(IsWhole(text));
  const size_t whole = text.find_last_not_of(" \t\r\n") + 1;
  for (size_t size = 0; size < whole;) {
    ASSERT_FALSE(IsWhole(text.substr(0, size))) << "the first " << size << " bytes";
    const bool all = whole < kLong || size < kEnd || size + kEnd >= whole;
    size += all ? 1 : std::min(kStep, whole - kEnd - size);
  }
}

TEST(CutConfiguration, IsRefused) {
  const std::vector<fs::path> examples = Examples();
  ASSERT_GT(examples.size(), 10u);
  for (const fs::path& example : examples) {
    SCOPED_TRACE(example.filename());
    const std::string text = ContentOf(example);
    ExpectNoPrefixIsWhole(text);
    ExpectNoPrefixIsWhole(AsXml(text));
  }
}

// Texts that were once taken for empty configurations.
TEST(CutConfiguration, IsNoEmptyConfiguration) {
  for (const char* text :
       {"{", "{\"velmor-config:config\":", "{\"data\":", "{\"data\":{", "{\"data\":{}",
        "{\"x\":", "{\"@\":", "{\"", "<", "<config", "<config>", "<?xml version=\"1.0\"?>",
        "<!-- x -->", "<?x y?>", "<?xml version=\"1.0\"?>\n<!-- x -->\n"}) {
    EXPECT_NE(ErrorOfText(text), "accepted") << text;
  }
}

}  // namespace
