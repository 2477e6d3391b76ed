// What lies in the folder that the program is called from, or is named by its environment, is data
// that somebody else may have put there: nothing of it is loaded, run or taken for the data model.
#include <gtest/gtest.h>
#include <link.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/elf_file.h"
#include "support/run_program.h"

namespace {

namespace fs = std::filesystem;

const std::string kCandidate = IPAV_SOURCE_DIR "/examples/ra-accepted.json";

void ExpectResult(const ProgramResult& result, int status, const std::string& out,
                  const std::string& err) {
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, err);
}

// --- Where the loader looks for libraries

// The entries of RPATH and RUNPATH, empty ones as well.
std::vector<std::string> SearchedFolders(tests::ElfFile& file) {
  std::vector<std::string> folders;
  for (const auto& table : file.Sections(SHT_DYNAMIC)) {
    for (const auto& entry : file.Entries<ElfW(Dyn)>(table)) {
      if (entry.d_tag != DT_RPATH && entry.d_tag != DT_RUNPATH) continue;
      std::string list = file.Text(table, entry.d_un.d_val);
      for (size_t colon = 0; (colon = list.find(':')) != std::string::npos;) {
        folders.push_back(list.substr(0, colon));
        list.erase(0, colon + 1);
      }
      folders.push_back(list);
    }
  }
  return folders;
}

// Of every program and library below `tree`, by its path there.
std::map<std::string, std::vector<std::string>> SearchedFoldersBelow(const fs::path& tree) {
  std::map<std::string, std::vector<std::string>> found;
  for (auto entry = fs::recursive_directory_iterator(tree); entry != fs::end(entry); ++entry) {
    // CMake's trials of the compiler are none of ours.
    if (entry->path().filename() == "CMakeFiles") entry.disable_recursion_pending();
    if (!entry->is_regular_file()) continue;
    tests::ElfFile file(entry->path());
    if (file.is_elf()) found[fs::relative(entry->path(), tree)] = SearchedFolders(file);
  }
  return found;
}

void ExpectRelativeToTheFile(const fs::path& tree) {
  const auto files = SearchedFoldersBelow(tree);
  for (const auto& [name, folders] : files) {
    for (const std::string& folder : folders) {
      EXPECT_TRUE(folder == "$ORIGIN" || folder == "$ORIGIN/../lib")
          << name << " has \"" << folder << "\"";
    }
  }
  const std::vector<std::string> expected = {"$ORIGIN", "$ORIGIN/../lib"};
  for (const char* name :
       {"bin/ipvald", "lib/libip_app_validation.so", "lib/libconfd.so", "lib/libipav_store.so"}) {
    ASSERT_EQ(files.count(name), 1u) << name;
    EXPECT_EQ(files.at(name), expected) << name;
  }
}

// --- A folder with traps, which lasts as long as a test

class TrappedFolder : public testing::Test {
 protected:
  TrappedFolder() {
    std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
    scratch_ = mkdtemp(pattern.data());
    folder_ = scratch_ / "here";
    fs::create_directory(folder_);
    for (const std::string& library : LibraryNames()) {
      std::ofstream(folder_ / library) << "no library\n";
    }
    for (const auto& module : fs::directory_iterator(IPAV_SOURCE_DIR "/yang")) {
      std::ofstream(folder_ / module.path().filename()) << "no module\n";
    }
  }
  ~TrappedFolder() override { fs::remove_all(scratch_); }

  // Libraries of the system that this program shares with ipvald, and those of the build.
  static std::set<std::string> LibraryNames() {
    std::set<std::string> names;
    const auto add = [](dl_phdr_info* info, size_t /*size*/, void* set) {
      const std::string name = fs::path(info->dlpi_name).filename();
      if (!name.empty()) static_cast<std::set<std::string>*>(set)->insert(name);
      return 0;
    };
    dl_iterate_phdr(add, &names);
    for (const auto& library : fs::directory_iterator(fs::path(IPAV_PLUGIN).parent_path())) {
      names.insert(library.path().filename());
    }
    return names;
  }

