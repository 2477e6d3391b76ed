#include "store/schema.h"

#include <gtest/gtest.h>
#include <libyang/libyang.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <set>
#include <string>

#include "store/error.h"
#include "store/schema_node.h"
#include "store/tags.h"
#include "support/store_fixture.h"

namespace {

using store::Schema;
using tests::RowName;

// A folder of YANG modules that lives as long as a test: tailf-common and what the test adds.
class YangFolder : public testing::Test {
 protected:
  YangFolder()
      : path_(std::filesystem::path(testing::TempDir()) / ("yang-" + std::to_string(getpid()))) {
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~YangFolder() override { std::filesystem::remove_all(path_); }

  void AddExtensions() {
    std::filesystem::copy_file(IPAV_SOURCE_DIR "/yang/tailf-common@2024-01-01.yang",
                               path_ / "tailf-common@2024-01-01.yang");
  }

  void AddFile(const std::string& name, const std::string& text) {
    std::ofstream(path_ / name) << text;
  }

  /// A module `points` with this body.
  void AddModule(const std::string& body) {
    AddExtensions();
    AddFile("points.yang",
            "module points { yang-version 1.1; namespace \"urn:points\"; prefix p;\n"
            "import tailf-common { prefix tailf; }\n" +
                body + "}\n");
  }

  std::string LoadError() const {
    try {
      Schema::Load(path_);
    } catch (const store::Error& error) {
      return error.what();
    }
    return "loaded";
  }

  std::filesystem::path path_;
};

TEST_F(YangFolder, MustExist) {
  std::filesystem::remove_all(path_);
  EXPECT_EQ(LoadError(),
            "cannot read the YANG folder " + path_.string() + ": No such file or directory");
}

TEST_F(YangFolder, MustHoldAModule) {
  AddFile("README", "no module");
  EXPECT_EQ(LoadError(), "no YANG module in " + path_.string());
}

TEST_F(YangFolder, MustHoldModulesThatCompile) {
  AddFile("broken.yang",
          "module broken { namespace \"urn:b\"; prefix b; leaf x { type nothing; } }");
  EXPECT_TRUE(LoadError().starts_with("YANG module broken: ")) << LoadError();
}

TEST_F(YangFolder, MustHoldModulesThatParse) {
  AddFile("broken.yang", "module broken {");
  EXPECT_TRUE(LoadError().starts_with("YANG module broken: ")) << LoadError();
}

TEST_F(YangFolder, MustHoldTheImports) {
  AddFile("lonely.yang",
          "module lonely { namespace \"urn:l\"; prefix l; import absent { prefix a; } }");
  EXPECT_TRUE(LoadError().starts_with("YANG module lonely: ")) << LoadError();
}

TEST_F(YangFolder, ImportsAreNotTakenFromTheCurrentFolder) {
  namespace fs = std::filesystem;
  AddFile("lonely.yang",
          "module lonely { namespace \"urn:l\"; prefix l; import absent { prefix a; } }");
  const std::string alone = LoadError();
  const fs::path here = path_.string() + "-here";
  fs::create_directories(here);
  std::ofstream(here / "absent.yang") << "module absent { namespace \"urn:a\"; prefix a; }";
  const fs::path before = fs::current_path();
  fs::current_path(here);
  EXPECT_EQ(LoadError(), alone);
  fs::current_path(before);
  AddFile("absent.yang", "module absent { namespace \"urn:a\"; prefix a; }");
  EXPECT_EQ(LoadError(), "loaded") << "nothing else was wrong with it";
  fs::remove_all(here);
}

TEST_F(YangFolder, MayHaveColonsInItsName) {
  const std::filesystem::path folder = path_ / ":a::b:";
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "plain.yang") << "module plain { namespace \"urn:p\"; prefix p; }";
  EXPECT_EQ(Schema::Load(folder)->validation_points().size(), 0u);
}

std::string Container(int levels) {
  return levels == 0
             ? "leaf end { type string; }\n"
             : "container c" + std::to_string(levels) + " {" + Container(levels - 1) + "}\n";
}

TEST_F(YangFolder, PathsFitAKeypath) {
  AddModule(Container(MAXDEPTH - 2));
  EXPECT_EQ(LoadError(), "loaded");
}

TEST_F(YangFolder, PathsThatDoNotFitAKeypathAreRefused) {
  AddModule(Container(MAXDEPTH - 1));
  EXPECT_TRUE(LoadError().ends_with("/c1/end is deeper than a keypath can hold")) << LoadError();
}

std::string ListWithKeys(int count) {
  std::string keys;
  std::string leaves;
  for (int i = 0; i < count; ++i) {
    const std::string name = "k" + std::to_string(i);
    keys += (i > 0 ? " " : "") + name;
    leaves += "leaf " + name + " { type string; }\n";
  }
  return "list l { key \"" + keys + "\";\n" + leaves + "}\n";
}

TEST_F(YangFolder, KeysFitAKeypath) {
  AddModule(ListWithKeys(MAXKEYLEN - 1));
  EXPECT_EQ(LoadError(), "loaded");
}

TEST_F(YangFolder, KeysThatDoNotFitAKeypathAreRefused) {
  AddModule(ListWithKeys(MAXKEYLEN));
  EXPECT_EQ(LoadError(), "/l has more keys than a keypath can hold");
}

// --- Validation points
// ----------------------------------------------------------------------------------------------

TEST_F(YangFolder, ValidationPointHasItsSubstatements) {
  AddModule(R"(
    list l {
      key k;
      tailf:validate first {
        tailf:opaque "the point"; tailf:call-once true; tailf:priority 7; tailf:dependency "."; }
      tailf:validate second;
      leaf k { type string; }
    })");
  const auto schema = Schema::Load(path_);
  const auto& points = schema->validation_points();
  ASSERT_EQ(points.size(), 2u);
  EXPECT_EQ(points[0].id, "first");
  EXPECT_EQ(points[0].opaque, "the point");
  EXPECT_TRUE(points[0].call_once);
  EXPECT_EQ(points[0].priority, 7);
  EXPECT_EQ(store::SchemaPath(points[0].node), "/l");
  ASSERT_EQ(points[0].dependencies.size(), 1u);
  EXPECT_EQ(points[0].dependencies[0].node, points[0].node);
  EXPECT_EQ(points[1].id, "second");
  EXPECT_EQ(points[1].opaque, "");
  EXPECT_FALSE(points[1].call_once);
  EXPECT_EQ(points[1].priority, 0);
  EXPECT_TRUE(points[1].dependencies.empty());
}

TEST_F(YangFolder, ValidationPointsComeInSchemaOrder) {
  AddModule(R"(
    grouping g { leaf x { type string; tailf:validate from-grouping; } }
    container a { tailf:validate on-container; uses g; leaf-list y { type string; tailf:validate on-leaf-list; } }
    augment "/p:a" { leaf z { type string; tailf:validate from-augment { tailf:call-once false; tailf:priority -1; } } }
  )");
  const auto schema = Schema::Load(path_);
  std::string points;
  for (const auto& point : schema->validation_points()) {
    points += point.id + " " + store::SchemaPath(point.node) + "\n";
  }
  EXPECT_EQ(points, "on-container /a\nfrom-grouping /a/x\non-leaf-list /a/y\nfrom-augment /a/z\n");
  EXPECT_EQ(schema->validation_points().back().priority, -1);
}

struct DependencyCase {
  const char* name;
  const char* path;
  const char* node;  // its schema path, or the message
  bool absolute;
};

std::ostream& operator<<(std::ostream& out, const DependencyCase& c) { return out << c.path; }

class DependencyPath : public YangFolder, public testing::WithParamInterface<DependencyCase> {};

TEST_P(DependencyPath, IsResolved) {
  AddModule(std::string("list l { key k; leaf k { type string; } leaf x { type string; }\n"
                        "container at { tailf:validate v { tailf:dependency \"") +
            GetParam().path +
            "\"; }\ncontainer below { leaf deep { type string; } }\n"
            "choice c { case one { leaf in-case { type string; } } } } }\n"
            "leaf top { type string; }\n");
  if (std::string(GetParam().node).starts_with("dependency")) {
    EXPECT_EQ(LoadError(), GetParam().node);
    return;
  }
  const auto schema = Schema::Load(path_);
  ASSERT_EQ(schema->validation_points().size(), 1u);
  const auto& dependencies = schema->validation_points()[0].dependencies;
  ASSERT_EQ(dependencies.size(), 1u);
  EXPECT_EQ(store::SchemaPath(dependencies[0].node), GetParam().node);
  EXPECT_EQ(dependencies[0].absolute, GetParam().absolute);
}

const DependencyCase kDependencyCases[] = {
    {"Itself", ".", "/l/at", false},
    {"Child", "below", "/l/at/below", false},
    {"Grandchild", "below/deep", "/l/at/below/deep", false},
    {"DotAndChild", "./below", "/l/at/below", false},
    {"ThroughAChoice", "in-case", "/l/at/in-case", false},
    {"Sibling", "../x", "/l/x", false},
    {"Parent", "..", "/l", false},
    {"UpToTheTop", "../../top", "/top", false},
    {"Absolute", "/l/x", "/l/x", true},
    {"AbsoluteWithPrefix", "/p:l/p:x", "/l/x", true},
    {"AbsoluteWithModuleName", "/points:top", "/top", true},
    {"Unknown", "nowhere", "dependency \"nowhere\" of a validation point at /l/at names no node",
     false},
    {"UnknownBelowKnown", "below/nowhere",
     "dependency \"below/nowhere\" of a validation point at /l/at names no node", false},
    {"UnknownAbsolute", "/nowhere",
     "dependency \"/nowhere\" of a validation point at /l/at names no node", false},
    {"AboveTheRoot", "../../..",
     "dependency \"../../..\" of a validation point at /l/at names no node", false},
    {"Nothing", "/", "dependency \"/\" of a validation point at /l/at names no node", false},
};
INSTANTIATE_TEST_SUITE_P(Paths, DependencyPath, testing::ValuesIn(kDependencyCases),
                         RowName<DependencyCase>);

// --- Names
// ----------------------------------------------------------------------------------------------------------

TEST(SchemaNames, NodesOfOneNameShareATag) {
  const auto schema = tests::SampleSchema();
  const auto& loaded = *schema;
  const lysc_node* ours = loaded.FindChild(nullptr, "sample", "panel");
  const lysc_node* theirs = loaded.FindChild(nullptr, "other", "panel");
  ASSERT_NE(ours, nullptr);
  ASSERT_NE(theirs, nullptr);
  EXPECT_EQ(schema->tag(ours).tag, schema->tag(theirs).tag);
  EXPECT_NE(schema->tag(ours).ns, schema->tag(theirs).ns);
  EXPECT_EQ(loaded.FindChild(nullptr, "", "panel"), nullptr) << "ambiguous";
}

TEST(SchemaNames, ComeFromTheSchemaLoadedLastWhileItLives) {
  tests::SampleSchema();
  {
    const auto device = Schema::Load(IPAV_SOURCE_DIR "/yang");
    EXPECT_STREQ(confd_hash2str(0x213f1a7a), "l3");
  }
  EXPECT_EQ(confd_hash2str(0x213f1a7a), nullptr);
  EXPECT_STREQ(confd_hash2str(store::TagOf("shelf")), "shelf") << "the one before is alive";
  EXPECT_EQ(confd_str2hash("l3"), 0u);
  EXPECT_EQ(confd_ns2prefix(1), nullptr);
}

TEST(SchemaNames, TwoSchemasLiveSideBySide) {
  const auto first = Schema::Load(IPAV_SOURCE_DIR "/yang");
  const auto second = Schema::Load(IPAV_SOURCE_DIR "/yang");
  EXPECT_EQ(first->validation_points().size(), second->validation_points().size());
  EXPECT_NE(first->context(), second->context());
}

// --- The model of the device
// ----------------------------------------------------------------------------------------

TEST(DeviceModel, AttachesElevenPoints) {
  const auto schema = Schema::Load(IPAV_SOURCE_DIR "/yang");
  std::set<std::string> opaques;
  for (const auto& point : schema->validation_points()) {
    opaques.insert(point.opaque);
    EXPECT_FALSE(point.dependencies.empty()) << point.id;
  }
  EXPECT_EQ(opaques, (std::set<std::string>{
                         "intf_l3_name_validation", "intf_vrf_validation", "ipv4_addr_validation",
                         "ipv6_addr_validation", "ipv4_addr_prot_cross_validation",
                         "ipv4_addr_route_validation", "ipv6_addr_route_validation",
                         "lower_layer_prot_cross_validation", "static_route_l3_intf_validation",
                         "validate_ipv6_nd_ra_interval", "validate_ipv6_nd_ra_lifetime"}));
}

}  // namespace
