// Converts between one interleaved block and one buffer per channel.
#pragma once

/** Deinterleaves: buffers[c][f] = interleaved[f * channels + c] for every whole frame.
 *  @param total_samples samples of the interleaved block. Samples after the last whole frame are ignored.
 *  @param buffers       [channels][frames]. Nothing happens with less than one frame or channel.
 *  [any, concurrent] real-time safe */
void ChannelSplit_f(const float* interleaved, int total_samples, float* const* buffers, int channels);

/** Interleaves: interleaved[f * channels + c] = buffers[c][f].
 *  @param frames  frames to write; unlike total_samples of ChannelSplit_f, it does not count samples.
 *  @param buffers [channels][frames]. Nothing happens with less than one frame or channel.
 *  [any, concurrent] real-time safe */
void ChannelMerge_f(float* interleaved, int frames, const float* const* buffers, int channels);
