// Noise from each loudspeaker in turn, for listeners without a file at hand.
"use strict";

const SonivexExamples = (() => {
    const kTurn_s = 1.2;
    const kPause_s = 0.3;
    const kRamp_s = 0.02;
    const kPeak = 0.35;

    // White noise with a fixed seed, smoothed once: softer on the ear than white noise, and the same at every visit.
    function noise(frames) {
        const samples = new Float32Array(frames);
        let state = 1;
        let smooth = 0;
        for (let i = 0; i < frames; ++i) {
            state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
            smooth += 0.35 * (state / 2147483648 - 1 - smooth);
            samples[i] = kPeak * smooth;
        }
        return samples;
    }

    /** @param context in which the buffer will sound.
     *  @param channels 2, 6 or 8.
     *  @return an AudioBuffer. */
    function make(context, channels) {
        const rate_hz = context.sampleRate;
        const turn = Math.round((kTurn_s + kPause_s) * rate_hz);
        const sounding = Math.round(kTurn_s * rate_hz);
        const ramp = Math.round(kRamp_s * rate_hz);
        const buffer = context.createBuffer(channels, channels * turn, rate_hz);
        const burst = noise(sounding);
        for (let i = 0; i < ramp; ++i) {
            burst[i] *= i / ramp;
            burst[sounding - 1 - i] *= i / ramp;
        }
        for (let channel = 0; channel < channels; ++channel) buffer.copyToChannel(burst, channel, channel * turn);
        return buffer;
    }

    return { make };
})();
