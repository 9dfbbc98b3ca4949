// Prints a digest of each effect's output for a fixed set of signals, one per line. Integer arithmetic makes
// the signals, so any difference between two builds comes from the effects.
#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "au2_limiter_owner.h"
#include "audiofft.h"
#include "convolve_reverb.h"
#include "mixer.h"
#include "sonivex/normalizer.h"
#include "sonivex/surround.h"
#include "support/signals/signals.h"

// A build for WebAssembly has no dialogue enhancement.
#if !defined(__EMSCRIPTEN__)
#include "bin_analysis.h"
#include "centre_gains.h"
#include "centre_presence.h"
#include "framing.h"
#endif

namespace {

// 64-bit FNV-1a over the bytes of the samples, lowest byte first.
class Digest {
  public:
    void add(std::uint32_t word, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            state_ ^= (word >> (8 * i)) & 0xFFU;
            state_ *= 0x100000001B3U;
        }
    }
    void add(std::int16_t sample) { add(static_cast<std::uint16_t>(sample), 2); }
    void add(float number) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &number, sizeof bits);
        add(bits, 4);
    }
    void print(const std::string& name) const { std::printf("%-60s %016" PRIx64 "\n", name.c_str(), state_); }

  private:
    std::uint64_t state_ = 0xCBF29CE484222325U;
};

test::Pcm programme(int channels) {
    test::Pcm all;
    test::append(all, test::noise(1, channels * 5000, 300));
    test::append(all, test::sweep(10000, channels, 2900));
    test::append(all, test::noise(2, channels * 5000, 6000));
    test::append(all, test::bursts(3, channels * 30000));
    test::append(all, test::sweep(10000, channels, 32767));
    test::append(all, test::square(channels * 5000, 41, 32767));
    test::append(all, test::bursts(4, channels * 30000));
    return all;
}

// A shorter programme, because surround costs more.
test::Pcm surroundProgramme(int channels) {
    test::Pcm all = test::sweep(2000, channels, 9000);
    test::append(all, test::noise(1, channels * 3000, 3000));
    test::append(all, test::bursts(2, channels * 6000));
    test::append(all, test::square(channels * 2000, 41 * channels, 32767));
    test::append(all, test::Pcm(static_cast<std::size_t>(channels) * 3000, 0));
    return all;
}

void digestNormalizer(int channels, int frames) {
    Digest digest;
    void* const handle = aem_CreateNormalizer(channels, 48000);
    const test::Pcm in = programme(channels);
    const auto call_samples = static_cast<std::size_t>(channels * frames);
    test::Pcm out(call_samples);
    for (std::size_t done = 0; done + call_samples <= in.size(); done += call_samples) {
        aem_ProcessNormalizer(handle, in.data() + done, out.data(), frames, channels);
        for (const std::int16_t sample : out) digest.add(sample);
    }
    aem_ReleaseNormalizer(handle);
    digest.print("normalizer " + std::to_string(channels) + " channels, " + std::to_string(frames) +
                 " frames");
}

// Digests the floats before truncation to 16 bits, which would often hide a difference in the last bit.
void digestLimiter(int lookahead) {
    constexpr std::size_t kBlock = 480;
    Digest digest;
    const auto limiter = sonivex::makeAu2Limiter();
    limiter->lookahead = lookahead;
    const test::Pcm pcm = programme(2);
    for (std::size_t done = 0; done + kBlock <= pcm.size(); done += kBlock) {
        float in[kBlock];
        float out[kBlock];
        for (std::size_t i = 0; i < kBlock; ++i) in[i] = static_cast<float>(pcm[done + i]) * 1.875F;
        au2_limiter_proc(limiter.get(), in, static_cast<int>(kBlock), out);
        for (const float number : out) digest.add(number);
    }
    digest.print("output limiter, look-ahead " + std::to_string(lookahead));
}

void digestMixer() {
    Digest digest;
    MixerState* mixer = nullptr;
    mixcreat(&mixer);
    mixinit(mixer, 6, 0, 1.0F);
    const test::Pcm first = programme(6);
    const test::Pcm second = test::bursts(9, static_cast<int>(first.size()));
    constexpr int kBlock = 6 * 700;
    test::Pcm out(kBlock);
    for (std::size_t done = 0; done + kBlock <= first.size(); done += kBlock) {
        const std::int16_t* const inputs[] = {first.data() + done, second.data() + done};
        const float gains_db[] = {-1.5F, 4.25F};
        mixproc(mixer, inputs, gains_db, 1, 2, kBlock, out.data());
        for (const std::int16_t sample : out) digest.add(sample);
    }
    mixfree(mixer);
    digest.print("mixer 6 channels, 2 inputs");
}

