#pragma once

/// Marks what other libraries may use. Everything else is hidden by the build.
#define TAVRIN_API __attribute__((visibility("default")))
