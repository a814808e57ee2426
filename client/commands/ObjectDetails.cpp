#include "client/commands/ObjectDetails.h"

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "client/commands/ObjectNames.h"
#include "client/output/Json.h"
#include "client/output/Printer.h"

namespace topoctl {
namespace {

using TopoAgent::ObjectDetails_T;
using TopoAgent::ObjectRecord_T;

// A row with name and value for each field. The fields of the records are named topoNodes.0.id and
// so on; the number counts the records of a list.
class FieldRows final : public Rows {
 public:
  // Borrows the details.
  explicit FieldRows(const ObjectDetails_T& details) : details_(details) {}

  std::vector<std::string_view> fieldNames() const override { return {"name", "value"}; }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    visit({std::string_view("name"), NamePairs{&details_.name}});
    visit({std::string_view("userLabel"), std::string_view(details_.userLabel.in())});
    visit({std::string_view("owner"), std::string_view(details_.owner.in())});
    visitPairs(details_.additionalInfo, "additionalInfo.", visit);
    std::map<std::string, std::size_t> countOf;
    for (CORBA::ULong i = 0; i < details_.records.length(); ++i) {
      const ObjectRecord_T& record = details_.records[i];
      const std::string list = record.list.in();
      const std::string prefix = list + "." + std::to_string(countOf[list]++) + ".";
      visitPairs(record.fields, prefix, visit);
      visitPairs(record.attributes, prefix + "attributes.", visit);
    }
  }

 private:
  static void visitPairs(const globaldefs::NVSList_T& pairs, const std::string& prefix,
                         const std::function<void(const Row&)>& visit) {
    forEachPair(pairs, [&](std::string_view name, std::string_view value) {
      const std::string field = prefix + std::string(name);
      visit({std::string_view(field), value});
    });
  }

  const ObjectDetails_T& details_;
};

Json recordJson(const ObjectRecord_T& record) {
  Json fields = Json::object();
  forEachPair(record.fields, [&](std::string_view name, std::string_view value) {
    fields[std::string(name)] = toJson(Value(value));
  });
  Json object = Json::object();
  object["list"] = toJson(Value(std::string_view(record.list.in())));
  object["fields"] = std::move(fields);
  object["attributes"] = toJson(record.attributes);
  return object;
}

void printObject(const ObjectDetails_T& details, std::ostream& out) {
  Json object = Json::object();
  object["name"] = toJson(details.name);
  object["userLabel"] = toJson(Value(std::string_view(details.userLabel.in())));
  object["owner"] = toJson(Value(std::string_view(details.owner.in())));
  object["additionalInfo"] = toJson(details.additionalInfo);
  Json records = Json::array();
  for (CORBA::ULong i = 0; i < details.records.length(); ++i) {
    records.push_back(recordJson(details.records[i]));
  }
  object["records"] = std::move(records);
  out << object.dump() << '\n';
}

}  // namespace

void printDetails(const ObjectDetails_T& details, const OutputStyle& style, std::ostream& out) {
  if (style.format == Format::kJson) {
    printObject(details, out);
  } else {
    printRows(FieldRows(details), style, out);
  }
}

PrintFunction getObject(TopoAgent::Console_I_ptr console, const Options& options) {
  const TopoAgent::ObjectDetails_T_var received =
      console->getObject(toList(options.arguments.object));
  const auto shared = std::make_shared<const ObjectDetails_T>(received.in());
  return
      [shared, style = options.style()](std::ostream& out) { printDetails(*shared, style, out); };
}

}  // namespace topoctl
