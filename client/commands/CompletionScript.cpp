#include "client/commands/CompletionScript.h"

#include <ostream>

#include "client/output/OutputStream.h"

namespace topoctl {
namespace {

// The answer of the hidden command: a line "words" or "files", then a line for each word. For bash,
// a line is the rest of a word, quoted for bash; for zsh, a whole word without quotes, a tab and
// the line that zsh shows. No script evaluates a word.

constexpr const char* kBash = R"(# bash completion of topoctl

_topoctl() {
  local -a lines=()
  local rest
  COMPREPLY=()
  mapfile -t lines < <("$1" __complete bash "${COMP_LINE:0:COMP_POINT}" 2>/dev/null </dev/null)
  if [[ ${lines[0]-} == files ]]; then
    compopt -o default 2>/dev/null
    return 0
  fi
  for rest in "${lines[@]:1}"; do
    COMPREPLY+=("$2$rest")
  done
}

complete -F _topoctl topoctl
)";

constexpr const char* kZsh = R"(#compdef topoctl
# zsh completion of topoctl

_topoctl() {
  local -a lines values shown
  local line
  lines=("${(@f)$("${(Q)words[1]}" __complete zsh "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null </dev/null)}")
  if [[ ${lines[1]} == files ]]; then
    _files
    return
  fi
  for line in "${(@)lines[2,-1]}"; do
    values+=("${line%%$'\t'*}")
    shown+=("${line#*$'\t'}")
  done
  (( ${#values} )) && compadd -l -d shown -- "${(@)values}"
}

if [[ ${funcstack[1]} == _topoctl ]]; then
  _topoctl "$@"
else
  compdef _topoctl topoctl
fi
)";

}  // namespace

void printCompletionScript(const Options& options, std::ostream& out) {
  out << (options.arguments.shell == "bash" ? kBash : kZsh);
  flush(out);
}

}  // namespace topoctl
