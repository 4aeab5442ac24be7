#include "tools/lumenveil/option_suggestion.h"

#include <algorithm>
#include <vector>

namespace {

// Edits (insertions, deletions, substitutions, swaps of neighbours) between a and b.
size_t editDistance(const std::string& a, const std::string& b)
{
    std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i)
        d[i][0] = i;
    for (size_t j = 0; j <= b.size(); ++j)
        d[0][j] = j;
    for (size_t i = 1; i <= a.size(); ++i)
        for (size_t j = 1; j <= b.size(); ++j) {
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    return d[a.size()][b.size()];
}

std::vector<std::string> longNames(const CLI::App& app, const CLI::App* command)
{
    std::vector<std::string> names;
    for (const CLI::App* owner : {&app, command})
        if (owner)
            for (const CLI::Option* option : owner->get_options())
                for (const std::string& name : option->get_lnames())
                    names.push_back(name);
    return names;
}

}  // namespace

std::string suggestOption(const CLI::App& app, const CLI::App* command, int argc, char** argv)
{
    const std::vector<std::string> names = longNames(app, command);
    for (int i = 1; i < argc; ++i) {
        std::string word = argv[i];
        if (word == "--")
            break;
        if (word.rfind("--", 0) != 0)
            continue;
        word = word.substr(2, word.find('=') == std::string::npos ? std::string::npos : word.find('=') - 2);
        if (std::find(names.begin(), names.end(), word) != names.end())
            continue;
        // Near: at most a third of the word's letters wrong, and at least one right.
        const std::string* best = nullptr;
        size_t bestDistance = std::max<size_t>(1, word.size() / 3) + 1;
        for (const std::string& name : names)
            if (const size_t distance = editDistance(word, name); distance < bestDistance)
                best = &name, bestDistance = distance;
        return best ? " (did you mean --" + *best + "?)" : "";
    }
    return "";
}
