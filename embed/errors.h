// The failures a host meets in the embedding library: a name or value the
// caller gave that does not fit (UsageError), and a failure while working,
// of the module, the effect, a file or memory (Failure). Each carries the one
// line a user sees.
#pragma once

#include <stdexcept>
#include <string>

struct UsageError : std::runtime_error {
    explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

struct Failure : std::runtime_error {
    explicit Failure(const std::string& message) : std::runtime_error(message) {}
};

// A frame the effect did not render, and why: out of memory, a value that
// makes no picture (a radius that is not a number), or anything else.
struct RenderFailure : Failure {
    enum class Cause { Memory, Value, Other };
    RenderFailure(Cause cause, const std::string& message) : Failure(message), cause(cause) {}
    Cause cause;
};
