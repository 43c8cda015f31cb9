#ifndef TOOLS_CORVO_ARCHIVE_OPTIONS_H
#define TOOLS_CORVO_ARCHIVE_OPTIONS_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <thread>

namespace corvo {

// Adds --jobs, how many files a command works on at once, with its default.
inline void AddJobs(CLI::App& command, unsigned& jobs) {
  constexpr unsigned kMostJobs = 1024;
  jobs = std::clamp(std::thread::hardware_concurrency(), 1u, kMostJobs);
  command.add_option("--jobs,-j", jobs, "How many at once. By default the processors")
      ->check(CLI::Range(1u, kMostJobs))
      ->type_name("N");
}

// Checks that an option has a value: a script's variable that isn't set must not mean that the
// option wasn't given.
inline CLI::Validator NotEmpty() {
  return {[](const std::string& text) { return text.empty() ? "the name is empty" : ""; }, ""};
}

}  // namespace corvo

#endif
