#pragma once

#include <QAVExport.h>

/// Seconds since 1970-01-01 00:00 UTC, with the clock's full resolution.
QAV_EXPORT double QAVGetCurrentTime() noexcept;
