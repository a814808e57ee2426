// Records as rows of values, the form in which every output format reads them.

#ifndef CLIENT_OUTPUT_ROWS_H
#define CLIENT_OUTPUT_ROWS_H

#include <functional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "client/agent/Batches.h"
#include "client/agent/RecordFields.h"

namespace topoctl {

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
