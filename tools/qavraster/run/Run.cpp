#include "run/Run.h"

#include <algorithm>
#include <chrono>

#include "Errors.h"
#include "StandardStreams.h"
#include "run/OutputFile.h"
#include "run/Plan.h"
#include "run/Progress.h"
#include "run/Trial.h"

namespace qavraster {
namespace {

using Clock = std::chrono::steady_clock;

// The settings right behind an operation that are its own hold for it already.
void takeOwnSettings(const std::vector<Step>& steps, std::size_t at, Context& context) {
  const std::vector<std::string>& own = steps[at].operation->settings;
  for (std::size_t i = at + 1; i < steps.size() && !steps[i].operation; ++i) {
    if (std::find(own.begin(), own.end(), steps[i].setting) == own.end()) return;
    context.settings[steps[i].setting] = steps[i].values;
  }
}

// Settings of the input's file format may stand anywhere on the command line.
Settings finalSettings(const std::vector<Step>& steps) {
  Settings settings = presets();
  for (const Step& step : steps) {
    if (!step.operation) settings[step.setting] = step.values;
  }
  return settings;
}

class Run {
 public:
  explicit Run(const Invocation& invocation)
      : steps_(invocation.steps),
        settings_(finalSettings(steps_)),
        verbose_(invocation.verbose),
        jobs_(planned(invocation.inputs, invocation.output, invocation.format)),
        progress_(jobs_.size() * stepsOfPicture()) {}

  int makeAll();

 private:
  std::size_t stepsOfPicture() const { return steps_.size() + 2; }
  template <class Work>
  void timed(const std::string& name, Work work);
  void apply(std::size_t at, Context& context);
  void make(const Job& job);
  bool makeIfPossible(const Job& job);
  int summarise(const std::vector<std::string>& failed);

  const std::vector<Step>& steps_;
  Settings settings_;
  bool verbose_;
  std::vector<Job> jobs_;
  Progress progress_;
};

std::string line(Clock::duration time, const std::string& name) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%10.2f ms  ", std::chrono::duration<double, std::milli>(time).count());
  return digits + name;
}

// `work` gives what there is to say about its result.
template <class Work>
void Run::timed(const std::string& name, Work work) {
  progress_.begin(name);
  const auto start = Clock::now();
  const std::string result = work();
  if (verbose_) progress_.print(line(Clock::now() - start, name + (result.empty() ? "" : ": " + result)));
}

void Run::apply(std::size_t at, Context& context) {
  const Step& step = steps_[at];
  if (!step.operation) {
    context.settings[step.setting] = step.values;
    progress_.begin(step.text);
    return;
  }
  takeOwnSettings(steps_, at, context);
  context.operation = step.text;
  timed(step.text, [&] {
    const std::string before = describe(*context.image);
    try {
      step.operation->run(context, step.values);
    } catch (const UsageError& error) {
      throw UsageError("--" + step.operation->name + ": " + error.what());
    } catch (const Refusal& refusal) {
      throw Failure(refusal.what() + formatsThatWouldDo(*step.operation, step.values, context));
    }
    const std::string after = describe(*context.image);
    return after == before ? "" : after;
  });
}

void Run::make(const Job& job) {
  const auto start = Clock::now();
  if (verbose_) progress_.print(job.input + " -> " + job.output);
  // First, so that an output that cannot be written is known before the work.
  OutputFile output(job.output);
  Context context{nullptr, presets(), Progress::report, ""};
  timed("reading " + inputName(job.input), [&] {
    context.image = readImage(job.input, settings_);
    return describe(*context.image);
  });
  for (std::size_t i = 0; i < steps_.size(); ++i) apply(i, context);
  timed("writing " + outputName(job.output), [&] {
    if (!job.format->write(*context.image, output.temporaryPath(), settings_))
      throw Failure("cannot write " + outputName(job.output) + " as " + job.format->name + " (" +
                    describe(*context.image) + ")");
    output.commit();
    return job.format->name;
  });
  if (verbose_) progress_.print(line(Clock::now() - start, "in all"));
}

bool Run::makeIfPossible(const Job& job) {
  try {
    make(job);
    return true;
  } catch (const std::exception& error) {
    const std::string message = messageOf(error);
    const bool named = message.find(inputName(job.input)) != std::string::npos;
    progress_.print("qavraster: " + (named ? message : inputName(job.input) + ": " + message));
    return false;
  }
}

int Run::summarise(const std::vector<std::string>& failed) {
  std::string text = std::to_string(jobs_.size()) + " pictures written";
  if (!failed.empty()) text = std::to_string(jobs_.size() - failed.size()) + " of " + text + "; not";
  for (const std::string& name : failed) text += (&name == &failed.front() ? " " : ", ") + name;
  progress_.print("qavraster: " + text);
  return failed.empty() ? 0 : 1;
}

int Run::makeAll() {
  if (jobs_.size() == 1) {
    make(jobs_.front());
    return 0;
  }
  std::vector<std::string> failed;
  for (std::size_t i = 0; i < jobs_.size(); ++i) {
    progress_.skipTo(i * stepsOfPicture());
    if (!makeIfPossible(jobs_[i])) failed.push_back(inputName(jobs_[i].input));
  }
  return summarise(failed);
}

}  // namespace

int runOperations(const Invocation& invocation) { return Run(invocation).makeAll(); }

}  // namespace qavraster
