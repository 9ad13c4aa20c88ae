#pragma once

/// Marks what the shared library offers to other programs: everything else in it is hidden.
///
/// A class that is thrown, caught or cast across the border is marked as a whole, so that both
/// sides share its type information; a template that is instantiated on both sides is marked
/// where it must be one and the same thing (a singleton).
#define QOV_EXPORT __attribute__((visibility("default")))
