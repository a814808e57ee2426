#include "agent/access/Operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "idl/ObjectKeys.h"
#include "tests/support/TemporaryDirectory.h"

namespace agent {
namespace {

// INTERFACE::OPERATION.
using Names = std::set<std::string>;

std::string withoutComments(const std::string& idl) {
  std::string result;
  for (std::size_t at = 0; at < idl.size();) {
    const std::size_t comment = std::min(idl.find("//", at), idl.size());
    result += idl.substr(at, comment - at);
    at = std::min(idl.find('\n', comment), idl.size());
  }
  return result;
}

// The word that ends before the position.
std::string wordBefore(const std::string& text, std::size_t end) {
  const char* const kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
  const std::size_t last = text.find_last_of(kLetters, end - 1);
  const std::size_t before = text.find_last_not_of(kLetters, last);
  return text.substr(before + 1, last - before);
}

// The operations of an interface, of which `body` is the text between the braces.
void addOperations(Names& names, const std::string& interface, const std::string& body) {
  for (std::size_t at = 0; at < body.size();) {
    const std::size_t end = std::min(body.find(';', at), body.size());
    const std::string declaration = body.substr(at, end - at);
    const std::size_t parameters = declaration.find('(');
    if (parameters != std::string::npos) {
      names.insert(interface + "::" + wordBefore(declaration, parameters));
    }
    EXPECT_EQ(std::string::npos, declaration.find("attribute ")) << declaration;
    at = end + 1;
  }
}

void addInterfaces(Names& names, const std::string& idl) {
  const std::string keyword = "interface ";
  for (std::size_t at = idl.find(keyword); at != std::string::npos; at = idl.find(keyword, at)) {
    const std::size_t begin = idl.find('{', at);
    const std::size_t end = idl.find('}', begin);
    const std::string head = idl.substr(at + keyword.size(), begin - at - keyword.size());
    const std::string name = head.substr(0, head.find_first_of(" \n:"));
    addOperations(names, name, idl.substr(begin + 1, end - begin - 1));
    at = end;
  }
}

Names operationsOfTheIdl() {
  Names names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(TOPO_IDL)) {
    if (entry.path().extension() == ".idl") {
      addInterfaces(names, withoutComments(support::readFile(entry.path())));
    }
  }
  return names;
}

TEST(Operations, AreThoseOfTheIdl) {
  Names table;
  for (const Operation& operation : operations()) {
    if (*operation.interface != '\0') {
      table.insert(std::string(operation.interface) + "::" + operation.name);
    }
  }
  const Names idl = operationsOfTheIdl();
  EXPECT_GT(idl.size(), 40U);
  EXPECT_EQ(idl, table);
}

TEST(Operations, HaveOneEntryForEachNameOfAKindOfObject) {
  for (const Operation& operation : operations()) {
    const Operation& found = operationOf(operation.kind, operation.name);
    EXPECT_EQ(operation.role, found.role) << operation.name;
    EXPECT_EQ(operation.isChange, found.isChange) << operation.name;
  }
}

TEST(Operations, ThatAreUnknownAreTheMostRestricted) {
  for (const ObjectKind kind : {ObjectKind::kNetwork, ObjectKind::kSession, ObjectKind::kConsole}) {
    for (const char* const name : {"", "formatDisk", "getstatus", "_get_version"}) {
      EXPECT_EQ(Role::kOperate, operationOf(kind, name).role) << name;
      EXPECT_TRUE(operationOf(kind, name).isChange) << name;
    }
  }
  EXPECT_EQ(Role::kOperate, operationOf(ObjectKind::kSession, "next_n").role);
}

TEST(Operations, OfTheConsoleNeedTheRoleOperate) {
  for (const Operation& operation : operations()) {
    if (operation.kind == ObjectKind::kConsole) {
      EXPECT_EQ(Role::kOperate, operation.role) << operation.name;
    }
  }
}

TEST(Operations, ThatChangeNeedMoreThanTheRoleRead) {
  for (const Operation& operation : operations()) {
    if (operation.isChange) {
      EXPECT_TRUE(operation.role && *operation.role != Role::kRead) << operation.name;
    }
  }
}

TEST(Operations, ThatAReadOnlyAgentServesAreTheseAlone) {
  Names served;
  for (const Operation& operation : operations()) {
    if (!operation.isChange) {
      served.insert(operation.name);
    }
  }
  EXPECT_EQ((Names{"getTopoSubnetworkViewInfo",
                   "getProtectSubnetworkViewInfo",
                   "getViewInfoByTopoSubnetwork",
                   "getClockSourceSubnetworkViewInfo",
                   "getAllClockSourceViewlTopologicalLinks",
                   "getCapabilities",
                   "next_n",
                   "getLength",
                   "destroy",
                   "ping",
                   "unsubscribe",
                   "subscribe",
                   "getEventAccess",
                   "getObject",
                   "beginBackup",
                   "beginExport",
                   "continueBackup",
                   "endBackup",
                   "getStatus",
                   "_is_a",
                   "_non_existent",
                   "_not_existent",
                   "_interface",
                   "_component",
                   "_repository_id"}),
            served);
}

TEST(Operations, KnowSessionAndConsoleByTheirKeys) {
  EXPECT_EQ(ObjectKind::kConsole, kindOf(object_key::kConsole));
  EXPECT_EQ(ObjectKind::kSession, kindOf(object_key::kSession));
  EXPECT_EQ(ObjectKind::kNetwork, kindOf(object_key::kManager));
  EXPECT_EQ(ObjectKind::kNetwork, kindOf(std::string("\0\1", 2)));
}

}  // namespace
}  // namespace agent
