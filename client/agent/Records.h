// Records as rows of values: one description a record type serves every output format.

#ifndef CLIENT_AGENT_RECORDS_H
#define CLIENT_AGENT_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/topologicalLink.h"

namespace topoctl {

// An NVSList_T in its two roles, which people want to see differently. Both borrow the list.
struct ObjectName {
  const globaldefs::NVSList_T* pairs;
};
struct Information {
  const globaldefs::NVSList_T* pairs;
};

// What nothing is known of but that it is there.
struct Unknown {};

// Borrows from the record. Enumerations are numbers or the names of their values.
using Value = std::variant<Unknown, bool, std::int64_t, std::uint64_t, std::string_view, ObjectName,
                           Information>;

// Combines functions, one for each alternative of a variant.
template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

// visit(name, value), both as std::string_view.
template <typename Visit>
void forEachPair(const globaldefs::NVSList_T& pairs, Visit visit) {
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    visit(std::string_view(pairs[i].name.in()), std::string_view(pairs[i].value.in()));
  }
}

template <typename Record>
struct Field {
  const char* name;  // as in the IDL
  Value (*value)(const Record&);
};

// The fields of a record type in IDL order.
template <typename Record>
using Description = std::vector<Field<Record>>;

const Description<TopoManagementManager::Node_T>& nodeDescription();
const Description<topologicalLink::TopologicalLink_T>& linkDescription();
const Description<globaldefs::NameAndStringValue_T>& pairDescription();

// What the agent delivered, in the order received, kept in the sequences that the calls returned.
template <typename List>
class Batches {
 public:
  // Takes ownership, as of the result of a _retn().
  void add(List* batch) {
    batches_.emplace_back(batch);
    size_ += batches_.back()->length();
  }

  std::size_t size() const { return size_; }

  template <typename Visit>
  void forEach(Visit visit) const {
    for (const auto& batch : batches_) {
      for (CORBA::ULong i = 0; i < batch->length(); ++i) {
        visit(std::as_const(*batch)[i]);
      }
    }
  }

 private:
  std::vector<std::unique_ptr<List>> batches_;
  std::size_t size_ = 0;
};

// What a printer sees of any batches. The values of a row are valid during the visit.
class Rows {
 public:
  using Row = std::vector<Value>;

  virtual ~Rows() = default;
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;

  virtual std::vector<std::string_view> fields() const = 0;
  virtual void forEach(const std::function<void(const Row&)>& visit) const = 0;

 protected:
  Rows() = default;
};

template <typename Record>
std::vector<std::string_view> fieldNames(const Description<Record>& description) {
  std::vector<std::string_view> names;
  for (const auto& field : description) {
    names.emplace_back(field.name);
  }
  return names;
}

template <typename Record>
void fillRow(const Record& record, const Description<Record>& description, Rows::Row& row) {
  row.clear();
  for (const auto& field : description) {
    row.push_back(field.value(record));
  }
}

// Borrows the batches and the description.
template <typename List>
class DescribedRows final : public Rows {
 public:
  using Record = std::decay_t<decltype(std::declval<const List&>()[0])>;

  DescribedRows(const Batches<List>& batches, const Description<Record>& description)
      : batches_(batches), description_(description) {}

  std::vector<std::string_view> fields() const override { return fieldNames(description_); }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    Row row;
    batches_.forEach([&](const Record& record) {
      fillRow(record, description_, row);
      visit(row);
    });
  }

 private:
  const Batches<List>& batches_;
  const Description<Record>& description_;
};

// One record. Borrows it and the description.
template <typename Record>
class DescribedRecord final : public Rows {
 public:
  DescribedRecord(const Record& record, const Description<Record>& description)
      : record_(record), description_(description) {}

  std::vector<std::string_view> fields() const override { return fieldNames(description_); }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    Row row;
    fillRow(record_, description_, row);
    visit(row);
  }

 private:
  const Record& record_;
  const Description<Record>& description_;
};

}  // namespace topoctl

#endif
