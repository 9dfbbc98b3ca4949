// The table of effects, and the functions to which its records point.

#include "effects.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "SonivexFilter.h"
#include "sonivex/dialoguenhance.h"
#include "sonivex/normalizer.h"
#include "sonivex/surround.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr int kMegaBassType = 13;

constexpr int kMonoTo71[] = {1, 2, 6, 8};
constexpr int kStereo[] = {2};
constexpr int kCommonRates_hz[] = {44100, 48000};
constexpr int kSpeechAndCommonRates_hz[] = {16000, 44100, 48000};

// Gain of a bin without dialogue, and the gain that full presence adds to it.
constexpr double kDialogueGainFloor_lin = 1.0;
constexpr double kDialogueGainScale_lin = 1.0;

int sameChannels(const sonivexFilter&, int in_channels) {
    return in_channels;
}

// Repeats every sample of `mono` for the left and the right channel: [frames][2]. @throws std::bad_alloc
std::unique_ptr<short[]> widenMono(const short* mono, int frames) {
    auto widened = makeBlock(2, frames);
    short* stereo = widened.get();
    for (int i = 0; i < frames; ++i) {
        *stereo++ = mono[i];
        *stereo++ = mono[i];
    }
    return widened;
}

// A surround handle that was made for one channel still reads two samples per frame.
int renderSurround(void* handle, const InputBlock& in, short* out) {
    if (in.channels != 1) return aem_ProcessSurround(handle, in.samples, out, in.frames);
    const auto widened = widenMono(in.samples, in.frames);
    return aem_ProcessSurround(handle, widened.get(), out, in.frames);
}

int enhanceDialogue(void* handle, const InputBlock& in, short* out) {
    return aem_ProcessDialoguEnhance(handle, in.samples, out, in.frames, in.sampleRate);
}

int normalize(void* handle, const InputBlock& in, short* out) {
    return aem_ProcessNormalizer(handle, in.samples, out, in.frames, static_cast<int8_t>(in.channels));
}

sonivex::EffectTiming timingOfDialogue(const sonivexFilter&, int, int sample_rate_hz) {
    return sonivex::dialogueTiming(sample_rate_hz);
}

sonivex::EffectTiming timingOfNormalizer(const sonivexFilter&, int, int) {
    return sonivex::normalizerTiming();
}

}  // namespace

// A friend of the filter, because the records point to private members and handles depend on private options.
struct EffectTable {
    static int surroundOutputChannels(const sonivexFilter& filter, int) {
        const int type = filter.mSurroundType;
        if (type == 6) return 6;
        if (type == 7) return 8;
        return 2;
    }

    static sonivex::EffectTiming timingOfSurround(const sonivexFilter& filter, int channels, int) {
        return sonivex::surroundTiming(filter.mSurroundType == kMegaBassType, channels);
    }

    static void* createSurround(const sonivexFilter& filter, const InputBlock& in) {
        const int type = filter.mSurroundType;
        const int mode = filter.mSurroundMode;
        const int limiter = filter.mSurroundLimiter;
        __log_print(
            LOG_DEBUG, kFilterName,
            "sonivex creating surround handler. channels=%d, sampleRate=%d, type=%d, mode=%d, limiter=%d",
            in.channels, in.sampleRate, type, mode, limiter);
        return aem_CreateSurround(in.channels, in.sampleRate, type, mode, limiter);
    }

    static void* createDialogue(const sonivexFilter& filter, const InputBlock& in) {
        const double voice = filter.mVoice;
        __log_print(LOG_DEBUG, kFilterName,
                    "sonivex creating dialoguenhance handler. channels=%d, sampleRate=%d, voice=%f",
                    in.channels, in.sampleRate, voice);
        return aem_CreateDialoguEnhance(in.channels, in.sampleRate, kDialogueGainFloor_lin,
                                        kDialogueGainScale_lin, voice);
    }

    static void* createNormalizer(const sonivexFilter&, const InputBlock& in) {
        __log_print(LOG_DEBUG, kFilterName, "sonivex creating normalizer handler. channels=%d, sampleRate=%d",
                    in.channels, in.sampleRate);
        return aem_CreateNormalizer(in.channels, in.sampleRate);
    }

    static constexpr EffectRecord kRecords[] = {
        {
            .name = "surround",
            .c_name = "Surround",
            .option = "enable_surround",
            .precedence = 2,
            .is_on = &sonivexFilter::mEnableSurround,
            .handle = &sonivexFilter::mSurroundHandle,
            .channels = kMonoTo71,
            .rates_hz = kCommonRates_hz,
            .output_channels = surroundOutputChannels,
            .timing = timingOfSurround,
            .create = createSurround,
            .process = renderSurround,
            .release = aem_ReleaseSurround,
        },
        {
            .name = "dialoguenhance",
            .c_name = "DialoguEnhance",
            .option = "enable_dialoguenhance",
            .precedence = 1,
            .is_on = &sonivexFilter::mEnableDialogue,
            .handle = &sonivexFilter::mDialogueHandle,
            .channels = kStereo,
            .rates_hz = kCommonRates_hz,
            .output_channels = sameChannels,
            .timing = timingOfDialogue,
            .create = createDialogue,
            .process = enhanceDialogue,
            .release = aem_ReleaseDialoguEnhance,
        },
        {
            .name = "normalizer",
            .c_name = "Normalizer",
            .option = "enable_normalizer",
            .precedence = 3,
            .is_on = &sonivexFilter::mEnableNormalizer,
            .handle = &sonivexFilter::mNormalizerHandle,
            .channels = kMonoTo71,
            .rates_hz = kSpeechAndCommonRates_hz,
            .output_channels = sameChannels,
            .timing = timingOfNormalizer,
            .create = createNormalizer,
            .process = normalize,
            .release = aem_ReleaseNormalizer,
        },
    };
};

namespace {

constexpr auto kRecordsByPrecedence = [] {
    std::array<const EffectRecord*, std::size(EffectTable::kRecords)> sorted{};
    std::transform(std::begin(EffectTable::kRecords), std::end(EffectTable::kRecords), sorted.begin(),
                   [](const EffectRecord& effect) { return &effect; });
    std::sort(sorted.begin(), sorted.end(), [](const EffectRecord* first, const EffectRecord* second) {
        return first->precedence < second->precedence;
    });
    return sorted;
}();

// Two effects of equal precedence would leave it open which of them processes a frame.
static_assert(std::adjacent_find(kRecordsByPrecedence.begin(), kRecordsByPrecedence.end(),
                                 [](const EffectRecord* first, const EffectRecord* second) {
                                     return first->precedence == second->precedence;
                                 }) == kRecordsByPrecedence.end());

bool contains(std::span<const int> numbers, int number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace

std::span<const EffectRecord> allEffects() {
    return EffectTable::kRecords;
}

std::span<const EffectRecord* const> effectsByPrecedence() {
    return kRecordsByPrecedence;
}

bool isSupportedStream(const EffectRecord& effect, int channels, int sample_rate_hz) {
    return contains(effect.channels, channels) && contains(effect.rates_hz, sample_rate_hz);
}

std::unique_ptr<short[]> makeBlock(int channels, int frames) {
    return std::unique_ptr<short[]>(
        new short[static_cast<std::size_t>(channels) * static_cast<std::size_t>(frames)]());
}

}  // namespace Vorlin
