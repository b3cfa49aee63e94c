#pragma once

#include <QAVExport.h>

/// Receives the report of a failed internal expectation. `kind` is "TRUE" or "Pointer"; `message` may be null.
using QAVCheckReporter = void (*)(const char* kind, const char* expression, const char* file, int line,
                                  const char* message);

/// Reports that `expression` was expected to be true. Prints one line to standard error, or calls the
/// reporter that QAVSetCheckReporter has set, and returns: the caller goes on along its own failure path.
QAV_EXPORT void Check_TRUE_Failed__(const char* expression, const char* file, int line, const char* message);

/// Reports that the pointer `expression` was expected not to be null; as Check_TRUE_Failed__ otherwise.
QAV_EXPORT void Check_Pointer_Failed__(const char* expression, const char* file, int line, const char* message);

/// Replaces the printer of failed expectations and returns the one in force before (never null).
/// A null `reporter` brings the printer to standard error back. May be called from any thread.
QAV_EXPORT QAVCheckReporter QAVSetCheckReporter(QAVCheckReporter reporter) noexcept;
