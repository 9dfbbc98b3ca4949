#include "engine_faults.h"

namespace test {

EngineFaults& engineFaults() {
    static EngineFaults faults;
    return faults;
}

void resetEngineFaults() {
    engineFaults() = {};
}

}  // namespace test

extern "C" {

void* __real_aem_CreateNormalizer(int channels, int sample_rate);
int __real_aem_ProcessNormalizer(void* handle, const short* in, short* out, int frames, int channels);

void* __wrap_aem_CreateNormalizer(int channels, int sample_rate) {
    test::EngineFaults& faults = test::engineFaults();
    ++faults.creates;
    faults.normalizer_settings.push_back({channels, sample_rate});
    if (faults.creates_to_fail > 0) {
        --faults.creates_to_fail;
        return nullptr;
    }
    return __real_aem_CreateNormalizer(channels, sample_rate);
}

int __wrap_aem_ProcessNormalizer(void* handle, const short* in, short* out, int frames, int channels) {
    test::EngineFaults& faults = test::engineFaults();
    faults.channels_of_calls.push_back(channels);
    if (faults.process_result < 0) return faults.process_result;
    const int result = __real_aem_ProcessNormalizer(handle, in, out, frames, channels);
    if (faults.during_process) faults.during_process();
    return result;
}

void __real_aem_ReleaseNormalizer(void* handle);

void __wrap_aem_ReleaseNormalizer(void* handle) {
    test::EngineFaults& faults = test::engineFaults();
    ++faults.releases;
    if (faults.during_release) faults.during_release();
    __real_aem_ReleaseNormalizer(handle);
}

void* __real_aem_CreateSurround(int channels, int sample_rate, int type, int mode, int limiter);
int __real_aem_ProcessSurround(void* handle, const short* in, short* out, int frames);

void* __wrap_aem_CreateSurround(int channels, int sample_rate, int type, int mode, int limiter) {
    test::EngineFaults& faults = test::engineFaults();
    ++faults.surround_creates;
    faults.surround_settings.push_back({channels, sample_rate, type, mode, limiter});
    if (faults.surround_creates_to_fail > 0) {
        --faults.surround_creates_to_fail;
        return nullptr;
    }
    return __real_aem_CreateSurround(channels, sample_rate, type, mode, limiter);
}

int __wrap_aem_ProcessSurround(void* handle, const short* in, short* out, int frames) {
    const int result = test::engineFaults().surround_result;
    return result < 0 ? result : __real_aem_ProcessSurround(handle, in, out, frames);
}

void __real_aem_ReleaseSurround(void* handle);

void __wrap_aem_ReleaseSurround(void* handle) {
    ++test::engineFaults().surround_releases;
    __real_aem_ReleaseSurround(handle);
}

void* __real_aem_CreateDialoguEnhance(int channels, int sample_rate, double gain_floor, double gain_scale,
                                      double voice_level);
int __real_aem_ProcessDialoguEnhance(void* handle, const short* in, short* out, int frames, int sample_rate);

void* __wrap_aem_CreateDialoguEnhance(int channels, int sample_rate, double gain_floor, double gain_scale,
                                      double voice_level) {
    test::EngineFaults& faults = test::engineFaults();
    faults.dialogue_creates.push_back({channels, sample_rate, gain_floor, gain_scale, voice_level});
    if (faults.dialogue_creates_to_fail > 0) {
        --faults.dialogue_creates_to_fail;
        return nullptr;
    }
    return __real_aem_CreateDialoguEnhance(channels, sample_rate, gain_floor, gain_scale, voice_level);
}

int __wrap_aem_ProcessDialoguEnhance(void* handle, const short* in, short* out, int frames, int sample_rate) {
    const int result = test::engineFaults().dialogue_result;
    return result < 0 ? result : __real_aem_ProcessDialoguEnhance(handle, in, out, frames, sample_rate);
}

void __real_aem_ReleaseDialoguEnhance(void* handle);

void __wrap_aem_ReleaseDialoguEnhance(void* handle) {
    ++test::engineFaults().dialogue_releases;
    __real_aem_ReleaseDialoguEnhance(handle);
}
}
