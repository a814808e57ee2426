#include "client/commandline/Completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

#include "client/base/Failure.h"
#include "client/commandline/Options.h"

namespace topoctl {
namespace {

bool isOption(const std::string& word) {
  return word.size() > 1 && word.front() == '-';
}

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

// The kinds of values by the type that the help shows for an option.
Values valuesOf(const CLI::Option& option) {
  static const std::map<std::string, Values> kinds = {
      {"FORMAT", Values::kFormat}, {"KIND", Values::kKind}, {"PATH", Values::kFile},
      {"FILE", Values::kFile},     {"ID", Values::kNode},   {"REFERENCE", Values::kClockPosition}};
  const std::string& text = option.get_option_text();
  const auto found = kinds.find(text.empty() ? option.get_type_name() : text);
  return found == kinds.end() ? Values::kAny : found->second;
}

// Follows the words of a command line through the parser's tables. Borrows the parser.
class Walk {
 public:
  explicit Walk(const CLI::App& parser) : parser_(parser), command_(&parser) {}

  void follow(const std::string& word) {
    if (option_ != nullptr) {
      keepIfGlobal(*option_, {word});
      option_ = nullptr;
    } else if (onlyPlaces_ || !isOption(word)) {
      followPlain(word);
    } else if (word == "--") {
      onlyPlaces_ = true;
    } else {
      followOption(word);
    }
  }

  Completion complete(const std::string& word) const {
    Completion result;
    result.word = word;
    result.dashIsAllowed = onlyPlaces_;
    const std::size_t equals = word.find('=');
    if (option_ != nullptr) {
      addValues(valuesOf(*option_), "", result);
    } else if (onlyPlaces_ || word.rfind('-', 0) != 0) {
      addCommands(result);
      addValues(valuesOfPlace(), "", result);
    } else if (equals == std::string::npos) {
      addOptions(result);
    } else if (const CLI::Option* const option = find(word.substr(0, equals)); option != nullptr) {
      addValues(valuesOf(*option), word.substr(0, equals + 1), result);
    }
    return result;
  }

  // The options of the whole program, as typed.
  const Words& globals() const { return globals_; }

 private:
  void followPlain(const std::string& word) {
    const auto subcommands = command_->get_subcommands(
        [&word](const CLI::App* each) { return each->get_name() == word; });
    if (places_ == 0 && !onlyPlaces_ && !subcommands.empty()) {
      command_ = subcommands.front();
      name_ += (name_.empty() ? "" : " ") + word;
    } else {
      ++places_;
    }
  }

  void followOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    const CLI::Option* const option = find(word.substr(0, equals));
    if (option == nullptr) {
      return;
    }
    if (takesValue(*option) && equals == std::string::npos) {
      option_ = option;
    } else if (takesValue(*option)) {
      keepIfGlobal(*option, {word.substr(equals + 1)});
    }
  }

  // An option of the command, or of the program.
  const CLI::Option* find(const std::string& name) const {
    const CLI::Option* const own = command_->get_option_no_throw(name);
    return own != nullptr ? own : parser_.get_option_no_throw(name);
  }

  void keepIfGlobal(const CLI::Option& option, const Words& values) {
    if (parser_.get_option_no_throw(option.get_name()) == &option) {
      globals_.push_back(option.get_name());
      globals_.insert(globals_.end(), values.begin(), values.end());
    }
  }

  Values valuesOfPlace() const {
    const CommandSyntax* const syntax = findSyntax(name_);
    return syntax == nullptr || places_ >= syntax->arguments.places.size()
               ? Values::kAny
               : syntax->arguments.places[places_].values;
  }

  static void add(const std::string& text, const std::string& help, Completion& result) {
    if (text.rfind(result.word, 0) == 0) {
      result.candidates.push_back({text, help});
    }
  }

  void addCommands(Completion& result) const {
    if (places_ > 0 || onlyPlaces_) {
      return;
    }
    for (const CLI::App* const each :
         command_->get_subcommands([](const CLI::App*) { return true; })) {
      add(each->get_name(), each->get_description(), result);
    }
  }

  void addOptions(Completion& result) const {
    for (const CLI::App* const app : {command_, &parser_}) {
      for (const CLI::Option* const option : app->get_options()) {
        if (!option->get_lnames().empty() && (app == command_ || option->get_name() != "--help")) {
          add("--" + option->get_lnames().front(), option->get_description(), result);
        }
      }
      if (command_ == &parser_) {
        break;
      }
    }
  }

  static void addValues(Values values, const std::string& prefix, Completion& result) {
    for (const std::string& choice : choicesOf(values)) {
      add(prefix + choice, "", result);
    }
    result.values = values;
    result.prefix = prefix;
  }

  const CLI::App& parser_;
  const CLI::App* command_;              // the innermost subcommand
  std::string name_;                     // of the command, such as "node create"
  const CLI::Option* option_ = nullptr;  // whose value is the next word
  std::size_t places_ = 0;               // that are filled
  bool onlyPlaces_ = false;              // after "--"
  Words globals_;
};

std::optional<AgentAccess> accessOf(Words globals, const std::string& agentOfEnvironment) {
  try {
    globals.emplace_back("capabilities");
    return parseOptions(globals, agentOfEnvironment).access;
  } catch (const Failure&) {
    return std::nullopt;
  }
}

}  // namespace

std::vector<std::string> choicesOf(Values values) {
  switch (values) {
    case Values::kAttribute:
      return attributeNames();
    case Values::kFormat:
      return {"table", "json", "csv"};
    case Values::kKind:
      return {"subnetwork", "element"};
    case Values::kShell:
      return {"bash", "zsh"};
    case Values::kSwitch:
      return {"on", "off"};
    default:
      return {};
  }
}

Completion completionOf(const Words& words, const std::string& agentOfEnvironment) {
  Completion result;
  if (words.empty()) {
    return result;
  }
  Words globals;
  withParser([&](const CLI::App& parser) {
    Walk walk(parser);
    std::for_each(words.begin(), words.end() - 1,
                  [&walk](const std::string& word) { walk.follow(word); });
    result = walk.complete(words.back());
    globals = walk.globals();
  });
  result.access = accessOf(globals, agentOfEnvironment);
  return result;
}

}  // namespace topoctl
