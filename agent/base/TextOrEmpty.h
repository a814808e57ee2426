// A CORBA string, which may be null, as a text.

#ifndef AGENT_BASE_TEXTOREMPTY_H
#define AGENT_BASE_TEXTOREMPTY_H

#include <string_view>

namespace agent {

// Empty for null. Borrows the text. Thread-safety: any thread.
inline std::string_view textOrEmpty(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

}  // namespace agent

#endif
