// A variable of the environment for as long as an object lives.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace corvane::testing {

class EnvironmentVariable {
 public:
  EnvironmentVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* old = ::getenv(name)) old_ = old;
    set(value);
  }
  ~EnvironmentVariable() { set(old_); }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  void set(const std::optional<std::string>& value) {
    if (value)
      ::setenv(name_, value->c_str(), 1);
    else
      ::unsetenv(name_);
  }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

}  // namespace corvane::testing
