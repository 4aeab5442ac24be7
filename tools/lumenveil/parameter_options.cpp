#include "tools/lumenveil/parameter_options.h"

#include "tools/lumenveil/cli_error.h"

namespace {

std::string helpOf(const Parameter& p)
{
    std::string help = p.longName;
    const std::string range = describeRange(p);
    help += " (";
    if (!range.empty() && !p.isFlag())
        help += range + ", ";
    help += "default " + formatParameterValue(p, p.defaultValue);
    if (p.animated)
        help += "; animatable";
    if (!p.unit.empty())
        help += "; " + p.unit;
    return help + ")";
}

}  // namespace

ParameterOptions::ParameterOptions(CLI::App& command, const std::vector<Parameter>& parameters)
{
    const std::string group = "Parameters";
    for (const Parameter& p : parameters) {
        const std::string stem = positionStem(p);
        if (!stem.empty()) {
            const bool isX = p.name.back() == 'X';
            Pair* pair = nullptr;
            for (auto& existing : pairs)
                if (existing->option == optionNameOf(stem))
                    pair = existing.get();
            if (!pair) {
                pairs.push_back(std::make_unique<Pair>(Pair{optionNameOf(stem), nullptr, nullptr, "", nullptr}));
                pair = pairs.back().get();
            }
            (isX ? pair->x : pair->y) = &p;
            continue;
        }
        if (p.isFlag()) {
            auto flag = std::make_unique<Flag>(Flag{&p});
            const std::string onHelp = helpOf(p), offHelp = "Turn " + p.longName + " off";
            flag->on = command.add_flag("--" + p.option, onHelp)->group(group);
            flag->off = command.add_flag("--no-" + p.option, offHelp)->group(group);
            flag->on->excludes(flag->off);
            flags.push_back(std::move(flag));
            continue;
        }
        auto single = std::make_unique<Single>(Single{&p, ""});
        single->option = command.add_option("--" + p.option, single->text, helpOf(p))->group(group);
        single->option->type_name(p.isList() ? "NAME" : p.isInteger() ? "INT" : "NUMBER");
        singles.push_back(std::move(single));
    }
    for (auto& pair : pairs) {
        if (!pair->x || !pair->y)
            continue;
        const std::string help = pair->x->longName + " and " + pair->y->longName + " as X,Y (each " +
                                 describeRange(*pair->x) + ", default " +
                                 formatParameterValue(*pair->x, pair->x->defaultValue) + "," +
                                 formatParameterValue(*pair->y, pair->y->defaultValue) + "; animatable as " +
                                 pair->x->option + " and " + pair->y->option + ")";
        pair->given = command.add_option("--" + pair->option, pair->text, help)->group(group)->type_name("X,Y");
    }
}

std::vector<const Parameter*> ParameterOptions::GivenParameters() const
{
    std::vector<const Parameter*> given;
    for (const auto& single : singles)
        if (single->option->count() > 0)
            given.push_back(single->parameter);
    for (const auto& flag : flags)
        if (flag->on->count() > 0 || flag->off->count() > 0)
            given.push_back(flag->parameter);
    for (const auto& pair : pairs)
        if (pair->given && pair->given->count() > 0) {
            given.push_back(pair->x);
            given.push_back(pair->y);
        }
    return given;
}

void ParameterOptions::Apply(EffectInstance& effect) const
{
    for (const auto& single : singles)
        if (single->option->count() > 0)
            effect.Set(*single->parameter,
                       parseParameterValue(*single->parameter, single->text, "--" + single->parameter->option));
    // A switch may carry a value (--emphasise-alpha=off): the last one given
    // counts, and --no-NAME=VALUE turns the value round.
    for (const auto& flag : flags) {
        const Parameter& p = *flag->parameter;
        if (flag->on->count() > 0)
            effect.Set(p, parseParameterValue(p, flag->on->results().back(), "--" + p.option));
        if (flag->off->count() > 0)
            effect.Set(p, 1.0 - parseParameterValue(p, flag->off->results().back(), "--no-" + p.option));
    }
    for (const auto& pair : pairs) {
        if (!pair->given || pair->given->count() == 0)
            continue;
        const size_t comma = pair->text.find(',');
        if (comma == std::string::npos)
            throw UsageError("--" + pair->option + ": \"" + pair->text + "\" is not X,Y");
        const std::string what = "--" + pair->option;
        const double x = parseParameterValue(*pair->x, pair->text.substr(0, comma), what + " X");
        const double y = parseParameterValue(*pair->y, pair->text.substr(comma + 1), what + " Y");
        effect.Set(*pair->x, x);
        effect.Set(*pair->y, y);
    }
}

bool ParameterOptions::Given(const std::string& name) const
{
    for (const auto& single : singles)
        if (single->parameter->name == name)
            return single->option->count() > 0;
    for (const auto& flag : flags)
        if (flag->parameter->name == name)
            return flag->on->count() > 0 || flag->off->count() > 0;
    for (const auto& pair : pairs)
        if ((pair->x && pair->x->name == name) || (pair->y && pair->y->name == name))
            return pair->given && pair->given->count() > 0;
    return false;
}
