// The tool's failures and their exit codes: a usage error (bad option or
// value, embed/errors.h) exits 2, a failure while working (files, sizes, the
// module) exits 1, an interrupt exits 130. Each carries the one message the
// user sees.
#pragma once

#include <stdexcept>
#include <string>

#include "embed/errors.h"

inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitInterrupted = 130;

struct Interrupted : std::runtime_error {
    explicit Interrupted(const std::string& message) : std::runtime_error(message) {}
};
