// The effects as a node of Web Audio. A page needs this file and one engine file, as scripts or in its own text:
//
//   const support = Sonivex.support();                        what this browser can do, and why not
//   const node = await Sonivex.createNode(context, {channels: 6, choice: {effect: "surround"}});
//   source.connect(node); node.connect(context.destination);
//   node.choose({effect: "surround", type: "MegaBass", mode: 2, limiter: true});
//   node.onmeters = ({input, output, share, worstShare, isChanging}) => …
//   node.onfailure = (error) => …                             the node is silent from then on
//
// The engine files set SonivexEngines.simd and SonivexEngines.scalar to the module in base64. Unless the page has done so,
// createNode loads the file from the folder of this script, which works for pages opened from a file, too.
"use strict";

globalThis.Sonivex = (() => {
    const folder = document.currentScript?.src ? new URL(".", document.currentScript.src).href : "";
    const kEffects = { original: 0, surround: 1, normalizer: 3 };
    const kTypes = { "3DSurround": 1, MegaBass: 13 };
    const kDefault = { effect: "surround", type: "3DSurround", mode: 1, limiter: true };

    // (module (func (result v128) i32.const 0 i8x16.splat))
    const kSimdModule = new Uint8Array([
        0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 8, 1, 6, 0, 65, 0, 253, 15, 11,
    ]);

    /** Tells what the browser can do: {isSupported, variant: "simd" or "scalar", reason: why it is not supported}. */
    function support() {
        const no = (reason) => ({ isSupported: false, variant: null, reason });
        if (typeof WebAssembly !== "object" || typeof WebAssembly.validate !== "function") {
            return no("This browser cannot run WebAssembly, in which the effects are built.");
        }
        if (typeof AudioContext !== "function" || typeof AudioWorkletNode !== "function") {
            return no(
                globalThis.isSecureContext === false
                    ? "This browser has audio worklets only on pages from https, from this machine or from a file."
                    : "This browser has no audio worklets, in which the effects run.",
            );
        }
        return { isSupported: true, variant: WebAssembly.validate(kSimdModule) ? "simd" : "scalar", reason: "" };
    }

    // Runs in the worklet's scope, so it must not refer to anything outside.
    function workletScope() {
        const kReport_s = 0.05;
        const kShareOver_s = 1;
        const kWarmUp_s = 0.25;
        // Some browsers have no fine clock in worklets. A coarse one still gives the right share on average.
        const hasFineClock = typeof performance === "object" && typeof performance.now === "function";
        const now_ms = hasFineClock ? () => performance.now() : () => Date.now();

        registerProcessor(
            "sonivex",
            class extends AudioWorkletProcessor {
                constructor({ processorOptions: { bytes, channels, choice } }) {
                    super();
                    const engine = new WebAssembly.Instance(new WebAssembly.Module(bytes), {}).exports;
                    engine._initialize?.();
                    const status = engine.sonivex_web_open(channels, sampleRate);
                    if (status !== 0) throw new Error(`the effects refuse ${channels} channels at ${sampleRate} Hz`);
                    this.engine = engine;
                    this.channels = channels;
                    this.mostFrames = engine.sonivex_web_most_frames();
                    const plane = (at) => new Float32Array(engine.memory.buffer, at, this.mostFrames);
                    this.inputs = Array.from({ length: channels }, (_, i) => plane(engine.sonivex_web_input(i)));
                    this.outputs = [0, 1].map((i) => plane(engine.sonivex_web_output(i)));
                    this.isOpen = true;
                    this.warmUp(choice);
                    this.busy_ms = 0;
                    this.worstShare = 0;
                    this.share = 0;
                    this.frames = 0;
                    this.wasChanging = false;
                    this.port.onmessage = ({ data }) => this.obey(data);
                    this.port.postMessage({
                        kind: "ready", latencyFrames: engine.sonivex_web_latency_frames(), hasFineClock,
                    });
                }

                obey(message) {
                    if (message.kind === "choose") this.engine.sonivex_web_choose(...message.choice);
                    if (message.kind === "close") this.isOpen = false;
                }

                // The browser compiles a function well only after it has run often: that happens before any sound.
                warmUp(choice) {
                    this.engine.sonivex_web_choose(...choice);
                    for (let frames = 0; frames < kWarmUp_s * sampleRate; frames += 128) {
                        for (const plane of this.inputs) {
                            for (let i = 0; i < 128; ++i) plane[i] = Math.random() - 0.5;
                        }
                        this.engine.sonivex_web_render(128);
                    }
                    this.engine.sonivex_web_reset();
                }

                process([input], [output]) {
                    const started_ms = now_ms();
                    const frames = output[0].length;
                    for (let first = 0; first < frames; first += this.mostFrames) {
                        this.render(input, output, first, Math.min(frames - first, this.mostFrames));
                    }
                    this.note(now_ms() - started_ms, frames);
                    return this.isOpen;
                }

                render(input, output, first, frames) {
                    for (let i = 0; i < this.channels; ++i) {
                        if (input[i]) this.inputs[i].set(input[i].subarray(first, first + frames));
                        else this.inputs[i].fill(0, 0, frames);
                    }
                    this.engine.sonivex_web_render(frames);
                    output.forEach((plane, i) => plane.set(this.outputs[i].subarray(0, frames), first));
                }

                note(busy_ms, frames) {
                    this.busy_ms += busy_ms;
                    this.worstShare = Math.max(this.worstShare, busy_ms / ((1000 * frames) / sampleRate));
                    this.frames += frames;
                    this.wasChanging ||= this.engine.sonivex_web_is_changing() !== 0;
                    const heard_s = this.frames / sampleRate;
                    if (heard_s < kReport_s) return;
                    const weight = Math.min(1, heard_s / kShareOver_s);
                    this.share += (this.busy_ms / (1000 * heard_s) - this.share) * weight;
                    const peak = (plane) => this.engine.sonivex_web_take_peak(plane);
                    this.port.postMessage({
                        kind: "meters",
                        input: this.inputs.map((_, i) => peak(i)),
                        output: [peak(8), peak(9)],
                        share: this.share,
                        worstShare: this.worstShare,
                        isChanging: this.wasChanging,
                    });
                    this.wasChanging = false;
                    this.busy_ms = 0;
                    this.worstShare = 0;
                    this.frames = 0;
                }
            },
        );
    }

    // The numbers that the engine takes.
    function numbersOf(choice) {
        const { effect, type, mode, limiter } = { ...kDefault, ...choice };
        if (!(effect in kEffects)) throw new Error(`"${effect}" is not an effect`);
        if (!(type in kTypes)) throw new Error(`"${type}" is not a type of surround`);
        return [kEffects[effect], kTypes[type], Number(mode), limiter ? 1 : 0];
    }

    function loadEngine(variant) {
        return new Promise((resolve, reject) => {
            const script = document.createElement("script");
            script.src = `${folder}sonivex-engine-${variant}.js`;
            script.onload = resolve;
            script.onerror = () => reject(new Error(`cannot load ${script.src}`));
            document.head.append(script);
        });
    }

    async function engineBytes(variant) {
        if (!globalThis.SonivexEngines?.[variant]) await loadEngine(variant);
        return Uint8Array.from(atob(globalThis.SonivexEngines[variant]), (letter) => letter.charCodeAt(0)).buffer;
    }

    const contextsWithProcessor = new WeakMap();

    // Some browsers load no blob into the worklet of a page that was opened from a file, others no data address.
    async function addModule(worklet) {
        const source = `(${workletScope})();`;
        const blob = URL.createObjectURL(new Blob([source], { type: "text/javascript" }));
        try {
            await worklet.addModule(blob);
        } catch {
            await worklet.addModule(`data:text/javascript,${encodeURIComponent(source)}`).catch(() => {
                throw new Error("This browser could not load the effects into an audio worklet.");
            });
        } finally {
            URL.revokeObjectURL(blob);
        }
    }

    function addProcessor(context) {
        if (!contextsWithProcessor.has(context)) {
            const added = addModule(context.audioWorklet);
            contextsWithProcessor.set(context, added);
            added.catch(() => contextsWithProcessor.delete(context)); // the next call tries again
        }
        return contextsWithProcessor.get(context);
    }

    /** Creates the node.
     *  @param context a running or suspended AudioContext, or an OfflineAudioContext, at 44100 or 48000 Hz.
     *  @param options channels: 1, 2, 6 or 8; mono is heard on both sides. choice: see choose. variant: "simd" or "scalar"
     *                 instead of the best one.
     *  @return an AudioWorkletNode with choose(), close(), onmeters, onfailure, latencyFrames and hasFineClock.
     *  Rejects with an Error whose message a listener can read. */
    async function createNode(context, { channels, choice = {}, variant } = {}) {
        const { isSupported, reason, variant: best } = support();
        if (!isSupported) throw new Error(reason);
        const width = Math.max(2, channels);
        const [bytes] = await Promise.all([engineBytes(variant ?? best), addProcessor(context)]);
        const node = new AudioWorkletNode(context, "sonivex", {
            numberOfInputs: 1,
            numberOfOutputs: 1,
            outputChannelCount: [2],
            channelCount: width,
            channelCountMode: "explicit",
            channelInterpretation: channels === 1 ? "speakers" : "discrete",
            processorOptions: { bytes, channels: width, choice: numbersOf(choice) },
        });
        node.onmeters = null;
        node.onfailure = null;
        node.choose = (wanted) => node.port.postMessage({ kind: "choose", choice: numbersOf(wanted) });
        node.close = () => node.port.postMessage({ kind: "close" });
        await new Promise((resolve, reject) => {
            const refusal = `The effects do not run with ${channels} channels at ${context.sampleRate} Hz.`;
            node.onprocessorerror = () => reject(new Error(refusal));
            node.port.onmessage = ({ data }) => {
                if (data.kind === "meters") node.onmeters?.(data);
                if (data.kind !== "ready") return;
                node.latencyFrames = data.latencyFrames;
                node.hasFineClock = data.hasFineClock;
                const failure = "The effects stopped after an error, and there is no more sound. Open the file again.";
                node.onprocessorerror = () => node.onfailure?.(new Error(failure));
                resolve();
            };
        });
        return node;
    }

    return { support, createNode, choices: { effects: Object.keys(kEffects), types: Object.keys(kTypes) } };
})();
