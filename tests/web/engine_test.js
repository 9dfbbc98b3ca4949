// The module that the audio worklet runs, under node: the library's bytes, changes without a click, input of any kind.
// Environment: SONIVEX_ENGINE, the module; SONIVEX_EXPECTED, the folder that expected_streams wrote.
"use strict";
const assert = require("node:assert");
const fs = require("node:fs");
const path = require("node:path");
const test = require("node:test");
const { Engine } = require("./engine.js");

const kModule = process.env.SONIVEX_ENGINE;
const kExpected = process.env.SONIVEX_EXPECTED;
const kTone_hz = 100;
const kRate_hz = 48000;

const make = (channels, choice = {}) => new Engine(kModule, channels, choice);

function readPcm(name) {
    const bytes = fs.readFileSync(path.join(kExpected, name));
    return new Int16Array(bytes.buffer, bytes.byteOffset, bytes.length / 2);
}

// Splits interleaved samples into planes of floats, with `more` silent frames at the end.
function planesOf(pcm, channels, more) {
    const frames = pcm.length / channels;
    return Array.from({ length: channels }, (_, channel) =>
        Float32Array.from({ length: frames + more }, (_, i) => (i < frames ? pcm[i * channels + channel] / 32768 : 0)));
}

function tone(channels, frames, amplitude = 0.25) {
    const step = (2 * Math.PI * kTone_hz) / kRate_hz;
    const samples = Float32Array.from({ length: frames }, (_, i) => amplitude * Math.sin(step * i));
    return Array.from({ length: channels }, () => samples);
}

// The largest fourth difference: tiny for a low tone, as large as the step for a click.
function roughness(samples, first, last) {
    let most = 0;
    for (let i = first + 4; i < last; ++i) {
        const d = samples[i] - 4 * samples[i - 1] + 6 * samples[i - 2] - 4 * samples[i - 3] + samples[i - 4];
        most = Math.max(most, Math.abs(d));
    }
    return most;
}
// During a fade two sounds of 16 bits add up, and the difference of either's rounding is up to 16 steps.
const kSmooth = 32 / 32768;
// The normalizer's limiter moves the gain as well.
const kSmoothNormalizer = 2 * kSmooth;

test("the module imports nothing", () => {
    assert.deepStrictEqual(WebAssembly.Module.imports(new WebAssembly.Module(fs.readFileSync(kModule))), []);
});

const cases = JSON.parse(fs.readFileSync(path.join(kExpected, "cases.json")));
test("there is a case for every type, room and layout", () => assert.ok(cases.length >= 19));

for (const { name, channels, choice } of cases) {
    test(`the output has the bytes of the library: ${name}`, () => {
        const engine = make(channels, choice);
        const delay = engine.latencyFrames;
        const wanted = readPcm(`${name}.out.s16`);
        const out = engine.render(planesOf(readPcm(`${name}.in.s16`), channels, delay));
        let differing = 0;
        let largest = 0;
        for (let i = 0; i < wanted.length; ++i) {
            if (out[i % 2][delay + Math.floor(i / 2)] * 32768 !== wanted[i]) ++differing;
            largest = Math.max(largest, Math.abs(wanted[i]));
        }
        assert.ok(largest > 1000, "the expected output is silent");
        assert.strictEqual(differing, 0);
    });
}

test("calls of any length give the same output", () => {
    const pcm = planesOf(readPcm("surround-MegaBass-6-1-limited.in.s16"), 6, 0);
    const choice = { type: "MegaBass" };
    const wanted = make(6, choice).render(pcm, 128);
    for (const call of [1, 100, 256]) assert.deepStrictEqual(make(6, choice).render(pcm, call), wanted);
});

test("the original stereo passes unchanged, as late as the effects", () => {
    const engine = make(2, { effect: "original" });
    const delay = engine.latencyFrames;
    const [left] = tone(1, 4000);
    const out = engine.render([left, left.map((x) => -x)]);
    assert.deepStrictEqual(out[0].subarray(delay), left.subarray(0, left.length - delay));
    assert.deepStrictEqual(out[1].subarray(delay), left.map((x) => -x).subarray(0, left.length - delay));
});

// The downmix of 5.1 and 7.1: the centre and the surround channels 3 dB lower, without the low-frequency channel.
function foldDown(planes) {
    const scale = Math.fround(Math.SQRT1_2);
    return [0, 1].map((side) => planes[side].map((sample, i) => {
        const others = [planes[2], ...planes.filter((_, channel) => channel >= 4 && channel % 2 === side)];
        return others.reduce((sum, plane) => Math.fround(sum + Math.fround(plane[i] * scale)), sample);
    }));
}

for (const channels of [6, 8]) {
    const planes = () => planesOf(readPcm(`surround-3DSurround-${channels}-1.in.s16`), channels, 0);
    test(`the original of ${channels} channels is their downmix`, () => {
        const engine = make(channels, { effect: "original" });
        const out = engine.render(planes());
        const wanted = foldDown(planes());
        const delay = engine.latencyFrames;
        assert.ok(Math.max(...wanted[0]) > 0.1);
        for (const side of [0, 1]) {
            assert.deepStrictEqual(out[side].subarray(delay), wanted[side].subarray(0, wanted[side].length - delay));
        }
    });
    test(`the normalizer of ${channels} channels hears their downmix`, () => {
        const wanted = make(2, { effect: "normalizer" }).render(foldDown(planes()));
        assert.ok(Math.max(...wanted[0]) > 0.1);
        assert.deepStrictEqual(make(channels, { effect: "normalizer" }).render(planes()), wanted);
    });
}

