#include "client/Complete.h"

#include <algorithm>
#include <chrono>
#include <ostream>
#include <set>

#include "client/agent/Connection.h"
#include "client/base/ShellLine.h"
#include "client/base/Utf8.h"
#include "client/commandline/Completion.h"
#include "client/commands/CompletionScript.h"
#include "client/commands/ObjectIds.h"
#include "client/output/OutputStream.h"
#include "orb/orb.h"

namespace topoctl {
namespace {

constexpr std::chrono::milliseconds kCallTimeout{1000};
constexpr std::uint32_t kMostRecords = 5000;  // of a view: nobody reads a longer list

// A word of another form could change the terminal, or end the line of the answer.
bool isPrintable(const std::string& text) {
  return escapeControls(text) == text;
}

std::set<std::string> idsOf(const Completion& completion) {
  try {
    AgentAccess access = completion.access.value();
    access.callTimeout = kCallTimeout;
    access.howMany = kMostRecords;
    const auto orb = orb::startClient(orbOptions(access));
    return objectIds(orb->get(), access, completion.values);
  } catch (...) {
    return {};  // the user sees the reason when the command runs
  }
}

void addIds(Completion& completion) {
  if (!completion.access || !isObject(completion.values)) {
    return;
  }
  for (const std::string& id : idsOf(completion)) {
    const std::string text = completion.prefix + id;
    const bool isOption = id.rfind('-', 0) == 0 && completion.prefix.empty();
    if (text.rfind(completion.word, 0) == 0 && isPrintable(text) &&
        (!isOption || completion.dashIsAllowed)) {
      completion.candidates.push_back({text, ""});
    }
  }
}

Completion answerTo(const std::vector<std::string>& words, const std::string& agentOfEnvironment) {
  Completion completion = completionOf(words, agentOfEnvironment);
  addIds(completion);
  return completion;
}

void writeKind(const Completion& completion, std::ostream& out) {
  out << (completion.values == Values::kFile && completion.prefix.empty() ? "files\n" : "words\n");
}

void completeForBash(const std::string& line, const std::string& agentOfEnvironment,
                     std::ostream& out) {
  ShellLine typed = splitShellLine(line);
  typed.words.erase(typed.words.begin());  // the program
  if (typed.expands) {
    // The word is another one after the expansion, and a "$" before the rest of an id could make
    // bash execute the id.
    out << "words\n";
    return;
  }
  const Completion completion = answerTo(typed.words, agentOfEnvironment);
  writeKind(completion, out);
  for (const Candidate& candidate : completion.candidates) {
    out << shellQuoted(candidate.text.substr(completion.word.size()), typed.quote) << '\n';
  }
}

void completeForZsh(const std::vector<std::string>& words, const std::string& agentOfEnvironment,
                    std::ostream& out) {
  const Completion completion = answerTo(words, agentOfEnvironment);
  writeKind(completion, out);
  for (const Candidate& candidate : completion.candidates) {
    out << candidate.text << '\t' << candidate.text
        << (candidate.help.empty() ? "" : "  -- " + candidate.help) << '\n';
  }
}

}  // namespace

bool isCompletion(const std::vector<std::string>& arguments) {
  return !arguments.empty() && arguments.front() == kCompleteCommand;
}

void complete(const std::vector<std::string>& arguments, const std::string& agentOfEnvironment,
              std::ostream& out) {
  try {
    const std::string shell = arguments.size() > 2 ? arguments[1] : "";
    if (shell == "bash") {
      completeForBash(arguments[2], agentOfEnvironment, out);
    } else if (shell == "zsh") {
      completeForZsh({arguments.begin() + 2, arguments.end()}, agentOfEnvironment, out);
    }
    flush(out);
  } catch (...) {
    // Nobody reads a message: the terminal shows a half-typed line.
  }
}

}  // namespace topoctl
