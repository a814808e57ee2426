// Facts about ELF files, damaged ones included.

#include "agent/bundle/ElfFile.h"

#include <gtest/gtest.h>
#include <link.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "platform/bundlemgr/ModuleVersion.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using agent::definesSymbol;
using agent::elfSectionText;
using agent::isElf;
using agent::isTruncatedElf;
using support::TemporaryDirectory;

TEST(ElfFile, HasTheVersionOfTheModule) {
  EXPECT_EQ(TOPO_VERSION, elfSectionText(TOPO_MODULE, NS_BUNDLEMGR1::kVersionSection));
}

TEST(ElfFile, HasNoTextOfAMissingSection) {
  EXPECT_EQ("", elfSectionText(TOPO_REFUSING_MODULE, NS_BUNDLEMGR1::kVersionSection));
  EXPECT_EQ("", elfSectionText("/nowhere/module.so", NS_BUNDLEMGR1::kVersionSection));
}

TEST(ElfFile, DefinesItsExportedSymbolsOnly) {
  EXPECT_TRUE(definesSymbol(TOPO_MODULE, "_make_zu_corba_topo"));
  EXPECT_FALSE(definesSymbol(TOPO_MODULE, "_make_zu_corba_top"));
  EXPECT_FALSE(definesSymbol(TOPO_MODULE, ""));
  EXPECT_FALSE(definesSymbol(TOPO_IDL, "_make_zu_corba_topo"));
  EXPECT_FALSE(definesSymbol("/nowhere/module.so", "_make_zu_corba_topo"));
}

TEST(ElfFile, DefinesNoSymbolThatItNeeds) {
  EXPECT_TRUE(definesSymbol(TOPO_INCOMPLETE_MODULE, "_make_zu_corba_topo"));
  EXPECT_FALSE(definesSymbol(TOPO_INCOMPLETE_MODULE, "undefinedInEveryLibrary"));
}

TEST(ElfFile, IsTruncatedWhenTheLastByteIsMissing) {
  const TemporaryDirectory directory;
  const std::string whole = support::readFile(TOPO_REFUSING_MODULE);
  EXPECT_FALSE(isTruncatedElf(TOPO_REFUSING_MODULE));
  EXPECT_TRUE(isTruncatedElf(directory.write("m.so", whole.substr(0, whole.size() - 1))));
  EXPECT_TRUE(isTruncatedElf(directory.write("m.so", whole.substr(0, 200))));
}

// `strip --strip-section-headers` leaves no section headers at the end of a file.
TEST(ElfFile, IsTruncatedWhenASegmentIsMissing) {
  const TemporaryDirectory directory;
  std::string file = support::readFile(TOPO_REFUSING_MODULE);
  ElfW(Ehdr) header;
  std::memcpy(&header, file.data(), sizeof header);
  header.e_shoff = 0;
  header.e_shnum = 0;
  std::memcpy(file.data(), &header, sizeof header);
  EXPECT_FALSE(isTruncatedElf(directory.write("m.so", file)));
  EXPECT_TRUE(isTruncatedElf(directory.write("m.so", file.substr(0, 1000))));
}

TEST(ElfFile, IsNotTruncatedWhenItIsNoElfFile) {
  const TemporaryDirectory directory;
  for (const std::string& content : {std::string(),
                                     std::string("\x7f"
                                                 "ELF"),
                                     std::string(1000, 'x')}) {
    EXPECT_FALSE(isElf(directory.write("m.so", content)));
    EXPECT_FALSE(isTruncatedElf(directory.write("m.so", content)));
    EXPECT_FALSE(definesSymbol(directory.write("m.so", content), "symbol"));
    EXPECT_EQ("", elfSectionText(directory.write("m.so", content), ".topo.version"));
  }
}

TEST(ElfFile, IsNoElfFileWithAnotherWordSize) {
  const TemporaryDirectory directory;
  std::string other = support::readFile(TOPO_MODULE);
  other[EI_CLASS] = sizeof(void*) == 8 ? ELFCLASS32 : ELFCLASS64;
  EXPECT_FALSE(isElf(directory.write("m.so", other)));
}

TEST(ElfFile, HasNoSectionsWhenTheirHeadersHaveAnotherSize) {
  const TemporaryDirectory directory;
  std::string other = support::readFile(TOPO_MODULE);
  ++other[offsetof(ElfW(Ehdr), e_shentsize)];
  const std::string file = directory.write("m.so", other);
  EXPECT_EQ("", elfSectionText(file, NS_BUNDLEMGR1::kVersionSection));
  EXPECT_FALSE(definesSymbol(file, "_make_zu_corba_topo"));
}

// Every byte of the header in turn has its largest value: offsets, sizes and counts are wrong.
TEST(ElfFile, MayHaveADamagedHeader) {
  const TemporaryDirectory directory;
  const std::string whole = support::readFile(TOPO_REFUSING_MODULE);
  for (std::size_t i = 0; i < 64; ++i) {
    std::string damaged = whole;
    damaged[i] = '\xff';
    const std::string file = directory.write("m.so", damaged);
    isTruncatedElf(file);
    definesSymbol(file, "_make_zu_corba_topo");
    EXPECT_GE(100U, elfSectionText(file, ".topo.version").size());
  }
}

}  // namespace
