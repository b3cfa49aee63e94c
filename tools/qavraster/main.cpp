#include <QAVCheck.h>

#include <cstdio>
#include <exception>

#include "CommandLine.h"
#include "Errors.h"
#include "run/Run.h"

namespace qavraster {
namespace {

int dispatch(const Invocation& invocation) {
  switch (invocation.kind) {
    case Invocation::Kind::Run:
      return runOperations(invocation);
    case Invocation::Kind::Command:
      return invocation.command->run(invocation.values, invocation.settings);
    case Invocation::Kind::Finished:
      break;
  }
  return 0;
}

int complain(const std::string& what, int code) {
  std::fprintf(stderr, "qavraster: %s\n", what.c_str());
  return code;
}

}  // namespace
}  // namespace qavraster

int main(int argc, char** argv) {
  using namespace qavraster;
  // What the library's checks find wrong comes back as a failure, with words of ours.
  QAVSetCheckReporter([](auto...) {});
  try {
    const int code = dispatch(parseCommandLine(argc, argv));
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) throw Failure("cannot write standard output");
    return code;
  } catch (const UsageError& error) {
    return complain(error.what(), 2);
  } catch (const std::exception& error) {
    return complain(messageOf(error), 1);
  }
}