  /// Runs a shell command in the folder.
  ProgramResult InFolder(const std::string& command) const {
    return RunProgram({"/bin/sh", "-c", "cd " + folder_.string() + " && " + command});
  }

  fs::path InstallPrefix() const {
    const fs::path prefix = scratch_ / "prefix";
    EXPECT_EQ(
        RunProgram({IPAV_CMAKE, "--install", IPAV_BINARY_DIR, "--prefix", prefix.string()}).status,
        0);
    return prefix;
  }

  fs::path scratch_;
  fs::path folder_;
};

TEST(LibrarySearch, OfTheBuildTreeIsRelativeToTheFile) { ExpectRelativeToTheFile(IPAV_BINARY_DIR); }

TEST_F(TrappedFolder, InstalledProgramsSearchRelativeToThemselves) {
  ExpectRelativeToTheFile(InstallPrefix());
}

TEST_F(TrappedFolder, HoldsWhatWouldEndTheProgram) {
  EXPECT_EQ(fs::exists(folder_ / "libgcc_s.so.1"), true);
  EXPECT_EQ(fs::exists(folder_ / "libstdc++.so.6"), true);
  EXPECT_EQ(InFolder("LD_LIBRARY_PATH=. " IPAV_IPVALD " --version").status, 127);
  EXPECT_EQ(InFolder(IPAV_IPVALD " points --yang .").status, 2);
}

TEST_F(TrappedFolder, ChangesNoVerdict) {
  ExpectResult(InFolder(IPAV_IPVALD " check " + kCandidate), 0, "accepted\n", "");
}

TEST_F(TrappedFolder, ChangesNoVerdictOfAnInstalledProgram) {
  const fs::path program = InstallPrefix() / "bin/ipvald";
  ExpectResult(InFolder(program.string() + " check " + kCandidate), 0, "accepted\n", "");
}

TEST_F(TrappedFolder, IsNoFolderOfLibyangPlugins) {
  for (const char* variable : {"LIBYANG_TYPES_PLUGINS_DIR", "LIBYANG_EXTENSIONS_PLUGINS_DIR"}) {
    ExpectResult(InFolder(std::string(variable) + "=. " IPAV_IPVALD " check " + kCandidate), 0,
                 "accepted\n", "");
  }
}

// --- A plug-in named without a slash is a file of the current folder and nothing else

struct PlugInCase {
  const char* name;
  const char* file;
  const char* error;
};

std::ostream& operator<<(std::ostream& out, const PlugInCase& row) { return out << row.name; }

const PlugInCase kPlugIns[] = {
    {"LikeALibraryOfTheBuild", "libip_app_validation.so",
     "libip_app_validation.so: not a validation plug-in: no entry point \"validate\""},
    {"LikeALibraryInUse", "libgcc_s.so.1", "libgcc_s.so.1: file too short"},
    {"InAFolderOfTheSystem", "libresolv.so.2",
     "libresolv.so.2: cannot open shared object file: No such file or directory"},
    {"WithASlash", "./libip_app_validation.so",
     "./libip_app_validation.so: not a validation plug-in: no entry point \"validate\""},
};

class PlugInOfTheFolder : public TrappedFolder, public testing::WithParamInterface<PlugInCase> {};

TEST_P(PlugInOfTheFolder, IsTheOneNamed) {
  fs::copy_file(IPAV_INCOMPLETE_PLUGIN, folder_ / "libip_app_validation.so",
                fs::copy_options::overwrite_existing);
  ExpectResult(
      InFolder(IPAV_IPVALD " check --plugin " + std::string(GetParam().file) + " " + kCandidate), 2,
      "", std::string("ipvald: ") + GetParam().error + "\n");
}

INSTANTIATE_TEST_SUITE_P(Files, PlugInOfTheFolder, testing::ValuesIn(kPlugIns),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
