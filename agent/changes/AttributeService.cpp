#include "agent/changes/AttributeService.h"

#include <exception>
#include <new>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/Text.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

using globaldefs::NVSList_T;
using Change = NetworkWriter::Change;

[[noreturn]] void refuse(std::uint32_t code, const std::string& reason) {
  throw Outcome{code, reason};
}

std::string_view textOf(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

std::string ofObject(const char* attribute, const NVSList_T& name) {
  return std::string("the ") + attribute + " of " + formatName(name);
}

void requireText(const char* attribute, const NVSList_T& name, std::string_view text) {
  const std::string problem = problemWith(text);
  if (!problem.empty()) {
    refuse(kInvalidName, ofObject(attribute, name) + ' ' + problem);
  }
}

// The names that were seen so far are borrowed.
std::string problemWithPair(const globaldefs::NameAndStringValue_T& pair,
                            salted::Set<std::string_view>& seen) {
  const std::string_view name = textOf(pair.name);
  if (name.empty()) {
    return "has no name";
  }
  std::string problem = problemWith(name);
  if (!problem.empty()) {
    return "has a name that " + problem;
  }
  problem = problemWith(textOf(pair.value));
  if (!problem.empty()) {
    return "has a value for " + inQuotes(name) + " that " + problem;
  }
  return seen.insert(name).second ? "" : "gives " + inQuotes(name) + " a second time";
}

// Before the texts are copied: there may be a million of them.
void requirePairs(const NVSList_T& pairs, const NVSList_T& object) {
  salted::Set<std::string_view> seen;
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    const std::string problem = problemWithPair(pairs[i], seen);
    if (!problem.empty()) {
      refuse(kInvalidName, ofObject("additional information", object) + ": pair " +
                               std::to_string(i + 1) + ' ' + problem);
    }
  }
}

InfoPairs copyOf(const NVSList_T& pairs) {
  InfoPairs copy;
  copy.reserve(pairs.length());
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    copy.emplace_back(textOf(pairs[i].name), textOf(pairs[i].value));
  }
  return copy;
}

// Some ORBs give no text instead of an exception when memory is short.
char* duplicate(const std::string& text) {
  char* const copy = CORBA::string_dup(text.c_str());
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  return copy;
}

void fill(NVSList_T& list, const InfoPairs& pairs) {
  list.length(static_cast<CORBA::ULong>(pairs.size()));
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    list[i].name = duplicate(pairs[i].first);
    list[i].value = duplicate(pairs[i].second);
  }
}

void requireRoom(const InfoPairs& pairs, const NVSList_T& object) {
  std::size_t bytes = 0;
  for (const auto& [name, value] : pairs) {
    bytes += AttributeService::kPairBytes + name.size() + value.size();
  }
  if (bytes > AttributeService::kMostInfoBytes) {
    refuse(kTooMuch, ofObject("additional information", object) + " would have more than " +
                         std::to_string(AttributeService::kMostInfoBytes) + " bytes");
  }
}

// Without memory of its own.
void moveInto(NVSList_T& list, NVSList_T& from) {
  const CORBA::ULong maximum = from.maximum();
  const CORBA::ULong length = from.length();
  list.replace(maximum, length, from.get_buffer(true), true);
}

}  // namespace

AttributeService::AttributeService(std::string ems, NetworkWriter& writer)
    : ems_(std::move(ems)), writer_(writer) {}

Outcome AttributeService::setUserLabel(const NVSList_T& name, std::string_view label,
                                       bool isUnique) {
  return change(name, [&](const ObjectKey& key) {
    requireText("user label", name, label);
    return [&, key, text = std::string(label)](Change& change) {
      if (isUnique && !text.empty()) {
        requireUnused(change.store(), key, text);
      }
      change.commit(NetworkModel::prepareLabel(key, text));
    };
  });
}

Outcome AttributeService::setOwner(const NVSList_T& name, std::string_view owner) {
  return change(name, [&](const ObjectKey& key) {
    requireText("owner", name, owner);
    return [key, text = std::string(owner)](Change& change) {
      change.commit({OwnerChange{key, text}, {}});
    };
  });
}

Outcome AttributeService::setNativeName(const NVSList_T& name, std::string_view nativeName) {
  return change(name, [&](const ObjectKey& key) {
    requireText("native name", name, nativeName);
    return [key, text = std::string(nativeName)](Change& change) {
      change.commit(change.model().prepareRenaming(key, text));
    };
  });
}

Outcome AttributeService::setAdditionalInfo(const NVSList_T& name, NVSList_T& pairs) {
  return change(name, [&](const ObjectKey& key) {
    requirePairs(pairs, name);
    return [&, key, changes = copyOf(pairs)](Change& change) {
      const InfoPairs merged = mergedInfo(change.store().additionalInfoOf(key), changes);
      requireRoom(merged, name);
      NVSList_T stored;
      fill(stored, merged);
      change.commit({InfoChange{key, changes}, {}});
      moveInto(pairs, stored);
    };
  });
}

Outcome AttributeService::reset(const NVSList_T& name) {
  return change(name, [&](const ObjectKey& key) {
    return [key](Change& change) { change.commit(NetworkModel::prepareAttributeRemoval(key)); };
  });
}

// Prepares a change, which needs no other to wait, and makes it. Failures of any kind end here.
template <typename Prepare>
Outcome AttributeService::change(const NVSList_T& name, Prepare prepare) {
  try {
    const ObjectKey key = resolve(name);
    const auto apply = prepare(key);
    Change change(writer_);
    requireObject(key, name);  // another change may have removed it
    apply(change);
    return {};
  } catch (Outcome& refusal) {
    return std::move(refusal);
  } catch (const std::exception& failure) {
    return internalError([&] { return formatName(name); }, failure.what());
  }
}

ObjectKey AttributeService::resolve(const NVSList_T& name) const {
  std::string problem;
  const auto key = parseObjectName(name, ems_, problem);
  if (!key) {
    refuse(kInvalidName, "malformed name " + formatName(name) + ": " + problem);
  }
  if (findInvalidUtf8(key->id)) {
    refuse(kInvalidName, "malformed name " + formatName(name) + ": it is not UTF-8");
  }
  requireObject(*key, name);
  return *key;
}

void AttributeService::requireObject(const ObjectKey& key, const NVSList_T& name) const {
  if (!writer_.model().hasObject(key)) {
    refuse(kEntityNotFound, "no object " + formatName(name));
  }
}

// Labels may be stored of objects that are not there; those do not count.
void AttributeService::requireUnused(NetworkStore& store, const ObjectKey& key,
                                     const std::string& label) const {
  for (const std::string& id : store.idsWithLabel(key.type, label)) {
    const ObjectKey other{key.type, id};
    if (!(other == key) && writer_.model().hasObject(other)) {
      refuse(kUserLabelInUse, "the user label " + inQuotes(label) + " is already that of " +
                                  formatName(other, ems_));
    }
  }
}

}  // namespace agent
