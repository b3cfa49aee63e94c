#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>

#include "CommandLine.h"
#include "Errors.h"
#include "OutputFile.h"
#include "Progress.h"

namespace qavraster {
namespace {

// The settings right behind an operation that are its own hold for it already.
void takeOwnSettings(const std::vector<Step>& steps, std::size_t at, Context& context) {
  const std::vector<std::string>& own = steps[at].operation->settings;
  for (std::size_t i = at + 1; i < steps.size() && !steps[i].operation; ++i) {
    if (std::find(own.begin(), own.end(), steps[i].setting) == own.end()) return;
    context.settings[steps[i].setting] = steps[i].values;
  }
}

void apply(const std::vector<Step>& steps, std::size_t at, Context& context) {
  const Step& step = steps[at];
  if (!step.operation) {
    context.settings[step.setting] = step.values;
    return;
  }
  takeOwnSettings(steps, at, context);
  context.operation = step.text;
  try {
    step.operation->run(context, step.values);
  } catch (const UsageError& error) {
    throw UsageError("--" + step.operation->name + ": " + error.what());
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

int run(const Invocation& invocation) {
  const FileFormat& format = outputFormat(invocation.output);
  const Settings settings = finalSettings(invocation.steps);
  // First, so that an output that cannot be written is known before the work.
  OutputFile output(invocation.output);
  Progress progress(invocation.steps.size() + 2);
  progress.begin("reading " + invocation.input);
  Context context{readImage(invocation.input, settings), presets(), Progress::report, ""};
  for (std::size_t i = 0; i < invocation.steps.size(); ++i) {
    progress.begin(invocation.steps[i].text);
    apply(invocation.steps, i, context);
  }
  progress.begin("writing " + invocation.output);
  if (!format.write(*context.image, output.temporaryPath(), settings))
    throw Failure("cannot write '" + invocation.output + "' as " + format.name + " (" + describe(*context.image) + ")");
  output.commit();
  return 0;
}

int dispatch(const Invocation& invocation) {
  switch (invocation.kind) {
    case Invocation::Kind::Run:
      return run(invocation);
    case Invocation::Kind::Command:
      return invocation.command->run(invocation.values, invocation.settings);
    case Invocation::Kind::Finished:
      break;
  }
  return 0;
}

int complain(const char* what, int code) {
  std::fprintf(stderr, "qavraster: %s\n", what);
  return code;
}

}  // namespace
}  // namespace qavraster

int main(int argc, char** argv) {
  using namespace qavraster;
  try {
    return dispatch(parseCommandLine(argc, argv));
  } catch (const UsageError& error) {
    return complain(error.what(), 2);
  } catch (const std::bad_alloc&) {
    return complain("not enough memory for this picture", 1);
  } catch (const std::exception& error) {
    return complain(error.what(), 1);
  }
}
