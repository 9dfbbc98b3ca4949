"use strict";
(() => {
  const player = document.getElementById("player");
  if (!player) return;

  // Everything that a listener may switch between plays all the time from one clock. Only the gains change.
  const FADE_S = 0.01;
  const START_DELAY_S = 0.03;

  const summary = JSON.parse(document.getElementById("summary").textContent);
  const versions = summary.versions;
  const length_s = summary.sound.length_s;
  const offset_s = summary.sound.start_s;
  const element = (id) => document.getElementById(id);
  const play_button = element("play");
  const seek = element("seek");
  const clock = element("clock");
  const message = element("message");
  const version_buttons = [...player.querySelectorAll("button[data-version]")];
  const matching = element("matching");
  const loop = element("loop");

  let context = null;
  let buffers = null;      // one for each version
  let voices = null;       // {source, gain} of each version while it plays
  let started_at = 0;      // the context's time at which position 0 would have played
  let is_looping = false;  // whether the voices repeat
  let position = 0;        // in seconds, while nothing plays
  let heard = 0;           // number of the version
  let opening = null;

  function say(text) { message.textContent = text; }

  function bytesOf(number) {
    const text = atob(element("sound-" + number).textContent.trim());
    const bytes = new Uint8Array(text.length);
    for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
    return bytes.buffer;
  }

  async function open() {
    const Context = window.AudioContext || window.webkitAudioContext;
    if (!Context) {
      say("This browser has no Web Audio, so the page cannot play. The pictures and figures need none.");
      return false;
    }
    context = new Context();
    say("Decoding the sound…");
    try {
      buffers = await Promise.all(versions.map((_, number) => context.decodeAudioData(bytesOf(number))));
    } catch (error) {
      say("This browser cannot decode Opus, so the page cannot play. Another browser, such as a current Firefox, " +
          "Chrome or Safari, can. The pictures and figures are complete.");
      play_button.disabled = true;
      buffers = null;
      return false;
    }
    say("");
    return true;
  }

  // A browser may refuse sound until its user has clicked or pressed a key in the page.
  async function wake() {
    if (context.state === "running") return true;
    const slow = new Promise((resolve) => setTimeout(resolve, 1500));
    await Promise.race([context.resume().catch(() => {}), slow]);
    if (context.state === "running") return true;
    say("The browser does not let the page play yet. Click Play once more. If that does not help, the browser may " +
        "have no device for sound, or its settings forbid the page to play.");
    return false;
  }

  function gainOf(number) {
    const db = matching.checked ? versions[number].matching_gain_db : common_db;
    return Math.pow(10, db / 20);
  }
  // Without matching, all versions keep their differences, below full scale.
  const common_db = Math.min(0, ...versions.map((version) => version.matching_gain_db));

  // Moves a gain over FADE_S, from wherever it is at that time.
  function fade(parameter, from, to, now) {
    parameter.cancelScheduledValues(now);
    parameter.setValueAtTime(from, now);
    parameter.linearRampToValueAtTime(to, now + FADE_S);
  }

  // A gain under way would jump if it were read between two blocks, so its line is computed.
  function gainAt(voice, now) {
    const share = Math.min(1, Math.max(0, (now - voice.since) / FADE_S));
    return voice.from + share * (voice.to - voice.from);
  }

  function steer(voice, target, now) {
    const from = gainAt(voice, now);
    if (from === target && voice.to === target) return;
    fade(voice.gain.gain, from, target, now);
    voice.from = from;
    voice.to = target;
    voice.since = now;
  }

  function update() {
    if (!voices) return;
    const now = context.currentTime + 0.005;   // the same instant for all, not yet rendered
    voices.forEach((voice, number) => steer(voice, number === heard ? gainOf(number) : 0, now));
  }

  function currentPosition() {
    if (!voices) return position;
    // A start lies a little ahead of the clock.
    const played = Math.max(position, context.currentTime - started_at);
    return is_looping ? played % length_s : Math.min(played, length_s);
  }

  function start() {
    const when = context.currentTime + START_DELAY_S;
    if (position >= length_s) position = 0;
    started_at = when - position;
    is_looping = loop.checked;
    voices = buffers.map((buffer, number) => {
      const source = context.createBufferSource();
      source.buffer = buffer;
      source.loop = is_looping;
      source.loopEnd = length_s;
      const gain = context.createGain();
      gain.gain.value = 0;
      source.connect(gain).connect(context.destination);
      source.start(when, position);
      const voice = { source, gain, from: 0, to: 0, since: 0 };
      steer(voice, number === heard ? gainOf(number) : 0, when);
      return voice;
    });
    const first = voices[0];
    first.source.onended = () => { if (voices && voices[0] === first) { position = 0; silence(); show(); } };
  }

  function silence() {
    if (!voices) return;
    const now = context.currentTime + 0.005;
    for (const voice of voices) {
      voice.source.onended = null;
      steer(voice, 0, now);
      voice.source.stop(now + FADE_S);
    }
    voices = null;
  }

  function pause() {
    position = currentPosition();
    silence();
  }

  async function toggle() {
    if (voices) {
      pause();
    } else {
      if (!opening) opening = open();
      if (!(await opening)) return;
      if (!(await wake())) return;
      say("");
      if (!voices) start();
    }
    show();
  }

  function moveTo(seconds) {
    const was_playing = voices !== null;
    if (was_playing) silence();
    position = Math.min(Math.max(seconds, 0), length_s);
    if (was_playing) start();
    show();
  }

  function hear(number) {
    if (number < 0 || number >= versions.length) return;
    heard = number;
    update();
    show();
  }

  // ---- the blind test ----

  const test = {
    panel: element("blind"), is_on: false, first: 0, second: 1, is_first: true, right: 0, asked: 0, listening: "x",
  };
  const first_choice = element("blind-a");
  const second_choice = element("blind-b");

  function flip() { return crypto.getRandomValues(new Uint8Array(1))[0] % 2 === 0; }

  // The probability of at least so many right answers by guessing.
  function chance(right, asked) {
    let sum = 0;
    let term = Math.pow(0.5, asked);
    for (let k = 0; k <= asked; ++k) {
      if (k >= right) sum += term;
      term *= (asked - k) / (k + 1);
    }
    return Math.min(1, sum);
  }

  // At most two digits count. Neither end is rounded to certainty.
  function percentageOf(probability) {
    const percent = 100 * probability;
    if (percent < 0.01) return "less than 0.01 %";
    if (percent >= 99.5 && percent < 100) return "more than 99 %";
    return `${Number(percent.toPrecision(2))} %`;
  }

  function listen(to) {
    test.listening = to;
    const is_first = to === "a" || (to === "x" && test.is_first);
    hear(is_first ? test.first : test.second);
  }

  function showScore(verdict) {
    const score = `${test.right} of ${test.asked} right`;
    const odds = test.asked === 0 ? "" :
      `; the probability of at least as many by guessing is ${percentageOf(chance(test.right, test.asked))}`;
    element("score").textContent = (verdict ? verdict + " " : "") + score + odds + ".";
  }

  function setBlind(is_on) {
    if (is_on && first_choice.value === second_choice.value) {
      element("score").textContent = "Choose two different versions.";
      return;
    }
    test.is_on = is_on;
    if (is_on) {
      test.first = Number(first_choice.value);
      test.second = Number(second_choice.value);
      test.right = test.asked = 0;
      test.is_first = flip();
      showScore("");
      listen("x");
    }
    show();
  }

  function answer(is_first) {
    if (!test.is_on) return;
    ++test.asked;
    const is_right = is_first === test.is_first;
    if (is_right) ++test.right;
    const was = test.is_first ? "A" : "B";
    test.is_first = flip();
    listen("x");
    showScore(is_right ? "Right." : `Wrong, it was ${was}.`);
  }

  // ---- what the page shows ----

  function time(seconds) {
    const whole = Math.floor(seconds);
    return Math.floor(whole / 60) + ":" + String(whole % 60).padStart(2, "0");
  }

  function show() {
    play_button.textContent = voices ? "Pause" : "Play";
    play_button.setAttribute("aria-pressed", voices ? "true" : "false");
    // During the test a pressed button would tell which version X is.
    version_buttons.forEach((button, number) => {
      button.disabled = test.is_on;
      button.setAttribute("aria-pressed", !test.is_on && number === heard ? "true" : "false");
    });
    for (const name of ["a", "b", "x"]) {
      const button = element("hear-" + name);
      button.disabled = !test.is_on;
      button.setAttribute("aria-pressed", test.is_on && test.listening === name ? "true" : "false");
    }
    for (const name of ["answer-a", "answer-b"]) element(name).disabled = !test.is_on;
    first_choice.disabled = second_choice.disabled = test.is_on;
    element("blind-toggle").textContent = test.is_on ? "End the blind test" : "Begin a blind test";
    tick();
  }

  function tick() {
    const now = currentPosition();
    if (document.activeElement !== seek || voices) seek.value = now;
    seek.setAttribute("aria-valuetext", `${time(offset_s + now)} of ${time(offset_s + length_s)}`);
    clock.textContent = `${time(offset_s + now)} / ${time(offset_s + length_s)}`;
  }
  setInterval(() => { if (voices) tick(); }, 200);

  // ---- what the listener does ----

  play_button.addEventListener("click", toggle);
  version_buttons.forEach((button, number) => button.addEventListener("click", () => hear(number)));
  seek.addEventListener("input", () => moveTo(Number(seek.value)));
  matching.addEventListener("change", update);
  loop.addEventListener("change", () => { if (voices) moveTo(currentPosition()); });
  element("blind-toggle").addEventListener("click", () => setBlind(!test.is_on));
  for (const name of ["a", "b", "x"]) element("hear-" + name).addEventListener("click", () => listen(name));
  element("answer-a").addEventListener("click", () => answer(true));
  element("answer-b").addEventListener("click", () => answer(false));

  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const target = event.target;
    if (target.matches && target.matches("select, input:not([type=range]):not([type=checkbox])")) return;
    const is_button = target.matches && target.matches("button, input[type=checkbox]");
    const key = event.key.toLowerCase();
    if (key === " ") {
      // A button that has the focus takes the space bar itself, except the buttons of versions.
      if (is_button && target.id !== "play" && !target.dataset.version) return;
      event.preventDefault();
      if (!event.repeat) toggle();
    } else if (!test.is_on && /^[1-9]$/.test(key)) {
      hear(Number(key) - 1);
    } else if (!event.repeat && key === "x") {
      if (test.is_on) listen("x"); else setBlind(true);
    } else if (test.is_on && (key === "a" || key === "b")) {
      listen(key);
    } else if (!test.is_on || event.repeat) {
      return;
    } else if (key === "y") {
      answer(true);
    } else if (key === "n") {
      answer(false);
    } else if (key === "escape") {
      setBlind(false);
    }
  });
  // A button acts on the release of the space bar, which would undo what its press did.
  document.addEventListener("keyup", (event) => {
    if (event.key === " " && event.target.matches && event.target.matches("#play, button[data-version]"))
      event.preventDefault();
  });

  seek.max = length_s;
  player.hidden = false;
  show();

  // For scripts that drive the page.
  window.report = {
    get isPlaying() { return voices !== null; },
    get heard() { return heard; },
    get position() { return currentPosition(); },
    get gains() { return voices ? voices.map((voice) => gainAt(voice, context.currentTime)) : []; },
    get isXFirst() { return test.is_first; },
    get buffers() { return buffers; },
    fade, chance, percentageOf,
    FADE_S,
  };
})();
