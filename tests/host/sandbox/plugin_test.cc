// A shared object as a plug-in, or why it is none.
#include "plugin.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace ipvald {
namespace {

namespace fs = std::filesystem;

// A folder that is the current one.
class Folder : public testing::Test {
 protected:
  Folder() : before_(fs::current_path()) {
    std::string pattern = testing::TempDir() + "plugin-XXXXXX";
    path_ = mkdtemp(pattern.data());
    fs::current_path(path_);
  }
  ~Folder() override {
    fs::current_path(before_);
    fs::remove_all(path_);
  }

  static std::string ErrorOf(const std::string& file) {
    try {
      const Plugin plugin(file);
    } catch (const UnusablePlugin& error) {
      return error.what();
    }
    return "loaded";
  }

  fs::path path_;

 private:
  fs::path before_;
};

const char kMissing[] = "cannot open shared object file: No such file or directory";

TEST_F(Folder, Missing) {
  EXPECT_EQ(ErrorOf(path_ / "missing.so"), kMissing);
  EXPECT_EQ(ErrorOf("folder/missing.so"), kMissing);
  EXPECT_EQ(ErrorOf("missing.so"), kMissing);
}

TEST_F(Folder, NotASharedObject) {
  std::ofstream("text.so") << std::string(100, 'x');
  EXPECT_EQ(ErrorOf("text.so"), "invalid ELF header");
  EXPECT_EQ(ErrorOf(path_ / "text.so"), "invalid ELF header");
  std::ofstream("empty.so").close();
  EXPECT_EQ(ErrorOf("empty.so"), "file too short");
  fs::create_directory("folder.so");
  EXPECT_EQ(ErrorOf("folder.so"), "cannot read file data: Is a directory");
}

const char kIncomplete[] = "not a validation plug-in: no entry point \"validate\"";

TEST_F(Folder, EntryPointMissing) { EXPECT_EQ(ErrorOf(IPAV_INCOMPLETE_PLUGIN), kIncomplete); }

// A name without a slash is not looked for among the libraries of the system.
TEST_F(Folder, NameOfALibrary) {
  EXPECT_EQ(ErrorOf("libc.so.6"), kMissing);
  fs::create_symlink(IPAV_INCOMPLETE_PLUGIN, "libc.so.6");
  EXPECT_EQ(ErrorOf("libc.so.6"), kIncomplete);
}

TEST(LoadedPlugin, HasItsEntryPoints) {
  const Plugin plugin(IPAV_MISBEHAVING_PLUGIN);
  char name[32] = "";
  EXPECT_EQ(plugin.get_validation_point(name, sizeof(name)), 0);
  EXPECT_STREQ(name, "misbehaving");
  void* context = nullptr;
  EXPECT_EQ(plugin.lib_init(&context), 0);
  EXPECT_NE(context, nullptr);
  EXPECT_EQ(plugin.validate(nullptr, nullptr, nullptr), 70);
  EXPECT_EQ(plugin.lib_finish(&context), 0);
}

bool IsLoaded(const char* file) {
  void* handle = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

TEST(PluginThatIsUnloaded, IsGone) {
  ASSERT_FALSE(IsLoaded(IPAV_PLUGIN));
  Plugin plugin(IPAV_PLUGIN);
  EXPECT_TRUE(IsLoaded(IPAV_PLUGIN));
  plugin.Unload();
  EXPECT_FALSE(IsLoaded(IPAV_PLUGIN));
}

TEST(PluginThatIsNotUnloaded, StaysBehindTheObject) {
  { const Plugin plugin(IPAV_MISBEHAVING_PLUGIN); }
  EXPECT_TRUE(IsLoaded(IPAV_MISBEHAVING_PLUGIN));
}

}  // namespace
}  // namespace ipvald
