#include "conversion_plan.h"

#include <algorithm>

#include "channel_positions.h"
#include "failure.h"
#include "layout_choice.h"
#include "mixing_matrix.h"
#include "rate_choice.h"
#include "vorlin/av_compat.h"

namespace sonivex_tool {
namespace {

[[noreturn]] void refuse(const std::string& reason) {
    throw Failure(ExitCode::UnsupportedAudio, "cannot render the audio: " + reason);
}

std::string titlesOf(const std::vector<const Effect*>& chain) {
    std::string titles;
    for (size_t i = 0; i < chain.size(); ++i) {
        if (i > 0) titles += i + 1 == chain.size() ? " and " : ", ";
        titles += chain[i]->title;
    }
    return titles;
}

std::string verb(const std::vector<const Effect*>& chain, const std::string& plural) {
    return chain.size() > 1 ? plural : plural + "s";
}

std::string listOf(const std::vector<std::string>& words) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0) text += i + 1 == words.size() ? " or " : ", ";
        text += words[i];
    }
    return text;
}

std::string listOf(const std::vector<int>& numbers) {
    std::vector<std::string> words;
    words.reserve(numbers.size());
    for (const int number : numbers) words.push_back(std::to_string(number));
    return listOf(words);
}

std::string layoutsText(const std::vector<int>& counts) {
    std::vector<std::string> names;
    names.reserve(counts.size());
    for (const int channels : counts) names.push_back(layoutName(defaultLayout(channels)));
    return listOf(names);
}

std::string channelsText(const AVChannelLayout& layout) {
    if (Vorlin::av::layoutMask(layout) == 0) return std::to_string(layout.nb_channels) + " channels";
    return layoutName(layout);
}

std::string unsupported(const std::vector<const Effect*>& chain, const std::string& list) {
    return titlesOf(chain) + " " + verb(chain, "support") + " " + list;
}

std::string channelsUnsupported(const std::vector<const Effect*>& chain, int channels) {
    return unsupported(chain, listOf(channelsOfChain(chain))) + " channels, not " + std::to_string(channels);
}

std::vector<int> ratesOfChain_hz(const std::vector<const Effect*>& chain) {
    std::vector<int> rates_hz = chain.front()->rates_hz;
    for (const Effect* effect : chain) {
        std::erase_if(rates_hz, [&](int rate_hz) {
            return std::find(effect->rates_hz.begin(), effect->rates_hz.end(), rate_hz) ==
                   effect->rates_hz.end();
        });
    }
    return rates_hz;
}

AVChannelLayout namedLayout(const std::string& name) {
    AVChannelLayout layout{};
    const int result = av_channel_layout_from_string(&layout, name.c_str());
    const uint64_t mask = result < 0 ? 0 : Vorlin::av::layoutMask(layout);
    av_channel_layout_uninit(&layout);
    if (mask == 0) {
        throw Failure(
            ExitCode::Usage,
            "--layout must name loudspeakers, such as mono, stereo, 5.1 or 7.1, not \"" + name + "\"");
    }
    av_channel_layout_from_mask(&layout, mask);
    return layout;
}

int planRate_hz(int input_hz, const std::vector<const Effect*>& chain, const ConversionSettings& settings) {
    const std::vector<int> supported = ratesOfChain_hz(chain);
    const int wanted_hz = settings.rate_hz.value_or(input_hz);
    const bool fits = std::find(supported.begin(), supported.end(), wanted_hz) != supported.end();
    if (!fits && (settings.rate_hz || settings.strict || supported.empty()))
        refuse(unsupported(chain, listOf(supported)) + " Hz, not " + std::to_string(wanted_hz));
    return fits ? wanted_hz : chooseRate_hz(input_hz, supported);
}

bool isMixed(const AVChannelLayout& from, const AVChannelLayout& to) {
    if (av_channel_layout_compare(&from, &to) == 0) return false;
    return from.nb_channels != to.nb_channels || !onlyMovesChannels(mixingMatrix(from, to), from.nb_channels);
}

LayoutChoice planLayout(const AVChannelLayout& input, const std::vector<const Effect*>& chain,
                        const ConversionSettings& settings) {
    const std::vector<int> counts = channelsOfChain(chain);
    const AVChannelLayout wanted = settings.layout ? namedLayout(*settings.layout) : input;
    const bool fits = std::find(counts.begin(), counts.end(), wanted.nb_channels) != counts.end();
    if (!fits && settings.strict) refuse(channelsUnsupported(chain, wanted.nb_channels));
    if (Vorlin::av::layoutMask(input) == 0 && (!fits || settings.layout)) {
        refuse("it has " + std::to_string(input.nb_channels) +
               " channels, and they cannot be mixed, because their loudspeakers are not known");
    }
    const auto choice = chooseLayout(wanted, chain);
    if (!choice) refuse(channelsUnsupported(chain, wanted.nb_channels));
    if ((settings.layout || settings.strict) && isMixed(wanted, choice->mixed))
        refuse(unsupported(chain, layoutsText(counts)) + ", not " + layoutName(wanted));
    return *choice;
}

}  // namespace

AudioSpec ConversionPlan::restoredSpec(AudioSpec from_chain) const {
    if (isPadded()) from_chain.layout = converted.layout;
    return from_chain;
}

FramePtr ConversionPlan::restored(FramePtr frame) const {
    if (!isPadded()) return frame;
    AudioSpec spec = specOf(*frame);
    spec.layout = converted.layout;
    return withChannelsOf(*frame, spec);
}

ConversionPlan planConversion(const AudioSpec& input, const std::vector<const Effect*>& chain,
                              const ConversionSettings& settings) {
    ConversionPlan plan;
    const LayoutChoice layouts = planLayout(input.layout, chain, settings);
    plan.converted = {AV_SAMPLE_FMT_S16, planRate_hz(input.rate_hz, chain, settings), layouts.mixed};
    plan.work = plan.converted;
    plan.work.layout = layouts.work;
    if (isMixed(input.layout, layouts.mixed)) {
        plan.notes.push_back("IN has " + channelsText(input.layout) + "; " + titlesOf(chain) + " " +
                             verb(chain, "get") + " " + layoutName(layouts.mixed));
    }
    if (plan.isPadded()) {
        const int silent = plan.work.channels() - plan.converted.channels();
        plan.notes.push_back(titlesOf(chain) + " " + verb(chain, "get") + " the " +
                             std::to_string(plan.converted.channels()) + " channels of " +
                             channelsText(layouts.mixed) + " beside " + std::to_string(silent) +
                             (silent == 1 ? " silent one" : " silent ones") + ", which OUT does not have");
    }
    if (plan.work.rate_hz != input.rate_hz) {
        plan.notes.push_back("IN has " + std::to_string(input.rate_hz) + " Hz; " + titlesOf(chain) + " " +
                             verb(chain, "get") + " " + std::to_string(plan.work.rate_hz) + " Hz");
    }
    return plan;
}

}  // namespace sonivex_tool
