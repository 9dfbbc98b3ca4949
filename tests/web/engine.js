// The engine's module as the tests drive it, without a browser.
"use strict";
const fs = require("node:fs");

const kEffects = { original: 0, surround: 1, normalizer: 3 };
const kTypes = { "3DSurround": 1, MegaBass: 13 };

const numbersOf = ({ effect = "surround", type = "3DSurround", mode = 1, limiter = true }) =>
    [kEffects[effect], kTypes[type], mode, limiter ? 1 : 0];

class Engine {
    constructor(file, channels, choice, rate_hz = 48000) {
        const module = new WebAssembly.Module(fs.readFileSync(file));
        this.functions = new WebAssembly.Instance(module, {}).exports;
        this.functions._initialize();
        this.status = this.functions.sonivex_web_open(channels, rate_hz);
        this.channels = channels;
        this.choose(choice);
    }

    choose(choice) {
        this.functions.sonivex_web_choose(...numbersOf(choice));
    }

    get latencyFrames() {
        return this.functions.sonivex_web_latency_frames();
    }

    plane(at, frames) {
        return new Float32Array(this.functions.memory.buffer, at, frames);
    }

    // Renders planes [channels][frames] in calls of `call` frames. `before(frame)` runs before every call.
    render(planes, call = 128, before = () => {}) {
        const frames = planes[0].length;
        const out = [new Float32Array(frames), new Float32Array(frames)];
        for (let first = 0; first < frames; first += call) {
            before(first);
            const count = Math.min(call, frames - first);
            planes.forEach((samples, i) =>
                this.plane(this.functions.sonivex_web_input(i), count).set(samples.subarray(first, first + count)));
            this.functions.sonivex_web_render(count);
            out.forEach((samples, i) => samples.set(this.plane(this.functions.sonivex_web_output(i), count), first));
        }
        return out;
    }
}

module.exports = { Engine };
