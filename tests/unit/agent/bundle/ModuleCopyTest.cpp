// Private copies of module files.

#include "agent/bundle/ModuleCopy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "agent/bundle/ModuleError.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using agent::ModuleCopy;
using support::TemporaryDirectory;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kFactory = "_make_zu_corba_topo";

// The text of the error; empty when the file can be used as a module.
std::string reasonAgainst(const std::string& file) {
  try {
    ModuleCopy(file).check(kFactory);
    return "";
  } catch (const agent::ModuleError& failure) {
    return failure.what();
  }
}

TEST(ModuleCopy, KeepsTheContentWhenTheOriginalIsOverwritten) {
  const TemporaryDirectory directory;
  const std::string original = directory.write("module.so", "old");
  const ModuleCopy copy(original);
  directory.write("module.so", "new");
  EXPECT_EQ("old", support::readFile(copy.path()));
  EXPECT_EQ("module.so", std::filesystem::path(copy.path()).filename());
}

TEST(ModuleCopy, RemovesItsDirectory) {
  const TemporaryDirectory directory;
  const std::string original = directory.write("module.so", "old");
  std::filesystem::path place;
  {
    const ModuleCopy copy(original);
    place = std::filesystem::path(copy.path()).parent_path();
    EXPECT_TRUE(std::filesystem::is_directory(place));
  }
  EXPECT_FALSE(std::filesystem::exists(place));
  EXPECT_EQ("old", support::readFile(original));
}

TEST(ModuleCopy, IsReadableForTheUserOnly) {
  const TemporaryDirectory directory;
  const ModuleCopy copy(directory.write("module.so", "old"));
  const auto place = std::filesystem::path(copy.path()).parent_path();
  EXPECT_EQ(std::filesystem::perms::owner_all, std::filesystem::status(place).permissions());
}

TEST(ModuleCopy, AcceptsAFileWithTheFactory) {
  EXPECT_EQ("", reasonAgainst(TOPO_REFUSING_MODULE));
}

TEST(ModuleCopy, HasTheVersionOfTheFile) {
  EXPECT_EQ(TOPO_VERSION, ModuleCopy(TOPO_MODULE).version());
  EXPECT_EQ("unknown", ModuleCopy(TOPO_REFUSING_MODULE).version());
}

TEST(ModuleCopy, RejectsAMissingFileAndADirectory) {
  const TemporaryDirectory directory;
  EXPECT_EQ("module /nowhere/module.so: no such file", reasonAgainst("/nowhere/module.so"));
  for (const std::string& path : {directory.path().string(), std::string("/dev/zero")}) {
    EXPECT_EQ("module " + path + ": is not a regular file", reasonAgainst(path));
  }
}

TEST(ModuleCopy, RejectsAFileThatIsTooLargeToCopy) {
  const TemporaryDirectory directory;
  const std::string file = directory.write("module.so", "");
  const std::uintmax_t largest = std::uintmax_t{256} << 20;
  std::filesystem::resize_file(file, largest + 1);
  EXPECT_EQ("module " + file + ": is larger than 256 MiB", reasonAgainst(file));
}

TEST(ModuleCopy, RejectsAFileThatIsNoLibraryAndNamesTheOriginalOnly) {
  const TemporaryDirectory directory;
  const std::string text = directory.write("module.so", std::string(100, 'x'));
  EXPECT_EQ("module " + text + ": invalid ELF header", reasonAgainst(text));
  EXPECT_EQ("module " + text + ": file too short", reasonAgainst(directory.write("module.so", "")));
}

// The linker maps a file whose end is missing, and a later access raises SIGBUS.
TEST(ModuleCopy, RejectsAFileWhoseEndIsMissing) {
  const TemporaryDirectory directory;
  const std::string whole = support::readFile(TOPO_REFUSING_MODULE);
  const std::string cut =
      directory.write("module.so", whole.substr(0, whole.size() - whole.size() / 4));
  EXPECT_EQ("module " + cut + ": the end of the file is missing", reasonAgainst(cut));
  directory.write("module.so", whole.substr(0, whole.size() - 1));
  EXPECT_EQ("module " + cut + ": the end of the file is missing", reasonAgainst(cut));
}

TEST(ModuleCopy, RejectsALibraryWithoutTheFactory) {
  EXPECT_EQ(std::string("module ") + TOPO_IDL + ": it has no " + kFactory, reasonAgainst(TOPO_IDL));
}

TEST(ModuleCopy, RejectsALibraryThatNeedsAnUndefinedSymbol) {
  EXPECT_THAT(reasonAgainst(TOPO_INCOMPLETE_MODULE),
              AllOf(StartsWith(std::string("module ") + TOPO_INCOMPLETE_MODULE + ": "),
                    HasSubstr("undefinedInEveryLibrary")));
}

TEST(ModuleCopy, NamesADirectoryOfTemporaryFilesThatCannotBeUsed) {
  const TemporaryDirectory directory;
  const std::string original = directory.write("module.so", "old");
  const support::EnvironmentVariable place("TMPDIR", directory.file("none"));
  EXPECT_EQ("module " + original + ": no directory for a copy in " + directory.file("none") +
                ": No such file or directory",
            reasonAgainst(original));
}

// A directory in which a directory can be made, but no file in that directory: the path of the file
// would exceed PATH_MAX.
std::filesystem::path deepDirectory(const std::filesystem::path& root) {
  constexpr std::size_t kLength = 4070;
  std::string path = root.string();
  while (path.size() < kLength) {
    path += '/' + std::string(std::min<std::size_t>(kLength - path.size(), 200), 'd');
  }
  std::filesystem::create_directories(path);
  return path;
}

TEST(ModuleCopy, LeavesNothingWhenTheFileCannotBeCopied) {
  const TemporaryDirectory directory;
  const std::string original = directory.write("module.so", "old");
  const std::filesystem::path deep = deepDirectory(directory.path());
  const support::EnvironmentVariable place("TMPDIR", deep);
  const std::string reason = reasonAgainst(original);
  EXPECT_THAT(reason, StartsWith("module " + original + ": cannot be copied to " + deep.string()));
  EXPECT_THAT(reason, HasSubstr(": File name too long"));
  EXPECT_TRUE(std::filesystem::is_empty(deep));
}

}  // namespace
