// Reports the largest magnitude of each block of sound, and when the first block began.
class Peaks extends AudioWorkletProcessor {
  process(inputs, outputs) {
    let peak = 0;
    const channel = inputs[0][0];
    if (channel) {
      for (const sample of channel) peak = Math.max(peak, Math.abs(sample));
      inputs[0].forEach((samples, c) => outputs[0][c] && outputs[0][c].set(samples));
    }
    this.port.postMessage([currentFrame, peak]);
    return true;
  }
}
registerProcessor("peaks", Peaks);
