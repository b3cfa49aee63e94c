// Times every entry, then prints each operation's best rival and the ratio.
//   qav_benchmarks [--quick] [--only TEXT] [--markdown FILE] [Google Benchmark's own flags]

#include "kernels/Level.h"
#include "support/Comparison.h"
#include "support/Registry.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

namespace {

using qav::bench::Entry;
using qav::bench::Row;

std::string nameOf(const Entry& entry) { return entry.operation + " | " + entry.library; }

// Keeps the fastest of an entry's repetitions: what the machine can do when nothing else disturbs it.
class BestTimes : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const std::string name = run.run_name.function_name;
      const double ms = run.cpu_accumulated_time / static_cast<double>(run.iterations) * 1e3;
      const auto known = best.find(name);
      if (known == best.end()) std::fprintf(stderr, "%s\n", name.c_str());
      best[name] = known == best.end() ? ms : std::min(known->second, ms);
    }
  }
  std::map<std::string, double> best;
};

std::vector<Row> compare(const std::map<std::string, double>& best) {
  std::vector<Row> rows;
  for (const Entry& entry : qav::bench::registry()) {
    const auto time = best.find(nameOf(entry));
    if (time == best.end()) continue;
    auto row = std::find_if(rows.begin(), rows.end(), [&](const Row& r) { return r.operation == entry.operation; });
    if (row == rows.end()) {
      Row added;
      added.operation = entry.operation;
      row = rows.insert(rows.end(), added);
    }
    if (entry.library == qav::bench::kOurs) {
      row->ours = time->second;
      row->target = entry.target;
    } else if (row->rival.empty() || time->second < row->rivals) {
      row->rival = entry.library;
      row->rivals = time->second;
    }
  }
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.operation < b.operation; });
  return rows;
}

std::string formatted(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string table(const std::vector<Row>& rows) {
  std::ostringstream out;
  out << "| Operation | Ours, ms | Best rival | Its ms | Ratio | Target |\n|---|---|---|---|---|---|\n";
  for (const Row& row : rows) {
    const bool compared = row.ours > 0 && row.rivals > 0;
    out << "| " << row.operation << " | " << (row.ours > 0 ? formatted("%.3f", row.ours) : "") << " | " << row.rival
        << " | " << (row.rivals > 0 ? formatted("%.3f", row.rivals) : "") << " | "
        << (compared ? formatted("%.2f", row.rivals / row.ours) : "") << " | "
        << (row.target > 0 ? formatted("%.2f", row.target) : "")
        << (compared && row.rivals / row.ours < row.target ? " (below)" : "") << " |\n";
  }
  return out.str();
}

struct Options {
  bool quick = false;
  std::string only, markdown;
};

Options takeOptions(int& argc, char** argv) {
  Options options;
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--quick") == 0)
      options.quick = true;
    else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc)
      options.only = argv[++i];
    else if (std::strcmp(argv[i], "--markdown") == 0 && i + 1 < argc)
      options.markdown = argv[++i];
    else
      argv[kept++] = argv[i];
  }
  argc = kept;
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = takeOptions(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  for (const Entry& entry : qav::bench::registry()) {
    if (entry.operation.find(options.only) == std::string::npos) continue;
    benchmark::RegisterBenchmark(nameOf(entry).c_str(),
                                 [&entry](benchmark::State& state) {
                                   entry.work();
                                   for (auto _ : state) entry.work();
                                 })
        ->MeasureProcessCPUTime()  // some rivals work on threads of their own
        ->MinTime(options.quick ? 0.02 : 0.1)
        ->Repetitions(options.quick ? 3 : 7);
  }
  BestTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);
  const std::string text = table(compare(times.best));
  std::printf("Instruction set: %s\n\n%s", qav::kernels::levelName(qav::kernels::activeLevel()), text.c_str());
  if (!options.markdown.empty()) {
    std::ofstream file(options.markdown);
    file << text;
    if (!file) return std::fprintf(stderr, "cannot write %s\n", options.markdown.c_str()), 1;
  }
  return 0;
}
