#include "agent/changes/AttributeService.h"

#include <exception>
#include <new>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"
#include "agent/base/TextChecks.h"
#include "agent/base/TextOrEmpty.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

using globaldefs::NVSList_T;
using Change = NetworkWriter::Change;

std::string subjectOf(const char* attribute, const NVSList_T& name) {
  return std::string("the ") + attribute + " of " + formatName(name);
}

// The reason to refuse a pair; empty for a valid pair. Adds the name of the pair to `seen`, which
// borrows the text.
std::string problemWithPair(const globaldefs::NameAndStringValue_T& pair,
                            salted::Set<std::string_view>& seen) {
  const std::string_view name = textOrEmpty(pair.name);
  if (name.empty()) {
    return "has no name";
  }
  std::string problem = problemWith(name);
  if (!problem.empty()) {
    return "has a name that " + problem;
  }
  problem = problemWith(textOrEmpty(pair.value));
  if (!problem.empty()) {
    return "has a value for " + inQuotes(name) + " that " + problem;
  }
  return seen.insert(name).second ? "" : "gives " + inQuotes(name) + " a second time";
}

// Checks the pairs before their texts are copied, because a list may have a million pairs.
Outcome checkPairs(const NVSList_T& pairs, const NVSList_T& object) {
  salted::Set<std::string_view> seen;
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    const std::string problem = problemWithPair(pairs[i], seen);
    if (!problem.empty()) {
      return {kInvalidName, subjectOf("additional information", object) + ": pair " +
                                std::to_string(i + 1) + ' ' + problem};
    }
  }
  return {};
}

InfoPairs copyOf(const NVSList_T& pairs) {
  InfoPairs copy;
  copy.reserve(pairs.length());
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    copy.emplace_back(textOrEmpty(pairs[i].name), textOrEmpty(pairs[i].value));
  }
  return copy;
}

// Some ORBs return null instead of an exception when memory is short.
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

Outcome checkSize(const InfoPairs& pairs, const NVSList_T& object) {
  if (infoBytes(pairs) > kMostInfoBytes) {
    return {kTooMuch, subjectOf("additional information", object) + " would have more than " +
                          std::to_string(kMostInfoBytes) + " bytes"};
  }
  return {};
}

// Allocates nothing, so that a committed change cannot fail here.
void moveInto(NVSList_T& list, NVSList_T& from) {
  const CORBA::ULong maximum = from.maximum();
  const CORBA::ULong length = from.length();
  list.replace(maximum, length, from.get_buffer(true), true);
}

NVSList_T withEms(const NVSList_T& pair, const std::string& ems) {
  NVSList_T name;
  name.length(2);
  name[0].name = tmf::kEms;
  name[0].value = duplicate(ems);
  name[1] = pair[0];
  return name;
}

}  // namespace

AttributeService::AttributeService(std::string ems, NetworkWriter& writer)
    : ems_(std::move(ems)), writer_(writer) {}

Outcome AttributeService::setUserLabel(const NVSList_T& name, std::string_view label,
                                       bool isUnique) {
  return change(
      name, [&] { return checkText(subjectOf("user label", name), label); },
      [&](const ObjectKey& key, Change& change) {
        const std::string text(label);
        Outcome checked;
        if (isUnique && !text.empty()) {
          checked = checkUnused(change.store(), key, text);
        }
        if (checked.ok()) {
          change.commit(NetworkModel::prepareLabel(key, text));
        }
        return checked;
      });
}

Outcome AttributeService::setOwner(const NVSList_T& name, std::string_view owner) {
  return change(
      name, [&] { return checkText(subjectOf("owner", name), owner); },
      [&](const ObjectKey& key, Change& change) {
        change.commit({OwnerChange{key, std::string(owner)}, {}});
        return Outcome();
      });
}

Outcome AttributeService::setNativeName(const NVSList_T& name, std::string_view nativeName) {
  return change(
      name, [&] { return checkText(subjectOf("native name", name), nativeName); },
      [&](const ObjectKey& key, Change& change) {
        change.commit(change.model().prepareRenaming(key, std::string(nativeName)));
        return Outcome();
      });
}