const sounds = [
    { effect: "original" },
    { effect: "surround", type: "3DSurround" },
    { effect: "surround", type: "MegaBass", mode: 1 },
    { effect: "surround", type: "MegaBass", mode: 3, limiter: false },
    { effect: "normalizer" },
];
for (const channels of [2, 8]) {
    test(`no change between two sounds clicks: ${channels} channels`, () => {
        const level = channels === 2 ? 0.25 : 0.04;
        for (const from of sounds) {
            for (const to of sounds) {
                if (from === to) continue;
                const engine = make(channels, from);
                const changed = 48000;
                const out = engine.render(tone(channels, 110000, level), 128, (frame) => {
                    if (frame === 375 * 128) engine.choose(to);
                });
                const what = `${JSON.stringify(from)} to ${JSON.stringify(to)}`;
                for (const plane of out) {
                    const rough = roughness(plane, changed, plane.length);
                    const allowed = [from, to].some(({ effect }) => effect === "normalizer") ? kSmoothNormalizer : kSmooth;
                    assert.ok(rough <= allowed, `${what}: ${rough}`);
                }
                assert.strictEqual(engine.functions.sonivex_web_is_changing(), 0, what);
            }
        }
    });
}

test("a cut between two sounds would be found", () => {
    const original = make(2, { effect: "original" }).render(tone(2, 60000))[0];
    const surround = make(2, { type: "MegaBass" }).render(tone(2, 60000))[0];
    const cut = Float32Array.from(original, (x, i) => (i < 50100 ? x : surround[i]));
    assert.ok(roughness(cut, 48000, 60000) > 10 * kSmoothNormalizer, `${roughness(cut, 48000, 60000)}`);
});

test("after a change the new sound is as if it had always been chosen", () => {
    const choice = { effect: "surround", type: "MegaBass", mode: 2, limiter: false };
    // The engine's blocks and partitions begin at the change. Elsewhere the last bit would round differently.
    const kChange = 3840;
    const pcm = planesOf(readPcm("surround-MegaBass-6-2.in.s16"), 6, 12000);
    const always = make(6, choice).render(pcm);
    const engine = make(6, { effect: "normalizer" });
    const changed = engine.render(pcm, 128, (frame) => {
        if (frame === kChange) engine.choose(choice);
    });
    const settled = kChange + 17500; // latency, the longest tail and the fade
    assert.notDeepStrictEqual(changed[0].subarray(0, kChange), always[0].subarray(0, kChange));
    for (const side of [0, 1]) assert.deepStrictEqual(changed[side].subarray(settled), always[side].subarray(settled));
});

test("the newest of several quick choices wins", () => {
    const engine = make(2, { effect: "original" });
    const choices = [...sounds, { effect: "surround", type: "MegaBass", mode: 2 }];
    const out = engine.render(tone(2, 120000), 128, (frame) => {
        const i = frame / 1280 - 30;
        if (choices[i]) engine.choose(choices[i]);
    });
    const always = make(2, choices.at(-1)).render(tone(2, 120000));
    assert.ok(roughness(out[0], 38400, 120000) <= kSmooth, `${roughness(out[0], 38400, 120000)}`);
    const settled = out[0].subarray(100000).map((x, i) => Math.abs(x - always[0][100000 + i]));
    assert.ok(Math.max(...settled) <= 2 / 32768, `${Math.max(...settled)}`);
});

test("samples that are not numbers count as silence", () => {
    for (const choice of sounds) {
        const engine = make(2, choice);
        const wild = [NaN, Infinity, -Infinity, 1e30];
        const planes = [0, 1].map(() => Float32Array.from({ length: 20000 }, (_, i) => (i < 4000 ? wild[i % 4] : 0)));
        for (const plane of engine.render(planes)) assert.ok(plane.every((x) => x === 0), JSON.stringify(choice));
    }
});

test("channels and rates that the effects do not take are refused with a status", () => {
    for (const [channels, rate_hz] of [[1, 48000], [3, 48000], [9, 48000], [2, 96000], [2, 0]]) {
        assert.notStrictEqual(new Engine(kModule, channels, {}, rate_hz).status, 0, `${channels} at ${rate_hz}`);
    }
});

test("the meters show the largest magnitude since the last look", () => {
    const engine = make(2, { effect: "original" });
    engine.render([Float32Array.of(0.25, -0.75, 0.5), Float32Array.of(0, 0, 0.125)]);
    const peaks = [0, 1].map((i) => engine.functions.sonivex_web_take_peak(i));
    assert.deepStrictEqual(peaks, [0.75, 0.125]);
    assert.strictEqual(engine.functions.sonivex_web_take_peak(0), 0);
});
