#include "tools/lumenveil/channel_selection.h"

#include <cctype>
#include <sstream>

#include "tools/lumenveil/cli_error.h"

std::array<int32_t, DS_CHANNEL_PLACES> channelSelectors(const std::string& keep, bool matte)
{
    // The place of each channel of "rgba".
    constexpr DSChannelPlace kPlace[4] = {DS_PLACE_RED, DS_PLACE_GREEN, DS_PLACE_BLUE, DS_PLACE_ALPHA};
    std::array<int32_t, DS_CHANNEL_PLACES> selectors = {DS_CHANNEL_EFFECT, DS_CHANNEL_EFFECT, DS_CHANNEL_EFFECT,
                                                        DS_CHANNEL_EFFECT};
    std::stringstream names(keep);
    std::string name;
    while (std::getline(names, name, ',')) {
        if (name.empty())
            continue;
        const std::string channels = "rgba";
        const size_t c = name.size() == 1 ? channels.find(static_cast<char>(std::tolower(name[0]))) : std::string::npos;
        if (c == std::string::npos)
            throw UsageError("--keep: \"" + name + "\" is not a channel (r, g, b or a)");
        selectors[kPlace[c]] = DS_CHANNEL_KEEP;
    }
    if (matte) {
        if (selectors[DS_PLACE_ALPHA] == DS_CHANNEL_KEEP)
            throw UsageError("--keep a and --matte cannot be combined: --matte already takes alpha from the input");
        selectors[DS_PLACE_ALPHA] = DS_CHANNEL_MATTE;
    }
    return selectors;
}