void digestSurround(int channels, int type, int mode, int limiter, int frames) {
    Digest digest;
    void* const handle = aem_CreateSurround(channels, 48000, type, mode, limiter);
    const int width = channels == 1 ? 2 : channels;
    const test::Pcm in = surroundProgramme(width);
    const auto call_samples = static_cast<std::size_t>(width * frames);
    test::Pcm out(static_cast<std::size_t>(2 * frames));
    for (std::size_t done = 0; done + call_samples <= in.size(); done += call_samples) {
        aem_ProcessSurround(handle, in.data() + done, out.data(), frames);
        for (const std::int16_t sample : out) digest.add(sample);
    }
    aem_ReleaseSurround(handle);
    digest.print("surround " + std::to_string(type) + ", " + std::to_string(channels) + " channels, mode " +
                 std::to_string(mode) + ", limiter " + std::to_string(limiter) + ", " +
                 std::to_string(frames) + " frames");
}

// Digests the floats before truncation to 16 bits.
template <typename SetUp>
void digestRendering(const char* name, int width, SetUp set_up,
                     int (ConvolveReverb::*operation)(const float*, float*, int)) {
    constexpr int kBlock = 240;
    Digest digest;
    const auto reverb = std::make_unique<ConvolveReverb>();
    set_up(*reverb);
    const test::Pcm pcm = surroundProgramme(width);
    const auto block_samples = static_cast<std::size_t>(width * kBlock);
    std::vector<float> in(block_samples);
    float out[2 * kBlock];
    for (std::size_t done = 0; done + block_samples <= pcm.size(); done += block_samples) {
        for (std::size_t i = 0; i < block_samples; ++i) in[i] = static_cast<float>(pcm[done + i]) / 32768.0F;
        (*reverb.*operation)(in.data(), out, kBlock);
        for (const float number : out) digest.add(number);
    }
    digest.print(name);
}

void digestRenderings() {
    using R = ConvolveReverb;
    constexpr int kBlock = 240;
    digestRendering(
        "rendering bingo 2", 2, [](R& r) { r.prepareToPlay_Kelvo_Bingo_2(2, kBlock); },
        &R::process_Kelvo_Bingo_2);
    digestRendering(
        "rendering bingo 5.1", 6, [](R& r) { r.prepareToPlay_Kelvo_Bingo_5_1(6, kBlock); },
        &R::process_Kelvo_Bingo_5_1);
    digestRendering(
        "rendering bingo 7.1", 8, [](R& r) { r.prepareToPlay_Kelvo_Bingo_7_1(8, kBlock); },
        &R::process_Kelvo_Bingo_7_1);
    digestRendering(
        "rendering audio", 2, [](R& r) { r.prepareToPlay_Kelvo_Audio(2, kBlock); }, &R::process_kelvo_audio_);
    for (const unsigned mode : {1U, 2U, 3U}) {
        const std::string name = " mode " + std::to_string(mode);
        digestRendering(("rendering surround 2" + name).c_str(), 2,
                        [=](R& r) { r.prepareToPlay_Kelvo_Surround_2(2, kBlock, mode); },
                        &R::process_Kelvo_Surround_2);
        digestRendering(("rendering surround 5.1" + name).c_str(), 6,
                        [=](R& r) { r.prepareToPlay_Kelvo_Surround_5_1(6, kBlock, mode); },
                        &R::process_Kelvo_Surround_5_1);
        digestRendering(("rendering surround 7.1" + name).c_str(), 8,
                        [=](R& r) { r.prepareToPlay_Kelvo_Surround_7_1(8, kBlock, mode); },
                        &R::process_Kelvo_Surround_7_1);
    }
}

// Digests every length, even those that no effect uses, because other lengths take other passes.
void digestTransforms() {
    for (std::size_t length = 1; length <= 32768; length *= 2) {
        Digest digest;
        audiofft::AudioFFT fft;
        fft.init(length);
        std::vector<float> x = test::noiseFloats(length, length);
        std::vector<float> re(length / 2 + 1);
        std::vector<float> im(length / 2 + 1);
        fft.fft(x.data(), re.data(), im.data());
        fft.ifft(x.data(), im.data(), re.data());
        for (const auto* numbers : {&re, &im, &x}) {
            for (const float number : *numbers) digest.add(number);
        }
        digest.print("transform of " + std::to_string(length));
    }
}

