#include "embed/transform_limit.h"

#include <algorithm>
#include <cstdio>

#include "hostsdk/IDSTransformNeeds.h"
#include "embed/errors.h"

namespace {

class TransformQuestion {
public:
    TransformQuestion(const EffectInstance& effect, double time)
        : needs(ComRef<IDSTransformNeeds>::Query(effect.Object(), IID_IDSTransformNeeds)), time(time)
    {
        if (!needs)
            throw Failure("the effect does not say what its transform needs");
    }

    DSTransformNeeds Ask(int32_t width, int32_t height, int32_t engine = DS_ENGINE_CURRENT) const
    {
        DSTransformNeeds answer{};
        if (FAILED(needs->GetTransformNeeds(width, height, time, engine, &answer)))
            throw Failure("the effect cannot say what its transform needs for a " + std::to_string(width) + " x " +
                          std::to_string(height) + " frame");
        return answer;
    }

    // The largest n from 1 to `most` for which fits(n) holds, where it holds
    // up to some n and not above it (the reach does not shrink as a frame
    // grows); 1 when it holds for none.
    template <typename Fits> int32_t Largest(int64_t most, Fits fits) const
    {
        int32_t low = 1, high = static_cast<int32_t>(std::min<int64_t>(most, INT32_MAX));
        while (low < high) {
            const int32_t middle = low + (high - low + 1) / 2;
            if (fits(middle))
                low = middle;
            else
                high = middle - 1;
        }
        return low;
    }

private:
    ComRef<IDSTransformNeeds> needs;
    double time;
};

// "; --engine fast or fast-float takes it": the engines of the effect's
// Engine list, other than the one it is set to, whose transform takes the
// frame; "" when none does or the effect offers no choice.
std::string enginesThatFit(const EffectInstance& effect, const TransformQuestion& question, int32_t width,
                           int32_t height)
{
    const Parameter* engine = findParameter(effect.Parameters(), kEngineParameterName);
    if (!engine)
        return "";
    const int32_t current = static_cast<int32_t>(effect.Get(*engine, -1.0));
    std::string names;
    for (int32_t i = 0; i < static_cast<int32_t>(engine->listEntries.size()); ++i)
        if (i != current && question.Ask(width, height, i).fits)
            names += (names.empty() ? "" : " or ") + engine->listEntries[static_cast<size_t>(i)];
    return names.empty() ? "" : "; --engine " + names + " takes it";
}

}  // namespace

std::string transformLimitProblem(const EffectInstance& effect, int32_t width, int32_t height, double time,
                                  int32_t rows)
{
    const int32_t padding = rows > height ? rows - height : 0;
    const TransformQuestion question(effect, time);
    const DSTransformNeeds needs = question.Ask(width, height + padding);
    if (needs.fits)
        return "";
    // The reach grows with the width: find the widest frame that fits, then
    // the height that fits beside it.
    const int32_t widest = question.Largest(needs.largestSide, [&](int32_t w) { return question.Ask(w, 1).fits; });
    int32_t tallest = question.Largest(needs.largestSide, [&](int32_t h) { return question.Ask(widest, h).fits; });
    if (!question.Ask(widest, tallest).fits)
        tallest = 0;
    tallest = std::max(tallest - padding, 0);
    char reachText[32];
    std::snprintf(reachText, sizeof reachText, "%.1f", needs.reach);
    const int64_t side = std::max(needs.width, needs.height);
    return "a " + std::to_string(width) + " x " + std::to_string(height) + " frame with a blur reach of " +
           reachText + " px needs a transform of " + std::to_string(side) + ", above the largest, " +
           std::to_string(needs.largestSide) + "; at this radius frames up to " + std::to_string(widest) +
           " wide and " + std::to_string(tallest) + " high work" + enginesThatFit(effect, question, width, height + padding);
}
