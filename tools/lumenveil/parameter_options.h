// ParameterOptions: one command-line option per effect parameter, made from
// the parameter table, and the values given applied to an effect.
//
// A number or list property gives `--NAME VALUE`; a flag gives `--NAME` and
// `--no-NAME`; the two halves of a position (StemX, StemY) give one
// `--stem X,Y`. Ranges and defaults in the help are the property map's.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "embed/effect_instance.h"
#include "embed/parameter_table.h"

class ParameterOptions {
public:
    // Adds the options of `parameters` to `command` in the option group "Parameters".
    ParameterOptions(CLI::App& command, const std::vector<Parameter>& parameters);

    // Sets every parameter whose option was given on `effect`; UsageError for a
    // malformed or out-of-range value.
    void Apply(EffectInstance& effect) const;
    // Whether the option of the parameter with property name `name` was
    // given (a flag's --NAME or --no-NAME, a position's X,Y for either half).
    bool Given(const std::string& name) const;
    // The parameters whose options were given.
    std::vector<const Parameter*> GivenParameters() const;

private:
    struct Single {
        const Parameter* parameter;
        std::string text;
        CLI::Option* option = nullptr;
    };
    struct Flag {
        const Parameter* parameter;
        CLI::Option* on = nullptr;
        CLI::Option* off = nullptr;
    };
    struct Pair {
        std::string option;
        const Parameter* x;
        const Parameter* y;
        std::string text;
        CLI::Option* given = nullptr;
    };
    // Stable addresses: CLI11 keeps pointers to the texts.
    std::vector<std::unique_ptr<Single>> singles;
    std::vector<std::unique_ptr<Flag>> flags;
    std::vector<std::unique_ptr<Pair>> pairs;
};
