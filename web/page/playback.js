// Plays one decoded sound through the effects: a buffer's source, a gain that keeps starts and stops smooth, the effects.
"use strict";

class SonivexPlayback {
    static kRamp_s = 0.015;

    /** @param onend called when the sound has come to its end. */
    constructor(context, node, buffer, onend) {
        this.context = context;
        this.node = node;
        this.buffer = buffer;
        this.onend = onend;
        this.offset_s = 0;
        this.source = null;
        this.hasFailed = false; // the node makes no more sound
        node.connect(context.destination);
    }

    get isPlaying() {
        return this.source !== null;
    }

    get position_s() {
        const moved_s = this.isPlaying ? this.context.currentTime - this.started_s : 0;
        return Math.min(this.offset_s + moved_s, this.buffer.duration);
    }

    play() {
        if (this.isPlaying) return;
        if (this.offset_s >= this.buffer.duration) this.offset_s = 0;
        const now_s = this.context.currentTime;
        const source = new AudioBufferSourceNode(this.context, { buffer: this.buffer });
        const gain = new GainNode(this.context, { gain: 0 });
        gain.gain.setValueAtTime(0, now_s);
        gain.gain.linearRampToValueAtTime(1, now_s + SonivexPlayback.kRamp_s);
        source.connect(gain).connect(this.node);
        source.start(now_s, this.offset_s);
        source.onended = () => {
            gain.disconnect();
            if (this.source !== source) return;
            this.source = null;
            this.offset_s = 0;
            this.onend();
        };
        this.source = source;
        this.gain = gain;
        this.started_s = now_s;
    }

    pause() {
        if (!this.isPlaying) return;
        this.offset_s = this.position_s;
        const now_s = this.context.currentTime;
        this.gain.gain.cancelScheduledValues(now_s);
        this.gain.gain.setTargetAtTime(0, now_s, SonivexPlayback.kRamp_s / 3);
        this.source.stop(now_s + 2 * SonivexPlayback.kRamp_s);
        this.source = null;
    }

    seek(position_s) {
        const was_playing = this.isPlaying;
        this.pause();
        this.offset_s = Math.max(0, Math.min(position_s, this.buffer.duration));
        if (was_playing) this.play();
    }

    close() {
        this.pause();
        this.node.close();
        this.node.disconnect();
    }
}
