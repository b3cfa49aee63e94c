// Times every entry, then prints for each operation the best rival, those with a target of their own, and the ratios.
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
#include <set>
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

using Times = std::map<std::string, double>;

double timeOf(const Entry& entry, const Times& best) {
  const auto found = best.find(nameOf(entry));
  return found == best.end() ? 0 : found->second;
}

const Entry* oursOf(const std::string& operation) {
  const auto& entries = qav::bench::registry();
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) {
    return entry.operation == operation && entry.library == qav::bench::kOurs;
  });
  return found == entries.end() ? nullptr : &*found;
}

// The named rival of an operation or, without a name, the best one.
Row against(const std::string& operation, const qav::bench::Target& target, const Times& best) {
  const Entry* const ours = oursOf(operation);
  Row row{operation, ours ? timeOf(*ours, best) : 0, target.rival, 0, target.ratio};
  for (const Entry& entry : qav::bench::registry()) {
    if (entry.operation != operation || &entry == ours) continue;
    const double time = timeOf(entry, best);
    if (target.rival.empty() ? time > 0 && (row.rivals <= 0 || time < row.rivals) : entry.library == target.rival) {
      row.rival = entry.library;
      row.rivals = time;
    }
  }
  return row;
}

// A row for each target and, if none of them is over the best rival, one for that.
std::vector<Row> rowsOf(const std::string& operation, const Times& best) {
  std::vector<Row> rows;
  const Row overBest = against(operation, {}, best);
  bool shown = false;
  if (const Entry* const ours = oursOf(operation))
    for (const auto& target : ours->targets) {
      rows.push_back(against(operation, target, best));
      shown = shown || rows.back().rival == overBest.rival;
    }
  if (!shown) rows.push_back(overBest);
  return rows;
}

std::vector<Row> compare(const Times& best) {
  std::set<std::string> operations;
  for (const Entry& entry : qav::bench::registry())
    if (timeOf(entry, best) > 0) operations.insert(entry.operation);
  std::vector<Row> rows;
  for (const std::string& operation : operations)
    for (Row& row : rowsOf(operation, best)) rows.push_back(std::move(row));
  return rows;
}

std::string formatted(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string table(const std::vector<Row>& rows) {
  std::ostringstream out;
  out << "| Operation | Ours, ms | Rival | Its ms | Ratio | Target |\n|---|---|---|---|---|---|\n";
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
  std::string only, markdown, level;
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
    else if (std::strcmp(argv[i], "--level") == 0 && i + 1 < argc)
      options.level = argv[++i];
    else
      argv[kept++] = argv[i];
  }
  argc = kept;
  return options;
}

// Whether our side now computes at the level of that name.
bool chooseLevel(const std::string& name) {
  using qav::kernels::Level;
  for (int level = 0; level <= static_cast<int>(qav::kernels::bestLevel()); ++level)
    if (name == qav::kernels::levelName(static_cast<Level>(level)))
      return qav::kernels::setActiveLevel(static_cast<Level>(level));
  std::fprintf(stderr, "'%s' is not a level of this processor; take one of", name.c_str());
  for (int level = 0; level <= static_cast<int>(qav::kernels::bestLevel()); ++level)
    std::fprintf(stderr, " %s", qav::kernels::levelName(static_cast<Level>(level)));
  std::fprintf(stderr, "\n");
  return false;
}

void prepareUntimed(const Entry& entry, benchmark::State& state) {
  state.PauseTiming();
  entry.prepare();
  state.ResumeTiming();
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = takeOptions(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  if (!options.level.empty() && !chooseLevel(options.level)) return 2;
  // The entries of one operation one after the other, so that a slow minute of the machine is one for all of them.
  std::stable_sort(qav::bench::registry().begin(), qav::bench::registry().end(),
                   [](const Entry& a, const Entry& b) { return a.operation < b.operation; });
  for (const Entry& entry : qav::bench::registry()) {
    if (entry.operation.find(options.only) == std::string::npos) continue;
    benchmark::RegisterBenchmark(nameOf(entry).c_str(),
                                 [&entry](benchmark::State& state) {
                                   if (entry.prepare) entry.prepare();
                                   entry.work();
                                   for (auto _ : state) {
                                     if (entry.prepare) prepareUntimed(entry, state);
                                     entry.work();
                                   }
                                 })
        ->MeasureProcessCPUTime()  // some rivals work on threads of their own
        ->MinTime(options.quick ? 0.02 : 0.1)
        ->Repetitions(options.quick ? 3 : 5);
  }
  BestTimes times;
  const int rounds = options.quick ? 1 : 2;
  for (int round = 0; round < rounds; ++round) benchmark::RunSpecifiedBenchmarks(&times);
  const std::string text = table(compare(times.best));
  std::printf("Instruction set: %s\n\n%s", qav::kernels::levelName(qav::kernels::activeLevel()), text.c_str());
  if (!options.markdown.empty()) {
    std::ofstream file(options.markdown);
    file << text;
    if (!file) return std::fprintf(stderr, "cannot write %s\n", options.markdown.c_str()), 1;
  }
  return 0;
}