#if !defined(__EMSCRIPTEN__)
std::vector<sonivex::Bin> noiseSpectrum(std::uint64_t seed, int bins) {
    const test::Pcm parts = test::noise(seed, 2 * bins, 32767);
    std::vector<sonivex::Bin> spectrum;
    for (std::size_t i = 0; i < parts.size(); i += 2) {
        // Levels fall toward high frequencies, as those of voices do, so that all magnitudes occur.
        const float level = 1.0F / static_cast<float>(i + 1);
        spectrum.push_back({static_cast<float>(parts[i]) * level, static_cast<float>(parts[i + 1]) * level});
    }
    return spectrum;
}

// Digests the dialogue enhancer's kernels. Between them the engine runs only libavutil's transforms.
void digestDialogueKernels(int points) {
    const int bins = points / 2 + 1;
    const auto count = static_cast<std::size_t>(bins);
    Digest digest;
    std::vector<sonivex::Bin> centre(count);
    std::vector<float> magnitude(count);
    std::vector<float> side(count);
    std::vector<float> share_left(count);
    std::vector<float> share_right(count);
    float presence = 0;
    for (std::uint64_t frame = 0; frame < 40; ++frame) {
        auto left = noiseSpectrum(frame, bins);
        auto right = noiseSpectrum(frame + 1000, bins);
        for (std::size_t k = 0; k < count; ++k) right[k] = 0.25F * (left[k] + (left[k] + right[k]));
        for (std::size_t k = 0; k < count; ++k) centre[k] = sonivex::centreOf(left[k], right[k]);
        const sonivex::Fluxes fluxes =
            sonivex::analyseBins(left.data(), right.data(), bins, {magnitude.data(), side.data()},
                                 {share_left.data(), share_right.data()});
        presence = sonivex::nextPresence(presence, fluxes, 1.25F);
        sonivex::applyCentreGains(share_left.data(), bins, presence, {1.0F, 1.5F}, left.data());
        sonivex::applyCentreGains(share_right.data(), bins, presence, {1.0F, 1.5F}, right.data());
        for (const float number : {fluxes.centre, fluxes.side, presence}) digest.add(number);
        for (const auto* spectrum : {&centre, &left, &right}) {
            for (const sonivex::Bin bin : *spectrum) {
                digest.add(bin.re);
                digest.add(bin.im);
            }
        }
    }
    digest.print("dialogue kernels, " + std::to_string(bins) + " bins");

    Digest window_digest;
    std::vector<float> window(static_cast<std::size_t>(points));
    sonivex::makeSineWindow(points, window.data());
    for (const float number : window) window_digest.add(number);
    window_digest.print("dialogue window of " + std::to_string(points));
}
#endif

// With calls of random length, blocks are rendered alone and in pairs, and calls end anywhere within them.
void digestSurroundInRandomCalls(int channels, int type, int longest) {
    Digest digest;
    void* const handle = aem_CreateSurround(channels, 48000, type, 1, 1);
    const int width = channels == 1 ? 2 : channels;
    const test::Pcm in = surroundProgramme(width);
    const int total_frames = static_cast<int>(in.size()) / width;
    test::Pcm out(static_cast<std::size_t>(2 * longest));
    test::Random random(static_cast<std::uint64_t>(longest));
    for (int done = 0; done < total_frames;) {
        const int frames = std::min(random.between(1, longest), total_frames - done);
        aem_ProcessSurround(handle, in.data() + done * width, out.data(), frames);
        for (int i = 0; i < 2 * frames; ++i) digest.add(out[static_cast<std::size_t>(i)]);
        done += frames;
    }
    aem_ReleaseSurround(handle);
    digest.print("surround " + std::to_string(type) + ", " + std::to_string(channels) +
                 " channels, calls of up to " + std::to_string(longest) + " frames");
}

}  // namespace

int main() {
#if !defined(__EMSCRIPTEN__)
    for (const int points : {2048, 4096, 8192}) digestDialogueKernels(points);
#endif
    digestTransforms();
    digestRenderings();
    for (const int channels : {1, 2, 6, 8}) {
        digestSurround(channels, 1, 0, 1, 240);
        for (const int mode : {1, 2, 3}) digestSurround(channels, 13, mode, 1, 240);
        digestSurround(channels, 1, 0, 0, 1024);
        digestSurround(channels, 13, 1, 0, 100);
    }
    for (const int channels : {1, 2, 3, 6, 8}) {
        for (const int frames : {100, 512, 1024}) digestNormalizer(channels, frames);
    }
    digestLimiter(0);
    digestLimiter(1);
    digestMixer();
    for (const int channels : {2, 6, 8}) {
        for (const int type : {1, 13}) {
            digestSurround(channels, type, 1, 1, 480);
            digestSurroundInRandomCalls(channels, type, 240);
            digestSurroundInRandomCalls(channels, type, 3000);
        }
    }
    return 0;
}
