// An environment variable with another value, during the life of the object.

#ifndef TESTS_SUPPORT_ENVIRONMENTVARIABLE_H
#define TESTS_SUPPORT_ENVIRONMENTVARIABLE_H

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

// REQUIRES: no other thread reads the environment.
class EnvironmentVariable {
 public:
  EnvironmentVariable(const char* name, const std::string& value) : name_(name) {
    if (const char* const before = std::getenv(name)) {
      before_ = before;
    }
    setenv(name, value.c_str(), 1);
  }
  ~EnvironmentVariable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }

  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  const char* const name_;
  std::optional<std::string> before_;
};

}  // namespace support

#endif
