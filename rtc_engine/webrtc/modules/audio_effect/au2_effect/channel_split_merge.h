// Between one interleaved block and one buffer per channel.
#pragma once

/** buffers[c][f] = interleaved[f * channels + c] for every whole frame.
 *  @param total_samples samples of the interleaved block; what is left over after total_samples / channels
 *                       frames is not touched.
 *  @param buffers       [channels][frames]. Nothing happens with less than one frame or channel. */
void ChannelSplit_f(const float* interleaved, int total_samples, float* const* buffers, int channels);

/** interleaved[f * channels + c] = buffers[c][f], the way back. Takes the count of frames, where the way
 *  there takes that of samples.
 *  @param buffers [channels][frames]. Nothing happens with less than one frame or channel. */
void ChannelMerge_f(float* interleaved, int frames, const float* const* buffers, int channels);
