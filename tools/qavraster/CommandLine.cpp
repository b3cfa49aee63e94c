#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <functional>

#include "Errors.h"
#include "Listing.h"
#include "Suggestion.h"

namespace qavraster {
namespace {

using Texts = std::vector<std::string>;

/// Declares an option that `use` is called for, with its values as written, each time that it occurs: in the order of
/// the command line, which is the order of the work.
void declare(CLI::App& app, const std::string& name, const std::vector<Argument>& arguments, const std::string& help,
             std::function<void(const Texts&)> use) {
  if (arguments.empty()) {
    app.add_flag_callback(
           "--" + name, [use = std::move(use)] { use({}); }, help)
        ->trigger_on_parse();
    return;
  }
  const auto take = [use = std::move(use)](const CLI::results_t& texts) {
    use(texts);
    return true;
  };
  app.add_option("--" + name, take, help)
      ->type_size(static_cast<int>(arguments.size()))
      ->type_name(signature(arguments))
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->trigger_on_parse();
}

std::string written(const std::string& name, const Texts& texts) {
  std::string all = "--" + name;
  for (const std::string& text : texts) all += " " + text;
  return all;
}

void declareSteps(CLI::App& app, Invocation& invocation) {
  for (const Family& family : catalogue()) {
    for (const Operation& operation : family.operations) {
      declare(app, operation.name, operation.arguments, operation.help, [&](const Texts& texts) {
        invocation.steps.push_back({written(operation.name, texts), &operation, "",
                                    Values("--" + operation.name, operation.arguments, texts)});
      });
    }
  }
  for (const Setting& setting : allSettings()) {
    declare(app, setting.name, setting.arguments, setting.help, [&invocation, setting](const Texts& texts) {
      invocation.steps.push_back(
          {written(setting.name, texts), nullptr, setting.name, Values("--" + setting.name, setting.arguments, texts)});
    });
  }
}

void refuseUnexpected(const CLI::App& app) {
  const Texts unexpected = app.remaining();
  if (unexpected.empty()) return;
  // A misspelt option leaves its values behind too: name the option.
  const auto option = std::find_if(unexpected.begin(), unexpected.end(), [](const auto& t) { return t[0] == '-'; });
  const std::string& word = option == unexpected.end() ? unexpected.front() : *option;
  Texts known;
  for (const CLI::Option* each : app.get_options()) known.push_back(each->get_name());
  throw UsageError("'" + word + "' is not expected here" + suggestion(word, known));
}

void refuseValuesOfFlags(const CLI::App& app, const Texts& arguments) {
  for (const std::string& argument : arguments) {
    const std::string name = argument.substr(0, argument.find('='));
    if (name == argument || !argument.starts_with("--")) continue;
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option && option->get_items_expected_max() == 0)
      throw UsageError("'" + argument + "' is not right; " + name + " takes no value");
  }
}

void parse(CLI::App& app, Texts arguments) {
  refuseValuesOfFlags(app, arguments);
  app.allow_extras();
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  refuseUnexpected(app);
}

Invocation parseCommand(const Command& command, const Texts& arguments) {
  Invocation invocation;
  invocation.kind = Invocation::Kind::Command;
  invocation.command = &command;
  invocation.settings = presets();
  CLI::App app;
  app.set_help_flag();
  std::vector<Setting> settings = command.settings;
  for (const FileFormat& format : fileFormats())
    settings.insert(settings.end(), format.settings.begin(), format.settings.end());
  for (const Setting& setting : settings) {
    const auto take = [&](const Texts& texts) {
      invocation.settings[setting.name] = Values("--" + setting.name, setting.arguments, texts);
    };
    if (!setting.preset.empty()) take(setting.preset);
    declare(app, setting.name, setting.arguments, setting.help, take);
  }
  Texts positional(command.arguments.size());
  for (std::size_t i = 0; i < positional.size(); ++i) app.add_option(command.arguments[i].name, positional[i]);
  parse(app, arguments);
  if (!positional.empty() && positional.back().empty())
    throw UsageError(command.name + " needs " + signature(command.arguments));
  invocation.values = Values(command.name, command.arguments, positional);
  return invocation;
}

// `--kernel` names the kernel of a resizing; with a size it is a kernel of weights to convolve with.
Texts withKernelsTold(Texts arguments) {
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
    const std::string& value = arguments[i + 1];
    const bool isNumber = !value.empty() && value.find_first_not_of("0123456789") == std::string::npos;
    if (arguments[i] == "--kernel" && isNumber) arguments[i] = "--convolve";
  }
  return arguments;
}

Invocation parseRun(const Texts& arguments) {
  Invocation invocation;
  CLI::App app;
  bool help = false, list = false, version = false;
  app.set_help_flag();
  app.add_option("INPUT", invocation.inputs);
  app.add_option("-o,--output", invocation.output)->type_name("OUTPUT");
  app.add_flag("-v,--verbose", invocation.verbose);
  const Setting format = formatOption();
  declare(app, format.name, format.arguments, format.help, [&](const Texts& texts) {
    Values("--" + format.name, format.arguments, texts);
    invocation.format = texts.front();
  });
  app.add_flag("-h,--help", help);
  app.add_flag("--list", list);
  app.add_flag("--version", version);
  declareSteps(app, invocation);
  parse(app, withKernelsTold(arguments));
  if (help || list || version) {
    std::fputs((help ? helpText() : list ? listText() : versionText()).c_str(), stdout);
    invocation.kind = Invocation::Kind::Finished;
    return invocation;
  }
  if (invocation.inputs.empty()) throw UsageError("no input; give qavraster INPUT... [OPERATION]... -o OUTPUT");
  if (invocation.output.empty()) throw UsageError("no output; give it with -o OUTPUT");
  return invocation;
}

}  // namespace

Invocation parseCommandLine(int argc, const char* const* argv) {
  const Texts arguments(argv + std::min(argc, 1), argv + argc);
  for (const Command& command : commands()) {
    if (!arguments.empty() && arguments.front() == command.name)
      return parseCommand(command, {arguments.begin() + 1, arguments.end()});
  }
  return parseRun(arguments);
}

}  // namespace qavraster
