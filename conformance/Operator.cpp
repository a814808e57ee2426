#include "conformance/Operator.h"

#include <utility>

#include "conformance/HostProtocol.h"
#include "conformance/shared/Verdict.h"

namespace conformance {
namespace {

class PipeOperator final : public Operator {
 public:
  PipeOperator(HostProcess& process, std::chrono::milliseconds timeout)
      : process_(process), timeout_(timeout) {}

  void create(const std::string& id) override { request("create " + id); }
  void change(const std::string& id) override { request("change " + id); }
  void remove(const std::string& id) override { request("delete " + id); }
  void unload() override { request("unload"); }
  std::string load() override { return request("load"); }

  std::string reload() override {
    unload();
    return load();
  }

 private:
  // Lines that are no answers are skipped.
  std::string request(const std::string& line) {
    const auto deadline = std::chrono::steady_clock::now() + timeout_;
    if (!process_.writeLine(line, timeout_)) {
      throw NoAnswer("the host does not read \"" + line + '"');
    }
    std::string last;
    for (;;) {
      const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(
          deadline - std::chrono::steady_clock::now());
      const auto read = process_.readLine(rest);
      if (!read) {
        throw NoAnswer("the host does not answer \"" + line + '"' + describeLastLine(last));
      }
      last = *read;
      const auto answer = parseAnswer(*read);
      if (answer && !answer->isOk) {
        throw OperationFailed("the host answers \"" + line + "\" with \"" + *read + '"');
      }
      if (answer) {
        return answer->text;
      }
    }
  }

  HostProcess& process_;
  const std::chrono::milliseconds timeout_;
};

class ConsoleOperator final : public Operator {
 public:
  explicit ConsoleOperator(TopoAgent::Console_I_ptr console)
      : console_(TopoAgent::Console_I::_duplicate(console)) {}

  void create(const std::string& id) override {
    TopoAgent::NewNode_T node;
    node.id = id.c_str();
    node.parent = "";
    node.parentKind = TopoAgent::NK_OF_PARENT;
    node.name = id.c_str();
    node.kind = TopoAgent::NK_SUBNETWORK;
    node.nodeParam1 = 0;
    node.nodeParam2 = 0;
    refusalsOf("createNode", [&] { console_->createNode(node); });
  }

  void change(const std::string& id) override {
    const std::string name = id + " renamed";
    refusalsOf("renameNode", [&] { console_->renameNode(id.c_str(), name.c_str()); });
  }

  void remove(const std::string& id) override {
    refusalsOf("deleteNode", [&] { console_->deleteNode(id.c_str()); });
  }

  void unload() override { throw Skipped("the console reloads the module only"); }
  std::string load() override { return reload(); }

  std::string reload() override {
    refusalsOf("reloadModule", [&] { console_->reloadModule(); });
    return "";
  }

 private:
  template <typename Call>
  void refusalsOf(const char* operation, Call call) {
    try {
      call();
    } catch (const globaldefs::ProcessingFailureException& refusal) {
      throw OperationFailed(std::string("the console refuses ") + operation + ": " +
                            refusal.errorReason.in());
    }
  }

  const TopoAgent::Console_I_var console_;
};

class NoOperator final : public Operator {
 public:
  void create(const std::string&) override { skip(); }
  void change(const std::string&) override { skip(); }
  void remove(const std::string&) override { skip(); }
  void unload() override { skip(); }
  std::string load() override { skip(); }
  std::string reload() override { skip(); }

 private:
  [[noreturn]] static void skip() { throw Skipped("the host has no console"); }
};

}  // namespace

std::unique_ptr<Operator> pipeOperator(HostProcess& process, std::chrono::milliseconds timeout) {
  return std::make_unique<PipeOperator>(process, timeout);
}

std::unique_ptr<Operator> consoleOperator(TopoAgent::Console_I_ptr console) {
  return std::make_unique<ConsoleOperator>(console);
}

std::unique_ptr<Operator> noOperator() {
  return std::make_unique<NoOperator>();
}

}  // namespace conformance
