#ifndef TOOLS_CORVO_ARCHIVE_JOBS_H
#define TOOLS_CORVO_ARCHIVE_JOBS_H

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

}  // namespace corvo

#endif
