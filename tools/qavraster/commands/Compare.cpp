#include <QAVPixelImageComparator.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "Errors.h"
#include "StandardStreams.h"
#include "commands/Commands.h"

namespace qavraster {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

struct Statistics {
  int count = 0;
  double percentage = 0, mean = 0, deviation = 0, maximum = 0, median = kNone;
};

// Where the pictures of the differences go: the folder that was asked for, or one that is gone at the end.
class OutputFolder {
 public:
  explicit OutputFolder(const std::string& asked) : temporary_(asked.empty()), path_(asked) {
    if (temporary_) {
      std::string name = (std::filesystem::temp_directory_path() / "qavraster-XXXXXX").string();
      if (!mkdtemp(name.data())) throw Failure("cannot make a folder like '" + name + "'");
      path_ = name;
    }
    std::filesystem::create_directories(path_);
  }
  ~OutputFolder() {
    std::error_code ignored;
    if (temporary_) std::filesystem::remove_all(path_, ignored);
  }
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  // The library's file names begin with a backslash, which is no separator here.
  std::string prefix() const { return path_ + "/"; }

 private:
  bool temporary_;
  std::string path_;
};

// Says why two files cannot be compared.
[[noreturn]] void explain(const std::string& first, const std::string& second, const Settings& settings) {
  const Image a = readImage(first, settings), b = readImage(second, settings);
  throw Failure(
      "cannot compare " + inputName(first) + " (" + describe(*a) + ") with " + inputName(second) + " (" + describe(*b) +
      "): they must be TIFF, PNG or JPEG files of one size, both of RGB888, RGBA8888 or floating-point pixels");
}

Statistics compare(const std::string& first, const std::string& second, const Settings& settings) {
  const OutputFolder folder(settings.count("out") > 0 ? settings.at("out").text(0) : "");
  Statistics s;
  const int done = QAVPixelImageComparator::ImageCompare(
      readablePath(first), readablePath(second), folder.prefix(), settings.at("threshold").number(0),
      settings.at("sigmas").integer(0), settings.at("scale").number(0), s.mean, s.count, s.percentage, s.deviation,
      s.maximum, s.median, settings.count("heat") > 0, settings.count("relative") > 0);
  if (!done) explain(first, second, settings);
  return s;
}

void print(const Statistics& s, bool json) {
  const std::pair<const char*, double> rows[] = {{"percentage", s.percentage},
                                                 {"mean", s.mean},
                                                 {"deviation", s.deviation},
                                                 {"maximum", s.maximum},
                                                 {"median", s.median}};
  std::printf(json ? "{\"count\": %d" : "count       %d\n", s.count);
  for (const auto& [name, value] : rows) {
    if (!json) std::printf("%-11s ", name);
    if (json) std::printf(", \"%s\": ", name);
    if (std::isfinite(value))
      std::printf("%.17g", value);
    else
      std::fputs(json ? "null" : "-", stdout);
    if (!json) std::puts("");
  }
  if (json) std::puts("}");
}

}  // namespace

int compareFiles(const Values& values, const Settings& settings) {
  try {
    const Statistics statistics = compare(values.text(0), values.text(1), settings);
    print(statistics, settings.count("json") > 0);
    return statistics.count > 0 ? 1 : 0;
  } catch (const std::exception& error) {
    // 1 is an answer here, so failures have the code of a wrong command line.
    std::fprintf(stderr, "qavraster: %s\n", messageOf(error).c_str());
    return 2;
  }
}

std::vector<Setting> comparisonSettings() {
  constexpr double kAny = std::numeric_limits<double>::infinity();
  return {
      {"out", {text("DIR", "folder")}, "Writes pictures of the differences to DIR.", {}},
      {"threshold", {number("T", 0, kAny)}, "Smallest difference that counts.", {"1"}},
      {"sigmas",
       {integer("N", 0, 1000)},
       "Marks what lies further than N deviations from the mean; 0 for none.",
       {"0"}},
      {"scale", {number("L", 0, kAny)}, "Difference at which the pictures reach black, or red.", {"10"}},
      {"heat", {}, "Makes the pictures heat maps.", {}},
      {"relative", {}, "Writes also a picture whose scale is the largest difference.", {}},
      {"json", {}, "Prints JSON.", {}},
  };
}

}  // namespace qavraster
