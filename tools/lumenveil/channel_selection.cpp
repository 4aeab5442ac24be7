#include "tools/lumenveil/channel_selection.h"

#include <cctype>
#include <sstream>

#include "tools/lumenveil/cli_error.h"

std::array<int32_t, 4> channelSelectors(const std::string& keep, bool matte)
{
    // Selector position of each channel, R G B A.
    constexpr int kPosition[4] = {0, 2, 1, 3};
    std::array<int32_t, 4> selectors = {1, 1, 1, 1};
    std::stringstream names(keep);
    std::string name;
    while (std::getline(names, name, ',')) {
        if (name.empty())
            continue;
        const std::string channels = "rgba";
        const size_t c = name.size() == 1 ? channels.find(static_cast<char>(std::tolower(name[0]))) : std::string::npos;
        if (c == std::string::npos)
            throw UsageError("--keep: \"" + name + "\" is not a channel (r, g, b or a)");
        selectors[kPosition[c]] = 0;
    }
    if (matte) {
        if (selectors[3] == 0)
            throw UsageError("--keep a and --matte cannot be combined: --matte already takes alpha from the input");
        selectors[3] = 2;
    }
    return selectors;
}
