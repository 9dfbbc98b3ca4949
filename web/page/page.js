// The demo page: files in, choices to the effects, meters out.
"use strict";

(() => {
    const kRate_hz = 48000;
    const kFloor_db = -60;
    const kChannelNames = {
        1: ["M"],
        2: ["L", "R"],
        6: ["L", "R", "C", "LFE", "Ls", "Rs"],
        8: ["L", "R", "C", "LFE", "Lb", "Rb", "Ls", "Rs"],
    };
    // The whole sound lies in the memory of the tab as numbers of 32 bits: 1.8 GB for 20 minutes of 7.1.
    const kMost_s = 20 * 60;
    const kMost_bytes = 1e9;
    const kPatience_ms = 3000;
    const kLayouts = { 1: "mono", 2: "stereo", 6: "5.1", 8: "7.1" };

    const byId = (id) => document.getElementById(id);
    const form = byId("sound");
    let context = null;
    let playback = null;
    let meters = { input: [], output: [] };
    let comparedWith = "surround"; // what the key A goes back to
    let wasDragged = false;
    let loads = 0;

    function say(text, isError = false) {
        byId("status").textContent = text;
        byId("status").classList.toggle("error", isError);
    }

    // Disabled fields are not in the form's data, but count with what they show.
    function choice() {
        const checked = (name) => form.querySelector(`input[name=${name}]:checked`).value;
        return {
            effect: checked("effect"),
            type: checked("type"),
            mode: Number(checked("mode")),
            limiter: form.elements.limiter.checked,
        };
    }

    function clock(seconds) {
        const whole = Math.floor(seconds);
        return `${Math.floor(whole / 60)}:${String(whole % 60).padStart(2, "0")}`;
    }

    // ---- meters ----

    function makeMeters(folder, names) {
        const rows = names.map((name) => {
            const row = document.createElement("div");
            row.className = "meter";
            row.innerHTML = '<span class="name"></span><div class="bar"><i></i></div><span class="level"></span>';
            row.querySelector(".name").textContent = name;
            const bar = row.querySelector(".bar");
            bar.setAttribute("role", "meter");
            bar.setAttribute("aria-label", `Peak of ${name}`);
            bar.setAttribute("aria-valuemin", kFloor_db);
            bar.setAttribute("aria-valuemax", 0);
            folder.append(row);
            return { row, shown_db: kFloor_db };
        });
        folder.replaceChildren(...rows.map(({ row }) => row));
        rows.forEach((meter) => showLevel(meter, 0));
        return rows;
    }

    // The bar falls by 2 dB per report and rises at once.
    function showLevel(meter, peak) {
        const level_db = peak > 0 ? 20 * Math.log10(peak) : -Infinity;
        meter.shown_db = Math.max(kFloor_db, level_db, meter.shown_db - 2);
        const share = Math.min(1, 1 - meter.shown_db / kFloor_db);
        meter.row.querySelector("i").style.transform = `scaleX(${share.toFixed(4)})`;
        meter.row.querySelector(".bar").setAttribute("aria-valuenow", Math.round(meter.shown_db));
        meter.row.querySelector(".level").textContent =
            meter.shown_db > kFloor_db ? `${meter.shown_db.toFixed(1)} dB` : "silent";
        meter.row.classList.toggle("hot", meter.shown_db > -0.1);
    }

    function showReport(report) {
        meters.input.forEach((meter, i) => showLevel(meter, report.input[i]));
        meters.output.forEach((meter, i) => showLevel(meter, report.output[i]));
        byId("share").textContent = `${(100 * report.share).toFixed(1)} %`;
        byId("worst").textContent = playback?.node.hasFineClock ? `${(100 * report.worstShare).toFixed(0)} %` : "no fine clock";
        document.documentElement.dataset.changing = report.isChanging;
    }

    // ---- transport ----

    function showTransport() {
        byId("play").textContent = playback?.isPlaying ? "Pause" : "Play";
        if (playback === null) return;
        if (!wasDragged) byId("position").value = playback.position_s;
        byId("time").textContent = `${clock(playback.position_s)} / ${clock(playback.buffer.duration)}`;
        byId("position").setAttribute("aria-valuetext", byId("time").textContent);
    }

    function tick() {
        showTransport();
        requestAnimationFrame(tick);
    }

    // Browsers let a page sound only after a click or a key. Until then the context waits.
    async function play() {
        context.resume();
        const isRunning = await Promise.race([
            new Promise((resolve) => {
                const look = () => context.state === "running" && resolve(true);
                context.addEventListener("statechange", look);
                look();
            }),
            new Promise((resolve) => setTimeout(resolve, 400, false)),
        ]);
        if (playback.hasFailed) return;
        if (!isRunning) {
            say(`${playback.label}: ready. Press Play; this browser starts no sound without a click.`);
            return;
        }
        playback.play();
        say(`${playback.label}.`);
    }

    function stopAfterFailure(failed, error) {
        failed.hasFailed = true;
        if (failed !== playback) return;
        failed.pause();
        byId("play").disabled = true;
        byId("position").disabled = true;
        say(error.message, true);
    }

    // ---- files ----

    function openContext() {
        context ??= new AudioContext({ sampleRate: kRate_hz, latencyHint: "interactive" });
    }

    async function start(buffer, label, load) {
        const channels = buffer.numberOfChannels;
        if (!(channels in kLayouts)) {
            throw new Error(`${label} has ${channels} channels. The effects take mono, stereo, 5.1 and 7.1.`);
        }
        const node = await Sonivex.createNode(context, { channels, choice: choice() });
        if (load !== loads) {
            node.close();
            return;
        }
        playback?.close();
        const started = new SonivexPlayback(context, node, buffer, () => say(`${label}: at its end.`));
        playback = started;
        playback.label = `${label}, ${kLayouts[channels]}`;
        node.onmeters = showReport;
        node.onfailure = (error) => stopAfterFailure(started, error);
        node.choose(choice()); // what was chosen while the engine was made
        meters = {
            input: makeMeters(byId("input-meters"), channels === 1 ? kChannelNames[1] : kChannelNames[channels]),
            output: makeMeters(byId("output-meters"), kChannelNames[2]),
        };
        byId("input-layout").textContent = `(${kLayouts[channels]})`;
        byId("latency").textContent = `${((1000 * node.latencyFrames) / context.sampleRate).toFixed(1)} ms`;
        byId("position").max = buffer.duration;
        byId("position").disabled = false;
        byId("play").disabled = false;
        await play();
    }

    // The newest load wins: another that is under way gives up.
    async function load(name, open) {
        const mine = ++loads;
        say(`Opening ${name} …`);
        try {
            openContext();
            const buffer = await open();
            if (mine === loads) await start(buffer, name, mine);
        } catch (error) {
            if (mine === loads) say(error.message, true);
        }
    }

    // Reads only the head of the file. The length is 0 where the browser does not tell it.
    function lengthOf_s(file) {
        const address = URL.createObjectURL(file);
        const media = new Audio();
        media.preload = "metadata";
        const length = new Promise((resolve) => {
            media.onloadedmetadata = () => resolve(Number.isFinite(media.duration) ? media.duration : 0);
            media.onerror = () => resolve(0);
            setTimeout(resolve, kPatience_ms, 0);
        });
        media.src = address;
        return length.finally(() => {
            media.removeAttribute("src");
            URL.revokeObjectURL(address);
        });
    }

    async function read(file) {
        if (file.size > kMost_bytes) {
            throw new Error(`${file.name} is too large: this page takes files of up to ${kMost_bytes / 1e6} MB.`);
        }
        if ((await lengthOf_s(file)) > kMost_s) {
            throw new Error(`${file.name} is too long: this page takes up to ${kMost_s / 60} minutes of sound.`);
        }
        try {
            return await file.arrayBuffer();
        } catch {
            throw new Error(`This browser cannot read ${file.name}. It may be a folder, or it was moved or deleted.`);
        }
    }

    async function decode(file) {
        const bytes = await read(file);
        try {
            return await context.decodeAudioData(bytes);
        } catch {
            throw new Error(`This browser cannot decode ${file.name}. It knows WAV, FLAC, MP3 and AAC, most know Opus.`);
        }
    }

    const loadFile = (file) => load(file.name, () => decode(file));

    // ---- wiring ----

    function follow() {
        const { effect, type } = choice();
        byId("types").disabled = effect !== "surround";
        byId("limiting").disabled = effect !== "surround";
        byId("rooms").disabled = effect !== "surround" || type !== "MegaBass";
        if (effect !== "original") comparedWith = effect;
        playback?.node.choose(choice());
    }

    function compare() {
        const isOriginal = choice().effect === "original";
        form.elements.effect.value = isOriginal ? comparedWith : "original";
        follow();
    }

    function wire() {
        byId("file").addEventListener("change", ({ target }) => target.files[0] && loadFile(target.files[0]));
        document.querySelectorAll("[data-example]").forEach((button) => {
            const channels = Number(button.dataset.example);
            button.addEventListener("click", () =>
                load("Noise", async () => SonivexExamples.make(context, channels)));
        });
        document.addEventListener("dragover", (event) => {
            event.preventDefault();
            byId("drop").classList.add("over");
        });
        document.addEventListener("dragleave", () => byId("drop").classList.remove("over"));
        document.addEventListener("drop", (event) => {
            event.preventDefault();
            byId("drop").classList.remove("over");
            const [file] = event.dataTransfer.files;
            if (file) loadFile(file);
        });
        byId("play").addEventListener("click", () => (playback.isPlaying ? playback.pause() : play()));
        byId("position").addEventListener("input", () => (wasDragged = true));
        byId("position").addEventListener("change", ({ target }) => {
            wasDragged = false;
            playback.seek(Number(target.value));
        });
        form.addEventListener("change", follow);
        form.addEventListener("submit", (event) => event.preventDefault());
        document.addEventListener("keydown", (event) => {
            if (event.repeat) return; // the key is held
            if (event.key.toLowerCase() === "a" && !event.ctrlKey && !event.metaKey && !event.altKey) compare();
        });
    }

    const { isSupported, variant, reason } = Sonivex.support();
    if (isSupported) {
        byId("variant").textContent = variant === "simd" ? "with vectors" : "without vectors";
        meters.output = makeMeters(byId("output-meters"), kChannelNames[2]);
        wire();
        follow();
        tick();
    } else {
        say(reason, true);
        document.querySelectorAll("button, input").forEach((control) => (control.disabled = true));
    }
})();
