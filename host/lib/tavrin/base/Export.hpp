#pragma once

/// Marks classes and functions that other libraries may use. The build hides all others.
#define TAVRIN_API __attribute__((visibility("default")))