Outcome AttributeService::setAdditionalInfo(const NVSList_T& name, NVSList_T& pairs) {
  InfoPairs changes;
  const auto check = [&] {
    Outcome checked = checkPairs(pairs, name);
    if (checked.ok()) {
      changes = copyOf(pairs);
    }
    return checked;
  };
  return change(name, check, [&](const ObjectKey& key, Change& change) {
    const InfoPairs merged = mergedInfo(change.store().additionalInfoOf(key), changes);
    Outcome checked = checkSize(merged, name);
    if (checked.ok()) {
      NVSList_T stored;
      fill(stored, merged);
      change.commit({InfoChange{key, std::move(changes)}, {}});
      moveInto(pairs, stored);
    }
    return checked;
  });
}

Outcome AttributeService::reset(const NVSList_T& name) {
  return change(
      name, [] { return Outcome(); },
      [](const ObjectKey& key, Change& change) {
        change.commit(NetworkModel::prepareAttributeRemoval(key));
        return Outcome();
      });
}

Result<ObjectDetails> AttributeService::details(const NVSList_T& name) const {
  try {
    const NVSList_T whole = name.length() == 1 ? withEms(name, ems_) : name;
    const Result<ObjectKey> key = resolve(whole);
    if (!key.ok()) {
      return key.outcome();
    }
    auto [owner, info] = writer_.attributesOf(key.value());
    auto view = writer_.model().object(key.value());
    if (!view) {
      return checkExists(key.value(), whole);
    }
    return ObjectDetails{key.value(), std::move(*view), std::move(owner), std::move(info)};
  } catch (const std::exception& failure) {
    return internalError([&] { return formatName(name); }, failure.what());
  }
}

// Runs check() while other changes may run, then apply(key, change) within a Change. Returns the
// first failure; exceptions of the layers below become kInternalError.
template <typename Check, typename Apply>
Outcome AttributeService::change(const NVSList_T& name, Check check, Apply apply) {
  try {
    const Result<ObjectKey> key = resolve(name);
    if (!key.ok()) {
      return key.outcome();
    }
    if (Outcome checked = check(); !checked.ok()) {
      return checked;
    }
    Change change(writer_);
    // An earlier change may have removed the object since resolve().
    if (Outcome checked = checkExists(key.value(), name); !checked.ok()) {
      return checked;
    }
    return apply(key.value(), change);
  } catch (const std::exception& failure) {
    return internalError([&] { return formatName(name); }, failure.what());
  }
}

Result<ObjectKey> AttributeService::resolve(const NVSList_T& name) const {
  std::string problem;
  const auto key = parseObjectName(name, ems_, problem);
  if (!key) {
    return Outcome{kInvalidName, "malformed name " + formatName(name) + ": " + problem};
  }
  if (findInvalidUtf8(key->id)) {
    return Outcome{kInvalidName, "malformed name " + formatName(name) + ": it is not UTF-8"};
  }
  if (Outcome checked = checkExists(*key, name); !checked.ok()) {
    return checked;
  }
  return *key;
}

Outcome AttributeService::checkExists(const ObjectKey& key, const NVSList_T& name) const {
  return writer_.model().hasObject(key) ? Outcome()
                                        : Outcome{kEntityNotFound, "no object " + formatName(name)};
}

// Ignores the stored labels of objects that do not exist.
Outcome AttributeService::checkUnused(NetworkStore& store, const ObjectKey& key,
                                      const std::string& label) const {
  for (const std::string& id : store.idsWithLabel(key.type, label)) {
    const ObjectKey other{key.type, id};
    if (!(other == key) && writer_.model().hasObject(other)) {
      return {kUserLabelInUse, "the user label " + inQuotes(label) + " is already that of " +
                                   formatName(other, ems_)};
    }
  }
  return {};
}

}  // namespace agent
