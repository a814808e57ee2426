// Records as rows of values, the form that every output format reads.

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

// The rows of a result and the names of their columns.
//
// Thread-safety: concurrent calls are safe. Subclasses borrow the records.
// Errors: exceptions of `visit` and std::bad_alloc pass.
class Rows {
 public:
  using Row = std::vector<Value>;  // one value a field

  virtual ~Rows() = default;
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;

  virtual std::vector<std::string_view> fieldNames() const = 0;

  // The row and its values are valid until `visit` returns.
  virtual void forEach(const std::function<void(const Row&)>& visit) const = 0;

 protected:
  Rows() = default;
};

template <typename Record>
std::vector<std::string_view> namesOf(const RecordFields<Record>& fields) {
  std::vector<std::string_view> names;
  for (const auto& field : fields) {
    names.emplace_back(field.name);
  }
  return names;
}

template <typename Record>
void fillRow(const Record& record, const RecordFields<Record>& fields, Rows::Row& row) {
  row.clear();
  for (const auto& field : fields) {
    row.push_back(field.value(record));
  }
}

// A row for each record of the batches. Borrows the batches and the fields. Thread-safety and
// errors as Rows.
template <typename List>
class ListRows final : public Rows {
 public:
  using Record = std::decay_t<decltype(std::declval<const List&>()[0])>;

  ListRows(const Batches<List>& batches, const RecordFields<Record>& fields)
      : batches_(batches), fields_(fields) {}

  std::vector<std::string_view> fieldNames() const override { return namesOf(fields_); }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    Row row;
    batches_.forEach([&](const Record& record) {
      fillRow(record, fields_, row);
      visit(row);
    });
  }

 private:
  const Batches<List>& batches_;
  const RecordFields<Record>& fields_;
};

// One row. Borrows the record and the fields. Thread-safety and errors as Rows.
template <typename Record>
class RecordRow final : public Rows {
 public:
  RecordRow(const Record& record, const RecordFields<Record>& fields)
      : record_(record), fields_(fields) {}

  std::vector<std::string_view> fieldNames() const override { return namesOf(fields_); }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    Row row;
    fillRow(record_, fields_, row);
    visit(row);
  }

 private:
  const Record& record_;
  const RecordFields<Record>& fields_;
};

}  // namespace topoctl

#endif
