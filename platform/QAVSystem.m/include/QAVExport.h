#pragma once

/// Marks what a shared library of the framework exports; everything else is hidden.
#define QAV_EXPORT __attribute__((visibility("default")))
