// One named wrapper per layout around prepare and process. The pipelines use the layout's record instead.
#include "convolve_reverb.h"
#include "layouts.h"

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_2(int new_channels, int block_frames) {
    prepare(sonivex::kBingo2, new_channels, block_frames, 0);
}

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_5_1(int new_channels, int block_frames) {
    prepare(sonivex::kBingo51, new_channels, block_frames, 0);
}

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_7_1(int new_channels, int block_frames) {
    prepare(sonivex::kBingo71, new_channels, block_frames, 0);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_2(int new_channels, int block_frames, unsigned mode) {
    prepare(sonivex::kSurround2, new_channels, block_frames, mode);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_5_1(int new_channels, int block_frames, unsigned mode) {
    prepare(sonivex::kSurround51, new_channels, block_frames, mode);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_7_1(int new_channels, int block_frames, unsigned mode) {
    prepare(sonivex::kSurround71, new_channels, block_frames, mode);
}

void ConvolveReverb::prepareToPlay_Kelvo_Audio(int new_channels, int block_frames) {
    prepare(sonivex::kAudio, new_channels, block_frames, 0);
}

int ConvolveReverb::process_Kelvo_Bingo_2(const float* in, float* out, int n) {
    return process(sonivex::kBingo2, in, out, n);
}

int ConvolveReverb::process_Kelvo_Bingo_5_1(const float* in, float* out, int n) {
    return process(sonivex::kBingo51, in, out, n);
}

int ConvolveReverb::process_Kelvo_Bingo_7_1(const float* in, float* out, int n) {
    return process(sonivex::kBingo71, in, out, n);
}

int ConvolveReverb::process_Kelvo_Surround_2(const float* in, float* out, int n) {
    return process(sonivex::kSurround2, in, out, n);
}

int ConvolveReverb::process_Kelvo_Surround_5_1(const float* in, float* out, int n) {
    return process(sonivex::kSurround51, in, out, n);
}

int ConvolveReverb::process_Kelvo_Surround_7_1(const float* in, float* out, int n) {
    return process(sonivex::kSurround71, in, out, n);
}

int ConvolveReverb::process_kelvo_audio_(const float* in, float* out, int n) {
    return process(sonivex::kAudio, in, out, n);
}
