#include "run/Plan.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>

#include "Errors.h"
#include "StandardStreams.h"

namespace qavraster {
namespace {

namespace fs = std::filesystem;

std::string valueOf(const std::string& placeholder, const std::string& input, const std::string& index,
                    const std::string& pattern) {
  const fs::path path = isStandardStream(input) ? "stdin" : input;
  if (placeholder == "{name}") return path.stem().string();
  if (placeholder == "{ext}") return path.has_extension() ? path.extension().string().substr(1) : "";
  if (placeholder == "{index}") return index;
  throw UsageError("the output '" + pattern + "': '" + placeholder +
                   "' is no placeholder; give {name}, {ext} or {index}, or {{ for a brace");
}

std::string expanded(const std::string& pattern, const std::string& input, const std::string& index) {
  std::string path;
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    const char c = pattern[at];
    const bool doubled = at + 1 < pattern.size() && pattern[at + 1] == c;
    if (c == '{' && !doubled) {
      const std::size_t end = std::min(pattern.find('}', at), pattern.size() - 1);
      path += valueOf(pattern.substr(at, end - at + 1), input, index, pattern);
      at = end;
    } else {
      path += c;
      if ((c == '{' || c == '}') && doubled) ++at;
    }
  }
  return path;
}

// With zeros in front, so that names sort as their numbers do.
std::string indexOf(std::size_t number, std::size_t count) {
  const std::string digits = std::to_string(number);
  return std::string(std::to_string(count).size() - digits.size(), '0') + digits;
}

// The same for two names of one file.
std::string identity(const std::string& path) {
  std::error_code error;
  const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
  return isStandardStream(path) || error ? path : whole.string();
}

void refuseCollisions(const std::vector<Job>& jobs) {
  std::map<std::string, const Job*> writers;
  for (const Job& job : jobs) {
    const auto [first, isNew] = writers.emplace(identity(job.output), &job);
    if (isNew) continue;
    throw UsageError(inputName(first->second->input) + " and " + inputName(job.input) + " would both be written to " +
                     outputName(job.output) + "; put {name} or {index} into the output, as in -o 'small-{name}.png'");
  }
}

void refuseOverwriting(const std::vector<Job>& jobs) {
  std::set<std::string> inputs;
  for (const Job& job : jobs) {
    if (!isStandardStream(job.input)) inputs.insert(identity(job.input));
  }
  for (const Job& job : jobs) {
    if (inputs.count(identity(job.output)) > 0)
      throw UsageError("the output " + outputName(job.output) + " is an input too; give another name or folder");
  }
}

void refuseUnwritable(const Job& job) {
  if (isStandardStream(job.output)) {
    if (isatty(STDOUT_FILENO))
      throw UsageError("standard output is a terminal; send it to a file or a program, as in -o - > picture." +
                       job.format->extensions.front().substr(1));
    return;
  }
  const fs::path folder = fs::path(job.output).parent_path();
  std::error_code error;
  if (folder.empty() || fs::is_directory(folder, error)) return;
  throw Failure("cannot write '" + job.output + "': " + std::strerror(error ? error.value() : ENOTDIR) +
                "; make the folder '" + folder.string() + "' first");
}

}  // namespace

std::vector<Job> planned(const std::vector<std::string>& inputs, const std::string& pattern, const std::string& type) {
  std::vector<Job> jobs;
  bool inPlace = inputs.size() == 1;
  for (const std::string& input : inputs) {
    const std::string output = expanded(pattern, input, indexOf(jobs.size() + 1, inputs.size()));
    jobs.push_back({input, output, &outputFormat(output, type)});
    // One file named as its own output is meant so; what a pattern happens to hit is not.
    inPlace = inPlace && output == pattern;
  }
  refuseCollisions(jobs);
  if (!inPlace) refuseOverwriting(jobs);
  for (const Job& job : jobs) refuseUnwritable(job);
  return jobs;
}

}  // namespace qavraster
