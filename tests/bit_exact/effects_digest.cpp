/* Prints a digest of what the effects make of a fixed set of signals, one line for each. The signals come
 * from integer arithmetic, so a difference is the effects' own. */
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "au2_limiter.h"
#include "mixer.h"
#include "sonivex/normalizer.h"
#include "support/signals.h"

namespace {

/* FNV-1a over the bytes of samples, lowest byte first. */
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
    void print(const std::string& name) const { std::printf("%-40s %016" PRIx64 "\n", name.c_str(), state_); }

  private:
    std::uint64_t state_ = 0xCBF29CE484222325U;
};

test::Pcm programme(int channels) {
    test::Pcm all;
    const auto append = [&](const test::Pcm& part) { all.insert(all.end(), part.begin(), part.end()); };
    append(test::noise(1, channels * 5000, 300));
    append(test::sweep(10000, channels, 2900));
    append(test::noise(2, channels * 5000, 6000));
    append(test::bursts(3, channels * 30000));
    append(test::sweep(10000, channels, 32767));
    append(test::square(channels * 5000, 41, 32767));
    append(test::bursts(4, channels * 30000));
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

/* Floats before they are cut to 16 bits: a difference in the last bit would often not show in the samples. */
void digestLimiter(int lookahead) {
    constexpr std::size_t kBlock = 480;
    Digest digest;
    Au2LimiterState* limiter = nullptr;
    au2_limiter_create(&limiter);
    au2_limiter_reset(limiter);
    limiter->lookahead = lookahead;
    const test::Pcm pcm = programme(2);
    for (std::size_t done = 0; done + kBlock <= pcm.size(); done += kBlock) {
        float in[kBlock];
        float out[kBlock];
        for (std::size_t i = 0; i < kBlock; ++i) in[i] = static_cast<float>(pcm[done + i]) * 1.875F;
        au2_limiter_proc(limiter, in, static_cast<int>(kBlock), out);
        for (const float number : out) digest.add(number);
    }
    au2_limiter_free(limiter);
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

}  // namespace

int main() {
    for (const int channels : {1, 2, 3, 6, 8}) {
        for (const int frames : {100, 512, 1024}) digestNormalizer(channels, frames);
    }
    digestLimiter(0);
    digestLimiter(1);
    digestMixer();
    return 0;
}
