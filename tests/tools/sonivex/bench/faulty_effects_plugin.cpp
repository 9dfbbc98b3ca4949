// A plug-in that has only the normalizer, which cannot be made for one channel and gives back too little for
// others.
#include "sonivex/normalizer.h"

namespace {
int handle = 0;
}  // namespace

void* aem_CreateNormalizer(int channels, int) {
    return channels == 1 ? nullptr : &handle;
}

int aem_ProcessNormalizer(void*, const short*, short*, int frames, int channels) {
    return frames * channels - 1;
}

void aem_ReleaseNormalizer(void*) {}
